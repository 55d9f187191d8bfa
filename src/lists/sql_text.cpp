#include "lists/sql_text.h"

namespace tandeko {

namespace {

bool isWordSign(QChar sign) { return sign.isLetterOrNumber() || sign == u'_'; }

// Walks over a text and knows whether it is inside of quotes or brackets, and how deep in parentheses.
class Walker {
 public:
  void step(QChar sign) {
    if (!closing_.isNull()) {
      if (sign == closing_) closing_ = QChar();
    } else if (sign == u'\'' || sign == u'"') {
      closing_ = sign;
    } else if (sign == u'[') {
      closing_ = u']';
    } else if (sign == u'(') {
      ++depth_;
    } else if (sign == u')' && depth_ > 0) {
      --depth_;
    }
  }
  bool quoted() const { return !closing_.isNull(); }
  bool outside() const { return !quoted() && depth_ == 0; }

 private:
  QChar closing_;
  int depth_ = 0;
};

bool standsAt(const QString& text, qsizetype at, const QString& word) {
  if (QStringView(text).sliced(at).size() < word.size() ||
      QStringView(text).sliced(at, word.size()).compare(word, Qt::CaseInsensitive) != 0)
    return false;
  if (!isWordSign(word.front())) return true;
  const qsizetype end = at + word.size();
  return (at == 0 || !isWordSign(text[at - 1])) && (end == text.size() || !isWordSign(text[end]));
}

QString withoutBrackets(const QString& name) {
  return name.startsWith(u'[') && name.endsWith(u']') ? name.sliced(1, name.size() - 2) : name;
}

QueryColumn columnOf(const QString& part) {
  if (const qsizetype as = findOutside(part, QStringLiteral("as")); as > 0)
    return {part.first(as).trimmed(), withoutBrackets(part.sliced(as + 2).trimmed())};
  const QString expression = part.trimmed();
  return {expression, withoutBrackets(expression.sliced(expression.lastIndexOf(u'.') + 1))};
}

}  // namespace

qsizetype findOutside(const QString& text, const QString& word, qsizetype from) {
  Walker walker;
  for (qsizetype at = 0; at < text.size(); ++at) {
    if (at >= from && walker.outside() && standsAt(text, at, word)) return at;
    walker.step(text[at]);
  }
  return -1;
}

QStringList splitOutside(const QString& text, const QString& word) {
  QStringList pieces;
  Walker walker;
  qsizetype begin = 0;
  for (qsizetype at = 0; at < text.size(); ++at) {
    if (walker.outside() && standsAt(text, at, word)) {
      pieces << text.sliced(begin, at - begin);
      begin = at + word.size();
    }
    walker.step(text[at]);
  }
  return pieces << text.sliced(begin);
}

QString replaceUnquoted(const QString& text, const QString& what, const QString& by) {
  QString result;
  Walker walker;
  for (qsizetype at = 0; at < text.size();) {
    if (!walker.quoted() && standsAt(text, at, what)) {
      result += by;
      at += what.size();
    } else {
      walker.step(text[at]);
      result += text[at++];
    }
  }
  return result;
}

QString likeText(const QString& typed) {
  QString text;
  for (qsizetype at = 0; at < typed.size(); ++at) {
    const bool open = typed[at] == u'[' && typed.indexOf(u']', at + 1) < 0;
    text += open ? QStringLiteral("[[]") : QString(typed[at]);
    if (typed[at] == u'\'') text += u'\'';
  }
  return text;
}

QList<QueryColumn> queryColumns(const QString& select) {
  const QString word = QStringLiteral("SELECT");
  const qsizetype begin = findOutside(select, word);
  if (begin < 0) return {};
  const qsizetype end = findOutside(select, QStringLiteral("FROM"), begin);
  const QString list =
      select.sliced(begin + word.size(), (end < 0 ? select.size() : end) - begin - word.size());
  QList<QueryColumn> columns;
  for (const QString& part : splitOutside(list, QStringLiteral(",")))
    if (!part.trimmed().isEmpty()) columns << columnOf(part);
  return columns;
}

}  // namespace tandeko
