#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// What the fuzzers run, and the tests that replay their findings. None of them may do anything but return:
// every fault of the engine shows as a crash, a failed assertion, a long time or much memory.
namespace jet::fuzz {

// The bytes as a database file: everything in it is read, then it is checked, repaired, and the result
// checked, which must be sound.
void readFile(std::string_view bytes);
// Statements on a small database that is always the same; whatever they do, it stays sound.
void runSql(std::string_view utf8);
// Statements on that database after some of its bytes were changed: the text up to the first NUL, behind it
// changes of five bytes: offset (3, little-endian), what to do, value.
void runOnDamaged(std::string_view input);

// Inputs to begin with, by target.
std::vector<std::string> fileSeeds();
std::vector<std::string> sqlSeeds();
std::vector<std::string> damagedSeeds();

// Changes a file in place as damage does: bits, numbers, whole pages, cut ends. Returns the new size, at most
// `limit`.
size_t damageFile(uint8_t* bytes, size_t size, size_t limit, unsigned seed);

}  // namespace jet::fuzz
