#include "jet/pager/journal_format.h"

#include <bit>
#include <cstring>

namespace jet {

namespace {

constexpr char kMagic[] = "TNDKJRNL";
constexpr uint32_t kFormat = 1;

}  // namespace

uint64_t journalChecksum(uint64_t seed, Bytes data) {
  constexpr uint64_t kFactor = 0xBF58476D1CE4E5B9u;
  uint64_t sum = (seed ^ data.size()) * kFactor;
  size_t i = 0;
  for (; i + 8 <= data.size(); i += 8) sum = std::rotl(sum ^ get64(data.data() + i), 29) * kFactor;
  for (; i < data.size(); ++i) sum = std::rotl(sum ^ data[i], 29) * kFactor;
  return sum ^ sum >> 31;
}

std::array<uint8_t, kJournalHeaderSize> JournalHeader::stored() const {
  std::array<uint8_t, kJournalHeaderSize> bytes{};
  std::memcpy(bytes.data(), kMagic, 8);
  put32(&bytes[8], kFormat);
  put32(&bytes[12], pageSize);
  put32(&bytes[16], before.pageCount);
  put32(&bytes[20], records);
  put64(&bytes[24], salt);
  put16(&bytes[32], before.commitWord);
  put16(&bytes[34], before.nextCommitWord);
  put32(&bytes[36], segment);
  put64(&bytes[48], journalChecksum(kFormat, Bytes(bytes).first(48)));
  return bytes;
}

bool JournalHeader::parse(Bytes bytes) {
  if (bytes.size() < kJournalHeaderSize || std::memcmp(bytes.data(), kMagic, 8) != 0) return false;
  if (get32(&bytes[8]) != kFormat || get64(&bytes[48]) != journalChecksum(kFormat, bytes.first(48)))
    return false;
  pageSize = get32(&bytes[12]);
  before = {get32(&bytes[16]), get16(&bytes[32]), get16(&bytes[34])};
  records = get32(&bytes[20]);
  salt = get64(&bytes[24]);
  segment = get32(&bytes[36]);
  return pageSize == 2048 || pageSize == 4096;
}

}  // namespace jet
