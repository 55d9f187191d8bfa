#include "support/other_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>

#include "jet/dao/dao.h"
#include "support/csv.h"
#include "support/process.h"
#include "support/temp_folder.h"

namespace {

using Lines = std::vector<std::string>;

std::string printed(const char* format, auto... arguments) {
  char text[400];
  std::snprintf(text, sizeof text, format, arguments...);
  return text;
}

std::string hex(const uint8_t* bytes, size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) text += printed("%02x", unsigned{bytes[i]});
  return text;
}

std::string shortNumber(double number, int digits) {
  return printed("%.*g", digits, number == 0 ? 0.0 : number);
}

// Digits in which both programs print a number of the type alike; 0 for what is not a number.
int commonDigits(jet::Type type) {
  switch (type) {
    case jet::Type::Single:
      return 6;
    case jet::Type::Double:
    case jet::Type::Currency:
    case jet::Type::Decimal:
      return 14;
    default:
      return 0;
  }
}

// A date to the second by counting days, unlike the engine's own arithmetic.
std::string date(double days) {
  if (days < 0 || days > 1e6) return "1900-01-00 00:00:00";  // what they print of dates that they do not know
  const double whole = std::trunc(days);
  long long seconds = std::llround(std::abs(days - whole) * 86'400);
  long long day = static_cast<long long>(whole) + seconds / 86'400 + 693'594;  // 1 is 0001-01-01
  seconds %= 86'400;
  int year = 1, month = 1;
  const auto leap = [](int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; };
  for (int length; day > (length = leap(year) ? 366 : 365); ++year) day -= length;
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  for (int length; day > (length = kDays[month - 1] + (month == 2 && leap(year))); ++month) day -= length;
  return printed("%04d-%02d-%02d %02lld:%02lld:%02lld", year, month, static_cast<int>(day), seconds / 3600,
                 seconds / 60 % 60, seconds % 60);
}

struct Spelling {
  std::string operator()(std::monostate) const { return {}; }
  std::string operator()(bool v) const { return v ? "1" : "0"; }
  std::string operator()(uint8_t v) const { return std::to_string(v); }
  std::string operator()(int16_t v) const { return std::to_string(v); }
  std::string operator()(int32_t v) const { return std::to_string(v); }
  std::string operator()(float v) const { return shortNumber(v, commonDigits(jet::Type::Single)); }
  std::string operator()(double v) const { return shortNumber(v, commonDigits(jet::Type::Double)); }
  std::string operator()(jet::Currency v) const {
    return shortNumber(static_cast<double>(v.scaled) / 10'000, commonDigits(jet::Type::Currency));
  }
  std::string operator()(const jet::Decimal& v) const {
    double number = 0;
    for (const uint32_t word : v.magnitude) number = number * 4294967296.0 + word;
    return shortNumber((v.negative ? -1 : 1) * number / std::pow(10, v.scale),
                       commonDigits(jet::Type::Decimal));
  }
  std::string operator()(jet::Date v) const { return date(v.days); }
  std::string operator()(const jet::Text& v) const { return jet::toUtf8(v); }
  std::string operator()(const jet::Binary& v) const { return hex(v.data(), v.size()); }
  std::string operator()(const jet::Guid& v) const {
    const auto& b = v.bytes;
    return printed("{%02X%02X%02X%02X-%02X%02X-%02X%02X-", b[3], b[2], b[1], b[0], b[5], b[4], b[7], b[6]) +
           printed("%02X%02X-%02X%02X%02X%02X%02X%02X}", b[8], b[9], b[10], b[11], b[12], b[13], b[14],
                   b[15]);
  }
};

// Rows as lines "name=value|…" in the order of the names; a Null has no "=".
std::string lineOf(std::vector<std::pair<std::string, CsvField>>& fields) {
  std::sort(fields.begin(), fields.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  std::string line;
  for (const auto& [name, value] : fields) line += name + (value ? "=" + *value : "") + "|";
  return line;
}

Lines ourRows(jet::Database& database, const std::u16string& table) {
  const auto rows =
      database.openRecordset(u"SELECT * FROM [" + table + u"]", jet::RecordsetType::ForwardOnly);
  Lines lines;
  for (; !rows->eof(); rows->moveNext()) {
    std::vector<std::pair<std::string, CsvField>> fields;
    for (size_t i = 0; i < rows->fieldCount(); ++i) {
      const jet::Value value = rows->field(i).value();
      CsvField field = std::visit(Spelling{}, value.storage());
      // They take an empty memo for Null.
      if (value.isNull() || (rows->field(i).type() == jet::Type::Memo && field->empty())) field.reset();
      fields.emplace_back(jet::toUtf8(rows->field(i).sourceField()), std::move(field));
    }
    lines.push_back(lineOf(fields));
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

// Their spelling of a field turned into ours.
CsvField respelled(CsvField field, jet::Type type) {
  if (!field) return field;
  if (const int digits = commonDigits(type)) return shortNumber(std::strtod(field->c_str(), nullptr), digits);
  if (type == jet::Type::Binary || type == jet::Type::Ole)
    std::transform(field->begin(), field->end(), field->begin(),
                   [](unsigned char c) { return std::tolower(c); });
  return field;
}

Lines theirRows(const std::filesystem::path& file, const jet::TableDef& table) {
  const auto rows = parseCsv(runProcess({"mdb-export", "-D", "%Y-%m-%d %H:%M:%S", "-T", "%Y-%m-%d %H:%M:%S",
                                         "-b", "hex", file.string(), jet::toUtf8(table.name)})
                                 .out);
  Lines lines;
  for (size_t row = 1; row < rows.size(); ++row) {
    std::vector<std::pair<std::string, CsvField>> fields;
    for (size_t i = 0; i < rows[row].size() && i < rows[0].size(); ++i) {
      const std::string name = rows[0][i].value_or("");
      const int ordinal = table.columnOrdinal(jet::fromUtf8(name));
      const jet::Type type =
          ordinal < 0 ? jet::Type::Text : table.columns[static_cast<size_t>(ordinal)].type();
      fields.emplace_back(name, respelled(rows[row][i], type));
    }
    lines.push_back(lineOf(fields));
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

// The first lines that only one of the two has.
std::string difference(const Lines& ours, const Lines& theirs) {
  Lines lines;
  const auto take = [&](const Lines& from, const Lines& other, const char* mark) {
    Lines alone;
    std::set_difference(from.begin(), from.end(), other.begin(), other.end(), std::back_inserter(alone));
    for (size_t i = 0; i < std::min<size_t>(alone.size(), 3); ++i)
      lines.push_back(mark + alone[i].substr(0, 500));
  };
  take(ours, theirs, "ours: ");
  take(theirs, ours, "theirs: ");
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

bool installed() {
  static const bool found = runProcess({"mdb-ver", "--version"}).status == 0;
  return found;
}

}  // namespace

void expectOtherReaderAgrees(const std::filesystem::path& file, const std::u16string& connect) {
  if (!installed()) return;
  jet::Workspace workspace;
  const auto database = workspace.openDatabase(file, {.readOnly = true, .connect = connect});
  if (database->version() == jet::Version::Jet3) return;
  Lines ours, theirs;
  for (const auto& name : database->tableNames()) ours.push_back(jet::toUtf8(name));
  const std::string listed = runProcess({"mdb-tables", "-1", file.string()}).out;
  for (size_t at = 0, end; (end = listed.find('\n', at)) != std::string::npos; at = end + 1)
    theirs.push_back(listed.substr(at, end - at));
  std::sort(ours.begin(), ours.end());
  std::sort(theirs.begin(), theirs.end());
  EXPECT_EQ(difference(ours, theirs), "") << file;
  for (const auto& name : database->tableNames())
    EXPECT_EQ(difference(ourRows(*database, name), theirRows(file, *database->tableDef(name))), "")
        << jet::toUtf8(name) << " in " << file;
}

void expectOtherReaderAgreesOn(const std::string& bytes) {
  if (!installed()) return;
  const TempFolder folder;
  std::ofstream(folder / "copy.mdb", std::ios::binary) << bytes;
  expectOtherReaderAgrees(folder / "copy.mdb");
}
