#pragma once

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "jet/format/text.h"
#include "jet/sql/engine.h"
#include "scalars.h"
#include "support/other_reader.h"

namespace jet::sql::test {

// A database in a scratch file, spoken to in SQL.
class SqlDatabase {
 public:
  explicit SqlDatabase(uint16_t lcid = 0x0415)
      : path_(std::filesystem::temp_directory_path() /
              ("sql-test-" + std::to_string(std::random_device()()) + ".mdb")),
        pager_(Pager::create(Environment::system(), path_, Version::Jet4, Catalog::kEmptyDatabasePages)),
        catalog_(Catalog::createDatabase(*pager_, lcid, {})) {
    pager_->commit();
    engine_ = std::make_unique<Engine>(*catalog_);
  }
  ~SqlDatabase() {
    engine_.reset();
    catalog_.reset();
    pager_.reset();
    expectOtherReaderAgrees(path_);
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
    std::filesystem::remove(std::filesystem::path(path_).replace_extension(".ldb"), ignored);
  }
  SqlDatabase(const SqlDatabase&) = delete;
  SqlDatabase& operator=(const SqlDatabase&) = delete;

  Engine& engine() { return *engine_; }
  Catalog& catalog() { return *catalog_; }
  Pager& pager() { return *pager_; }

  // The number of records affected, or "error N".
  std::string run(const std::string& sql, const Parameters& parameters = {}) {
    try {
      return std::to_string(engine_->execute(fromUtf8(sql), parameters));
    } catch (const Error& e) {
      return "error " + std::to_string(e.number());
    }
  }
  // Statements of a script, which must all succeed.
  void script(const std::string& text) {
    const Script split = splitScript(fromUtf8(text));
    for (const auto& statement : split.statements) engine_->execute(statement);
    if (!split.rest.empty()) engine_->execute(split.rest);
  }

  // A statement for each number from 0, `%` replaced by it, all in one transaction.
  void repeat(int count, const std::string& sql) {
    Transaction transaction(*pager_);
    for (int i = 0; i < count; ++i) {
      std::string text;
      for (const char c : sql) text += c == '%' ? std::to_string(i) : std::string(1, c);
      engine_->execute(fromUtf8(text));
    }
    transaction.commit();
  }

  // "a|b; c|d": rows as text, Null as -, or "error N". Numbers with a point.
  std::string rows(const std::string& sql, const Parameters& parameters = {}) {
    try {
      const auto result = engine_->query(fromUtf8(sql), parameters);
      std::string text;
      for (size_t row = 0; row < result->rowCount(); ++row) {
        if (row > 0) text += "; ";
        for (size_t column = 0; column < result->columns().size(); ++column)
          text += (column > 0 ? "|" : "") + plain(result->value(row, column));
      }
      return text;
    } catch (const Error& e) {
      return "error " + std::to_string(e.number());
    }
  }
  // Names of the result columns, separated by commas.
  std::string names(const std::string& sql) {
    try {
      std::string text;
      const auto result = engine_->query(fromUtf8(sql));
      for (const auto& column : result->columns()) text += (text.empty() ? "" : ",") + toUtf8(column.name);
      return text;
    } catch (const Error& e) {
      return "error " + std::to_string(e.number());
    }
  }
  std::string explain(const std::string& sql) { return toUtf8(engine_->explain(fromUtf8(sql))); }

 private:
  static std::string plain(const Value& v) {
    EvalContext c;
    c.decimalSeparator = u'.';
    return v.isNull() ? "-" : toUtf8(toText(v, c));
  }

  std::filesystem::path path_;
  std::unique_ptr<Pager> pager_;
  std::unique_ptr<Catalog> catalog_;
  std::unique_ptr<Engine> engine_;
};

struct QueryCase {
  const char* sql;
  const char* expected;
};

}  // namespace jet::sql::test
