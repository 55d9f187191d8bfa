#include <gtest/gtest.h>

#include "jet/format/error.h"
#include "jet/format/header_mask.h"
#include "jet/format/text.h"
#include "jet/format/value.h"
#include "jet/hex.h"

using namespace jet;

TEST(Error, FillsPlacesByOrderAndByNumber) {
  EXPECT_EQ(
      Error(3078, {u"Ła|1ta"}).description(),
      u"The database engine cannot find the input table or query 'Ła|1ta'. Make sure it exists and that its "
      u"name is spelled correctly.");
  EXPECT_EQ(Error(3101, {u"Id", u"Osoby"}).description(),
            u"There is no record in table 'Osoby' with key matching field(s) 'Id'.");
  EXPECT_EQ(Error(3189, {u"T", u"PC", u"jan"}).description(),
            u"Table 'T' is exclusively locked by user 'jan' on machine 'PC'.");
  EXPECT_EQ(
      Error(3734, {u"jan", u"PC"}).description(),
      u"The database has been placed in a state by user 'jan' on machine 'PC' that prevents it from being "
      u"opened or locked.");
  EXPECT_EQ(Error(3024).description(), u"Couldn't find file ''.");  // a missing name leaves a gap
  EXPECT_STREQ(
      Error(3078, {u"Ł"}, "DAO.Recordset").what(),
      "3078: The database engine cannot find the input table or query 'Ł'. Make sure it exists and that "
      "its name is spelled correctly.");
  EXPECT_EQ(Error(3601).description(), u"Reserved error (3601); there is no message for this error.");
  EXPECT_TRUE(errorText(4).empty());
  EXPECT_TRUE(errorText(99999).empty());
}

TEST(Error, DamageNamesThePage) {
  const auto damage = [](unsigned page) -> Error {
    try {
      throwDamaged(u"row count", page);
    } catch (const Error& e) {
      return e;
    }
  };
  EXPECT_EQ(damage(17).number(), 3049);
  EXPECT_NE(std::string(damage(17).what()).find("page 17"), std::string::npos);
  EXPECT_EQ(damage(0).number(), 3343);
}

TEST(Value, NamesTheTypeItHolds) {
  EXPECT_EQ(Value().type(), Type::Null);
  EXPECT_EQ(Value(true).type(), Type::Boolean);
  EXPECT_EQ(Value(int16_t{1}).type(), Type::Integer);
  EXPECT_EQ(Value(Currency{1}).type(), Type::Currency);
  EXPECT_EQ(Value(1.5).type(), Type::Double);
  EXPECT_EQ(Value(Date{1}).type(), Type::Date);
  EXPECT_EQ(Value(u"a").type(), Type::Text);
  EXPECT_EQ(Value(Binary{1}).type(), Type::Binary);
  EXPECT_EQ(Value(Guid{}).type(), Type::Guid);
  EXPECT_EQ(Value(Decimal{}).type(), Type::Decimal);
}

// Stored values of real columns with Unicode compression.
TEST(Text, StoresCompressedOnlyWhenNotLonger) {
  const std::pair<const char16_t*, const char*> stored[] = {
      {u"Gdańsk", "FF FE 47 64 61 00 44 01 00 73 6B"},
      {u"3526630", "FF FE 33 35 32 36 36 33 30"},
      {u"Rzeszów", "FF FE 52 7A 65 73 7A F3 77"},
      {u"Wołek", "FF FE 57 6F 00 42 01 00 65 6B"},
      {u"Śląsk", "5A 01 6C 00 05 01 73 00 6B 00"},
      {u"Ołeś", "4F 00 42 01 65 00 5B 01"},
      {u"Stara baśń", "FF FE 53 74 61 72 61 20 62 61 00 5B 01 44 01"},
      {u"Jak malować akwarelą",
       "FF FE 4A 61 6B 20 6D 61 6C 6F 77 61 00 07 01 00 20 61 6B 77 61 72 65 6C 00 05 01"},
      {u"Bąba", "42 00 05 01 62 00 61 00"},
      {u"UK", "55 00 4B 00"},
      {u"", ""},
      {u"abc\u0100", "61 00 62 00 63 00 00 01"},  // a unit whose low byte is 0 has no compressed form
  };
  for (const auto& [text, hex] : stored) {
    std::string out;
    encodeText(text, true, out);
    EXPECT_EQ(toHex(asBytes(out)), hex) << toUtf8(text);
    EXPECT_EQ(decodeText(asBytes(out)), text);
  }
  std::string raw;
  encodeText(u"Gdynia", false, raw);
  EXPECT_EQ(raw.size(), 12u);
}

