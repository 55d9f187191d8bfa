#include "jet/sql/engine.h"
#include "jet/sql/lexer.h"

namespace jet::sql {

namespace {

bool isBlank(std::u16string_view text) { return text.find_first_not_of(u" \t\r\n\u00A0\uFEFF") == text.npos; }

// The character that ends what `open` begins; 0 when it begins nothing.
char16_t closing(char16_t open) {
  switch (open) {
    case u'[':
      return u']';
    case u'\'':
    case u'"':
    case u'#':
    case u'`':
      return open;
    default:
      return 0;
  }
}

}  // namespace

Script splitScript(std::u16string_view text) {
  Script script;
  size_t begin = 0;
  char16_t until = 0;  // inside of a quotation: its end
  bool inParameters = false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (until) {
      if (c == until) until = 0;
      continue;
    }
    until = closing(c);
    if (c != u';') continue;
    const std::u16string_view piece = text.substr(begin, i - begin);
    // The ';' behind PARAMETERS belongs to the statement.
    const size_t start = piece.find_first_not_of(u" \t\r\n");
    Token first;
    if (start != piece.npos) {
      size_t end = start;
      while (end < piece.size() && isNameCharacter(piece[end])) ++end;
      first.kind = TokenKind::Name;
      first.text = piece.substr(start, end - start);
    }
    if (!inParameters && first.is(u"PARAMETERS")) {
      inParameters = true;
      continue;
    }
    inParameters = false;
    if (!isBlank(piece)) script.statements.emplace_back(piece);
    begin = i + 1;
  }
  if (!isBlank(text.substr(begin))) script.rest = text.substr(begin);
  return script;
}

}  // namespace jet::sql
