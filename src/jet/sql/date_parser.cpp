#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "jet/format/text.h"
#include "jet/sql/dates.h"
#include "jet/sql/locale.h"
#include "jet/sql/operators.h"

namespace jet::sql {

namespace {

enum class Order { DayFirst, MonthFirst };

struct Token {
  enum Kind { Number, Word, Mark } kind = Number;
  std::u16string text;  // folded; a Mark is one character
  int value = 0;        // of a Number
};

bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }
bool isBlank(char16_t c) { return c == u' ' || c == u'\u00A0' || c == u'\t'; }
bool isMark(char16_t c) { return c == u'.' || c == u'-' || c == u'/' || c == u',' || c == u':'; }

// Blanks count only between numbers and words, as one blank mark. nullopt for a number of over four digits.
std::optional<std::vector<Token>> tokenize(std::u16string_view text) {
  std::vector<Token> tokens;
  const std::u16string folded = foldName(text);
  bool blank = false;
  for (size_t i = 0; i < folded.size();) {
    if (isBlank(folded[i])) {
      blank = true;
      ++i;
      continue;
    }
    const size_t start = i;
    Token token;
    if (isDigit(folded[i])) {
      token.kind = Token::Number;
      for (; i < folded.size() && isDigit(folded[i]); ++i) {
        if (i - start == 4) return std::nullopt;
        token.value = token.value * 10 + (folded[i] - u'0');
      }
    } else if (isMark(folded[i])) {
      token.kind = Token::Mark;
      ++i;
    } else {
      token.kind = Token::Word;
      while (i < folded.size() && !isDigit(folded[i]) && !isMark(folded[i]) && !isBlank(folded[i])) ++i;
    }
    token.text = folded.substr(start, i - start);
    if (blank && !tokens.empty() && token.kind != Token::Mark && tokens.back().kind != Token::Mark)
      tokens.push_back({Token::Mark, u" ", 0});
    blank = false;
    tokens.push_back(std::move(token));
  }
  return tokens;
}

// 1..12, or 0 when the word is no month. A point after an abbreviation is a mark of its own.
int monthOf(const std::u16string& word) {
  const Locale::Names12* lists[] = {&kLocale.months, &kLocale.monthsOfDay, &kLocale.shortMonths,
                                    &kEnglishMonths};
  for (const Locale::Names12* names : lists)
    for (int i = 0; i < 12; ++i)
      if (word == (*names)[i]) return i + 1;
  if (word.size() >= 3)
    for (int i = 0; i < 12; ++i)
      if (kEnglishMonths[i].starts_with(word)) return i + 1;
  return 0;
}

class Parser {
 public:
  Parser(std::vector<Token> tokens, Order order) : tokens_(std::move(tokens)), order_(order) {}

  std::optional<Date> parse() {
    while (at_ < tokens_.size())
      if (!(isTime() ? time() : datePart())) return std::nullopt;
    if (!hasTime_ && parts_.empty()) return std::nullopt;
    int day = 0;
    if (!parts_.empty()) {
      const auto number = date();
      if (!number) return std::nullopt;
      day = *number;
    }
    return dateFrom(day, seconds_);
  }

 private:
  struct Part {
    int value;
    size_t digits;  // 0 for a month's name
  };

  bool is(size_t at, Token::Kind kind) const { return at < tokens_.size() && tokens_[at].kind == kind; }
  bool isMarkAt(size_t at, char16_t c) const { return is(at, Token::Mark) && tokens_[at].text[0] == c; }
  bool isHalf(size_t at) const {
    return is(at, Token::Word) && (tokens_[at].text == u"am" || tokens_[at].text == u"pm");
  }

  bool isTime() const {
    return is(at_, Token::Number) &&
           (isMarkAt(at_ + 1, u':') || isHalf(at_ + 1) || (isMarkAt(at_ + 1, u' ') && isHalf(at_ + 2)));
  }

