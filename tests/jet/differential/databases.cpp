#include "jet/differential/databases.h"

#include <sqlite3.h>

#include <cmath>
#include <cstdio>
#include <stdexcept>

#include "jet/sql/case_table.h"
#include "jet/sql/engine.h"
#include "jet/sql/numbers.h"

namespace jet::differential {

namespace {

const Collation& polish() { return Collation::get(0x0415); }

Cell nullCell() { return {"Null", ""}; }

Cell numberCell(double d) {
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "%.9g", d == 0 ? 0.0 : d);
  return {buffer, buffer};
}

Cell textCell(const std::u16string& text) {
  Cell cell{"'" + toUtf8(text) + "'", "'"};
  polish().appendKey(text, cell.key);
  return cell;
}

Cell cellOf(const Value& v) {
  if (v.isNull()) return nullCell();
  if (const Text* text = v.getIf<Text>()) return textCell(*text);
  return numberCell(sql::toDouble(v));
}

class Collector : public sql::RowSink {
 public:
  explicit Collector(size_t columns) : columns_(columns) {}
  void begin(const std::vector<sql::ResultColumn>&) override {}
  bool row(std::span<const Value> values) override {
    if (values.size() != columns_) throw std::runtime_error("wrong number of columns");
    rows.emplace_back();
    for (const Value& v : values) rows.back().push_back(cellOf(v));
    return true;
  }
  Rows rows;

 private:
  size_t columns_;
};

// ---- SQLite ----------------------------------------------------------------------------------------------

std::u16string textOf(sqlite3_value* v) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(v));
  return text ? fromUtf8(text) : std::u16string();
}

int collate(void*, int aSize, const void* a, int bSize, const void* b) {
  const auto text = [](const void* p, int size) {
    return fromUtf8({static_cast<const char*>(p), static_cast<size_t>(size)});
  };
  return polish().compare(text(a, aSize), text(b, bSize));
}

void joined(sqlite3_context* context, int, sqlite3_value** v) {
  if (sqlite3_value_type(v[0]) == SQLITE_NULL && sqlite3_value_type(v[1]) == SQLITE_NULL)
    return sqlite3_result_null(context);
  const std::string text = toUtf8(textOf(v[0]) + textOf(v[1]));
  sqlite3_result_text(context, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

// Like by plain recursion.
bool isAlike(std::u16string_view text, std::u16string_view pattern) {
  if (pattern.empty()) return text.empty();
  const char16_t c = pattern[0];
  if (c == u'*') {
    for (size_t skipped = 0; skipped <= text.size(); ++skipped)
      if (isAlike(text.substr(skipped), pattern.substr(1))) return true;
    return false;
  }
  if (text.empty()) return false;
  if (c != u'[') return (c == u'?' || c == text[0]) && isAlike(text.substr(1), pattern.substr(1));
  const size_t end = pattern.find(u']');
  std::u16string_view list = pattern.substr(1, end - 1);
  const bool inverted = list.size() > 1 && list[0] == u'!';
  if (inverted) list.remove_prefix(1);
  const std::u16string_view unit = text.substr(0, 1);
  const bool found = list.size() == 3 ? polish().compare(list.substr(0, 1), unit) <= 0 &&
                                            polish().compare(unit, list.substr(2)) <= 0
                                      : list == unit;
  return found != inverted && isAlike(text.substr(1), pattern.substr(end + 1));
}

void alike(sqlite3_context* context, int, sqlite3_value** v) {
  if (sqlite3_value_type(v[0]) == SQLITE_NULL) return sqlite3_result_null(context);
  sqlite3_result_int(context, isAlike(sql::lowerText(textOf(v[0])), sql::lowerText(textOf(v[1]))));
}

void floorOf(sqlite3_context* context, int, sqlite3_value** v) {
  if (sqlite3_value_type(v[0]) == SQLITE_NULL) return sqlite3_result_null(context);
  sqlite3_result_double(context, std::floor(sqlite3_value_double(v[0])));
}

Cell cellOf(sqlite3_stmt* statement, int column) {
  switch (sqlite3_column_type(statement, column)) {
    case SQLITE_NULL:
      return nullCell();
    case SQLITE_TEXT:
      return textCell(fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(statement, column))));
    default:
      return numberCell(sqlite3_column_double(statement, column));
  }
}

}  // namespace

