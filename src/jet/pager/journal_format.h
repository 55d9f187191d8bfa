#pragma once

#include <array>
#include <cstdint>

#include "jet/format/layout.h"
#include "jet/pager/journal.h"

namespace jet {

// A segment's header has a block of its own, so that a torn write of a later header or record cannot reach
// it.
constexpr uint64_t kJournalBlock = 4096;
constexpr uint32_t kJournalHeaderSize = 56;

constexpr uint64_t alignedToBlock(uint64_t offset) {
  return (offset + kJournalBlock - 1) / kJournalBlock * kJournalBlock;
}

uint64_t journalChecksum(uint64_t seed, Bytes data);

// Offsets: 0 magic, 8 u32 format, 12 u32 page size, 16 u32 pages before, 20 u32 records, 24 u64 salt,
// 32 u16 commit word before, 34 u16 commit word after, 36 u32 segment, 40 u64 0, 48 u64 checksum.
struct JournalHeader {
  uint32_t pageSize = 0, records = 0, segment = 0;
  uint64_t salt = 0;
  Journal::Before before;

  std::array<uint8_t, kJournalHeaderSize> stored() const;
  // False when the bytes are no valid header.
  bool parse(Bytes bytes);
};

}  // namespace jet
