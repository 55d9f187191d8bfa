#pragma once

#include <QChar>
#include <QDate>
#include <QString>
#include <QStringView>
#include <array>

// Inventory numbers: a template of up to three parts joined by a separator ("Rejestr/Numer/Rok[4]"),
// where "Numer" stands for the running number, a 16-bit one.
namespace tandeko {

inline constexpr int kHighestNumber = 32767;

// Throws jet::Error 6: the running number does not fit.
[[noreturn]] void throwNumberOverflow();

// The number text, or "? - Błędna data" (the template needs a date and there is none), "? - Błędny
// rejestr", "? - Błędna grupa" (keys below 1). A leading "Numer" is not padded, a later one has exactly
// four digits.
QString NumFormat(int number, const QString& numberTemplate, const QDate& purchased, int registerKey,
                  int group);

// Reads running numbers back out of numbers made by a template. Throws jet::Error 6 above kHighestNumber.
class NumParser {
 public:
  NumParser(const QString& numberTemplate, QChar separator);
  // 0 when the text does not follow the template.
  int operator()(QStringView text) const;

 private:
  QChar separator_;
  int ordinal_ = -1;  // of the separator that stands before "Numer"; 0: it leads, -1: there is none
};

inline int NumParse(QStringView text, const QString& numberTemplate, QChar separator) {
  return NumParser(numberTemplate, separator)(text);
}

// The first of / \ - : # (in this order) that occurs in the template; a null QChar when none does.
QChar numSeparator(const QString& numberTemplate);

// A template as the register dialog edits it: three parts chosen from kNumParts, a separator, free text.
struct NumTemplateParts {
  std::array<QString, 3> parts{QStringLiteral("/"), QStringLiteral("/"), QStringLiteral("/")};
  QString separator = QStringLiteral("/");
  QString text;
  bool operator==(const NumTemplateParts&) const = default;
};

struct NumPart {
  const char16_t* caption;
  const char16_t* value;
};
inline constexpr NumPart kNumParts[] = {
    {u"Numer", u"/Numer"},    {u"Miesiąc", u"/Miesiąc"}, {u"Rok [2]", u"/Rok[2]"},
    {u"Rok [4]", u"/Rok[4]"}, {u"Nr grupy", u"/Grupa"},  {u"Nr rejestru", u"/Rejestr"},
    {u"(brak)", u"/"},
};
inline constexpr char16_t kNumSeparators[] = u"/\\-:#";

QString NumTemplateBuild(const NumTemplateParts& parts);
// Building from the result gives the same template again.
NumTemplateParts NumTemplateSplit(const QString& numberTemplate);

}  // namespace tandeko
