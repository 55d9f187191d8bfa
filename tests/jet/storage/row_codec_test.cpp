#include "jet/storage/row_codec.h"

#include <gtest/gtest.h>

#include <random>

#include "storage_fixture.h"

using namespace jet;

namespace {

constexpr ColumnLayout fixedColumn(Type type, uint16_t number, uint16_t offset, uint16_t length) {
  ColumnLayout c;
  c.type = type, c.number = number, c.fixedOffset = offset, c.length = length;
  return c;
}

constexpr ColumnLayout variableColumn(Type type, uint16_t number, uint16_t index, uint16_t length) {
  ColumnLayout c;
  c.type = type, c.fixed = false, c.compressed = true, c.number = number, c.variableIndex = index,
  c.length = length;
  return c;
}

RowLayout productsLayout(Version version) {
  RowLayout layout;
  layout.file = &FileLayout::of(version);
  layout.nextColumn = 10, layout.variableColumns = 2;
  layout.columns = {
      fixedColumn(Type::Long, 0, 0, 4),     variableColumn(Type::Text, 1, 0, 80),
      fixedColumn(Type::Long, 2, 4, 4),     fixedColumn(Type::Long, 3, 8, 4),
      variableColumn(Type::Text, 4, 1, 40), fixedColumn(Type::Currency, 5, 12, 8),
      fixedColumn(Type::Integer, 6, 20, 2), fixedColumn(Type::Integer, 7, 22, 2),
      fixedColumn(Type::Integer, 8, 24, 2), fixedColumn(Type::Boolean, 9, 0, 1),
  };
  return layout;
}

std::vector<Value> decodeAll(const RowLayout& layout, const std::string& row) {
  const RowReader reader(layout, asBytes(row), 9);
  std::vector<Value> values;
  for (size_t i = 0; i < layout.columns.size(); ++i) values.push_back(reader.value(static_cast<int>(i)));
  return values;
}

Guid someGuid() {
  Guid guid;
  for (size_t i = 0; i < 16; ++i) guid.bytes[i] = static_cast<uint8_t>(i * 17);
  return guid;
}

}  // namespace

// Rows of the same table in files of both versions.
TEST(RowCodec, ReadsAndWritesRealRows) {
  const std::vector<Value> chai = {
      int32_t{1},       u"Chai",     int32_t{1}, int32_t{1},  u"10 boxes x 20 bags",
      Currency{180000}, int16_t{39}, int16_t{0}, int16_t{10}, false};
  const char* const jet4 =
      "0A 00 01 00 00 00 01 00 00 00 01 00 00 00 20 BF 02 00 00 00 00 00 27 00 00 00 0A 00 FF FE 43 68 61 69 "
      "FF FE "
      "31 30 20 62 6F 78 65 73 20 78 20 32 30 20 62 61 67 73 36 00 22 00 1C 00 02 00 FF 01";
  const char* const jet3 =
      "0A 01 00 00 00 01 00 00 00 01 00 00 00 20 BF 02 00 00 00 00 00 27 00 00 00 0A 00 43 68 61 69 31 30 20 "
      "62 6F "
      "78 65 73 20 78 20 32 30 20 62 61 67 73 31 1F 1B 02 FF 01";
  const std::pair<Version, const char*> rows[] = {{Version::Jet4, jet4}, {Version::Jet3, jet3}};
  for (const auto& [version, hex] : rows) {
    const RowLayout layout = productsLayout(version);
    EXPECT_EQ(decodeAll(layout, fromHex(hex)), chai);
    EXPECT_EQ(toHex(asBytes(encodeRow(layout, chai, {}))), hex);
  }
}

