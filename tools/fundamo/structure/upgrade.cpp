#include "structure/upgrade.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "jet/dao/dao.h"
#include "jet/format/text.h"
#include "structure/backup.h"
#include "structure/description.h"
#include "structure/first_rows.h"

namespace structure {

namespace {

using jet::sameName;
using Text = std::u16string;

Text number(int64_t n) { return jet::fromUtf8(std::to_string(n)); }
Text quoted(const Text& name) { return u"[" + name + u"]"; }

// What present rows or the present structure may refuse; anything else ends the upgrade.
bool isRefusal(int error) {
  static constexpr int kRefusals[] = {3022, 3058, 3190, 3281, 3283, 3284, 3287, 3303,
                                      3314, 3368, 3375, 3378, 3379, 3409, 3609, 3626};
  return std::find(std::begin(kRefusals), std::end(kRefusals), error) != std::end(kRefusals);
}

class Upgrade {
 public:
  Upgrade(jet::Database& database, const Progress& progress) : database_(database), progress_(progress) {}

  UpgradeResult run();

 private:
  bool isFamilyMember();
  std::optional<std::pair<int, int>> storedVersion();
  void upgradeTable(const jet::NewTable& wanted);
  void upgradeColumn(const jet::NewTable& table, const jet::NewColumn& wanted);
  void addColumn(const Text& table, const jet::NewColumn& wanted);
  void widen(const Text& table, const jet::ColumnDef& present, int size);
  void upgradeIndex(const Text& table, const jet::NewIndex& wanted);
  void upgradeRelation(const jet::Relation& wanted);
  int64_t rowsWithoutPartner(const jet::Relation& relation);
  void upgradeRows();

  int64_t count(const Text& from);
  void note(Text line) { result_.report.push_back(std::move(line)); }
  void announce(const Text& what) {
    if (progress_) progress_(done_, total_, what);
    ++done_;
  }
  // One change as a whole: reported as `done`, or as `refused` with the reason. The file is copied first.
  bool change(const Text& done, const Text& refused, const std::function<void(jet::Catalog&)>& step);

