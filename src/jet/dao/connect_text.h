#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace jet {

// The text between ";name=" and the next ';' of a connect or locale string; names ignore case.
std::u16string connectPart(std::u16string_view connect, std::u16string_view name);

// The LANGID of a locale string (";LANGID=0x0415;CP=1250;COUNTRY=0"); nullopt when it names none. Throws 3001
// for one that is no number.
std::optional<uint16_t> localeLcid(std::u16string_view locale);

}  // namespace jet