TEST(RowCodec, ReadsRealLongValueFields) {
  RowLayout layout;
  layout.file = &FileLayout::of(Version::Jet4);
  layout.nextColumn = 4, layout.variableColumns = 3;
  layout.columns = {fixedColumn(Type::Long, 0, 0, 4), variableColumn(Type::Text, 1, 0, 30),
                    variableColumn(Type::Memo, 2, 1, 0), variableColumn(Type::Ole, 3, 2, 0)};
  const std::string row = fromHex(
      "04 00 01 00 00 00 FF FE 42 65 76 65 72 61 67 65 73 2D 00 00 40 00 1D 00 00 00 00 00 00 FA 29 00 00 00 "
      "1A 00 "
      "00 45 9A 69 23 29 00 1D 00 11 00 06 00 03 00 0F");
  const RowReader reader(layout, asBytes(row), 30);
  EXPECT_EQ(reader.value(1), Value(u"Beverages"));
  const LongValueRef memo = reader.longValue(2).value();
  EXPECT_EQ(memo.kind, LongValueRef::Kind::SingleRow);
  EXPECT_EQ(memo.length, 45u);
  EXPECT_EQ(memo.row, (RowId{0x1D, 0}));
  const LongValueRef picture = reader.longValue(3).value();
  EXPECT_EQ(picture.kind, LongValueRef::Kind::Chain);
  EXPECT_EQ(picture.length, 10746u);
  EXPECT_EQ(picture.row, (RowId{0x1A, 0}));
  EXPECT_EQ(picture.stamp, 0x23699A45u);
  EXPECT_EQ(errorOf([&] { reader.value(3); }), 3001);

  const std::vector<Value> values = {int32_t{1}, u"Beverages", u"x", Binary{}};
  const std::vector<LongValueField> fields = {"", "", row.substr(17, 12), row.substr(29, 12)};
  EXPECT_EQ(toHex(asBytes(encodeRow(layout, values, fields))), toHex(asBytes(row)));
}

// A system table of a Jet 3 file: 290 bytes, 22 variable columns, one jump byte that no offset needs.
TEST(RowCodec, ReadsARealRowWithAnIdleJump) {
  const std::string row = fromHex(
      "4A 01 00 00 00 00 00 00 00 02 00 00 00 AB AA AA AA EA EB E2 40 AB AA AA AA F6 EB E2 40 03 00 E0 01 00 "
      "00 60 09 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 AB AA AA AA EA EB E2 40 00 00 07 00 AB "
      "AA AA AA EA EB E2 40 94 3E E9 93 FD EB E2 40 94 3E E9 93 FD EB E2 40 01 00 AB AA AA AA EA EB E2 40 00 "
      "09 04 E4 04 03 08 00 05 00 01 00 01 00 14 00 7F 9B 62 94 FD EB E2 40 01 00 00 00 0A 09 00 04 00 09 00 "
      "01 00 09 04 E4 04 02 47 7B 50 72 6F 6A 65 63 74 31 5C 01 00 40 00 31 00 00 00 00 00 00 01 00 00 80 00 "
      "00 00 00 00 00 00 00 54 A3 08 00 00 80 00 00 00 00 00 00 00 00 53 74 61 6E 64 61 72 64 08 00 00 80 00 "
      "00 00 00 00 00 00 00 50 72 6F 6A 65 63 74 31 5A 3A 5C 74 65 6D 70 5C 50 72 6F 6A 65 63 74 31 2E 6D 70 "
      "64 30 30 30 30 BA 59 00 00 00 25 00 00 00 00 00 00 FF F3 F3 F3 F2 F1 F0 EF DB DB DB DB C7 C7 B3 B3 B3 "
      "B3 B2 A5 A5 99 91 FF 16 EF FF 7F A9 C9 EF 38 80 0F 02");
  ASSERT_EQ(row.size(), 290u);
  RowLayout layout;
  layout.file = &FileLayout::of(Version::Jet3);
  layout.nextColumn = 74, layout.variableColumns = 22;
  for (uint16_t v = 0; v < 22; ++v) layout.columns.push_back(variableColumn(Type::Binary, 0, v, 255));
  const RowReader reader(layout, asBytes(row), 1);
  EXPECT_EQ(asChars(reader.stored(0)), "Project1");
  EXPECT_EQ(asChars(reader.stored(1)).size(), 12u);
  EXPECT_EQ(asChars(reader.stored(14)), "Z:\\temp\\Project1.mpd");
  EXPECT_EQ(reader.stored(21).size(), 12u);
  EXPECT_EQ(asChars(reader.stored(18)), "0");
}

