#include <gtest/gtest.h>

#include "sql_fixture.h"

namespace jet::sql::test {

namespace {

class DmlTest : public testing::Test {
 protected:
  DmlTest() {
    db_.script(R"(
      CREATE TABLE g (id LONG CONSTRAINT PrimaryKey PRIMARY KEY, n TEXT(10) NOT NULL);
      CREATE TABLE t (id COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, a LONG DEFAULT 7, s TEXT(5), g LONG,
                      d DATETIME DEFAULT Date(), m MEMO, CONSTRAINT tg FOREIGN KEY (g) REFERENCES g (id));
      CREATE UNIQUE INDEX sa ON t (s, a);
      INSERT INTO g VALUES (1, 'jeden');
      INSERT INTO g VALUES (2, 'dwa');
    )");
  }
  // Runs statements one after the other; each must have its result.
  void check(std::initializer_list<QueryCase> cases) {
    for (const auto& [sql, expected] : cases) EXPECT_EQ(db_.run(sql), expected) << sql;
  }
  SqlDatabase db_;
};

}  // namespace

TEST_F(DmlTest, Insert) {
  check({
      {"INSERT INTO t (s, a, g) VALUES ('x', 1+1, 1)", "1"},
      {"INSERT INTO t (s) VALUES ('y')", "1"},
      {"INSERT INTO t VALUES (10, '5', 'z', Null, #1/2/2003#, 'memo')", "1"},
      {"INSERT INTO t (t.s, a) VALUES ('w', 2.5)", "1"},
      {"INSERT INTO t (s) VALUES ('toolong')", "error 3163"},
      {"INSERT INTO t (a) VALUES ('abc')", "error 3421"},
      {"INSERT INTO t (a) VALUES (3000000000)", "error 3349"},
      {"INSERT INTO t (s, a) VALUES ('x', 2)", "error 3022"},
      {"INSERT INTO t (g) VALUES (99)", "error 3201"},
      {"INSERT INTO t (s, a) VALUES ('q')", "error 3346"},
      {"INSERT INTO t (s, nothing) VALUES ('q', 1)", "error 3127"},
      {"INSERT INTO t (s, s) VALUES ('q', 'q')", "error 3063"},
      {"INSERT INTO nowhere (s) VALUES ('q')", "error 3192"},
      {"INSERT INTO t (s) VALUES (q)", "error 3061"},
      {"INSERT INTO t (a) VALUES (1/0)", "error 11"},
      {"INSERT INTO g (id) VALUES (3)", "error 3314"},
      {"INSERT INTO g VALUES (Null, 'x')", "error 3058"},
      {"INSERT INTO g VALUES ((SELECT max(id) FROM g) + 1, 'nowy')", "1"},
  });
  EXPECT_EQ(db_.rows("SELECT id, a, s, g, m FROM t"), "1|2|x|1|-; 2|7|y|-|-; 10|5|z|-|memo; 11|2|w|-|-");
  EXPECT_EQ(db_.rows("SELECT count(*) FROM t WHERE d = Date()"), "3");
  EXPECT_EQ(db_.rows("SELECT @@IDENTITY"), "11");
  EXPECT_EQ(db_.rows("SELECT max(id) FROM g"), "3");
}

TEST_F(DmlTest, InsertFromQueries) {
  check({
      {"INSERT INTO t (s, g) SELECT n, id FROM g", "2"},
      {"INSERT INTO t (a, s) SELECT a+1, s FROM t", "2"},
      {"INSERT INTO g SELECT id+10 AS id, n FROM g", "2"},
      {"INSERT INTO g (id, n) SELECT id+20, Null FROM g", "error 3314"},
      {"INSERT INTO g SELECT id AS nokol, n FROM g", "error 3127"},
      {"INSERT INTO g (id) SELECT id, n FROM g", "error 3346"},
      {"INSERT INTO g (id, n) SELECT 50/(id-11), n FROM g", "error 11"},
      {"INSERT INTO g (id, n) SELECT 100, 'a' UNION SELECT 101, 'b'", "2"},
  });
  EXPECT_EQ(db_.rows("SELECT s, a, g FROM t ORDER BY id"), "jeden|7|1; dwa|7|2; jeden|8|-; dwa|8|-");
  EXPECT_EQ(db_.rows("SELECT id, n FROM g ORDER BY id"), "1|jeden; 2|dwa; 11|jeden; 12|dwa; 100|a; 101|b");
}

TEST_F(DmlTest, UpdatesSeeTheOldValues) {
  db_.script(
      "INSERT INTO t (s, a, g) VALUES ('x', 1, 1); INSERT INTO t (s, a, g) VALUES ('y', 2, 2); INSERT INTO t "
      "(s, a) VALUES ('z', 3)");
  check({
      {"UPDATE t SET a = id, id = 5", "error 3164"},
      {"UPDATE t SET a = a + 10, g = IIf(a = 2, Null, g)", "3"},
      {"UPDATE t SET a = a + 1 WHERE a >= 11", "3"},  // every row once, whatever the index does
      {"UPDATE t SET s = 'x', a = 12", "error 3022"},
      {"UPDATE t SET g = 77 WHERE s = 'z'", "error 3201"},
      {"UPDATE t SET nothing = 1", "error 3061"},
      {"UPDATE t SET a = 1, a = 2", "error 3063"},
      {"UPDATE t INNER JOIN g ON t.g = g.id SET t.s = Left(g.n, 2), t.m = t.s & g.n", "1"},
      {"UPDATE g LEFT JOIN t ON g.id = t.g SET t.a = 100", "1"},
      {"UPDATE t, g SET t.m = g.n WHERE t.s = 'z' AND g.id = 2", "1"},
      {"UPDATE (SELECT * FROM t) AS x SET a = 1", "error 3073"},
      {"UPDATE t SET a = (SELECT max(id) FROM g) WHERE s = 'y'", "1"},
      {"UPDATE t SET a = nothing WHERE s = 'y'", "error 3061"},
  });
  EXPECT_EQ(db_.rows("SELECT id, s, a, g, m FROM t ORDER BY id"),
            "1|je|100|1|xjeden; 2|y|2|-|-; 3|z|14|-|dwa");
}

TEST_F(DmlTest, Delete) {
  db_.script(
      "INSERT INTO t (s, g) VALUES ('x', 1); INSERT INTO t (s, g) VALUES ('y', 2); INSERT INTO t (s) VALUES "
      "('z')");
  check({
      {"DELETE FROM g WHERE id = 1", "error 3200"},
      {"DELETE FROM t INNER JOIN g ON t.g = g.id", "error 3128"},
      {"DELETE x.* FROM t INNER JOIN g ON t.g = g.id", "error 3086"},
      {"DELETE t.* FROM t INNER JOIN g ON t.g = g.id WHERE n = 'jeden'", "1"},
      {"DELETE * FROM g WHERE id = 1", "1"},
      {"DELETE FROM g WHERE id NOT IN (SELECT g FROM t WHERE g IS NOT NULL)", "0"},
      {"DELETE FROM nowhere", "error 3078"},
      {"DELETE FROM t", "2"},
  });
  EXPECT_EQ(db_.rows("SELECT * FROM t"), "");
  EXPECT_EQ(db_.rows("SELECT id FROM g"), "2");
}

TEST_F(DmlTest, CascadesCountTheNamedRowsOnly) {
  db_.script(R"(
    CREATE TABLE tree (id LONG CONSTRAINT PrimaryKey PRIMARY KEY, up LONG,
                       CONSTRAINT self FOREIGN KEY (up) REFERENCES tree (id) ON DELETE CASCADE ON UPDATE CASCADE);
    INSERT INTO tree VALUES (1, Null); INSERT INTO tree VALUES (2, 1); INSERT INTO tree VALUES (3, 2); INSERT INTO tree VALUES (4, Null);
  )");
  EXPECT_EQ(db_.run("UPDATE tree SET id = 20 WHERE id = 2"), "1");
  EXPECT_EQ(db_.rows("SELECT id, up FROM tree ORDER BY id"), "1|-; 3|20; 4|-; 20|1");
  EXPECT_EQ(db_.run("DELETE FROM tree WHERE id < 4"), "1");
  EXPECT_EQ(db_.rows("SELECT id FROM tree"), "4");
}

TEST_F(DmlTest, AFailingStatementLeavesNothing) {
  db_.repeat(300, "INSERT INTO g VALUES (% + 1000, 'w%')");
  db_.script("INSERT INTO t (s, a) VALUES ('x', 1)");
  // The last row breaks it, after some hundred changes.
  EXPECT_EQ(db_.run("UPDATE g SET n = IIf(id = 1299, Null, 'zmiana')"), "error 3314");
  EXPECT_EQ(db_.run("INSERT INTO g SELECT IIf(id = 1299, 1, id + 5000) AS id, n FROM g"), "error 3022");
  EXPECT_EQ(db_.run("UPDATE g SET id = id + 1 WHERE id >= 1000"), "error 3022");
  EXPECT_EQ(db_.rows("SELECT count(*), max(id), count(n) FROM g WHERE n <> 'zmiana'"), "302|1299|302");
  // Inside of an outer transaction only the statement goes.
  db_.pager().begin();
  EXPECT_EQ(db_.run("DELETE FROM g WHERE id > 1000"), "299");
  EXPECT_EQ(db_.run("INSERT INTO g VALUES (1, 'x')"), "error 3022");
  EXPECT_EQ(db_.rows("SELECT count(*) FROM g"), "3");
  db_.pager().rollback();
  EXPECT_EQ(db_.rows("SELECT count(*) FROM g"), "302");
  EXPECT_EQ(db_.pager().level(), 0);
}

TEST_F(DmlTest, SelectInto) {
  db_.script("INSERT INTO t (s, g, m) VALUES ('x', 1, 'memo'); INSERT INTO t (s) VALUES ('y')");
  check({
      {"SELECT t.id, s, g.n AS nazwa, a/2 AS pol, m, Null AS nic INTO kopia FROM t LEFT JOIN g ON t.g = g.id",
       "2"},
      {"SELECT * INTO kopia FROM t", "error 3010"},
      {"INSERT INTO kopia (s) VALUES ('abcdef')", "error 3163"},
  });
  EXPECT_EQ(db_.rows("SELECT * FROM kopia"), "1|x|jeden|3.5|memo|-; 2|y|-|3.5|-|-");
  EXPECT_EQ(db_.catalog().table(u"kopia")->columns[1].type(), Type::Text);
  EXPECT_TRUE(db_.catalog().table(u"kopia")->indexes.empty());
}

TEST_F(DmlTest, RulesAndDefaults) {
  NewTable table;
  table.name = u"r";
  NewColumn column;
  column.name = u"n";
  column.type = Type::Long;
  column.validationRule = u">0 And <10 Or =-1";
  column.defaultValue = u"=2+3";
  table.columns.push_back(column);
  column = {};
  column.name = u"k";
  column.size = 10;
  column.validationRule = u"Like 'A*' Or Is Null";
  column.validationText = u"Kod zaczyna się od A.";
  column.defaultValue = u"\"Abc\"";
  table.columns.push_back(column);
  table.validationRule = u"[n] <> Len([k])";
  {
    Transaction transaction(db_.pager());
    db_.catalog().createTable(table);
    transaction.commit();
  }
  check({
      {"INSERT INTO r (n) VALUES (1)", "1"},
      {"INSERT INTO r (k) VALUES ('A')", "1"},
      {"INSERT INTO r (n) VALUES (0)", "error 3317"},
      {"INSERT INTO r (n) VALUES (-1)", "1"},
      {"INSERT INTO r (k) VALUES ('B')", "error 3316"},
      {"INSERT INTO r (k) VALUES (Null)", "1"},
      {"UPDATE r SET n = 3 WHERE n = 1", "error 3317"},
      {"UPDATE r SET n = Null", "4"},
  });
  EXPECT_EQ(db_.rows("SELECT * FROM r"), "-|Abc; -|A; -|Abc; -|-");
}

}  // namespace jet::sql::test
