#pragma once

#include <span>
#include <string_view>

// What the firm is made of: names, goods and phrases.
namespace words {

using Word = std::u16string_view;

extern const std::span<const Word> kMaleNames, kFemaleNames;
// Surnames that do not change with the sex, and those with -i / -a endings (without the ending).
extern const std::span<const Word> kSurnames, kChangingSurnames;
extern const std::span<const Word> kDepartments, kEmployeeGroups, kStates, kItemGroups;
struct Unit {
  Word symbol, name;
};
extern const std::span<const Unit> kUnits;
extern const std::span<const Word> kNotes;       // short ones
extern const std::span<const Word> kSentences;   // long notes are made of these

// A kind of item with its components, which may have components of their own.
struct Good {
  Word name;
  int group;               // into kItemGroups
  Word unit;
  int priceFrom, priceTo;  // złoty
  int icon;
  std::span<const Good> parts;
};

struct RegisterKind {
  Word name;
  char16_t kind;  // 'L' or 'S'
  Word pattern;   // of inventory numbers
  bool monthly, perGroup, showPrice;
  std::span<const Good> goods;
};
extern const std::span<const RegisterKind> kRegisters;

}  // namespace words
