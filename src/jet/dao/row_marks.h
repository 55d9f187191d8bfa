#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "jet/format/layout.h"

namespace jet {

// A set of row slots of a file: 32 bytes for every page that has one.
class RowMarks {
 public:
  explicit RowMarks(PageNumber pageCount) : place_(pageCount) {}

  // False when the slot was in the set already. The page must lie in the file.
  bool add(RowId row) {
    uint32_t& place = place_[row.page];
    if (place == 0) {
      slots_.emplace_back();
      place = static_cast<uint32_t>(slots_.size());
    }
    uint64_t& word = slots_[place - 1][row.slot / 64];
    const uint64_t bit = uint64_t{1} << row.slot % 64;
    const bool isNew = (word & bit) == 0;
    word |= bit;
    return isNew;
  }
  bool contains(RowId row) const {
    const uint32_t place = place_[row.page];
    return place != 0 && (slots_[place - 1][row.slot / 64] >> row.slot % 64 & 1) != 0;
  }

 private:
  std::vector<uint32_t> place_;  // by page: 1 + position in slots_, 0 for none
  std::vector<std::array<uint64_t, 4>> slots_;
};

}  // namespace jet