JetDatabase::JetDatabase() {
  path_ = std::filesystem::temp_directory_path() /
          ("differential-" + std::to_string(std::random_device()()) + ".mdb");
  workspace_ = std::make_unique<Workspace>();
  database_ = workspace_->createDatabase(path_, kPolishLocale);
}

JetDatabase::~JetDatabase() {
  database_.reset();
  workspace_.reset();
  std::error_code ignored;
  std::filesystem::remove(path_, ignored);
  std::filesystem::remove(path_.replace_extension(".ldb"), ignored);
}

Rows JetDatabase::query(const std::string& sql, size_t columns, bool streamed) {
  Collector collector(columns);
  if (streamed) {
    database_->stream(fromUtf8(sql), collector);
    return std::move(collector.rows);
  }
  const auto recordset = database_->openRecordset(fromUtf8(sql), RecordsetType::Snapshot);
  for (; !recordset->eof(); recordset->moveNext()) {
    std::vector<Value> values;
    for (size_t i = 0; i < recordset->fieldCount(); ++i) values.push_back(recordset->field(i).value());
    collector.row(values);
  }
  return std::move(collector.rows);
}

int64_t JetDatabase::execute(const std::string& sql) { return database_->execute(fromUtf8(sql)); }

bool JetDatabase::isSound() const {
  return database_->check(
      [](const std::u16string& fault) { std::fprintf(stderr, "%s\n", toUtf8(fault).c_str()); });
}

LiteDatabase::LiteDatabase() {
  sqlite3_open(":memory:", &database_);
  sqlite3_create_collation(database_, "jet", SQLITE_UTF8, nullptr, collate);
  // Plain plans only: Bloom filters hash the length of a text, which is wrong for an order that ignores
  // trailing blanks, and flattening subqueries loses rows of a RIGHT JOIN inside a union.
  constexpr int kFlattening = 0x1, kBloomFilters = 0x80000;
  sqlite3_test_control(SQLITE_TESTCTRL_OPTIMIZATIONS, database_, kFlattening | kBloomFilters);
  constexpr int kSteps = 1'000'000;
  sqlite3_progress_handler(
      database_, kSteps, [](void*) { return 1; }, nullptr);
  constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC;
  sqlite3_create_function(database_, "joined", 2, kFlags, nullptr, joined, nullptr, nullptr);
  sqlite3_create_function(database_, "alike", 2, kFlags, nullptr, alike, nullptr, nullptr);
  sqlite3_create_function(database_, "floor", 1, kFlags, nullptr, floorOf, nullptr, nullptr);
}

LiteDatabase::~LiteDatabase() { sqlite3_close(database_); }

std::optional<Rows> LiteDatabase::query(const std::string& sql, size_t columns) {
  sqlite3_stmt* statement = nullptr;
  const auto fail = [&] { throw std::runtime_error(std::string("SQLite: ") + sqlite3_errmsg(database_)); };
  if (sqlite3_prepare_v2(database_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) fail();
  const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> owner(statement, sqlite3_finalize);
  Rows rows;
  int state;
  while ((state = sqlite3_step(statement)) == SQLITE_ROW) {
    rows.emplace_back();
    for (size_t i = 0; i < columns; ++i) rows.back().push_back(cellOf(statement, static_cast<int>(i)));
  }
  if (state == SQLITE_INTERRUPT) return std::nullopt;
  if (state != SQLITE_DONE) fail();
  return rows;
}

int64_t LiteDatabase::execute(const std::string& sql) {
  if (sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
    throw std::runtime_error(std::string("SQLite: ") + sqlite3_errmsg(database_));
  return sqlite3_changes(database_);
}

}  // namespace jet::differential
