#include "jet/catalog/header.h"

#include <algorithm>
#include <cmath>

#include "jet/format/error.h"
#include "jet/format/text.h"

namespace jet {

namespace {

constexpr size_t kMaskStart = 0x18;
constexpr uint8_t kMask[128] = {
    0xB5, 0x6F, 0x03, 0x62, 0x61, 0x08, 0xC2, 0x55, 0xEB, 0xA9, 0x67, 0x72, 0x43, 0x3F, 0x00, 0x9C,
    0x7A, 0x9F, 0x90, 0xFF, 0x80, 0x9A, 0x31, 0xC5, 0x79, 0xBA, 0xED, 0x30, 0xBC, 0xDF, 0xCC, 0x9D,
    0x63, 0xD9, 0xE4, 0xC3, 0x7B, 0x42, 0xFB, 0x8A, 0xBC, 0x4E, 0x86, 0xFB, 0xEC, 0x37, 0x5D, 0x44,
    0x9C, 0xFA, 0xC6, 0x5E, 0x28, 0xE6, 0x13, 0xB6, 0x8A, 0x60, 0x54, 0x94, 0x7B, 0x36, 0xF5, 0x72,
    0xDF, 0xB1, 0x77, 0xF4, 0x13, 0x43, 0xCF, 0xAF, 0xB1, 0x33, 0x34, 0x61, 0x79, 0x5B, 0x92, 0xB5,
    0x7C, 0x2A, 0x05, 0xF1, 0x7C, 0x99, 0x01, 0x1B, 0x98, 0xFD, 0x12, 0x4F, 0x4A, 0x94, 0x6C, 0x3E,
    0x60, 0x26, 0x5F, 0x95, 0xF8, 0xD0, 0x89, 0x24, 0x85, 0x67, 0xC6, 0x1F, 0x27, 0x44, 0xD2, 0xEE,
    0xCF, 0x65, 0xED, 0xFF, 0x07, 0xC7, 0x46, 0xA1, 0x78, 0x16, 0x0C, 0xED, 0xE9, 0x2D, 0x62, 0xD4};

constexpr uint8_t kSignature[20] = {0,   1,   0,   0,   'S', 't', 'a', 'n', 'd', 'a',
                                    'r', 'd', ' ', 'J', 'e', 't', ' ', 'D', 'B', 0};
constexpr uint8_t kNewFileDate[8] = {0x3E, 0x85, 0xD3, 0x3B, 0x3E, 0xAB, 0xE4, 0x40};
constexpr uint32_t kBuild = 9756;

constexpr size_t kFreeMap = 0x18, kSecondMap = 0x1C, kSystemTables = 0x20, kOrder3 = 0x3A, kCodePage = 0x3C,
                 kEncryptionKey = 0x3E, kPassword = 0x42, kBuildNumber = 0x6A, kOrder4 = 0x6E, kCreated = 0x72,
                 kMark = 0x98, kMaskedEnd = 0x98;
constexpr size_t kPasswordBytes4 = 40, kPasswordBytes3 = 20;

void toggleMask(MutableBytes head, Version version) {
  const size_t length = version == Version::Jet3 ? 126 : 128;
  for (size_t i = 0; i < length; ++i) head[kMaskStart + i] ^= kMask[i];
}

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
  toggleMask(head, header.version);
  if (get32(head + kSystemTables) != 2) throw Error::withText(3049, u"The file header is damaged (page 0).");

  const bool jet3 = header.version == Version::Jet3;
  header.lcid = get16(head + (jet3 ? kOrder3 : kOrder4));
  header.codePage = get16(head + kCodePage);
  header.encryptionKey = get32(head + kEncryptionKey);
  header.created = jet3 ? 0 : getDouble(head + kCreated);
  header.password = readPassword(head + kPassword, header);
  return header;
}

void writeHeader(MutableBytes page, FileHeader& header) {
  const FileLayout& layout = FileLayout::of(Version::Jet4);
  header.version = Version::Jet4;
  header.created = getDouble(kNewFileDate);
  std::copy(std::begin(kSignature), std::end(kSignature), page.begin());
  uint8_t* p = page.data();
  p[0x14] = 1;
  put32(p + kFreeMap, RowId{1, 0}.stored());
  put32(p + kSecondMap, RowId{1, 1}.stored());
  for (uint32_t i = 0; i < 4; ++i) put32(p + kSystemTables + 4 * i, 2 + i);
  put16(p + kCodePage, static_cast<uint32_t>(header.codePage));
  put32(p + kEncryptionKey, 0);
  putPassword(p + kPassword, header, header.password);
  put32(p + kBuildNumber, kBuild);
  put16(p + kOrder4, header.lcid);
  std::copy(std::begin(kNewFileDate), std::end(kNewFileDate), p + kCreated);
  toggleMask(page, Version::Jet4);
  put32(p + kMark, 0x654);
  std::copy_n("4.0", 4, p + kMark + 4);
  for (int user = 0; user < 256; ++user) put16(p + layout.commitTable + 2 * user, 0x100);
  put16(p + layout.commitTable, 0x101);
}

void replacePassword(MutableBytes page, const FileHeader& header, std::u16string_view password) {
  toggleMask(page, header.version);
  try {
    putPassword(&page[kPassword], header, password);
  } catch (...) {
    toggleMask(page, header.version);
    throw;
  }
  toggleMask(page, header.version);
}

}  // namespace jet
