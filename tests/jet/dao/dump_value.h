#pragma once

#include <string>

#include "jet/format/value.h"

// A value as the dumps beside the sample files spell it: null, true, 12.5, 2026-11-22T10:00:00, "text",
// {GUID}, 0xHEX (long ones shortened, with their length and CRC-32).
std::string dumpValue(const jet::Value& value);
std::string dumpText(std::u16string_view text);
