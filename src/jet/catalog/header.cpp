#include "jet/catalog/header.h"

#include <algorithm>
#include <cmath>

#include "jet/format/error.h"
#include "jet/format/header_mask.h"
#include "jet/format/text.h"

namespace jet {

namespace {

constexpr uint8_t kSignature[20] = {0,   1,   0,   0,   'S', 't', 'a', 'n', 'd', 'a',
                                    'r', 'd', ' ', 'J', 'e', 't', ' ', 'D', 'B', 0};
constexpr uint8_t kNewFileDate[8] = {0x3E, 0x85, 0xD3, 0x3B, 0x3E, 0xAB, 0xE4, 0x40};
constexpr uint32_t kBuild = 9756;

constexpr size_t kOrder3 = 0x3A, kBuildNumber = 0x6A, kOrder4 = 0x6E, kCreated = 0x72, kMark = 0x98,
                 kMaskedEnd = 0x98;
constexpr size_t kPasswordBytes4 = 40, kPasswordBytes3 = 20;

// The second mask of a Jet 4 password: the creation day as s32, repeated.
void toggleDay(uint8_t* password, double created) {
  uint8_t day[4];
  const bool sane = std::isfinite(created) && std::fabs(created) < 2147483647.0;
  put32(day, static_cast<uint32_t>(sane ? static_cast<int32_t>(created) : 0));
  for (size_t i = 0; i < kPasswordBytes4; ++i) password[i] ^= day[i % 4];
}

std::u16string readPassword(const uint8_t* field, const FileHeader& header) {
  if (header.version == Version::Jet3) {
    const uint8_t* end = std::find(field, field + kPasswordBytes3, uint8_t{0});
    return decodeAnsi({field, end}, header.codePage);
  }
  uint8_t plain[kPasswordBytes4];
  std::copy_n(field, kPasswordBytes4, plain);
  toggleDay(plain, header.created);
  std::u16string password;
  for (size_t i = 0; i < kPasswordBytes4 && get16(plain + i) != 0; i += 2) password += get16(plain + i);
  return password;
}

// `field` is unmasked; the password is put there with its own mask.
void putPassword(uint8_t* field, const FileHeader& header, std::u16string_view password) {
  if (password.size() > kMaxPasswordLength) throw Error(3001);
  if (header.version == Version::Jet3) {
    std::string ansi;
    encodeAnsi(password, header.codePage, ansi);
    std::fill_n(field, kPasswordBytes3, uint8_t{0});
    std::copy_n(asBytes(ansi).begin(), std::min(ansi.size(), kPasswordBytes3), field);
    return;
  }
  std::fill_n(field, kPasswordBytes4, uint8_t{0});
  for (size_t i = 0; i < password.size(); ++i) put16(field + 2 * i, password[i]);
  toggleDay(field, header.created);
}

}  // namespace

FileHeader parseHeader(Bytes page) {
  if (page.size() < 2048 || !std::equal(std::begin(kSignature), std::end(kSignature), page.begin()) ||
      get32(&page[0x14]) > 1) {
    throwDamaged(u"the file does not begin like a database", 0);
  }
  FileHeader header;
  header.version = page[0x14] == 0 ? Version::Jet3 : Version::Jet4;
  uint8_t head[kMaskedEnd];
  std::copy_n(page.begin(), kMaskedEnd, head);
  toggleHeaderMask(head, header.version);
  if (get32(head + kHeaderObjects) != 2) throw Error::withText(3049, u"The file header is damaged (page 0).");

  const bool jet3 = header.version == Version::Jet3;
  header.lcid = get16(head + (jet3 ? kOrder3 : kOrder4));
  header.codePage = get16(head + kHeaderCodePage);
  header.encryptionKey = get32(head + kHeaderKey);
  header.created = jet3 ? 0 : getDouble(head + kCreated);
  header.password = readPassword(head + kHeaderPassword, header);
  return header;
}

void writeHeader(MutableBytes page, FileHeader& header) {
  const FileLayout& layout = FileLayout::of(Version::Jet4);
  header.version = Version::Jet4;
  if (header.created == 0) header.created = getDouble(kNewFileDate);
  std::copy(std::begin(kSignature), std::end(kSignature), page.begin());
  uint8_t* p = page.data();
  p[0x14] = 1;
  put32(p + kHeaderGlobalMap, RowId{1, 0}.stored());
  put32(p + kHeaderSecondMap, RowId{1, 1}.stored());
  for (uint32_t i = 0; i < 4; ++i) put32(p + kHeaderObjects + 4 * i, 2 + i);
  put16(p + kHeaderCodePage, static_cast<uint32_t>(header.codePage));
  put32(p + kHeaderKey, 0);
  putPassword(p + kHeaderPassword, header, header.password);
  put32(p + kBuildNumber, kBuild);
  put16(p + kOrder4, header.lcid);
  putDouble(p + kCreated, header.created);
  toggleHeaderMask(page, Version::Jet4);
  put32(p + kMark, 0x654);
  std::copy_n("4.0", 4, p + kMark + 4);
  for (int user = 0; user < 256; ++user) put16(p + layout.commitTable + 2 * user, 0x100);
  put16(p + layout.commitTable, 0x101);
}

void replacePassword(MutableBytes page, const FileHeader& header, std::u16string_view password) {
  toggleHeaderMask(page, header.version);
  try {
    putPassword(&page[kHeaderPassword], header, password);
  } catch (...) {
    toggleHeaderMask(page, header.version);
    throw;
  }
  toggleHeaderMask(page, header.version);
}

}  // namespace jet
