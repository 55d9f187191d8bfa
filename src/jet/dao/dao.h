#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "jet/catalog/catalog.h"
#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/format/value.h"
#include "jet/sql/operators.h"

// The public face of the engine, shaped like DAO: a Workspace opens Databases, a Database opens
// Recordsets and executes statements. Everything throws jet::Error. Objects of one Workspace belong to
// one thread.
namespace jet {

namespace sql {
class Engine;
class RowSink;
}

class Database;
class Recordset;

// A field of a recordset: its description, and the current record's value.
class Field {
 public:
  const std::u16string& name() const;
  Type type() const;
  int size() const;             // characters of Text, bytes of others, 0 for Memo and OLE
  bool required() const;
  bool allowZeroLength() const;
  bool autoNumber() const;
  const std::u16string& sourceTable() const;
  const std::u16string& sourceField() const;

  // The current record's (or edit buffer's) value. Throws 3021 without a current record.
  Value value() const;
  // Puts a value into the edit buffer, converted to the field's type. Throws 3020 without AddNew or
  // Edit, 3163, 3164, 3421.
  void setValue(const Value& value);

 private:
  friend class Recordset;
  Recordset* recordset_ = nullptr;
  size_t index_ = 0;
};

enum class RecordsetType { Table = 1, Dynaset = 2, Snapshot = 4, ForwardOnly = 8 };

class Recordset {
 public:
  ~Recordset();
  Recordset(const Recordset&) = delete;
  Recordset& operator=(const Recordset&) = delete;

  RecordsetType type() const;
  bool updatable() const;
  void close();
  void requery();

  // Fields by position or name (case ignored); 3265 when there is none.
  size_t fieldCount() const;
  Field& field(size_t index);
  Field& field(std::u16string_view name);
  const Field& field(size_t index) const;
  const Field& field(std::u16string_view name) const;
  Value value(std::u16string_view name) const { return field(name).value(); }

  // Navigation. After opening, the first record is current (BOF and EOF both true when there is none).
  bool bof() const;
  bool eof() const;
  // Records seen so far in a dynaset; snapshots know it at once.
  int64_t recordCount() const;
  int64_t absolutePosition() const;   // 0-based, -1 without a current record
  void setAbsolutePosition(int64_t position);
  void moveFirst();
  void moveLast();
  void moveNext();      // 3021 beyond EOF
  void movePrevious();
  void move(int64_t count);

  // Sets noMatch(); the current record stays where it was when nothing matches.
  void findFirst(std::u16string_view criterion);
  void findNext(std::u16string_view criterion);
  void findLast(std::u16string_view criterion);
  void findPrevious(std::u16string_view criterion);
  bool noMatch() const;

  // A place to return to; 3159 for one that is not of this recordset, 3021 without a current record.
  using Bookmark = std::string;
  Bookmark bookmark() const;
  void setBookmark(const Bookmark& bookmark);
  Bookmark lastModified() const;

  // AddNew or Edit, field changes, then Update or CancelUpdate. Edit remembers the record; Update throws 3197 when
  // another copy changed it meanwhile, 3167 when it was deleted.
  void addNew();
  void edit();
  void update();
  void cancelUpdate();
  // Delete; the current record then is a deleted one (3167) until the next move. 3197, once, when the record was
  // read and another copy has changed it since.
  void remove();
  enum class EditMode { None, Edit, AddNew };
  EditMode editMode() const;

 private:
  friend class Database;
  friend class Field;
  struct Impl;
  explicit Recordset(std::unique_ptr<Impl> impl);
  std::unique_ptr<Impl> impl_;
};

class Database {
 public:
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  const std::filesystem::path& path() const;
  bool readOnly() const;
  bool exclusive() const;
  Version version() const;
  void close();