// Every type, fixed and variable, with values at their limits and Nulls.
TEST(RowCodec, RoundTripsEveryType) {
  Decimal decimal;
  decimal.negative = true, decimal.scale = 4, decimal.magnitude = {1, 2, 3, 0xFFFFFFFF};
  const std::tuple<Type, uint16_t, Value> kinds[] = {
      {Type::Boolean, 1, true},
      {Type::Byte, 1, uint8_t{255}},
      {Type::Integer, 2, int16_t{-32768}},
      {Type::Long, 4, int32_t{-2147483647 - 1}},
      {Type::Currency, 8, Currency{-9223372036854775807 - 1}},
      {Type::Single, 4, -1.5e38f},
      {Type::Double, 8, 1e-300},
      {Type::Date, 8, Date{-1.25}},
      {Type::Binary, 40, Binary{0, 255, 1}},
      {Type::Text, 100, u"Zażółć gęślą jaźń"},
      {Type::Guid, 16, someGuid()},
      {Type::Decimal, 17, decimal},
  };
  for (const Version version : {Version::Jet3, Version::Jet4}) {
    RowLayout layout;
    layout.file = &FileLayout::of(version);
    layout.codePage = 1250;
    std::vector<Value> values;
    uint16_t number = 0, offset = 0, index = 0;
    for (const bool fixed : {true, false}) {
      for (const auto& [type, length, value] : kinds) {
        ColumnLayout c =
            fixed ? fixedColumn(type, number, offset, length) : variableColumn(type, number, index, length);
        if (type == Type::Boolean) {
          c.fixed = true;
        } else if (fixed) {
          if (type == Type::Text || type == Type::Binary) continue;  // padded: below
          offset += length;
        } else {
          ++index;
        }
        c.scale = 4;
        ++number;
        layout.columns.push_back(c);
        values.push_back(value);
      }
    }
    layout.nextColumn = number, layout.variableColumns = index;
    EXPECT_EQ(decodeAll(layout, encodeRow(layout, values, {})), values);
    // each column Null in turn
    for (size_t i = 0; i < values.size(); ++i) {
      std::vector<Value> some = values;
      some[i] = layout.columns[i].type == Type::Boolean ? Value(false) : Value();
      EXPECT_EQ(decodeAll(layout, encodeRow(layout, some, {})), some) << i;
    }
  }
}

TEST(RowCodec, EmptyTextIsNotNullAndFixedTextIsPadded) {
  for (const Version version : {Version::Jet3, Version::Jet4}) {
    RowLayout layout;
    layout.file = &FileLayout::of(version);
    layout.nextColumn = 3, layout.variableColumns = 2;
    layout.columns = {variableColumn(Type::Text, 0, 0, 20), variableColumn(Type::Text, 1, 1, 20),
                      fixedColumn(Type::Text, 2, 0, version == Version::Jet3 ? 6 : 12)};
    const std::vector<Value> values = {u"", Value(), u"abc"};
    const std::vector<Value> read = {u"", Value(), u"abc   "};
    EXPECT_EQ(decodeAll(layout, encodeRow(layout, values, {})), read);
    EXPECT_EQ(errorOf([&] { encodeRow(layout, std::vector<Value>{u"", u"", u"abcdefg"}, {}); }), 3163);
    EXPECT_EQ(errorOf([&] {
                encodeRow(layout, std::vector<Value>{std::u16string(21, u'a'), u"", u""}, {});
              }),
              3163);
    EXPECT_EQ(errorOf([&] { encodeRow(layout, std::vector<Value>{int32_t{1}, u"", u""}, {}); }), 3421);
  }
}

// Rows written before columns were added, and while the table had no variable column.
TEST(RowCodec, OldRowsLackLaterColumns) {
  for (const Version version : {Version::Jet3, Version::Jet4}) {
    RowLayout old;
    old.file = &FileLayout::of(version);
    old.nextColumn = 2;
    old.columns = {fixedColumn(Type::Long, 0, 0, 4), fixedColumn(Type::Boolean, 1, 0, 1)};
    const std::string first = encodeRow(old, std::vector<Value>{int32_t{7}, true}, {});
    old.nextColumn = 3, old.variableColumns = 1;
    old.columns.push_back(variableColumn(Type::Text, 2, 0, 100));
    const std::string second = encodeRow(old, std::vector<Value>{int32_t{7}, true, u"abcd"}, {});

    RowLayout now = old;  // column 1 and variable column 1 were deleted since
    now.nextColumn = 6, now.variableColumns = 3;
    now.columns = {fixedColumn(Type::Long, 0, 0, 4), variableColumn(Type::Text, 2, 0, 100),
                   variableColumn(Type::Text, 4, 2, 100), fixedColumn(Type::Boolean, 5, 0, 1)};
    EXPECT_EQ(decodeAll(now, first), (std::vector<Value>{int32_t{7}, Value(), Value(), false}));
    EXPECT_EQ(decodeAll(now, second), (std::vector<Value>{int32_t{7}, u"abcd", Value(), false}));
    const std::vector<Value> values = {int32_t{8}, u"x", u"yz", true};
    EXPECT_EQ(decodeAll(now, encodeRow(now, values, {})), values);
  }
}

