#include "fuzz/targets.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

#include "jet/catalog/row_store.h"
#include "jet/dao/dao.h"
#include "jet/sql/engine.h"
#include "support/memory_env.h"

namespace jet::fuzz {

namespace {

constexpr char kFile[] = "fuzz.mdb";
constexpr size_t kMostRows = 2000;  // of a result that are looked at
constexpr size_t kMostSources = 6;  // of one input: a product of more takes its time and proves nothing
constexpr size_t kPage = 4096;

[[noreturn]] void fail(const std::string& what) {
  std::fprintf(stderr, "%s\n", what.c_str());
  std::abort();
}

template <typename Action>
bool tried(Action&& action) {
  try {
    action();
    return true;
  } catch (const Error& error) {
    if (error.source().rfind("DAO", 0) != 0 || error.number() <= 0) fail("an error without number or source");
    return false;
  }
}

class RowCounter final : public sql::RowSink {
 public:
  void begin(const std::vector<sql::ResultColumn>&) override {}
  bool row(std::span<const Value>) override { return ++rows_ < kMostRows; }

 private:
  size_t rows_ = 0;
};

void readTable(Database& database, const std::u16string& name) {
  Catalog& catalog = database.catalog();
  const ReadScope scope(catalog.pager());
  const TableDefPtr def = catalog.table(name);
  if (!def) return;
  const RowStore rows(catalog.pager(), def);
  size_t count = 0;
  for (Heap::Scan scan = rows.scan(); scan.next() && ++count < kMostRows;) {
    tried([&] {
      const RowReader row = rows.reader(scan.bytes(), scan.where());
      for (size_t i = 0; i < def->columns.size(); ++i) tried([&] { rows.value(row, static_cast<int>(i)); });
    });
  }
}

void readEverything(Database& database) {
  std::vector<CatalogObject> objects;
  tried([&] { objects = database.catalog().objects(); });
  for (const CatalogObject& object : objects) {
    if (object.type == 1) tried([&] { readTable(database, object.name); });
    if (object.type == 5) tried([&] { database.catalog().querySql(object.name); });
    RowCounter counter;
    if (object.type == 1 || object.type == 5)
      tried([&] { database.stream(u"SELECT * FROM [" + object.name + u"]", counter); });
  }
  tried([&] { database.relations(); });
  database.check([](const std::u16string&) {});
}

void requireSound(Workspace& workspace, const std::string& when) {
  std::unique_ptr<Database> database;
  try {
    database = workspace.openDatabase(kFile, {.readOnly = true, .connect = {}});
  } catch (const Error& error) {
    if (error.number() == 3031) return;  // damage made a password
    throw;
  }
  std::string faults;
  database->check([&](const std::u16string& line) { faults += toUtf8(line) + "\n"; }, true);
  if (!faults.empty()) fail(when + ":\n" + faults);
}

void repairAndCheck(test::MemoryEnvironment& environment) {
  Workspace workspace(environment);
  try {
    workspace.repairDatabase(kFile);
  } catch (const Error& error) {
    if (error.number() == 3056 || error.number() == 3049) return;
    throw;
  }
  requireSound(workspace, "after repairing");
}

void fill(Database& db) {
  db.execute(
      u"CREATE TABLE osoby (nr COUNTER PRIMARY KEY, nazwa TEXT(30), kod LONG, wiek BYTE, kwota CURRENCY, "
      u"waga DOUBLE, data DATETIME, jest BIT, uwagi MEMO, klucz GUID, ulamek DECIMAL(12, 3))");
  db.execute(
      u"CREATE TABLE rzeczy (nr LONG PRIMARY KEY, osoba LONG, nazwa TEXT(20) NOT NULL, obraz LONGBINARY)");
  db.execute(u"CREATE UNIQUE INDEX wgKodu ON osoby (kod)");
  db.execute(u"CREATE INDEX wgNazwy ON osoby (nazwa DESC, wiek) WITH IGNORE NULL");
  db.define([](Catalog& catalog) {
    catalog.createRelation({.name = u"ma",
                            .table = u"osoby",
                            .foreignTable = u"rzeczy",
                            .columns = {{u"nr", u"osoba"}},
                            .cascadeUpdates = true,
                            .cascadeDeletes = true});
  });
  db.execute(
      u"INSERT INTO osoby (nazwa, kod, wiek, kwota, waga, data, jest, uwagi) VALUES ('Żak', 1, 30, 12.5, "
      u"0.25, "
      u"#2026-11-22 10:30:00#, True, 'krótko')");
  db.execute(u"INSERT INTO osoby (nazwa, uwagi) VALUES ('Ćma', String(5000, 'u'))");
  db.execute(u"INSERT INTO osoby (kod, ulamek) VALUES (3, 1.125)");
  db.execute(u"INSERT INTO rzeczy (nr, osoba, nazwa) VALUES (1, 1, 'lampa')");
  db.execute(u"INSERT INTO rzeczy (nr, osoba, nazwa) VALUES (2, 1, 'krzesło')");
  db.execute(u"INSERT INTO rzeczy (nr, nazwa) VALUES (3, 'stół')");
}

// The small database's file.
const std::string& smallDatabase() {
  static const std::string bytes = [] {
    test::MemoryEnvironment environment;
    {
      Workspace workspace(environment);
      fill(*workspace.createDatabase(kFile, kPolishLocale));
    }
    return environment.content(kFile);
  }();
  return bytes;
}

bool isTooLarge(std::string_view sql) {
  std::string lower(sql);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  size_t sources = static_cast<size_t>(std::count(lower.begin(), lower.end(), ','));
  for (const std::string_view word : {"join", "select", "from"})
    for (size_t at = 0; (at = lower.find(word, at)) != std::string::npos; at += word.size()) ++sources;
  return sources > 4 * kMostSources;
}

void runStatements(Database& database, std::string_view utf8) {
  sql::Script script = sql::splitScript(fromUtf8(utf8));
  script.statements.push_back(script.rest);
  for (const std::u16string& statement : script.statements) {
    tried([&] {
      RowCounter counter;
      if (database.isQuery(statement))
        database.stream(statement, counter);
      else
        database.execute(statement);
    });
  }
}

}  // namespace

void readFile(std::string_view bytes) {
  test::MemoryEnvironment environment;
  environment.setContent(kFile, std::string(bytes));
  {
    Workspace workspace(environment);
    tried([&] { readEverything(*workspace.openDatabase(kFile, {.readOnly = true, .connect = {}})); });
  }
  repairAndCheck(environment);
}

void runSql(std::string_view utf8) {
  if (isTooLarge(utf8)) return;
  test::MemoryEnvironment environment;
  environment.setContent(kFile, smallDatabase());
  Workspace workspace(environment);
  {
    const auto database = workspace.openDatabase(kFile);
    runStatements(*database, utf8);
  }
  requireSound(workspace, "after the statements");
}

void runOnDamaged(std::string_view input) {
  const size_t end = std::min(input.find('\0'), input.size());
  if (isTooLarge(input.substr(0, end))) return;
  std::string bytes = smallDatabase();
  for (size_t at = end + 1; at + 5 <= input.size(); at += 5) {
    const auto* p = reinterpret_cast<const uint8_t*>(input.data()) + at;
    const size_t offset = get24(p) % bytes.size();
    switch (p[3] % 4) {
      case 0:
        bytes[offset] = static_cast<char>(p[4]);
        break;
      case 1:
        bytes[offset] = static_cast<char>(bytes[offset] ^ 1 << p[4] % 8);
        break;
      case 2:
        bytes[offset] = static_cast<char>(bytes[offset] + static_cast<int8_t>(p[4]));
        break;
      default:
        bytes.replace(offset / kPage * kPage, kPage, bytes, p[4] * kPage % bytes.size(), kPage);
    }
  }
  test::MemoryEnvironment environment;
  environment.setContent(kFile, bytes);
  {
    Workspace workspace(environment);
    tried([&] {
      const auto database = workspace.openDatabase(kFile);
      runStatements(*database, input.substr(0, end));
      readEverything(*database);
    });
  }
  repairAndCheck(environment);
}

std::vector<std::string> fileSeeds() {
  std::vector<std::string> seeds{smallDatabase()};
  test::MemoryEnvironment environment;
  {
    Workspace workspace(environment);
    const auto db = workspace.createDatabase(kFile, kGeneralLocale, u"tajne");
    db->execute(u"CREATE TABLE t (a LONG, b TEXT(255))");
    db->execute(u"CREATE INDEX wgB ON t (b)");
    workspace.beginTrans();
    for (int i = 0; i < 300; ++i)
      db->execute(u"INSERT INTO t VALUES (" + fromUtf8(std::to_string(i)) + u", String(100, Chr(" +
                  fromUtf8(std::to_string(65 + i % 26)) + u")))");
    db->execute(u"UPDATE t SET b = String(250, 'z') WHERE a Mod 5 = 0");
    workspace.commitTrans();
    db->newPassword(u"tajne", u"");
  }
  seeds.push_back(environment.content(kFile));
  return seeds;
}

std::vector<std::string> sqlSeeds() {
  return {
      "SELECT * FROM osoby",
      "SELECT nazwa & '!' AS n, IIf(wiek > 18, 'tak', Null) FROM osoby WHERE nazwa Like '[A-Ż]*' ORDER BY 1 "
      "DESC",
      "SELECT o.nazwa, Count(*) AS ile FROM osoby AS o LEFT JOIN rzeczy AS r ON o.nr = r.osoba GROUP BY "
      "o.nazwa HAVING "
      "Count(*) > 0",
      "SELECT TOP 2 nr FROM osoby UNION ALL SELECT nr FROM rzeczy UNION SELECT 5 FROM osoby ORDER BY nr",
      "SELECT * FROM osoby WHERE nr IN (SELECT osoba FROM rzeczy) AND EXISTS (SELECT 1 FROM rzeczy WHERE "
      "osoba = osoby.nr)",
      "SELECT DISTINCT Format(data, 'yyyy-mm-dd'), DateAdd('m', 1, data), Val('12,5'), CDbl(kwota) ^ 2 FROM "
      "osoby",
      "TRANSFORM Sum(kod) SELECT nazwa FROM osoby GROUP BY nazwa PIVOT wiek",
      "PARAMETERS p LONG; SELECT * FROM osoby WHERE kod = p",
      "INSERT INTO rzeczy (nr, osoba, nazwa) SELECT nr + 10, nr, nazwa FROM osoby WHERE nazwa IS NOT NULL",
      "UPDATE osoby INNER JOIN rzeczy ON osoby.nr = rzeczy.osoba SET osoby.uwagi = rzeczy.nazwa, kwota = "
      "kwota * 1.5",
      "DELETE * FROM osoby WHERE nr BETWEEN 1 AND 2; INSERT INTO osoby (nazwa) VALUES ('x')",
      "SELECT nr, nazwa INTO kopia FROM osoby WHERE jest = True; DROP TABLE kopia",
      "CREATE TABLE nowa (a COUNTER CONSTRAINT pk PRIMARY KEY, b TEXT(10) NOT NULL, c LONG REFERENCES osoby "
      "(nr))",
      "ALTER TABLE osoby ADD COLUMN x MEMO; UPDATE osoby SET x = String(300, 'x'); ALTER TABLE osoby DROP "
      "COLUMN x",
      "CREATE UNIQUE INDEX i ON rzeczy (nazwa, nr DESC) WITH DISALLOW NULL; DROP INDEX i ON rzeczy",
      "SELECT -1 \\ 2 Mod 3 XOR NOT 4 EQV 5 IMP #1/2/2003 4:05:06# - &HFF, Left('abc', 2) + Mid(\"xyz\", 2) "
      "FROM osoby;",
      "UPDATE osoby SET nr = nr"};
}

std::vector<std::string> damagedSeeds() {
  std::vector<std::string> seeds;
  for (const std::string& sql : sqlSeeds())
    seeds.push_back(sql + '\0' + std::string("\x10\x60\x00\x00\xFF", 5) +
                    std::string("\x02\xE0\x00\x01\x03", 5));
  return seeds;
}

size_t damageFile(uint8_t* bytes, size_t size, size_t limit, unsigned seed) {
  std::minstd_rand random(seed);
  const auto pick = [&](size_t below) { return below == 0 ? 0 : random() % below; };
  for (size_t n = 1 + pick(4); n > 0 && size > 8; --n) {
    const size_t at = pick(size - 8), page = pick(size / kPage) * kPage, other = pick(size / kPage) * kPage;
    // Most of a page is rows; its head and its end matter more.
    const size_t near = std::min(size - 8, pick(2) == 0 ? page + pick(64) : at);
    const uint32_t numbers[] = {0,
                                1,
                                0xFF,
                                0x7FFF,
                                0xFFFF,
                                0x7FFFFFFF,
                                0xFFFFFFFF,
                                static_cast<uint32_t>(pick(size / kPage)),
                                static_cast<uint32_t>(random())};
    const uint32_t number = numbers[pick(std::size(numbers))];
    switch (pick(9)) {
      case 0:
        bytes[near] = static_cast<uint8_t>(bytes[near] ^ 1u << pick(8));
        break;
      case 1:
        bytes[near] = static_cast<uint8_t>(number);
        break;
      case 2:
        put16(bytes + near, number);
        break;
      case 3:
        put32(bytes + near, number);
        break;
      case 4:
        put32(bytes + near, static_cast<uint32_t>(pick(size / kPage) << 8 | pick(20)));
        break;  // a row
      case 5:
        put16(bytes + near, get16(bytes + near) + static_cast<uint32_t>(pick(9)) - 4);
        break;
      case 6:
        if (size >= kPage) std::memmove(bytes + page, bytes + other, kPage);
        break;
      case 7:
        if (size >= kPage) std::memset(bytes + page, 0, kPage);
        break;
      case 8:
        if (pick(10) == 0) size = std::min(limit, at + 8);
        break;
    }
  }
  return size;
}

}  // namespace jet::fuzz
