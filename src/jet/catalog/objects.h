#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "jet/catalog/catalog.h"
#include "jet/catalog/row_store.h"

namespace jet {

// Object types and containers of MSysObjects.
constexpr int16_t kObjectTable = 1, kObjectDatabase = 2, kObjectContainer = 3, kObjectQuery = 5,
                  kObjectRelation = 8;
constexpr int32_t kContainerRoot = 0x0F000000, kTablesContainer = 0x0F000001,
                  kDatabasesContainer = 0x0F000002, kRelationsContainer = 0x0F000003,
                  kDatabaseObject = 0x10000000;
constexpr uint32_t kSystemFlags = 0x80000002;  // made with the file, or the user interface's
constexpr PageNumber kObjectsPage = 2;

// Users and groups as the file stores them: short identifiers, masked in Jet 4 with two bytes that depend on
// the file.
constexpr uint8_t kSidEngine[2] = {0x02, 0x03}, kSidAdmin[2] = {0x03, 0x01}, kSidUsers[2] = {0x02, 0x01},
                  kSidCreator[2] = {0x02, 0x04};

// A row of a system table that is being written, by column names.
class SystemRow {
 public:
  explicit SystemRow(const TableDef& def) : def_(def), values_(def.columns.size()) {}
  // Throws Error 3049 when the table has no such column.
  SystemRow& set(std::u16string_view column, Value value);
  std::span<const Value> values() const { return values_; }

 private:
  const TableDef& def_;
  std::vector<Value> values_;
};

// Ordinal of a system table's column; Error 3049 when there is none of that name and type.
int systemColumn(const TableDef& def, std::u16string_view name, Type type);

// The table MSysObjects, and the permissions in MSysACEs that go with its rows.
class ObjectStore {
 public:
  // `objects` and `aces`: the definitions of the two tables.
  ObjectStore(Pager& pager, TableDefPtr objects);

  struct Entry {
    CatalogObject object;
    RowId row;
  };
  // In row order.
  std::vector<Entry> all() const;
  // Stops at the first entry that matches; nullopt when none does.
  std::optional<Entry> find(const std::function<bool(const CatalogObject&)>& match) const;
  std::optional<Entry> find(int32_t parent, std::u16string_view name) const;

  // The entry's LvProp value; empty when Null.
  std::string properties(RowId row) const;
  // The row's bytes, to see later whether it has changed; empty when it is gone.
  std::string rowBytes(RowId row) const;

  // Adds the object with the file's default owner and the permissions that `aces` gives to new objects of its
  // container. Dates are set to now.
  void add(const CatalogObject& object, const std::string& properties, const TableDefPtr& aces);
  // Removes the object's row and its permissions.
  void remove(const Entry& entry, const TableDefPtr& aces);
  // Sets the date of the last change, and the name or properties when given (empty properties: Null).
  void change(RowId row, std::optional<std::u16string_view> name, const std::string* properties);
  // A free id for an object that is not a table.
  int32_t freeId() const;

 private:
  struct Columns {
    int id, parent, name, type, created, updated, owner, flags, properties;
  };
  CatalogObject decode(const RowReader& row) const;
  Binary ownerOf(std::u16string_view name) const;
  void copyPermissions(int32_t container, int32_t object, const TableDefPtr& aces);

  Pager& pager_;
  RowStore rows_;
  Columns columns_;
};

}  // namespace jet
