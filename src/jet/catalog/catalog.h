#pragma once

#include <optional>

#include "jet/catalog/table_def.h"
#include "jet/pager/pager.h"

namespace jet {

struct NewColumn {
  std::u16string name;
  Type type = Type::Text;
  int size = 0;  // characters of Text (0: 255), bytes of Binary (0: 255)
  bool autoNumber = false;
  bool required = false;
  std::optional<bool> allowZeroLength;  // nullopt: no property, allowed
  bool compressed = true;
  std::u16string defaultValue, validationRule, validationText, description;
  uint8_t precision = 18, scale = 0;  // Decimal
};

struct NewIndex {
  std::u16string name;
  std::vector<std::pair<std::u16string, bool>> columns;  // name, descending
  bool primary = false, unique = false, ignoreNulls = false, required = false;
};

struct NewTable {
  std::u16string name;
  std::vector<NewColumn> columns;
  std::vector<NewIndex> indexes;
  std::u16string validationRule, validationText;
};

struct Relation {
  std::u16string name;
  std::u16string table;  // the primary ("one") side
  std::u16string foreignTable;
  std::vector<std::pair<std::u16string, std::u16string>> columns;  // primary, foreign
  bool enforced = true, unique = false, cascadeUpdates = false, cascadeDeletes = false, cascadeNull = false;
  enum class Join { Inner, Left, Right } join = Join::Inner;
};

struct CatalogObject {
  int32_t id = 0;
  int32_t parent = 0;
  int16_t type = 0;
  int32_t flags = 0;
  std::u16string name;
  double created = 0, updated = 0;
};

struct FileHeader {
  Version version = Version::Jet4;
  uint16_t lcid = 0x0409;
  int codePage = 1252;
  double created = 0;
  std::u16string password;
  uint32_t encryptionKey = 0;  // not 0: pages are encrypted
};

// The file's system tables and table definitions. All changes run inside the caller's transaction.
class Catalog {
 public:
  virtual ~Catalog() = default;

  // Reads the header and finds the system tables. Throws 3343, 3049; 3031 is the caller's to check.
  static std::unique_ptr<Catalog> open(Pager& pager);
  // Writes an empty database (header, system tables) into a fresh pager of 16 pages, and opens it.
  // `lcid` 0x0409 or 0x0415; the code page follows (1252, 1250).
  static constexpr PageNumber kEmptyDatabasePages = 16;
  static std::unique_ptr<Catalog> createDatabase(Pager& pager, uint16_t lcid, std::u16string_view password);

  virtual Pager& pager() = 0;
  virtual const FileHeader& header() = 0;
  virtual void setPassword(std::u16string_view password) = 0;

  // All objects of MSysObjects.
  virtual std::vector<CatalogObject> objects() = 0;
  // Names of user tables in their order of creation.
  virtual std::vector<std::u16string> userTables() = 0;
  // nullptr when there is no table of that name (system tables are found too). Cached until the file changes.
  virtual TableDefPtr table(std::u16string_view name) = 0;
  virtual TableDefPtr tableAt(PageNumber definition) = 0;
  // SQL of a saved query, rebuilt from MSysQueries; nullopt when there is none of that name.
  virtual std::optional<std::u16string> querySql(std::u16string_view name) = 0;
  virtual std::vector<Relation> relations() = 0;

  // Throws 3010, 3125, 3190, 3191, 3017, ...
  virtual TableDefPtr createTable(const NewTable& table) = 0;
  virtual void dropTable(std::u16string_view name) = 0;  // 3376, 3281 when a relationship needs it
  virtual void renameTable(std::u16string_view from, std::u16string_view to) = 0;
  virtual void addColumn(std::u16string_view table, const NewColumn& column) = 0;
  virtual void dropColumn(std::u16string_view table, std::u16string_view column) = 0;  // 3280, 3303
  virtual void renameColumn(std::u16string_view table, std::u16string_view from, std::u16string_view to) = 0;
  // Builds the index from the rows present: 3022, 3058, 3283, 3284/3375, 3409.
  virtual void createIndex(std::u16string_view table, const NewIndex& index) = 0;
  virtual void dropIndex(std::u16string_view table, std::u16string_view index) = 0;  // 3372, 3281
  virtual void createRelation(const Relation& relation) = 0;                         // 3368, 3378, 3379, 3609
  virtual void dropRelation(std::u16string_view name) = 0;                           // 3377
  // A property with an empty value is removed.
  virtual void setColumnProperty(std::u16string_view table, std::u16string_view column,
                                 const Property& property) = 0;
  virtual void setTableProperty(std::u16string_view table, const Property& property) = 0;

  // Counts in the definition page as they are now; a TableDef holds those of the moment it was read.
  struct Counts {
    uint32_t rows = 0;
    int32_t lastAutoNumber = 0;
  };
  virtual Counts counts(PageNumber definition) = 0;
  // Changes the counts in the definition page; called by Table.
  virtual void storeCounts(PageNumber definition, int64_t rowDelta,
                           std::optional<int32_t> lastAutoNumber) = 0;
};

}  // namespace jet
