#pragma once

#include <exception>
#include <initializer_list>
#include <string>
#include <string_view>

namespace jet {

// The engine's one exception. `number` is a DAO error number (3022, 3343, ...), `source` begins with
// "DAO." and names the object that failed, `description` is the sentence for the user.
class Error : public std::exception {
 public:
  // The description is the table's text of `number`, its places |1, |2, ... (or |) filled with `names`
  // in order.
  explicit Error(int number, std::initializer_list<std::u16string_view> names = {},
                 std::string source = "DAO.Database");

  // With a description of its own, for faults that need more detail than the table's text.
  static Error withText(int number, std::u16string description, std::string source = "DAO.Database");

  int number() const { return number_; }
  const std::string& source() const { return source_; }
  const std::u16string& description() const { return description_; }
  // "number: description" in UTF-8.
  const char* what() const noexcept override { return what_.c_str(); }

 private:
  Error() = default;
  int number_ = 0;
  std::string source_;
  std::u16string description_;
  std::string what_;
};

// The engine's text for an error number, places unfilled; empty when the number is unknown.
std::u16string_view errorText(int number);

// Error 3011-style damage found while reading: `what` says what is wrong, `page` where.
// Number 3343 when the file's head is wrong, 3049 otherwise.
[[noreturn]] void throwDamaged(std::u16string_view what, unsigned page);

}  // namespace jet