TEST(Text, DecodesTruncatedForms) {
  EXPECT_EQ(decodeText(asBytes(fromHex("FF FE"))), u"");
  EXPECT_EQ(decodeText(asBytes(fromHex("FF FE 41 00"))), u"A");
  EXPECT_EQ(decodeText(asBytes(fromHex("FF FE 41 00 42"))), u"A");
  EXPECT_EQ(decodeText(asBytes(fromHex("FF FE 00 42 01 00"))), u"ł");
  EXPECT_EQ(decodeText(asBytes(fromHex("41 00 42"))), u"A");
}

TEST(Text, Utf8RoundTrip) {
  const std::u16string text = u"Zażółć \u20AC \U0001F5C4 \xD800 x \xDC01";
  EXPECT_EQ(fromUtf8(toUtf8(text)), text);
  EXPECT_EQ(toUtf8(u"\U0001F5C4"), "\xF0\x9F\x97\x84");
  // malformed: stray continuation, overlong, beyond Unicode, cut short
  EXPECT_EQ(fromUtf8("a\x80z"), u"a\uFFFDz");
  EXPECT_EQ(fromUtf8("\xC0\xAF"), u"\uFFFD\uFFFD");
  EXPECT_EQ(fromUtf8("\xE0\x80\xAF"), u"\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(fromUtf8("\xF4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(fromUtf8("\xC5"), u"\uFFFD");
}

TEST(Text, AnsiCodePages) {
  for (const int page : {1250, 1252}) {
    std::string all;
    for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
    std::string back;
    encodeAnsi(decodeAnsi(asBytes(all), page), page, back);
    EXPECT_EQ(back, all) << page;
  }
  std::string polish;
  encodeAnsi(u"żółw", 1250, polish);
  EXPECT_EQ(toHex(asBytes(polish)), "BF F3 B3 77");
  EXPECT_EQ(decodeAnsi(asBytes(fromHex("80 9F")), 1252), u"€Ÿ");
  try {
    encodeAnsi(u"żółw", 1252, polish);
    ADD_FAILURE();
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), 3421);
  }
}

TEST(Text, NamesIgnoreCase) {
  EXPECT_TRUE(sameName(u"ŻÓŁĆ Employees ΔЖЁ", u"żółć EMPLOYEES δжё"));
  EXPECT_EQ(foldName(u"ŸŹŽĹĄ×ÐŞ"), u"ÿźžĺą×ðş");
  EXPECT_EQ(foldName(u"ÿźžĺą÷ðş"), u"ÿźžĺą÷ðş");
  EXPECT_FALSE(sameName(u"a", u"ab"));
  EXPECT_FALSE(sameName(u"ą", u"a"));
}

TEST(HeaderMask, UnmasksRealHeaders) {
  // page 0 from 0x18 of a new file, Polish order
  std::string page(4096, '\0');
  const std::string masked = fromHex(
      "B5 6E 03 62 60 09 C2 55 E9 A9 67 72 40 3F 00 9C 7E 9F 90 FF 85 9A 31 C5 79 BA ED 30 BC DF CC 9D "
      "63 D9 E4 C3 99 46 FB 8A BC 4E 5E 62 EC 37 85 DD 9C FA 1E C7 28 E6 CB 2F 8A 60 8C 0D 7B 36 2D EB "
      "DF B1 AF 6D 13 43 17 36 B1 33 EC F8 79 5B 4A 2C 7C 2A AF D0 7C 99 14 1F 98 FD 18 95 55 AE 75 05 "
      "83 66 5F 95 F8 D0 89 24 85 67 C6 1F 27 44 D2 EE CF 65 ED FF 07 C7 46 A1 78 16 0C ED E9 2D 62 D4");
  page.replace(kMaskStart, masked.size(), masked);
  EXPECT_EQ(headerField32(asBytes(page), kHeaderGlobalMap), 0x100u);
  EXPECT_EQ(headerField32(asBytes(page), kHeaderSecondMap), 0x101u);
  EXPECT_EQ(headerField32(asBytes(page), kHeaderObjects), 2u);
  EXPECT_EQ(headerField16(asBytes(page), kHeaderCodePage), 1250);
  EXPECT_EQ(headerField32(asBytes(page), kHeaderKey), 0u);
  const MutableBytes bytes(reinterpret_cast<uint8_t*>(page.data()), page.size());
  toggleHeaderMask(bytes, Version::Jet4);
  EXPECT_EQ(toHex(asBytes(page).subspan(0x6E, 20)),
            "15 04 00 00 0A DA 1F 3A 19 3B E3 40 00 00 00 00 00 00 00 00");
  EXPECT_EQ(
      toHex(asBytes(page).subspan(0x78, 32)),
      "E3 40 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00");
}
