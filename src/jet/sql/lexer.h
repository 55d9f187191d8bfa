#pragma once

#include <string_view>
#include <vector>

#include "jet/format/value.h"

// SQL text to tokens.
namespace jet::sql {

enum class TokenKind : uint8_t { End, Name, Bracketed, String, Number, Date, Symbol };

enum class Symbol : uint8_t {
  None,
  LeftParen,
  RightParen,
  Comma,
  Dot,
  Bang,
  Semicolon,
  Plus,
  Minus,
  Star,
  Slash,
  Backslash,
  Caret,
  Ampersand,
  Equal,
  NotEqual,
  Less,
  LessEqual,
  Greater,
  GreaterEqual,
  LeftBrace,
  RightBrace,
};

struct Token {
  TokenKind kind = TokenKind::End;
  Symbol symbol = Symbol::None;
  std::u16string_view text;   // a name without its brackets, else the token as written
  Value value;                // of a string, number or date
  size_t begin = 0, end = 0;  // in the SQL text
  // A bare word that begins or joins clauses and so can be a name only in brackets.
  bool isStructural = false;

  // A bare name that is this keyword (given in upper case).
  bool is(std::u16string_view keyword) const;
  bool is(Symbol s) const { return kind == TokenKind::Symbol && symbol == s; }
  bool isName() const { return kind == TokenKind::Name || kind == TokenKind::Bracketed; }
};

// The last token is of kind End. Throws 3075 for an unfinished string, date or bracket and for a character
// that belongs to no token. The text must outlive the tokens.
std::vector<Token> tokenize(std::u16string_view sql);

// Letters, digits, '_' and everything beyond ASCII.
bool isNameCharacter(char16_t c);

}  // namespace jet::sql
