#include "jet/storage/index_key.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <map>
#include <sstream>

#include "jet/format/bytes.h"
#include "jet/format/text.h"
#include "jet/hex.h"

namespace jet {
namespace {

std::string hex(std::string_view bytes) {
  std::string text = toHex(asBytes(bytes));
  std::erase(text, ' ');
  return text;
}

std::u16string fromJson(std::string_view json) {
  std::u16string text;
  const std::u16string in = fromUtf8(json.substr(1, json.size() - 2));
  for (size_t i = 0; i < in.size(); ++i) {
    if (in[i] != u'\\') {
      text += in[i];
      continue;
    }
    switch (in[++i]) {
      case u'u':
        text += static_cast<char16_t>(std::stoi(toUtf8(in.substr(i + 1, 4)), nullptr, 16));
        i += 4;
        break;
      case u'n':
        text += u'\n';
        break;
      case u'r':
        text += u'\r';
        break;
      case u't':
        text += u'\t';
        break;
      case u'b':
        text += u'\b';
        break;
      case u'f':
        text += u'\f';
        break;
      default:
        text += in[i];
    }
  }
  return text;
}

std::vector<std::string> split(const std::string& line, char separator) {
  std::vector<std::string> parts(1);
  for (const char c : line) c == separator ? void(parts.emplace_back()) : parts.back().push_back(c);
  return parts;
}

Type typeOf(const std::string& name) {
  static const std::map<std::string, Type> types{
      {"text", Type::Text},     {"byte", Type::Byte},         {"int", Type::Integer},   {"long", Type::Long},
      {"double", Type::Double}, {"currency", Type::Currency}, {"single", Type::Single}, {"date", Type::Date},
      {"guid", Type::Guid},     {"bool", Type::Boolean},      {"binary", Type::Binary}};
  return types.at(name);
}

Value parse(Type type, const std::string& text, bool jet3) {
  if (text == "-") return {};
  if (type == Type::Boolean) return Value(text == "true");
  if (type == Type::Text) return Value(jet3 ? decodeAnsi(asBytes(fromHex(text)), 1252) : fromJson(text));
  const std::string bytes = fromHex(text);
  const uint8_t* p = asBytes(bytes).data();
  switch (type) {
    case Type::Byte:
      return Value(p[0]);
    case Type::Integer:
      return Value(static_cast<int16_t>(get16(p)));
    case Type::Long:
      return Value(static_cast<int32_t>(get32(p)));
    case Type::Currency:
      return Value(Currency{static_cast<int64_t>(get64(p))});
    case Type::Single:
      return Value(getSingle(p));
    case Type::Double:
      return Value(getDouble(p));
    case Type::Date:
      return Value(Date{getDouble(p)});
    case Type::Guid: {
      Guid guid;
      std::copy_n(p, 16, guid.bytes.begin());
      return Value(guid);
    }
    default:
      return Value(Binary(p, p + bytes.size()));
  }
}

// Columns of a composite are separated by |, which also occurs inside texts; no vector has more than one
// text.
std::vector<std::string> splitValues(const std::string& text, const std::vector<std::string>& types) {
  std::vector<std::string> parts = split(text, '|');
  while (parts.size() > types.size()) {
    const size_t at = static_cast<size_t>(std::find(types.begin(), types.end(), "text") - types.begin());
    parts[at] += "|" + parts[at + 1];
    parts.erase(parts.begin() + static_cast<std::ptrdiff_t>(at) + 1);
  }
  return parts;
}

TEST(IndexKey, KeysOfRealIndexPages) {
  std::ifstream file(TANDEKO_TEST_DATA "/vectors-keys.tsv");
  std::string line;
  int count = 0;
  while (std::getline(file, line)) {
    if (line.empty() || line[0] == '#') continue;
    const std::vector<std::string> fields = split(line, '\t');
    const bool jet3 = fields[0] == "J3";
    const uint16_t lcid = fields[1] == "-" ? 0 : static_cast<uint16_t>(std::stoi(fields[1], nullptr, 16));
    const std::string name = fields[2].substr(fields[2].rfind(' ') + 1);
    const std::vector<std::string> types = split(name, '+');
    const std::vector<std::string> parts =
        types.size() > 1 ? splitValues(fields[4], types) : std::vector{fields[4]};
    std::vector<KeyColumn> columns;
    std::vector<Value> values;
    for (size_t i = 0; i < types.size(); ++i) {
      columns.push_back({typeOf(types[i]), fields[3][i] == 'D', &Collation::get(lcid, jet3)});
      values.push_back(parse(columns[i].type, parts[i], jet3));
    }
    EXPECT_EQ(hex(encodeKey(columns, values)), fields[5]) << line;
    ++count;
  }
  EXPECT_GT(count, 1900);
}

Decimal decimal(int64_t magnitude, uint8_t scale = 2) {
  Decimal d;
  d.negative = magnitude < 0;
  const uint64_t m = static_cast<uint64_t>(d.negative ? -magnitude : magnitude);
  d.magnitude = {0, 0, static_cast<uint32_t>(m >> 32), static_cast<uint32_t>(m)};
  d.scale = scale;
  return d;
}

Binary bytesOf(std::string_view text) { return Binary(text.begin(), text.end()); }

// Ascending values of every type: the keys must ascend, and descend for a descending column.
TEST(IndexKey, BytewiseOrderIsTheOrderOfValues) {
  const Collation& polish = Collation::get(0x0415);
  struct Case {
    KeyColumn column;
    std::vector<Value> ascending;
  };
  const std::vector<Case> cases{
      {{Type::Boolean}, {Value(true), Value(false)}},
      {{Type::Byte},
       {Value(), Value(uint8_t{0}), Value(uint8_t{127}), Value(uint8_t{128}), Value(uint8_t{255})}},
      {{Type::Integer},
       {Value(), Value(int16_t{-32768}), Value(int16_t{-1}), Value(int16_t{0}), Value(int16_t{32767})}},
      {{Type::Long},
       {Value(), Value(std::numeric_limits<int32_t>::min()), Value(-256), Value(-1), Value(0), Value(255),
        Value(256), Value(std::numeric_limits<int32_t>::max())}},
      {{Type::Currency},
       {Value(), Value(Currency{INT64_MIN}), Value(Currency{-1}), Value(Currency{0}),
        Value(Currency{INT64_MAX})}},
      {{Type::Single},
       {Value(), Value(-3e38f), Value(-1.5f), Value(-1e-30f), Value(0.0f), Value(1e-30f), Value(2.0f)}},
      {{Type::Double},
       {Value(), Value(-1e300), Value(-2.0), Value(-1.5), Value(0.0), Value(1e-300), Value(7e100)}},
      {{Type::Date},
       {Value(), Value(Date{-657434.0}), Value(Date{-1.25}), Value(Date{0.5}), Value(Date{45000.75})}},
      {{Type::Binary},
       {Value(), Value(bytesOf("a")), Value(bytesOf("ab")), Value(bytesOf("abcdefgh")),
        Value(bytesOf("abcdefghi")), Value(bytesOf("abcdefghijklmnop")), Value(bytesOf("b"))}},
      {{Type::Text, false, &polish},
       {Value(), Value(u""), Value(u"a"), Value(u"ą"), Value(u"ąa"), Value(u"ć-"), Value(u"ć-a")}},
  };
  for (const Case& c : cases)
    for (const bool descending : {false, true}) {
      KeyColumn column = c.column;
      column.descending = descending;
      for (size_t i = 1; i < c.ascending.size(); ++i) {
        const std::string a = encodeKey({&column, 1}, {&c.ascending[i - 1], 1});
        const std::string b = encodeKey({&column, 1}, {&c.ascending[i], 1});
        EXPECT_TRUE(descending ? a > b : a < b)
            << static_cast<int>(column.type) << " " << i << " " << hex(a) << hex(b);
      }
    }
}

TEST(IndexKey, RareForms) {
  const Collation& general = Collation::get(0x0409);
  struct Case {
    KeyColumn column;
    Value value;
    const char* key;
  };
  const std::vector<Case> cases{
      {{Type::Boolean}, Value(), "7FFF"},
      {{Type::Binary}, Value(bytesOf("")), "7F"},
      {{Type::Binary, true},
       Value(bytesOf("")),
       "80"},  // so it sorts before its longer fellows, turned round or not
      {{Type::Text, true, &general}, Value(u"a"), "80B5FEFF00"},
      {{Type::Text, true, &general}, Value(u""), "80FEFF00"},
      // two elements have two weights, behind an accent one
      {{Type::Text, false, &general}, Value(u"ßé"), "7F6B6B510102020E00"},
      {{Type::Text, false, &general}, Value(u"éßé"), "7F516B6B51010E020E00"},
      {{Type::Decimal, false, nullptr, 2}, Value(decimal(1234)), "7FFF000000000000000000000000000004D2"},
      {{Type::Decimal, false, nullptr, 2}, Value(decimal(-1234)), "7F00FFFFFFFFFFFFFFFFFFFFFFFFFFFFFB2D"},
      {{Type::Decimal, true, nullptr, 2}, Value(decimal(1234)), "80FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFB2D"},
      {{Type::Decimal, true, nullptr, 2}, Value(decimal(-1234)), "8000000000000000000000000000000004D2"},
      // a literal of fewer or more decimals than the column has
      {{Type::Decimal, false, nullptr, 4}, Value(decimal(5, 0)), "7FFF0000000000000000000000000000C350"},
      {{Type::Decimal, false, nullptr, 1}, Value(decimal(1250, 3)), "7FFF0000000000000000000000000000000C"},
  };
  for (const Case& c : cases) EXPECT_EQ(hex(encodeKey({&c.column, 1}, {&c.value, 1})), c.key);
}

}  // namespace
}  // namespace jet
