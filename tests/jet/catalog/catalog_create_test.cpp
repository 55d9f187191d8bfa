#include <gtest/gtest.h>

#include <fstream>

#include "../hex.h"
#include "catalog_fixture.h"
#include "jet/catalog/header.h"
#include "jet/catalog/properties.h"

namespace jet {
namespace {

std::string fileBytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

std::string page(const std::string& file, size_t number) { return file.substr(number * 4096, 4096); }

void expectBytes(const std::string& file, size_t pageNumber, size_t offset, std::string_view hex) {
  const std::string expected = fromHex(hex);
  const std::string actual = page(file, pageNumber).substr(offset, expected.size());
  EXPECT_EQ(toHex(asBytes(actual)), toHex(asBytes(expected)))
      << "page " << pageNumber << " offset " << offset;
}

// Bytes of a file that the original engine created.
TEST(CreateDatabase, LooksLikeTheOriginalsEmptyFile) {
  const ScratchFolder scratch;
  const auto path = scratch / "empty.mdb";
  createDatabase(path);
  const std::string file = fileBytes(path);
  ASSERT_EQ(file.size(), 16u * 4096);
  expectBytes(
      file, 0, 0,
      "00 01 00 00 53 74 61 6E 64 61 72 64 20 4A 65 74 20 44 42 00 01 00 00 00 B5 6E 03 62 60 09 C2 55 "
      "E9 A9 67 72 40 3F 00 9C 7E 9F 90 FF 85 9A 31 C5 79 BA ED 30 BC DF CC 9D 63 D9 E4 C3 9F 46 FB 8A "
      "BC 4E DF 5E EC 37 04 E1 9C FA 9F FB 28 E6 4A 13 8A 60 0D 31 7B 36 AC D7 DF B1 2E 51 13 43 96 0A "
      "B1 33 6D C4 79 5B CB 10 7C 2A 19 D7 7C 99 08 1F 98 FD 2C CA 99 AF 52 95 84 66 5F 95 F8 D0 89 24 "
      "85 67 C6 1F 27 44 D2 EE CF 65 ED FF 07 C7 46 A1 78 16 0C ED E9 2D 62 D4 54 06 00 00 34 2E 30 00");
  expectBytes(file, 1, 0, "01 01 64 0F 01 00 00 00 00 00 00 00 02 00 BB 0F 76 0F");
  expectBytes(file, 1, 0xFBB, "00 00 00 00 00 00 00 FF FF FF FF");
  expectBytes(file, 2, 0, "02 01 DE 0B 00 00 00 00 1A 04 00 00 59 06 00 00 08 00 00 00");
  // MSysACEs complete, up to the unused entries of its index.
  expectBytes(
      file, 3, 0,
      "02 01 A9 0E 00 00 00 00 4F 01 00 00 59 06 00 00 10 00 00 00 00 00 00 00 01 00 00 00 00 00 00 00 "
      "00 00 00 00 00 00 00 00 53 04 00 01 00 04 00 01 00 00 00 01 00 00 00 12 06 00 00 13 06 00 00 00 "
      "00 00 00 08 00 00 00 00 00 00 00 04 59 06 00 00 02 00 01 00 00 00 09 04 00 00 13 00 00 00 00 00 "
      "04 00 04 00 01 59 06 00 00 03 00 01 00 00 00 09 04 00 00 13 00 00 00 00 00 00 00 01 00 04 59 06 "
      "00 00 00 00 00 00 00 00 09 04 00 00 13 00 00 00 00 00 00 00 04 00 09 59 06 00 00 01 00 00 00 00 "
      "00 09 04 00 00 32 00 00 00 00 00 00 00 FE 01 06 00 41 00 43 00 4D 00 18 00 46 00 49 00 6E 00 68 "
      "00 65 00 72 00 69 00 74 00 61 00 62 00 6C 00 65 00 10 00 4F 00 62 00 6A 00 65 00 63 00 74 00 49 "
      "00 64 00 06 00 53 00 49 00 44 00 83 07 00 00 00 00 01 FF FF 00 FF FF 00 FF FF 00");
  expectBytes(file, 3, 0x10D,
              "14 06 00 00 09 00 00 00 00 00 00 00 88 00 00 00 00 00 59 06 00 00 00 00 00 00 00 "
              "00 00 00 00 FF FF FF FF 00 00 00 00 04 04 00 00 00 00 00 10 00 4F 00 62 00 6A 00 65 "
              "00 63 00 74 00 49 00 64 00 FF FF");
  expectBytes(file, 6, 0, "01 01 59 07 00 00 00 00 00 00 00 00 1F 00 BB 0F 76 0F");
  expectBytes(file, 6, 0xFBB, "00 00 00 00 00 00 40 00");
  expectBytes(file, 7, 0,
              "04 01 6F 0D 02 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
              "20 00 00 40 00 00 01 00 10 00 00 08 00 00 04 00 00 80 00 00 02 00 00");
  expectBytes(
      file, 7, 0x1E0,
      "7F 8F 00 00 00 7F 4F 4A 6D 4A 4C 4A 6B 51 6B 01 00 00 00 0E 01 7F 8F 00 00 00 7F 69 51 5E 4A 6D "
      "59 64 62 6B 57 59 66 6B 01 00 00 00 0E 02 7F 8F 00 00 00 7F 6D 4A 4C 5E 51 6B 01 00 00 00 0E 00");
  expectBytes(file, 8, 2, "D8 0D 02 00");
  expectBytes(file, 9, 2, "90 0D 03 00");
  for (size_t root = 10; root <= 13; ++root) expectBytes(file, root, 0, "04 01 20 0E");
  expectBytes(file, 14, 0, "01 01 48 0D 02 00 00 00");
  expectBytes(file, 14, 4096 - 75, "11 00 01 00 00 0F 00 00 00 0F 03 00");
  expectBytes(
      file, 14, 4096 - 75 + 28,
      "00 00 00 80 54 00 61 00 62 00 6C 00 65 00 73 00 65 89 2E 00 2E 00 2E 00 2E 00 2E 00 2E 00 2E 00 "
      "2E 00 2E 00 2E 00 2C 00 20 00 0B 00 FF 00 00");
  expectBytes(file, 15, 0, "01 01 A2 0E 03 00 00 00");
}

TEST(CreateDatabase, HeaderKeepsOrderAndPassword) {
  struct Case {
    uint16_t lcid;
    int codePage;
    std::u16string password;
    const char* storedPassword;
  };
  const Case cases[] = {
      {0x0409, 1252, u"Test",
       "8B 5E 89 37 77 E1 E8 FA 9F FB 28 E6 4A 13 8A 60 0D 31 7B 36 AC D7 DF B1 2E 51 13 43 96 0A"},
      {0x0415, 1250, u"zażółć",
       "A5 5E 8D 37 78 E0 6F FA DD FA 2F E7 4A 13 8A 60 0D 31 7B 36 AC D7 DF B1 2E 51 13 43 96 0A"},
      {0x0409, 1252, u"12345678901234567890",
       "EE 5E DE 37 37 E1 A8 FA AA FB 1E E6 7D 13 B2 60 34 31 4B 36 9D D7 ED B1 1D 51 27 43 A3 0A"},
  };
  const ScratchFolder scratch;
  int number = 0;
  for (const Case& c : cases) {
    const auto path = scratch / (std::to_string(++number) + ".mdb");
    createDatabase(path, c.lcid, c.password);
    expectBytes(fileBytes(path), 0, 0x42, c.storedPassword);
    {
      const OpenDatabase db = openDatabase(path);
      EXPECT_EQ(db->header().lcid, c.lcid);
      EXPECT_EQ(db->header().codePage, c.codePage);
      EXPECT_EQ(db->header().password, c.password);
      EXPECT_EQ(db->objects().size(), 8u);
      EXPECT_TRUE(db->userTables().empty());
      EXPECT_EQ(errorOf([&] { db->setPassword(u"123456789012345678901"); }), 3001);
      db->setPassword(u"Inne");
    }
    EXPECT_EQ(openDatabase(path)->header().password, u"Inne");
  }
  EXPECT_EQ(errorOf([&] { createDatabase(scratch / "other.mdb", 0x0407); }), 3001);
  EXPECT_FALSE(std::filesystem::exists(scratch / "other.mdb"));
}

TEST(Header, Jet3FieldsAreElsewhere) {
  std::string stored = fromHex(
      "00 01 00 00 53 74 61 6E 64 61 72 64 20 4A 65 74 20 44 42 00 00 00 00 00 B5 6E 03 62 60 09 C2 55 "
      "E9 A9 67 72 40 3F 00 9C 7E 9F 90 FF 85 9A 31 C5 79 BA ED 30 BC DF CC 9D 63 D9 ED C7 9F 46 FB 8A "
      "BC 4E D2 9E 9F 43 5D 44 9C FA C6 5E 28 E6 13 B6 8A 60 54 94 7B 36 A7 7F DF B1 77 F4 13 43 CF AF");
  stored.resize(2048);
  FileHeader header = parseHeader(asBytes(stored));
  EXPECT_EQ(header.version, Version::Jet3);
  EXPECT_EQ(header.lcid, 0x0409);
  EXPECT_EQ(header.codePage, 1252);
  EXPECT_EQ(header.password, u"Test");

  std::string changed = stored;
  replacePassword({reinterpret_cast<uint8_t*>(changed.data()), changed.size()}, header, u"w");
  EXPECT_EQ(parseHeader(asBytes(changed)).password, u"w");
  changed[5] = 'x';
  EXPECT_EQ(errorOf([&] { parseHeader(asBytes(changed)); }), 3343);
  stored[0x20] ^= 1;
  EXPECT_EQ(errorOf([&] { parseHeader(asBytes(stored)); }), 3049);
}

TEST(Properties, UnknownEntriesSurvive) {
  const std::string blob = fromHex(
      "4D 52 32 00 2E 00 00 00 80 00 12 00 4B 00 65 00 65 00 70 00 4C 00 6F 00 63 00 61 00 6C 00 "
      "12 00 4F 00 64 00 64 00 54 00 68 00 69 00 6E 00 67 00 21 00 "
      "16 00 00 00 00 00 06 00 00 00 00 00 0A 00 00 0A 00 00 02 00 54 00 "
      "17 00 00 00 01 00 08 00 00 00 02 00 61 00 09 00 01 63 01 00 01 00 07 "
      "08 00 00 00 34 12 AB CD");
  PropertyBlob parsed = parseProperties(asBytes(blob), 1252, 9);
  EXPECT_EQ(parsed.object()->set.text(u"keeplocal"), u"T");
  EXPECT_EQ(encodeProperties(parsed, Version::Jet4, 1252), blob);

  parsed.makeColumn(u"A").set.setText(u"Description", u"ż");
  parsed.makeColumn(u"b").set.setBoolean(u"Required", true);
  const std::string grown = encodeProperties(parsed, Version::Jet4, 1252);
  PropertyBlob again = parseProperties(asBytes(grown), 1252, 9);
  EXPECT_EQ(again.column(u"a")->set.text(u"Description"), u"ż");
  EXPECT_EQ(again.column(u"a")->set.items.size(), 2u);
  EXPECT_TRUE(again.column(u"B")->set.boolean(u"required", false));
  EXPECT_EQ(again.others, parsed.others);

  // A Jet 3 list holds the same in the code page's characters.
  PropertyBlob polish;
  polish.makeColumn(u"Imię").set.setText(u"Description", u"żółw");
  const std::string ansi = encodeProperties(polish, Version::Jet3, 1250);
  EXPECT_EQ(ansi.substr(0, 4), std::string("KKD\0", 4));
  EXPECT_NE(ansi.find("Imi\xEA"), ansi.npos);
  EXPECT_EQ(parseProperties(asBytes(ansi), 1250, 9).column(u"Imię")->set.text(u"Description"), u"żółw");

  for (size_t cut = 1; cut < blob.size(); ++cut) {
    const Bytes head = asBytes(blob).first(cut);
    const int number = errorOf([&] { parseProperties(head, 1252, 9); });
    const bool wholeChunks = cut == 4 || cut == 4 + 46 || cut == 4 + 46 + 22 || cut == 4 + 46 + 22 + 23;
    EXPECT_EQ(number, wholeChunks ? 0 : 3049) << cut;
  }
}

}  // namespace
}  // namespace jet
