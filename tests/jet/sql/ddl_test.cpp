#include <gtest/gtest.h>

#include "sql_fixture.h"

namespace jet::sql::test {

namespace {

// "name type[size] flags; ..." of a table's columns in order of display.
std::string columnsOf(Catalog& catalog, const char16_t* name) {
  const TableDefPtr table = catalog.table(name);
  std::string text;
  for (const int i : table->displayOrder()) {
    const ColumnDef& c = table->columns[static_cast<size_t>(i)];
    text += (text.empty() ? "" : "; ") + toUtf8(c.name) + " " + std::to_string(static_cast<int>(c.type()));
    if (c.type() == Type::Text || c.type() == Type::Binary)
      text += "(" + std::to_string(c.size(Version::Jet4)) + ")";
    if (c.autoNumber) text += " counter";
    if (c.required) text += " required";
    if (!c.defaultValue.empty()) text += " default " + toUtf8(c.defaultValue);
  }
  return text;
}

std::string indexesOf(Catalog& catalog, const char16_t* name) {
  const TableDefPtr table = catalog.table(name);
  std::string text;
  for (const IndexDef& index : table->indexes) {
    const RealIndex& real = table->realIndexes[static_cast<size_t>(index.real)];
    text += (text.empty() ? "" : "; ") + toUtf8(index.name);
    for (const IndexColumn& c : real.columns)
      text += (c.descending ? " -" : " ") + toUtf8(table->columns[static_cast<size_t>(c.ordinal)].name);
    if (index.primary) text += " primary";
    if (real.unique) text += " unique";
    if (real.ignoreNulls) text += " ignore";
    if (real.required && !index.primary) text += " required";
  }
  return text;
}

}  // namespace

TEST(Ddl, CreateTableKnowsEveryTypeWord) {
  SqlDatabase db;
  db.script(
      "CREATE TABLE t (a BIT, b BYTE, c SHORT NOT NULL, d INTEGER, e COUNTER, f MONEY, g REAL, h FLOAT, i "
      "DATETIME, "
      "j TEXT(20) WITH COMPRESSION, k VARCHAR, l MEMO, m BINARY(16), n IMAGE, o GUID, p DECIMAL(10, 2), q "
      "YESNO, [r s] NUMBER DEFAULT -1.5, "
      "s CHAR(3) DEFAULT 'a b')");
  EXPECT_EQ(columnsOf(db.catalog(), u"t"),
            "a 1; b 2; c 3 required; d 4; e 4 counter; f 5; g 6; h 7; i 8; j 10(20); k 10(255); l 12; m "
            "9(16); n 11; "
            "o 15; p 16; q 1; r s 7 default -1.5; s 10(3) default 'a b'");
  EXPECT_EQ(db.run("INSERT INTO t (c, p, f) VALUES (1, 12.345, 1.5)"), "1");
  EXPECT_EQ(db.rows("SELECT e, p, f, [r s], s, q FROM t"), "1|12.34|1.5|-1.5|a b|0");
  const QueryCase errors[] = {
      {"CREATE TABLE t (a LONG)", "error 3010"},          {"CREATE TABLE u (a LONG, A TEXT)", "error 3191"},
      {"CREATE TABLE u (a COUNTER(5, 2))", "error 3259"}, {"DROP TABLE nowhere", "error 3376"},
      {"ALTER TABLE nowhere ADD a LONG", "error 3376"},   {"CREATE INDEX i ON t (nothing)", "error 3409"},
  };
  for (const auto& [sql, expected] : errors) EXPECT_EQ(db.run(sql), expected) << sql;
}

TEST(Ddl, ConstraintsAndIndexes) {
  SqlDatabase db;
  db.script(R"(
    CREATE TABLE p (id LONG PRIMARY KEY, k TEXT(10) CONSTRAINT uk UNIQUE, w LONG);
    CREATE TABLE f (id LONG CONSTRAINT fkey PRIMARY KEY, p LONG REFERENCES p, k TEXT(10), x LONG,
                    CONSTRAINT two UNIQUE (k, x), CONSTRAINT fp FOREIGN KEY (x) REFERENCES p (id) ON DELETE SET NULL);
    CREATE INDEX d ON p (w DESC, k) WITH IGNORE NULL;
    CREATE UNIQUE INDEX u ON p (w) WITH DISALLOW NULL;
  )");
  EXPECT_NE(indexesOf(db.catalog(), u"p").find("d -w k ignore"), std::string::npos)
      << indexesOf(db.catalog(), u"p");
  EXPECT_NE(indexesOf(db.catalog(), u"p").find("PrimaryKey id primary unique"), std::string::npos);
  EXPECT_NE(indexesOf(db.catalog(), u"p").find("u w unique required"), std::string::npos);
  EXPECT_NE(indexesOf(db.catalog(), u"f").find("two k x unique"), std::string::npos);
  ASSERT_EQ(db.catalog().relations().size(), 2u);
  const QueryCase steps[] = {
      {"INSERT INTO p VALUES (1, 'a', 1)", "1"},
      {"INSERT INTO f VALUES (1, 1, 'x', 1)", "1"},
      {"INSERT INTO f VALUES (2, 5, 'y', 1)", "error 3201"},
      {"CREATE INDEX pk2 ON p (k) WITH PRIMARY", "error 3283"},
      {"CREATE TABLE z (a LONG REFERENCES f (x))", "error 3609"},
      {"CREATE TABLE z (a LONG REFERENCES nowhere)", "error 3371"},
      {"ALTER TABLE f DROP CONSTRAINT nothing", "error 3371"},
      {"ALTER TABLE f DROP CONSTRAINT fp", "0"},
      {"ALTER TABLE f DROP CONSTRAINT two", "0"},
      {"ALTER TABLE f ADD CONSTRAINT again FOREIGN KEY (x) REFERENCES p (id) ON DELETE CASCADE", "0"},
      {"DROP INDEX d ON p", "0"},
      {"DROP INDEX d ON p", "error 3372"},
      {"DROP TABLE p", "error 3281"},
  };
  for (const auto& [sql, expected] : steps) EXPECT_EQ(db.run(sql), expected) << sql;
  EXPECT_EQ(indexesOf(db.catalog(), u"f").find("two"), std::string::npos);
}

TEST(Ddl, AlterColumns) {
  SqlDatabase db;
  db.script(R"(
    CREATE TABLE p (id LONG CONSTRAINT PrimaryKey PRIMARY KEY);
    CREATE TABLE t (id COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, n LONG DEFAULT 3, s TEXT(10), p LONG CONSTRAINT tp REFERENCES p, m MEMO);
    CREATE INDEX sn ON t (s, n DESC);
    INSERT INTO p VALUES (1);
    INSERT INTO t (n, s, p, m) VALUES (5, '12', 1, 'memo');
    INSERT INTO t (s) VALUES ('34');
    DELETE FROM t WHERE n = 3;
    INSERT INTO t (s) VALUES ('35');
  )");
  const QueryCase steps[] = {
      {"ALTER TABLE t ADD COLUMN z TEXT(5) NOT NULL, y BIT", "0"},
      {"ALTER TABLE t DROP COLUMN n", "error 3280"},
      {"ALTER TABLE t ALTER COLUMN n TEXT(4)", "0"},
      {"ALTER TABLE t ALTER COLUMN s LONG", "0"},
      {"ALTER TABLE t ALTER n SET DEFAULT 'd'", "0"},
      {"ALTER TABLE t ALTER COLUMN m LONG", "error 3421"},
      {"INSERT INTO t (s, z) VALUES (36, 'q')", "1"},
      {"ALTER TABLE t DROP COLUMN y", "0"},
  };
  for (const auto& [sql, expected] : steps) EXPECT_EQ(db.run(sql), expected) << sql;
  EXPECT_EQ(columnsOf(db.catalog(), u"t"),
            "id 4 counter; n 10(4) default 'd'; s 4; p 4; m 12; z 10(5) required");
  EXPECT_EQ(db.rows("SELECT id, n, s, p, m FROM t ORDER BY id"), "1|5|12|1|memo; 3|3|35|-|-; 4|d|36|-|-");
  EXPECT_NE(indexesOf(db.catalog(), u"t").find("sn s -n"), std::string::npos);
  EXPECT_EQ(db.run("INSERT INTO t (p, z) VALUES (9, 'q')"), "error 3201");
  std::string faults;
  checkDatabase(db.catalog(), [&](const std::u16string& fault) { faults += toUtf8(fault) + "\n"; });
  EXPECT_EQ(faults, "");
}

}  // namespace jet::sql::test