  jet::Database& database_;
  const Progress& progress_;
  UpgradeResult result_;
  int done_ = 0, total_ = 0;
};

bool Upgrade::change(const Text& done, const Text& refused, const std::function<void(jet::Catalog&)>& step) {
  if (result_.copy.empty()) result_.copy = copyBeside(database_.path());
  try {
    database_.define(step);
  } catch (const jet::Error& error) {
    if (!isRefusal(error.number())) throw;
    note(refused + u": " + explain(error));
    return false;
  }
  result_.outcome = UpgradeResult::Outcome::Upgraded;
  note(done);
  return true;
}

int64_t Upgrade::count(const Text& from) {
  return database_.openRecordset(u"SELECT Count(*) FROM " + from)->field(size_t{0}).value().get<int32_t>();
}

bool Upgrade::isFamilyMember() {
  return std::any_of(tables().begin(), tables().end(), [&](const TableDescription& description) {
    return database_.catalog().table(description.table.name) != nullptr;
  });
}

// Of the "EW" row of dbprg, if there is one.
std::optional<std::pair<int, int>> Upgrade::storedVersion() {
  const jet::TableDefPtr programs = database_.catalog().table(u"dbprg");
  if (!programs) return {};
  for (const char16_t* column : {u"Indprg", u"VerMajor", u"VerMinor"})
    if (programs->columnOrdinal(column) < 0) return {};
  const auto row = database_.openRecordset(
      u"SELECT CLng(Val(VerMajor & '')), CLng(Val(VerMinor & '')) FROM dbprg "
      u"WHERE Indprg = '" +
      Text(kProgramCode) + u"'");
  if (row->eof()) return {};
  return std::pair(row->field(size_t{0}).value().get<int32_t>(),
                   row->field(size_t{1}).value().get<int32_t>());
}

void Upgrade::addColumn(const Text& table, const jet::NewColumn& wanted) {
  const Text name = table + u"." + wanted.name;
  const bool added = change(u"Dodano pole " + name, u"Nie dodano pola " + name, [&](jet::Catalog& catalog) {
    catalog.addColumn(table, wanted);
    if (!wanted.defaultValue.empty())
      database_.execute(u"UPDATE " + quoted(table) + u" SET " + quoted(wanted.name) + u" = " +
                        wanted.defaultValue);
  });
  if (!added || !wanted.required) return;
  const int64_t empty = count(quoted(table) + u" WHERE " + quoted(wanted.name) + u" Is Null");
  if (empty > 0) note(u"Pole " + name + u" jest wymagane; rekordów do uzupełnienia: " + number(empty));
}

void Upgrade::widen(const Text& table, const jet::ColumnDef& present, int size) {
  const Text name = table + u"." + present.name;
  change(u"Wydłużono pole " + name + u" do " + number(size) + u" znaków", u"Nie wydłużono pola " + name,
         [&](jet::Catalog&) {
           database_.execute(u"ALTER TABLE " + quoted(table) + u" ALTER COLUMN " + quoted(present.name) +
                             u" TEXT(" + number(size) + u")" +
                             (present.layout.compressed ? u" WITH COMPRESSION" : u"") +
                             (present.required ? u" NOT NULL" : u""));
         });
}

void Upgrade::upgradeColumn(const jet::NewTable& table, const jet::NewColumn& wanted) {
  const jet::TableDefPtr def = database_.tableDef(table.name);
  const int ordinal = def->columnOrdinal(wanted.name);
  if (ordinal < 0) return addColumn(table.name, wanted);
  const jet::ColumnDef& present = def->columns[static_cast<size_t>(ordinal)];
  if (present.type() != wanted.type || present.autoNumber != wanted.autoNumber)
    return note(u"Pole " + table.name + u"." + wanted.name +
                u" ma inny typ niż w opisie struktury; pozostawiono je");
  if (wanted.type == jet::Type::Text && present.size(database_.version()) < wanted.size)
    widen(table.name, present, wanted.size);
}

// An index counts as present under any name, but one of the right name over other columns is replaced.
void Upgrade::upgradeIndex(const Text& table, const jet::NewIndex& wanted) {
  const jet::TableDefPtr def = database_.tableDef(table);
  const auto serves = [&](const jet::IndexDef& index) {
    const jet::RealIndex& real = def->realIndexes[static_cast<size_t>(index.real)];
    return !index.foreign && index.primary == wanted.primary && (real.unique || !wanted.unique) &&
           std::equal(real.columns.begin(), real.columns.end(), wanted.columns.begin(), wanted.columns.end(),
                      [&](const jet::IndexColumn& part, const auto& column) {
                        return part.ordinal == def->columnOrdinal(column.first) &&
                               part.descending == column.second;
                      });
  };
  if (std::any_of(def->indexes.begin(), def->indexes.end(), serves)) return;
  const Text name = table + u"." + wanted.name;
  change(u"Dodano indeks " + name, u"Nie dodano indeksu " + name, [&](jet::Catalog& catalog) {
    if (def->index(wanted.name)) catalog.dropIndex(table, wanted.name);
    catalog.createIndex(table, wanted);
  });
}

void Upgrade::upgradeTable(const jet::NewTable& wanted) {
  if (!database_.catalog().table(wanted.name)) {
    change(u"Dodano tablicę " + wanted.name, u"Nie dodano tablicy " + wanted.name,
           [&](jet::Catalog& catalog) { catalog.createTable(wanted); });
    return;
  }
  for (const jet::NewColumn& column : wanted.columns) upgradeColumn(wanted, column);
  for (const jet::NewIndex& index : wanted.indexes) upgradeIndex(wanted.name, index);
}

int64_t Upgrade::rowsWithoutPartner(const jet::Relation& relation) {
  Text on, missing;
  for (const auto& [primary, foreign] : relation.columns) {
    const Text key = u"p." + quoted(primary), reference = u"f." + quoted(foreign);
    on += (on.empty() ? u"" : u" AND ") + key + u" = " + reference;
    missing += (missing.empty() ? key + u" Is Null" : Text()) + u" AND " + reference + u" Is Not Null";
  }
  return count(quoted(relation.foreignTable) + u" AS f LEFT JOIN " + quoted(relation.table) + u" AS p ON " +
               on + u" WHERE " + missing);
}

void Upgrade::upgradeRelation(const jet::Relation& wanted) {
  const std::vector<jet::Relation> relations = database_.relations();
  const auto present = std::find_if(relations.begin(), relations.end(), [&](const jet::Relation& r) {
    return sameName(r.table, wanted.table) && sameName(r.foreignTable, wanted.foreignTable) &&
           std::equal(r.columns.begin(), r.columns.end(), wanted.columns.begin(), wanted.columns.end(),
                      [](const auto& a, const auto& b) {
                        return sameName(a.first, b.first) && sameName(a.second, b.second);
                      });
  });
  if (present != relations.end() && present->enforced) return;
  const Text name = wanted.foreignTable + u" – " + wanted.table;
  if (const int64_t orphans = rowsWithoutPartner(wanted))
    return note(u"Nie dodano powiązania " + name + u": rekordów tablicy " + wanted.foreignTable +
                u" bez odpowiednika w tablicy " + wanted.table + u": " + number(orphans));
  change(u"Dodano powiązanie " + name, u"Nie dodano powiązania " + name, [&](jet::Catalog& catalog) {
    if (present != relations.end()) catalog.dropRelation(present->name);
    catalog.createRelation(wanted);
  });
}

void Upgrade::upgradeRows() {
  const auto version = storedVersion();
  const Text current = number(kVersionMajor) + u"." + number(kVersionMinor);
  if (version != std::pair(kVersionMajor, kVersionMinor))
    change(u"Zapisano wersję struktury " + current, u"Nie zapisano wersji struktury " + current,
           [&](jet::Catalog&) { version ? updateProgramVersion(database_) : addProgramRow(database_); });
  if (count(u"dbfir") == 0)
    change(u"Dodano rekord danych firmy", u"Nie dodano rekordu danych firmy",
           [&](jet::Catalog&) { addFirmRow(database_); });
}

UpgradeResult Upgrade::run() {
  if (!isFamilyMember()) throw jet::Error(3078, {u"dbprg"});
  if (database_.version() == jet::Version::Jet3) throw jet::Error(3251);
  const auto version = storedVersion();
  if (version && *version > std::pair(kVersionMajor, kVersionMinor)) {
    note(u"Baza ma nowszą strukturę (" + number(version->first) + u"." + number(version->second) +
         u") niż ten program; pozostawiono ją bez zmian");
    result_.outcome = UpgradeResult::Outcome::Newer;
    return std::move(result_);
  }
  total_ = 2 * static_cast<int>(tables().size()) + 1;
  for (const TableDescription& description : tables()) {
    announce(u"Tablica " + description.table.name);
    upgradeTable(description.table);
  }
  for (const TableDescription& description : tables()) {
    announce(u"Powiązania tablicy " + description.table.name);
    for (const jet::Relation& relation : description.relations) upgradeRelation(relation);
  }
  announce(u"Wersja struktury");
  upgradeRows();
  return std::move(result_);
}

}  // namespace

UpgradeResult upgradeDatabase(const std::filesystem::path& path, std::u16string_view password,
                              const Progress& progress) {
  jet::Workspace workspace;
  jet::Workspace::OpenOptions options;
  options.exclusive = true;
  options.connect = u";pwd=" + Text(password) + u";";
  const auto database = workspace.openDatabase(path, options);
  if (database->readOnly()) throw jet::Error(3051);
  workspace.beginTrans();
  UpgradeResult result;
  try {
    result = Upgrade(*database, progress).run();
  } catch (...) {
    workspace.rollback();
    throw;
  }
  workspace.commitTrans();
  return result;
}

}  // namespace structure
