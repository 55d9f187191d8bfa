#pragma once

#include <string>
#include <string_view>

namespace jet::sql {

// Unit by unit, for every letter whose other case is one unit too.
char16_t lowerUnit(char16_t c);
char16_t upperUnit(char16_t c);
std::u16string lowerText(std::u16string_view text);
std::u16string upperText(std::u16string_view text);

}  // namespace jet::sql
