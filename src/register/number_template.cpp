#include "register/number_template.h"

#include <QStringView>

#include "jet/format/error.h"

namespace tandeko {

namespace {

const QString kNumer = QStringLiteral("Numer");
constexpr int kLongestNumberText = 20;  // characters read behind a separator
constexpr int kMostSeparators = 100;

int leadingNumber(QStringView text) {
  int number = 0;
  for (const QChar c : text) {
    if (c < u'0' || c > u'9') break;
    number = number * 10 + (c.unicode() - u'0');
    if (number > kHighestNumber) throwNumberOverflow();
  }
  return number;
}

}  // namespace

void throwNumberOverflow() {
  throw jet::Error::withText(6, u"Przekroczono największy numer kolejny: 32767.", "Tandeko");
}

QString NumFormat(int number, const QString& numberTemplate, const QDate& purchased, int registerKey,
                  int group) {
  QString text = numberTemplate;
  const QString digits = QString::number(number);
  text.replace(kNumer, text.startsWith(kNumer) ? digits : (QStringLiteral("000") + digits).right(4));

  const QString month = QStringLiteral("Miesiąc"), longYear = QStringLiteral("Rok[4]"),
                shortYear = QStringLiteral("Rok[2]"), ofRegister = QStringLiteral("Rejestr"),
                ofGroup = QStringLiteral("Grupa");
  const bool needsDate = text.contains(month) || text.contains(longYear) || text.contains(shortYear);
  if (needsDate && (!purchased.isValid() || purchased.year() < 1)) return QStringLiteral("? - Błędna data");
  if (needsDate) {
    text.replace(month, QStringLiteral("%1").arg(purchased.month(), 2, 10, QChar(u'0')));
    text.replace(longYear, QString::number(purchased.year()));
    text.replace(shortYear, QString::number(purchased.year()).right(2));
  }
  if (text.contains(ofRegister)) {
    if (registerKey < 1) return QStringLiteral("? - Błędny rejestr");
    text.replace(ofRegister, QString::number(registerKey));
  }
  if (text.contains(ofGroup)) {
    if (group < 1) return QStringLiteral("? - Błędna grupa");
    text.replace(ofGroup, (u'0' + QString::number(group)).right(2));
  }
  return text;
}

QChar numSeparator(const QString& numberTemplate) {
  for (const QChar separator : QStringView(kNumSeparators))
    if (numberTemplate.contains(separator)) return separator;
  return QChar();
}

NumParser::NumParser(const QString& numberTemplate, QChar separator) : separator_(separator) {
  if (numberTemplate.startsWith(kNumer)) {
    ordinal_ = 0;
    return;
  }
  const auto before = separator.isNull() ? -1 : numberTemplate.indexOf(separator + kNumer);
  if (before < 0) return;
  ordinal_ = 1;
  for (auto at = numberTemplate.indexOf(separator); at < before && ordinal_ < kMostSeparators; ++ordinal_)
    at = numberTemplate.indexOf(separator, at + 1);
}

int NumParser::operator()(QStringView text) const {
  if (ordinal_ <= 0) return ordinal_ < 0 ? 0 : leadingNumber(text);
  auto at = text.indexOf(separator_);
  for (int left = ordinal_; left > 1 && at >= 0; --left) at = text.indexOf(separator_, at + 1);
  return at < 0 ? 0 : leadingNumber(text.mid(at + 1, kLongestNumberText));
}

QString NumTemplateBuild(const NumTemplateParts& parts) {
  QString text = parts.parts[0] + parts.parts[1] + parts.parts[2] + u'/' + parts.text;
  text.replace(u'/', parts.separator);
  if (parts.separator.isEmpty()) return text;
  // Three empty parts and an empty text leave four separators side by side: halved twice, one is left.
  for (int pass = 0; pass < 2; ++pass) text.replace(parts.separator + parts.separator, parts.separator);
  if (text.endsWith(parts.separator)) text.chop(parts.separator.size());
  if (text.startsWith(parts.separator)) text.remove(0, parts.separator.size());
  return text;
}

NumTemplateParts NumTemplateSplit(const QString& numberTemplate) {
  NumTemplateParts result;
  const QStringView known(kNumSeparators);
  const auto tokenAt = [](QStringView rest) -> const NumPart* {
    for (const NumPart& part : kNumParts) {
      const auto token = QStringView(part.value).mid(1);
      if (!token.isEmpty() && rest.startsWith(token)) return &part;
    }
    return nullptr;
  };

  // The character behind the first token tells the separator; the free text may hold others.
  QStringView rest(numberTemplate);
  QChar separator = numSeparator(numberTemplate);
  if (const NumPart* first = tokenAt(rest)) {
    const auto length = QStringView(first->value).size() - 1;
    if (length < rest.size() && known.contains(rest[length])) separator = rest[length];
  }
  if (!separator.isNull()) result.separator = separator;

  for (QString& part : result.parts) {
    const NumPart* token = tokenAt(rest);
    if (!token) break;
    const auto length = QStringView(token->value).size() - 1;
    if (length < rest.size() && rest[length] != separator) break;  // a text that only begins like a token
    part = QStringView(token->value).toString();
    rest = rest.mid(length + 1);
  }
  result.text = rest.toString();
  return result;
}

}  // namespace tandeko
