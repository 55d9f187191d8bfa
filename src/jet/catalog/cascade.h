#pragma once

#include <vector>

#include "jet/catalog/table.h"

namespace jet {

// One change of a row with all that relationships make of it: changed and deleted rows of other tables, one
// after the other from a list, so that long chains need no deep recursion. What a relationship forbids is
// looked at when all is done, since other cascades may have removed the obstacle by then.
class Cascade {
 public:
  explicit Cascade(Table& table) : root_(table) {}

  void update(RowId row, std::span<const Table::Change> changes);
  void remove(RowId row);

 private:
  struct Step {
    Table* table;
    RowId row;
    std::vector<Table::Change> changes;
    bool isRemoval;
    bool isCascaded;
  };
  // No row with this key may be left in the index.
  struct Forbidden {
    TableDefPtr table;
    int real;
    std::string key;
    bool isCascaded;
  };

  void run(Step first);
  void updateRow(const Step& step);
  void removeRow(const Step& step);
  void checkForeign(Table& table, std::span<const Value> values, const std::vector<bool>& changed,
                    bool isCascaded, KnownKeys* known = nullptr) const;
  std::vector<RowId> rowsWithKey(const References::Primary& side, const std::string& key) const;
  [[noreturn]] void rethrowCascaded(const Error& error, const Step& step) const;

  friend class Table;
  static const References& references(Table& table);
  Table& related(const TableDefPtr& def);

  Table& root_;
  std::vector<Step> steps_;
  std::vector<Forbidden> forbidden_;
};

}  // namespace jet
