#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "jet/format/layout.h"
#include "jet/pager/env.h"

namespace jet {

// Puts index entries into the order of an index - key bytes, then row - with bounded memory: what does not
// fit is sorted in pieces ("runs"), which go to a scratch file and are merged when read.
class KeySorter {
 public:
  // `scratch` is made when needed and removed in the end; `memory` in bytes.
  KeySorter(Environment& env, std::filesystem::path scratch, size_t memory);
  ~KeySorter();
  KeySorter(const KeySorter&) = delete;
  KeySorter& operator=(const KeySorter&) = delete;

  struct Entry {
    std::string key;
    RowId row;
    bool someNull = false;
  };
  // `someNull`: a column of the key is Null, so that it collides with no other.
  void add(Bytes key, RowId row, bool someNull);

  // Of the entries in memory, in bytes.
  size_t used() const { return arena_.size() + items_.size() * sizeof(Item); }
  // Forgets all entries.
  void clear();

  // Ends the adding. Afterwards the entries can be read from the beginning, as often as wanted.
  void startReading();
  bool next(Entry& entry);

 private:
  // A record in memory or in a run: u16 key length (top bit: someNull), u32 row, key.
  struct Item {
    uint64_t prefix;      // the key's first bytes, big-endian
    uint64_t at : 56;     // of the record in arena_
    uint64_t length : 8;  // of a key that `prefix` holds whole, else kLonger
  };
  static constexpr uint64_t kLonger = 9;
  struct Run {
    uint64_t begin, end;  // in the scratch file
  };
  struct Reader;

  bool less(const Item& a, const Item& b) const;
  void sortItems();
  void writeRun();

  Environment& env_;
  std::filesystem::path scratch_;
  size_t memory_;
  std::string arena_;
  std::vector<Item> items_;
  bool inOrder_ = true;   // items_ came sorted
  bool rowsRise_ = true;  // each row in items_ lies behind the one before it
  std::vector<Run> runs_;
  std::unique_ptr<File> file_;
  uint64_t fileEnd_ = 0;
  size_t nextItem_ = 0;
  std::vector<std::unique_ptr<Reader>> readers_;  // a heap, the least record first
};

}  // namespace jet