  bool time() {
    if (hasTime_) return false;
    hasTime_ = true;
    int fields[3] = {}, count = 0;
    for (;;) {
      if (!is(at_, Token::Number) || tokens_[at_].text.size() > 2 || count == 3) return false;
      fields[count++] = tokens_[at_++].value;
      if (!isMarkAt(at_, u':')) break;
      ++at_;
    }
    const size_t half = isMarkAt(at_, u' ') ? at_ + 1 : at_;
    if (isHalf(half)) {
      if (fields[0] < 1 || fields[0] > 12) return false;
      fields[0] = fields[0] % 12 + (tokens_[half].text == u"pm" ? 12 : 0);
      at_ = half + 1;
    }
    if (fields[0] > 23 || fields[1] > 59 || fields[2] > 59) return false;
    seconds_ = fields[0] * 3600 + fields[1] * 60 + fields[2];
    return at_ == tokens_.size() || isMarkAt(at_, u' ') ? (++at_, true) : false;
  }

  // One number or month name and the mark behind it.
  bool datePart() {
    const Token& token = tokens_[at_++];
    if (token.kind == Token::Mark || parts_.size() == 3) return false;
    const int month = token.kind == Token::Word ? monthOf(token.text) : 0;
    if (token.kind == Token::Word && (month == 0 || hasName_)) return false;
    hasName_ |= month != 0;
    parts_.push_back(month ? Part{month, 0} : Part{token.value, token.text.size()});
    if (at_ == tokens_.size()) return true;
    if (!is(at_, Token::Mark)) return hasName_;  // 5Jan2001
    const char16_t mark = tokens_[at_++].text[0];
    if (mark == u':') return false;
    if (at_ == tokens_.size()) return mark == u'.' && month != 0;
    marks_ += mark;
    return true;
  }

  std::optional<int> date() const {
    if (hasName_) return namedDate();
    if (parts_.size() != 3 || marks_[0] != marks_[1]) return std::nullopt;
    const Part &a = parts_[0], &b = parts_[1], &c = parts_[2];
    if (a.digits > 2) return c.digits > 2 ? std::nullopt : checked(a, b.value, c.value);
    int day = order_ == Order::DayFirst ? a.value : b.value,
        month = order_ == Order::DayFirst ? b.value : a.value;
    if (month > 12 && day <= 12) std::swap(day, month);
    return checked(c, month, day);
  }

  std::optional<int> namedDate() const {
    std::vector<Part> numbers;
    int month = 0;
    for (const Part& p : parts_) {
      if (p.digits)
        numbers.push_back(p);
      else
        month = p.value;
    }
    if (numbers.size() == 1 && numbers[0].digits > 2) return checked(numbers[0], month, 1);
    if (numbers.size() != 2) return std::nullopt;
    const bool yearFirst = numbers[0].digits > 2 || numbers[0].value > 31;
    return yearFirst ? checked(numbers[0], month, numbers[1].value)
                     : checked(numbers[1], month, numbers[0].value);
  }

  static std::optional<int> checked(const Part& yearPart, int month, int day) {
    const int year = yearPart.digits <= 2 ? fullYear(yearPart.value) : yearPart.value;
    if (year < 100 || month < 1 || month > 12 || day < 1 || day > daysOfMonth(year, month))
      return std::nullopt;
    return dayNumberOf(year, month, day);
  }

  std::vector<Token> tokens_;
  Order order_;
  size_t at_ = 0;
  bool hasTime_ = false, hasName_ = false;
  int seconds_ = 0;
  std::vector<Part> parts_;
  std::u16string marks_;
};

std::optional<Date> parse(std::u16string_view text, Order order) {
  auto tokens = tokenize(text);
  if (!tokens || tokens->empty()) return std::nullopt;
  return Parser(std::move(*tokens), order).parse();
}

}  // namespace

std::optional<Date> parseDate(std::u16string_view text) { return parse(text, Order::DayFirst); }
std::optional<Date> parseDateLiteral(std::u16string_view text) { return parse(text, Order::MonthFirst); }

}  // namespace jet::sql
