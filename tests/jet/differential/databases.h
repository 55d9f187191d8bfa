#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "jet/dao/dao.h"
#include "jet/differential/query_generator.h"

struct sqlite3;

namespace jet::differential {

// A value as both databases show it, numbers with nine digits, and the key by which texts that the order
// calls equal are the same.
struct Cell {
  std::string shown, key;
};
using Rows = std::vector<std::vector<Cell>>;

// The engine, on a new file in the temporary folder.
class JetDatabase {
 public:
  JetDatabase();
  ~JetDatabase();
  Rows query(const std::string& sql, size_t columns, bool streamed);
  int64_t execute(const std::string& sql);
  void begin() { workspace_->beginTrans(); }
  void rollback() { workspace_->rollback(); }
  bool isSound() const;

 private:
  std::filesystem::path path_;
  std::unique_ptr<Workspace> workspace_;
  std::unique_ptr<Database> database_;
};

// SQLite in memory, with the engine's text order as collation "jet" and functions joined (the operator &)
// and alike (Like).
class LiteDatabase {
 public:
  LiteDatabase();
  ~LiteDatabase();
  // nullopt when the statement would take too many steps, which joins without a condition do.
  std::optional<Rows> query(const std::string& sql, size_t columns);
  int64_t execute(const std::string& sql);

 private:
  sqlite3* database_ = nullptr;
};

}  // namespace jet::differential
