#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "jet/catalog/catalog.h"
#include "jet/catalog/objects.h"
#include "jet/catalog/properties.h"
#include "jet/catalog/tdef_io.h"

namespace jet {

// True for 1 to 64 characters without control characters and . ! [ ] `, not beginning with a blank or '='.
bool isValidName(std::u16string_view name);

class FileCatalog final : public Catalog {
 public:
  explicit FileCatalog(Pager& pager);

  // Lets the structure of the user interface's own tables be changed too.
  void includeSystemTables() { systemTablesToo_ = true; }

  Pager& pager() override { return pager_; }
  const FileHeader& header() override { return header_; }
  void setPassword(std::u16string_view password) override;

  std::vector<CatalogObject> objects() override;
  std::vector<std::u16string> userTables() override;
  TableDefPtr table(std::u16string_view name) override;
  TableDefPtr tableAt(PageNumber definition) override;
  std::optional<std::u16string> querySql(std::u16string_view name) override;
  std::vector<Relation> relations() override;

  TableDefPtr createTable(const NewTable& table) override;
  void dropTable(std::u16string_view name) override;
  void renameTable(std::u16string_view from, std::u16string_view to) override;
  void addColumn(std::u16string_view table, const NewColumn& column) override;
  void dropColumn(std::u16string_view table, std::u16string_view column) override;
  void renameColumn(std::u16string_view table, std::u16string_view from, std::u16string_view to) override;
  void createIndex(std::u16string_view table, const NewIndex& index) override;
  void dropIndex(std::u16string_view table, std::u16string_view index) override;
  void createRelation(const Relation& relation) override;
  void dropRelation(std::u16string_view name) override;
  void setColumnProperty(std::u16string_view table, std::u16string_view column,
                         const Property& property) override;
  void setTableProperty(std::u16string_view table, const Property& property) override;
  Counts counts(PageNumber definition) override;
  void storeCounts(PageNumber definition, int64_t rowDelta, std::optional<int32_t> lastAutoNumber) override;

 private:
  // A table's definition taken out for a change.
  struct Draft {
    TableDef def;
    std::vector<PageNumber> pages;
    ObjectStore::Entry entry;
    PropertyBlob properties;
    TableDefPtr published() const { return std::make_shared<TableDef>(def); }
  };
  struct Cached {
    TableDefPtr def;
    RowId row;  // of MSysObjects
    std::pair<uint64_t, uint64_t> checked;
  };

  // catalog.cpp
  std::pair<uint64_t, uint64_t> state() const { return {pager_.changeCounter(), ownChanges_}; }
  TableDefPtr cached(PageNumber definition);
  TableDefPtr load(const ObjectStore::Entry& entry);
  std::string stampOf(const TdefBytes& stored, const std::string& row) const;
  TableDefPtr systemTable(std::u16string_view name);  // Error 3049 when there is none
  void requireWritable() const;                       // Error 3251 in a Jet 3 file
  void changed() { ++ownChanges_; }
  Draft draft(std::u16string_view table);  // Error 3376, 3251, 3033 for system tables
  void store(Draft& draft, bool withProperties);

  // tables.cpp
  void requireFreeTableName(std::u16string_view name, int32_t exceptId);
  void appendColumn(TableDef& def, const NewColumn& column) const;
  void addColumnProperties(PropertyBlob& blob, const NewColumn& column) const;
  void numberRows(const TableDefPtr& def, int ordinal);

  // indexes.cpp
  void addIndex(TableDef& def, const NewIndex& index, PageNumber& mapPage);
  int makeRealIndex(TableDef& def, RealIndex index, PageNumber& mapPage);
  void buildIndex(const TableDefPtr& def, int real, uint32_t& uniqueEntries);
  void releaseRealIndex(TableDef& def, int real);

  // relations.cpp
  void enforce(const Relation& relation);
  void checkPresentRows(const TableDef& primary, const RealIndex& referenced, const TableDef& foreign,
                        const RealIndex& key);
  void addRelationRows(const Relation& relation);
  void removeRelationRows(const Relation& relation);
  void renameInRelations(std::u16string_view table, std::u16string_view newTable, std::u16string_view column,
                         std::u16string_view newColumn);

  Pager& pager_;
  FileHeader header_;
  std::unique_ptr<ObjectStore> objects_;
  TableDefPtr objectsTable_;
  uint64_t ownChanges_ = 0;
  bool systemTablesToo_ = false;
  std::map<PageNumber, Cached> tables_;
  std::map<std::u16string, PageNumber> names_;  // folded; each checked through its table's entry
};

}  // namespace jet
