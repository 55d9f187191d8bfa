#include "jet/sql/lexer.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

#include "jet/format/error.h"
#include "jet/sql/operators.h"

namespace jet::sql {
namespace {

constexpr const char* kSource = "DAO.Database";

bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }
bool isSpace(char16_t c) { return c == u' ' || (c >= u'\t' && c <= u'\r') || c == 0xA0; }
bool isNameStart(char16_t c) { return (isNameCharacter(c) && !isDigit(c)) || c == u'@'; }
int hexDigit(char16_t c) {
  if (isDigit(c)) return c - u'0';
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  return -1;
}
char16_t upper(char16_t c) { return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c; }

bool isStructuralWord(std::u16string_view text) {
  static constexpr std::u16string_view kWords[] = {
      u"ALL",    u"ALTER",     u"AND",    u"ANY",      u"AS",          u"ASC",    u"BETWEEN", u"BY",
      u"CREATE", u"DELETE",    u"DESC",   u"DISTINCT", u"DISTINCTROW", u"DROP",   u"EQV",     u"EXISTS",
      u"FROM",   u"GROUP",     u"HAVING", u"IMP",      u"IN",          u"INNER",  u"INSERT",  u"INTO",
      u"IS",     u"JOIN",      u"LEFT",   u"LIKE",     u"MOD",         u"NOT",    u"NULL",    u"ON",
      u"OR",     u"ORDER",     u"OUTER",  u"PIVOT",    u"RIGHT",       u"SELECT", u"SET",     u"SOME",
      u"TOP",    u"TRANSFORM", u"UNION",  u"UPDATE",   u"VALUES",      u"WHERE",  u"WITH",    u"XOR"};
  constexpr size_t kLongest = 11;
  if (text.size() < 2 || text.size() > kLongest) return false;
  char16_t word[kLongest];
  std::transform(text.begin(), text.end(), word, upper);
  return std::binary_search(std::begin(kWords), std::end(kWords), std::u16string_view(word, text.size()));
}

class Lexer {
 public:
  explicit Lexer(std::u16string_view sql) : sql_(sql) {}

  std::vector<Token> run() {
    std::vector<Token> tokens;
    tokens.reserve(sql_.size() / 4 + 2);
    do {
      while (at_ < sql_.size() && isSpace(sql_[at_])) ++at_;
      afterOperand_ = !tokens.empty() && endsOperand(tokens.back());
      tokens.push_back(next());
    } while (tokens.back().kind != TokenKind::End);
    return tokens;
  }

 private:
  char16_t peek(size_t ahead = 0) const { return at_ + ahead < sql_.size() ? sql_[at_ + ahead] : u'\0'; }

  static bool endsOperand(const Token& t) {
    return t.kind != TokenKind::Symbol ? t.kind != TokenKind::Name || !t.isStructural
                                       : t.symbol == Symbol::RightParen;
  }

  Token next() {
    Token t;
    t.begin = at_;
    if (at_ == sql_.size()) {
      t.end = at_;
      return t;
    }
    const char16_t c = peek();
    if (c == u'[' || c == u'`')
      bracketed(t, c == u'[' ? u']' : u'`');
    else if (c == u'\'' || c == u'"')
      string(t, c);
    else if (c == u'#')
      date(t);
    else if (isDigit(c) || (c == u'.' && isDigit(peek(1)) && !afterOperand_))
      number(t);
    else if (c == u'&' && (upper(peek(1)) == u'H') && hexDigit(peek(2)) >= 0 && !afterOperand_)
      hex(t);
    else if (isNameStart(c))
      name(t);
    else
      symbol(t);
    t.end = at_;
    return t;
  }

  void name(Token& t) {
    t.kind = TokenKind::Name;
    while (peek() == u'@') ++at_;
    while (isNameCharacter(peek())) ++at_;
    if (peek() == u'$') ++at_;
    t.text = sql_.substr(t.begin, at_ - t.begin);
    t.isStructural = isStructuralWord(t.text);
  }

  void bracketed(Token& t, char16_t close) {
    const size_t end = sql_.find(close, at_ + 1);
    if (end == sql_.npos) fail(u"Syntax error (missing bracket)", t.begin);
    t.kind = TokenKind::Bracketed;
    t.text = sql_.substr(at_ + 1, end - at_ - 1);
    if (t.text.empty()) throw Error(3126, {sql_.substr(at_, 2)}, kSource);
    at_ = end + 1;
  }

  void string(Token& t, char16_t quote) {
    std::u16string text;
    for (size_t from = at_ + 1;;) {
      const size_t end = sql_.find(quote, from);
      if (end == sql_.npos) fail(u"Syntax error in string", t.begin);
      text.append(sql_.substr(from, end - from));
      if (end + 1 >= sql_.size() || sql_[end + 1] != quote) {
        at_ = end + 1;
        break;
      }
      text.push_back(quote);
      from = end + 2;
    }
    t.kind = TokenKind::String;
    t.value = std::move(text);
    t.text = sql_.substr(t.begin, at_ - t.begin);
  }