  // `source`: SQL text, a saved query's or a table's name. Default type: Dynaset when the query is on one
  // table and can be edited, else Snapshot.
  std::unique_ptr<Recordset> openRecordset(std::u16string_view source,
                                           std::optional<RecordsetType> type = std::nullopt);
  // Runs a changing statement; returns (and keeps) the number of records affected. Always as with
  // dbFailOnError: on an error nothing of the statement remains.
  int64_t execute(std::u16string_view sql);
  int64_t recordsAffected() const;
  int32_t lastAutoNumber() const;
  // Streams a query's rows without keeping them.
  void stream(std::u16string_view sql, sql::RowSink& sink);
  bool isQuery(std::u16string_view sql) const;

  // Structure.
  Catalog& catalog();
  TableDefPtr tableDef(std::u16string_view name);  // 3265
  std::vector<std::u16string> tableNames();        // user tables
  std::vector<Relation> relations();
  // Runs a change of the structure as one transaction.
  void define(const std::function<void(Catalog&)>& change);

  void newPassword(std::u16string_view oldPassword, std::u16string_view newPassword);  // 3031
  // One line a fault; true when the file is sound. `leaks`: pages that are neither used nor free are faults
  // too; they cost nothing but room, and files of other programs have them.
  bool check(const std::function<void(const std::u16string&)>& fault, bool leaks = false);

 private:
  friend class Workspace;
  friend class Recordset;
  struct Impl;
  explicit Database(std::unique_ptr<Impl> impl);
  std::unique_ptr<Impl> impl_;
};

// Called now and then during long work with the part that is done, 0 to 1; false cancels it (3059).
using Progress = std::function<bool(double)>;

struct CompactOptions {
  std::u16string locale = {};   // of the new file, as for createDatabase; empty: the source's sort order
  std::u16string connect = {};  // ";pwd=...;" of the source
  std::optional<std::u16string> password = {};  // of the new file; nullopt: the source's
  Progress progress = {};
};

class Workspace {
 public:
  explicit Workspace(Environment& environment = Environment::system());
  ~Workspace();

  struct OpenOptions {
    bool exclusive = false;
    bool readOnly = false;
    std::u16string connect = {};  // ";pwd=...;"
  };
  // Throws 3024 (no file), 3343 (not a database), 3031 (password), 3045/3356 (held exclusively), 3051 (no permission).
  std::unique_ptr<Database> openDatabase(const std::filesystem::path& path, const OpenOptions& options);
  std::unique_ptr<Database> openDatabase(const std::filesystem::path& path);
  // A new, empty file; `locale` as ";LANGID=0x0415;CP=1250;COUNTRY=0" (its LANGID sets the sort order).
  // Throws 3204 when the file exists.
  std::unique_ptr<Database> createDatabase(const std::filesystem::path& path, std::u16string_view locale,
                                           std::u16string_view password = {});

  // Copies `source`, which nobody may have open, to a new Jet 4 file with everything that it holds, packed and with
  // its indexes built anew. Throws 3204 when the destination exists, 3356/3045 when the source is in use, 3031,
  // 3059 (cancelled), 3049 when the source is damaged or something in it cannot be carried, 3022 when a unique
  // index holds a key twice. On any error there is no new file.
  void compactDatabase(const std::filesystem::path& source, const std::filesystem::path& destination,
                       const CompactOptions& options = {});
  // Puts in place of the file one with every table, row and object that can still be read in it, maps, indexes
  // and relationships made anew; a Jet 3 file becomes one of Jet 4. `report` gets a line for each kind of loss.
  // True when nothing was lost. Throws 3056 when there is nothing to bring back, 3356/3045 when the file is in
  // use, 3059; then the file is as it was.
  bool repairDatabase(const std::filesystem::path& path,
                      const std::function<void(const std::u16string&)>& report = {},
                      const Progress& progress = {});

  // Transactions over the databases of this workspace; they nest five levels (3003). 3034 without one.
  void beginTrans();
  void commitTrans();
  void rollback();

 private:
  friend class Database;
  struct Impl;
  std::shared_ptr<Impl> impl_;
};

inline constexpr std::u16string_view kPolishLocale = u";LANGID=0x0415;CP=1250;COUNTRY=0";
inline constexpr std::u16string_view kGeneralLocale = u";LANGID=0x0409;CP=1252;COUNTRY=0";

}  // namespace jet
