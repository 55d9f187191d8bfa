#pragma once

#include <functional>
#include <map>
#include <vector>

#include "jet/catalog/objects.h"
#include "jet/dao/database_copy.h"

namespace jet {

// Finds what a damaged file still holds: definitions through the catalogue or by their pages' looks, rows
// through usage maps or by the owner that data pages name.
class Salvage {
 public:
  using Report = std::function<void(const std::u16string&)>;
  // `tick` is called now and then.
  Salvage(Pager& pager, const Report& lose, const std::function<void()>& tick);

  // Throws 3056 when there is no table at all.
  CopySource find();
  // Relationships that only the definitions still tell of. They are no longer in find()'s definitions, nor
  // are the others'.
  const std::vector<Relation>& relationsOfDefinitions() const { return relations_; }

 private:
  FileHeader readHeader();
  void scanPages();
  bool parse(PageNumber page, TableDef& def);
  std::vector<PageNumber> dataPages(const TableDef& def);
  uint64_t countRows(const std::vector<PageNumber>& pages, const TableDef& def);
  std::vector<CatalogObject> readObjects(CopySource::Table& objects);
  void findListedTables(CopySource& source, const std::vector<CatalogObject>& objects);
  void findSystemTable(CopySource::Table& table, TableDef usual);
  void findUnlistedTables(CopySource& source);
  void separateRelations(CopySource& source);
  void readSidMask(CopySource& source);

  Pager& pager_;
  const FileLayout& layout_;
  Report lose_;
  std::function<void()> tick_;
  FileHeader header_;
  std::map<PageNumber, std::vector<PageNumber>> dataPages_;  // by the owner that they name
  std::vector<PageNumber> definitionPages_;
  std::vector<bool> free_;   // pages that the file's own map calls free
  bool hasFreeMap_ = false;  // which could be read
  bool catalogueDamaged_ = false;
  std::map<PageNumber, bool> listed_;  // definitions that the catalogue names, and pages of their chains
  std::vector<Relation> relations_;
};

}  // namespace jet
