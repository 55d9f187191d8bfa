#include <algorithm>
#include <charconv>
#include <cstdlib>

#include "jet/sql/format_parts.h"
#include "jet/sql/locale.h"
#include "jet/sql/numbers.h"

namespace jet::sql {

namespace {

// A number's decimal digits: 0.DIGITS times 10^point, no zeros at either end; zero has no digits.
struct Digits {
  bool negative = false;
  std::string digits;
  int point = 0;

  // Rounds to `places` behind the point, half away from zero.
  void round(int places) {
    const int kept = point + places;
    if (kept >= static_cast<int>(digits.size())) return;
    const bool up = kept >= 0 && digits[static_cast<size_t>(kept)] >= '5';
    digits.resize(static_cast<size_t>(std::max(kept, 0)));
    if (up) {
      size_t i = digits.size();
      while (i > 0 && digits[i - 1] == '9') --i;
      digits.resize(i);
      if (i > 0) {
        ++digits[i - 1];
      } else {
        digits = "1";
        ++point;
      }
    }
    while (!digits.empty() && digits.back() == '0') digits.pop_back();
    if (digits.empty()) point = 0;
  }
  // The digit `position` places left of the point (0: ones, -1: tenths).
  char at(int position) const {
    const int i = point - 1 - position;
    return i >= 0 && i < static_cast<int>(digits.size()) ? digits[static_cast<size_t>(i)] : '0';
  }
};

Digits digitsOf(const Value& v) {
  Digits d;
  std::string text;
  if (isExactNumber(v.type())) {
    text = toString(toDecimal(v));
  } else {
    char buffer[64];
    const double number = checkedDouble(toDouble(v));
    const int precision = v.type() == Type::Single ? 6 : 14;
    const auto end =
        std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::scientific, precision).ptr;
    text.assign(buffer, end);
  }
  d.negative = text[0] == '-';
  if (d.negative) text.erase(0, 1);
  int exponent = 0;
  if (const size_t e = text.find('e'); e != std::string::npos) {
    const char* first = text.data() + e + (text[e + 1] == '+' ? 2 : 1);
    std::from_chars(first, text.data() + text.size(), exponent);
    text.resize(e);
  }
  const size_t point = text.find('.');
  d.point = static_cast<int>(std::min(point, text.size())) + exponent;
  if (point != std::string::npos) text.erase(point, 1);
  const size_t leading = std::min(text.find_first_not_of('0'), text.size());
  d.digits = text.substr(leading, text.find_last_not_of('0') + 1 - leading);
  d.point = d.digits.empty() ? 0 : d.point - static_cast<int>(leading);
  return d;
}

struct Token {
  enum Kind { Literal, Digit, Point, Exponent } kind;
  std::u16string text;  // of a Literal; the sign wanted by an Exponent
  int width = 0;        // least digits of an Exponent
};

// One section of a number pattern.
struct Section {
  std::vector<Token> tokens;
  int whole = 0, wholeLeast = 0;        // placeholders before the point; how many of them print zeros
  int fraction = 0, fractionLeast = 0;  // behind it
  int shift = 0;                        // powers of ten: percent signs less commas
  bool grouped = false, hasPoint = false, hasExponent = false;
};

class SectionReader {
 public:
  explicit SectionReader(std::u16string_view pattern) : pattern_(pattern) {}

  Section read() {
    for (size_t at = 0; at < pattern_.size();) {
      std::u16string literal;
      if (readLiteral(pattern_, at, literal))
        s_.tokens.push_back({Token::Literal, literal});
      else
        at = special(at);
    }
    if (!s_.hasPoint) s_.shift -= 3 * commas_;
    return std::move(s_);
  }

 private:
  size_t special(size_t at) {
    const char16_t c = pattern_[at];
    switch (c) {
      case u'0':
      case u'#':
        placeholder(c == u'0');
        return at + 1;
      case u'.':
        if (s_.hasPoint) break;
        s_.hasPoint = true;
        s_.shift -= 3 * commas_;
        s_.tokens.push_back({Token::Point, {}});
        return at + 1;
      case u',':
        if (!s_.hasPoint && s_.whole > 0) ++commas_;
        return at + 1;
      case u'%':
        s_.shift += 2;
        break;
      case u'E':
      case u'e':
        if (at + 1 < pattern_.size() && (pattern_[at + 1] == u'+' || pattern_[at + 1] == u'-'))
          return exponent(at);
        break;
      default:
        break;
    }
    s_.tokens.push_back({Token::Literal, std::u16string(1, c)});
    return at + 1;
  }

  void placeholder(bool zero) {
    s_.tokens.push_back({Token::Digit, {}});
    if (s_.hasPoint) {
      ++s_.fraction;
      if (zero) s_.fractionLeast = s_.fraction;
      return;
    }
    if (commas_ > 0) s_.grouped = true;
    commas_ = 0;
    ++s_.whole;
    if (zero || s_.wholeLeast > 0) ++s_.wholeLeast;
  }