  void date(Token& t) {
    const size_t end = sql_.find(u'#', at_ + 1);
    if (end == sql_.npos) fail(u"Syntax error in date", t.begin);
    const auto value = parseDateLiteral(sql_.substr(at_ + 1, end - at_ - 1));
    at_ = end + 1;
    if (!value) fail(u"Syntax error in date", t.begin);
    t.kind = TokenKind::Date;
    t.value = *value;
    t.text = sql_.substr(t.begin, at_ - t.begin);
  }

  void number(Token& t) {
    t.kind = TokenKind::Number;
    bool whole = true;
    while (isDigit(peek())) ++at_;
    if (peek() == u'.') {
      whole = false;
      do ++at_;
      while (isDigit(peek()));
    }
    if (upper(peek()) == u'E') {
      const size_t sign = peek(1) == u'+' || peek(1) == u'-' ? 1 : 0;
      if (isDigit(peek(1 + sign))) {
        whole = false;
        at_ += 1 + sign;
        while (isDigit(peek())) ++at_;
      }
    }
    t.text = sql_.substr(t.begin, at_ - t.begin);
    const std::string digits(t.text.begin(), t.text.end());
    const double d = std::strtod(digits.c_str(), nullptr);
    if (whole && d <= 2147483647.0)
      t.value = static_cast<int32_t>(d);
    else
      t.value = d;
  }

  // &HFFFF is -1, as 16-bit constants are; more than four digits are 32 bits.
  void hex(Token& t) {
    t.kind = TokenKind::Number;
    at_ += 2;
    uint64_t bits = 0;
    int digits = 0;
    for (; hexDigit(peek()) >= 0; ++at_, ++digits) bits = bits << 4 | static_cast<unsigned>(hexDigit(peek()));
    if (digits > 8) fail(u"Syntax error in number", t.begin);
    t.value =
        digits <= 4 ? int32_t{static_cast<int16_t>(bits)} : static_cast<int32_t>(static_cast<uint32_t>(bits));
    t.text = sql_.substr(t.begin, at_ - t.begin);
  }

  void symbol(Token& t) {
    static constexpr std::array<std::pair<char16_t, Symbol>, 19> kSingle{{{u'(', Symbol::LeftParen},
                                                                          {u')', Symbol::RightParen},
                                                                          {u',', Symbol::Comma},
                                                                          {u'.', Symbol::Dot},
                                                                          {u'!', Symbol::Bang},
                                                                          {u';', Symbol::Semicolon},
                                                                          {u'+', Symbol::Plus},
                                                                          {u'-', Symbol::Minus},
                                                                          {u'*', Symbol::Star},
                                                                          {u'/', Symbol::Slash},
                                                                          {u'\\', Symbol::Backslash},
                                                                          {u'^', Symbol::Caret},
                                                                          {u'&', Symbol::Ampersand},
                                                                          {u'=', Symbol::Equal},
                                                                          {u'<', Symbol::Less},
                                                                          {u'>', Symbol::Greater},
                                                                          {u'{', Symbol::LeftBrace},
                                                                          {u'}', Symbol::RightBrace},
                                                                          {u'?', Symbol::None}}};
    const char16_t c = peek(), d = peek(1);
    ++at_;
    t.kind = TokenKind::Symbol;
    if (c == u'?') {  // an unnamed parameter
      t.kind = TokenKind::Name;
    } else if (c == u'<' && (d == u'>' || d == u'=')) {
      ++at_;
      t.symbol = d == u'>' ? Symbol::NotEqual : Symbol::LessEqual;
    } else if (c == u'>' && d == u'=') {
      ++at_;
      t.symbol = Symbol::GreaterEqual;
    } else {
      const auto* found =
          std::find_if(kSingle.begin(), kSingle.end(), [c](const auto& e) { return e.first == c; });
      if (found == kSingle.end()) fail(u"Syntax error", t.begin);
      t.symbol = found->second;
    }
    t.text = sql_.substr(t.begin, at_ - t.begin);
  }

  [[noreturn]] void fail(std::u16string_view what, size_t from) const {
    throw Error(3075, {what, sql_.substr(from, 200)}, kSource);
  }

  std::u16string_view sql_;
  size_t at_ = 0;
  bool afterOperand_ = false;  // '&H1' and '.5' begin a number only where an operand may begin
};

}  // namespace

bool isNameCharacter(char16_t c) {
  return isDigit(c) || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_' ||
         (c >= 0x80 && c != 0xA0);
}

bool Token::is(std::u16string_view keyword) const {
  return kind == TokenKind::Name && text.size() == keyword.size() &&
         std::equal(text.begin(), text.end(), keyword.begin(),
                    [](char16_t a, char16_t b) { return upper(a) == b; });
}

std::vector<Token> tokenize(std::u16string_view sql) { return Lexer(sql).run(); }

}  // namespace jet::sql
