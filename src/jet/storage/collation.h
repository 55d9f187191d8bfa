#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace jet {

// A text order: turns text into key bytes whose bytewise order is the order of the texts, and which are
// equal exactly when the order calls the texts equal (case and trailing blanks do not count).
class Collation {
 public:
  static constexpr uint16_t kGeneralLcid = 0x0409;

  // Orders known byte for byte: General (0x0409), Polish (0x0415), and for Jet 3 files General only.
  // Any other lcid gives the General table of the version with isExact() false.
  static const Collation& get(uint16_t lcid, bool jet3 = false);

  uint16_t lcid() const { return lcid_; }
  bool isJet3() const { return jet3_; }
  // Keys are those that the original engine writes: indexes of this order may be changed.
  bool isExact() const { return exact_; }

  // Appends the encoded value without the leading flag byte 7F.
  //   Jet 4: primary codes, 01, weights[, 01 01, kana values, 01, unprintables], 00
  //   Jet 3: primary codes, then 00 or the packed nibbles of the accents
  // At most the first 255 units count; Jet 3 orders take text of code page 1252 characters.
  void appendKey(std::u16string_view text, std::string& key) const;

  // <0, 0, >0; what comparing the keys would give, without building them for plain letters.
  int compare(std::u16string_view a, std::u16string_view b) const;
  bool equal(std::u16string_view a, std::u16string_view b) const { return compare(a, b) == 0; }

  Collation(uint16_t lcid, bool jet3, bool exact);

 private:
  // What a unit contributes: see collation_tables.h.
  struct Unit {
    uint16_t code = 0;
    uint8_t weight = 0, flags = 0;
  };
  static constexpr int kQuickUnits = 0x180;  // Latin, with the Polish letters

  Unit unit(char16_t c) const;
  int primaryBytes(char16_t c, uint8_t (&bytes)[4]) const;
  void appendGeneral(std::u16string_view text, std::string& key) const;
  void appendGeneral97(std::u16string_view text, std::string& key) const;
  int compareSlowly(std::u16string_view a, std::u16string_view b) const;

  uint16_t lcid_;
  bool jet3_, exact_;
  std::array<Unit, kQuickUnits> quick_{};
  std::array<uint16_t, kQuickUnits>
      plain_{};  // code of one neutral element; 0 when the unit is more than that
};

}  // namespace jet