// Jet 3 keeps one byte of each offset: lengths around the multiples of 256, with the steps in every place.
TEST(RowCodec, Jet3JumpTables) {
  std::mt19937 random(3);
  for (const size_t columns : {1u, 3u, 20u, 255u}) {
    RowLayout layout;
    layout.file = &FileLayout::of(Version::Jet3);
    layout.nextColumn = layout.variableColumns = static_cast<uint16_t>(columns);
    for (uint16_t v = 0; v < columns; ++v) layout.columns.push_back(variableColumn(Type::Binary, v, v, 2000));
    for (size_t total = columns == 255 ? 1 : 200; total < 1700;
         total += total % 256 < 8 || total % 256 > 210 ? 1 : 17) {
      std::vector<Value> values(columns, Value(Binary()));
      for (size_t left = total; left > 0;) {
        Binary bytes = values[random() % columns].get<Binary>();
        const size_t part = random() % 3 ? std::min<size_t>(left, 1 + random() % 40) : left;
        Value& value = values[random() % columns];
        bytes = value.get<Binary>();
        bytes.insert(bytes.end(), part, static_cast<uint8_t>(left));
        value = bytes;
        left -= part;
      }
      const std::string row = encodeRow(layout, values, {});
      ASSERT_EQ(decodeAll(layout, row), values) << columns << " columns, " << total << " bytes";
    }
  }
}

TEST(RowCodec, LimitsRowLength) {
  for (const Version version : {Version::Jet3, Version::Jet4}) {
    RowLayout layout;
    layout.file = &FileLayout::of(version);
    layout.nextColumn = layout.variableColumns = 1;
    layout.columns = {variableColumn(Type::Binary, 0, 0, 5000)};
    const size_t most = version == Version::Jet3 ? 2012 - 5 - 7 : 4060 - 9;
    EXPECT_EQ(encodeRow(layout, std::vector<Value>{Binary(most)}, {}).size(), layout.file->maxRow);
    EXPECT_EQ(errorOf([&] { encodeRow(layout, std::vector<Value>{Binary(most + 1)}, {}); }), 3047);
  }
}

// Whatever the bytes, reading ends in a value or in Error 3049.
TEST(RowCodec, DamagedRowsThrow) {
  std::mt19937 random(11);
  int refused = 0;
  for (const Version version : {Version::Jet3, Version::Jet4}) {
    RowLayout layout = productsLayout(version);
    layout.nextColumn = 11, layout.variableColumns = 3;
    layout.columns.push_back(variableColumn(Type::Memo, 10, 2, 0));
    std::vector<Value> values = {
        int32_t{1}, u"Chai",     int32_t{1}, int32_t{1}, u"10 boxes x 20 bags", Currency{180000}, int16_t{39},
        int16_t{0}, int16_t{10}, true,       u"memo"};
    std::vector<LongValueField> fields(11);
    fields[10] = fromHex("04 00 00 80 00 00 00 00 00 00 00 00 6D 65 6D 6F");
    const std::string sound = encodeRow(layout, values, fields);
    for (int round = 0; round < 20000; ++round) {
      std::string row = sound.substr(0, random() % 4 ? sound.size() : random() % sound.size());
      for (int flips = 0; flips < 3 && !row.empty(); ++flips)
        row[random() % row.size()] = static_cast<char>(random());
      const std::string exact(row.data(), row.size());
      const int error = errorOf([&] { decodeAll(layout, exact); });
      EXPECT_TRUE(error == 0 || error == 3049 || error == 3001) << error;
      refused += error == 3049;
    }
  }
  EXPECT_GT(refused, 1000);
}
