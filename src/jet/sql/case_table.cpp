#include "jet/sql/case_table.h"

#include <algorithm>

#include "jet/format/text.h"

namespace jet::sql {

namespace {

// Both directions as flat tables, built from the folding of names.
struct CaseTable {
  std::u16string lower, upper;
  CaseTable() {
    upper.resize(0x10000);
    for (size_t c = 0; c < upper.size(); ++c) upper[c] = static_cast<char16_t>(c);
    lower = foldName(upper);
    for (size_t c = upper.size(); c-- > 0;)
      if (lower[c] != c) upper[lower[c]] = static_cast<char16_t>(c);
  }
};

const CaseTable& table() {
  static const CaseTable instance;
  return instance;
}

}  // namespace

char16_t lowerUnit(char16_t c) {
  if (c < 0x80) return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c;
  return table().lower[c];
}

char16_t upperUnit(char16_t c) { return table().upper[c]; }

std::u16string lowerText(std::u16string_view text) {
  std::u16string out(text);
  std::transform(out.begin(), out.end(), out.begin(), lowerUnit);
  return out;
}

std::u16string upperText(std::u16string_view text) {
  std::u16string out(text);
  std::transform(out.begin(), out.end(), out.begin(), upperUnit);
  return out;
}

}  // namespace jet::sql