  size_t exponent(size_t at) {
    Token token{Token::Exponent, std::u16string(pattern_.substr(at, 2))};
    at += 2;
    for (; at < pattern_.size() && (pattern_[at] == u'0' || pattern_[at] == u'#'); ++at)
      token.width += pattern_[at] == u'0';
    s_.hasExponent = true;
    s_.tokens.push_back(std::move(token));
    return at;
  }

  std::u16string_view pattern_;
  Section s_;
  int commas_ = 0;
};

class SectionWriter {
 public:
  SectionWriter(const Section& section, Digits digits, const EvalContext& c)
      : s_(section), d_(std::move(digits)), context_(c) {
    if (s_.hasExponent && !d_.digits.empty()) scaleToExponent();
    d_.round(s_.fraction);
    wholeDigits_ = std::max({d_.point, s_.wholeLeast, 0});
    nextWhole_ = std::max(wholeDigits_, s_.whole);
  }

  bool isZero() const { return d_.digits.empty(); }

  std::u16string write() {
    int fraction = 0;
    bool behindPoint = false;
    for (const Token& t : s_.tokens) {
      switch (t.kind) {
        case Token::Literal:
          out_ += t.text;
          break;
        case Token::Point:
          if (s_.whole == 0) wholeTo(0);
          behindPoint = true;
          out_ += context_.decimalSeparator;
          break;
        case Token::Digit:
          if (behindPoint)
            fractionDigit(fraction++);
          else
            wholeTo(std::min(nextWhole_, s_.whole - ++wholeSeen_));
          break;
        case Token::Exponent:
          exponent(t);
          break;
      }
    }
    return std::move(out_);
  }

 private:
  // Leaves as many digits before the point as there are placeholders.
  void scaleToExponent() {
    const int whole = std::max(s_.whole, 1);
    exponent_ = d_.point - whole;
    d_.point = whole;
    d_.round(s_.fraction);
    if (d_.point > whole) {  // 9.99 was rounded to 10
      d_.point = whole;
      ++exponent_;
    }
  }

  // Writes the digits before the point down to `position` (0: the ones).
  void wholeTo(int position) {
    while (nextWhole_ > position) {
      --nextWhole_;
      if (nextWhole_ >= wholeDigits_) continue;
      out_ += static_cast<char16_t>(d_.at(nextWhole_));
      if (s_.grouped && nextWhole_ > 0 && nextWhole_ % 3 == 0) out_ += kLocale.groupSeparator;
    }
  }

  void fractionDigit(int index) {
    const int present = static_cast<int>(d_.digits.size()) - d_.point;
    if (index < std::max(s_.fractionLeast, present)) out_ += static_cast<char16_t>(d_.at(-1 - index));
  }

  void exponent(const Token& t) {
    out_ += t.text[0];
    if (exponent_ < 0 || t.text[1] == u'+') out_ += exponent_ < 0 ? u'-' : u'+';
    std::string digits = std::to_string(std::abs(exponent_));
    if (digits.size() < static_cast<size_t>(t.width))
      digits.insert(0, static_cast<size_t>(t.width) - digits.size(), '0');
    out_ += widen(digits);
  }

  const Section& s_;
  Digits d_;
  const EvalContext& context_;
  int wholeDigits_ = 0;  // printed before the point
  int nextWhole_ = 0;    // positions above this are done
  int wholeSeen_ = 0;    // placeholders before the point met so far
  int exponent_ = 0;
  std::u16string out_;
};

}  // namespace

// Sections: positive and zero; negative; zero. A missing or empty one is the first, which then shows the
// sign.
std::u16string formatNumber(const Value& number, std::u16string_view pattern, const EvalContext& c) {
  const auto sections = formatSections(pattern);
  const Digits digits = digitsOf(number);
  // nullopt when the section's rounding leaves zero.
  const auto write = [&](size_t index, const Digits& d) -> std::optional<std::u16string> {
    const bool isOwn = index < sections.size() && !sections[index].empty();
    const Section section = SectionReader(sections[isOwn ? index : 0]).read();
    Digits shifted = d;
    if (!shifted.digits.empty()) shifted.point += section.shift;
    SectionWriter writer(section, std::move(shifted), c);
    const bool showsDigits = section.whole + section.fraction > 0;
    if (showsDigits && writer.isZero() && !d.digits.empty()) return std::nullopt;
    const bool sign = d.negative && (index == 0 || !isOwn);
    return sign ? u"-" + writer.write() : writer.write();
  };
  if (!digits.digits.empty())
    if (auto text = write(digits.negative && sections.size() > 1 ? 1 : 0, digits)) return *text;
  return *write(sections.size() > 2 ? 2 : 0, {});
}

}  // namespace jet::sql
