#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "jet/catalog/new_database.h"
#include "jet/dao/row_marks.h"
#include "jet/dao/table_builder.h"

namespace jet {

// A database to be copied, as far as it can be read.
struct CopySource {
  struct Table {
    TableDef def;
    std::vector<PageNumber> pages;  // data pages
    bool isListed = true;           // in MSysObjects
  };
  Pager& pager;
  FileHeader header;
  SidMask sidMask;            // at least two bytes; zeros in Jet 3, where identifiers are plain
  std::vector<Table> tables;  // all but the next four
  Table objects, aces, queries, relationships;
};

struct CopySettings {
  std::optional<uint16_t> lcid;  // another sort order
  std::u16string password;
  // What cannot be read is left out and reported; relationships are in the catalogue only, the definitions
  // being without them. Otherwise damage throws Error 3049.
  bool tolerant = false;
  std::function<void(const std::u16string&)> report;
  // Called now and then with the part that is done, 0 to 1; false cancels with Error 3059.
  std::function<bool(double)> progress;
};

// Copies a database into a new Jet 4 file, everything packed and in order: rows go by stored bytes in the
// order of their primary keys, indexes are built bottom-up, objects of the user interface come along as they
// are.
class DatabaseCopy {
 public:
  DatabaseCopy(CopySource& source, const CopySettings& settings);

  // The new file with everything in it, its transaction not yet committed. Throws 3204 when it exists.
  std::unique_ptr<Pager> run(const std::filesystem::path& destination);

  // Old and new page of each table's definition.
  const std::map<PageNumber, PageNumber>& tablePages() const { return tablePages_; }
  bool lossless() const { return lossless_; }

 private:
  struct Target {
    const CopySource::Table* source;
    TableDef def;
  };
  using Row = std::vector<Value>;  // of a system table of the new file, by ordinal
  using Adjust = std::function<bool(Row&)>;

  void makeHeader(FileHeader& header) const;
  void placeTables();
  void copyTable(Target& table);
  void copySystemTables(SystemTables& tables);
  void copySystemRows(const CopySource::Table& from, TableDef& to, const Adjust& adjust,
                      const std::function<std::vector<Row>()>& missing);
  bool adjustObject(Row& row, const TableDef& def);
  bool takeName(Row& row, const TableDef& def);
  void findCompleteRelations();
  Value adjustedProperties(const Value& stored, const std::u16string& object);
  std::vector<Row> missingObjects(const TableDef& objects);
  std::vector<Row> missingPermissions(const TableDef& aces);
  void mendType(Value& type, int32_t id) const;
  Value translatedSid(const Value& sid) const;
  void lose(const std::u16string& what);
  void tick(uint64_t bytes);

  CopySource& source_;
  const CopySettings& settings_;
  std::unique_ptr<Pager> to_;
  std::vector<Target> targets_;
  std::map<PageNumber, PageNumber> tablePages_;
  SidMask sidMask_, sidToggle_;  // of the new file; between the files
  RowMarks marks_;
  std::map<int32_t, int32_t> objectIds_;  // old and new
  std::set<int32_t> carried_;             // new ids of the objects in the new file
  std::set<int32_t> withPermissions_;     // those of them that have any
  std::set<std::pair<int32_t, std::u16string>> names_;
  std::set<std::u16string> relations_;  // folded names of those that are whole
  uint64_t total_ = 0, done_ = 0, ticked_ = 0;
  bool lossless_ = true;
};

}  // namespace jet
