#include <gtest/gtest.h>

#include "program_schema.h"
#include "sql_fixture.h"

namespace jet::sql::test {

namespace {

// Enough rows for the choice of a plan to matter.
class PlanTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    db_ = new SqlDatabase;
    db_->script(kProgramSchema);
    db_->script(
        "CREATE INDEX numewi ON ewkar (Numewi); CREATE INDEX data ON ewkar (Datazak DESC); CREATE INDEX cena "
        "ON ewkar (Cenazak)");
    db_->repeat(
        2000,
        "INSERT INTO ewkar (indrew, indpra, parent, Numewi, Nazwa, Datazak, Cenazak, Indgew, Indsew) VALUES "
        "(1 + % Mod 5, % Mod 50, IIf(% Mod 3 = 0, Null, % \\ 4), 'N/%', 'Rzecz %', #1/1/2000# + %, % / 4, 1 "
        "+ % Mod 2, 1)");
  }
  static void TearDownTestSuite() {
    delete db_;
    db_ = nullptr;
  }
  static SqlDatabase* db_;
};

SqlDatabase* PlanTest::db_ = nullptr;

}  // namespace

TEST_F(PlanTest, IndexesAreUsedAndFindTheSameRows) {
  // A condition, what the plan must name, and the condition in a form that no index answers.
  const struct {
    const char* condition;
    const char* plan;
    const char* plain;
  } cases[] = {
      {"indewi = 77", "index seek ewkar.PrimaryKey (indewi =)", "indewi + 0 = 77"},
      {"77 = indewi", "index seek ewkar.PrimaryKey", "indewi + 0 = 77"},
      {"indewi = 77.0", "index seek ewkar.PrimaryKey", "indewi + 0 = 77"},
      {"indewi = 77.5", "index seek ewkar.PrimaryKey", "False"},
      {"indewi = 1E20", "index seek ewkar.PrimaryKey", "False"},
      {"indewi = Null", "index seek ewkar.PrimaryKey", "False"},
      {"indewi IN (5, 900, 900, 7.5, Null, 10)", "index seek ewkar.PrimaryKey (indewi in)",
       "indewi + 0 IN (5, 900, 10)"},
      {"indewi BETWEEN 120 AND 100.5", "index seek ewkar.PrimaryKey (indewi range)",
       "indewi + 0 >= 101 AND indewi + 0 <= 120"},
      {"indewi < 20", "index seek ewkar.PrimaryKey (indewi range)", "indewi + 0 < 20"},
      {"indewi >= 1990 AND indewi < 1E12", "index seek ewkar.PrimaryKey (indewi range)",
       "indewi + 0 >= 1990"},
      {"indewi > 3000000000", "index seek ewkar.PrimaryKey (indewi range)", "False"},
      {"indewi > 5", "index seek ewkar.PrimaryKey (indewi range)",
       "indewi + 0 > 5"},  // too many: read from end to end
      {"indrew = 2 AND indpra = 11", "index seek ewkar.indrew (indrew =, indpra =)",
       "indrew + 0 = 2 AND indpra + 0 = 11"},
      {"indrew = 2 AND indpra < 5", "index seek ewkar.indrew (indrew =, indpra range)",
       "indrew + 0 = 2 AND indpra + 0 < 5"},
      {"indrew = 2 AND indpra >= 40", "index seek ewkar.indrew (indrew =, indpra range)",
       "indrew + 0 = 2 AND indpra + 0 >= 40"},
      {"parent IS NULL AND indewi < 50", "index seek ewkar", "IsNull(parent + 0) AND indewi + 0 < 50"},
      {"parent IS NULL", "ewkar", "IsNull(parent + 0)"},
      {"Numewi = 'n/100'", "index seek ewkar.numewi (Numewi =)", "Numewi & '' = 'n/100'"},
      {"Numewi LIKE 'n/10*'", "index seek ewkar.numewi (Numewi like)", "Numewi & '' LIKE 'n/10*'"},
      {"Numewi LIKE '*100'", "ewkar", "Numewi & '' LIKE '*100'"},
      {"Numewi > 'N/99' AND Numewi <= 'N/995'", "index seek ewkar.numewi (Numewi range)",
       "Numewi & '' > 'N/99' AND Numewi & '' <= 'N/995'"},
      {"Datazak = #3/1/2000#", "index seek ewkar.data (Datazak =)", "Datazak + 0 = #3/1/2000#"},
      {"Datazak > #6/1/2005#", "index seek ewkar.data (Datazak range)", "Datazak + 0 > #6/1/2005#"},
      {"Datazak < #1/20/2000#", "index seek ewkar.data (Datazak range)", "Datazak + 0 < #1/20/2000#"},
      {"Cenazak = 12.25", "index seek ewkar.cena (Cenazak =)", "Cenazak + 0 = 12.25"},
      {"Cenazak < 2.3", "index seek ewkar.cena (Cenazak range)", "Cenazak + 0 < 2.3"},
  };
  for (const auto& [condition, plan, plain] : cases) {
    SCOPED_TRACE(condition);
    const std::string sql = std::string("SELECT indewi FROM ewkar WHERE ") + condition;
    EXPECT_NE(db_->explain(sql).find(plan), std::string::npos) << db_->explain(sql);
    const std::string other = std::string("SELECT indewi FROM ewkar WHERE ") + plain;
    EXPECT_EQ(db_->explain(other).find("index seek"), std::string::npos) << db_->explain(other);
    EXPECT_EQ(db_->rows(sql + " ORDER BY indewi"), db_->rows(other + " ORDER BY indewi"));
  }
}

TEST_F(PlanTest, JoinsStartWhereFewRowsAre) {
  // The dictionaries are hashed, the items are read once.
  const std::string dictionaries = db_->explain(
      "SELECT * FROM swgew, swsew, ewkar WHERE ewkar.indgew = swgew.indgew AND ewkar.indsew = swsew.indsew");
  EXPECT_EQ(dictionaries, "hash join\n  hash join\n    scan ewkar\n    scan swsew\n  scan swgew\n");
  // One item, its parts through the index.
  const std::string parts =
      db_->explain("SELECT * FROM ewkar AS c, ewkar AS p WHERE c.parent = p.indewi AND p.indewi = 7");
  EXPECT_EQ(parts, "nested loop\n  index seek p.PrimaryKey (indewi =)\n  index seek c.parent (parent =)\n");
  const std::string outer =
      db_->explain("SELECT * FROM ewkar AS p LEFT JOIN ewkar AS c ON c.parent = p.indewi WHERE p.indewi = 7");
  EXPECT_EQ(outer,
            "outer nested loop\n  index seek p.PrimaryKey (indewi =)\n  index seek c.parent (parent =)\n");
  // A correlated subquery seeks with the outer row's value.
  EXPECT_EQ(db_->rows("SELECT count(*) FROM ewkar AS p WHERE EXISTS (SELECT * FROM ewkar WHERE parent = "
                      "p.indewi AND indewi = p.indewi * 4)"),
            db_->rows("SELECT count(*) FROM ewkar AS p, ewkar AS c WHERE c.parent + 0 = p.indewi AND "
                      "c.indewi + 0 = p.indewi * 4"));
}

TEST_F(PlanTest, ACountOfKeysThatIsTooHighDoesNotChooseTheIndex) {
  db_->script(
      "CREATE TABLE kind (k LONG CONSTRAINT pk PRIMARY KEY); CREATE TABLE thing (id COUNTER CONSTRAINT pk "
      "PRIMARY KEY, k LONG, holder LONG); CREATE INDEX k ON thing (k); CREATE INDEX holder ON thing (holder)");
  db_->repeat(5, "INSERT INTO kind (k) VALUES (%)");
  db_->repeat(2000, "INSERT INTO thing (k) VALUES (% + 10)");
  db_->script("DELETE FROM thing");  // the count in the file stays
  db_->repeat(2000, "INSERT INTO thing (k, holder) VALUES (1 + % Mod 5, % Mod 9 - 1)");
  EXPECT_EQ(db_->explain("SELECT * FROM kind, thing WHERE kind.k = thing.k"),
            "hash join\n  scan thing\n  scan kind\n");
  EXPECT_EQ(db_->explain("SELECT * FROM kind, thing WHERE kind.k = thing.k AND thing.holder < 0"),
            "hash join\n  index seek thing.holder (holder range)\n  scan kind\n");
}

TEST_F(PlanTest, JoinOrderDoesNotChangeTheRows) {
  const std::string expected = db_->rows(
      "SELECT sum(p.indewi), count(*) FROM (ewkar AS p INNER JOIN swgew ON p.indgew = swgew.indgew) INNER "
      "JOIN ewkar AS c ON p.indewi = c.parent "
      "WHERE swgew.nazwa = 'Meble' AND c.indpra < 25");
  EXPECT_NE(expected, "-|0");
  for (const char* from :
       {"ewkar AS p, swgew, ewkar AS c", "swgew, ewkar AS c, ewkar AS p", "ewkar AS c, ewkar AS p, swgew"})
    EXPECT_EQ(db_->rows(std::string("SELECT sum(p.indewi), count(*) FROM ") + from +
                        " WHERE p.indgew = swgew.indgew AND p.indewi = c.parent AND swgew.nazwa = 'Meble' "
                        "AND c.indpra < 25"),
              expected);
}

TEST_F(PlanTest, TopKeepsTheRowsOfAFullSort) {
  const std::string all = db_->rows("SELECT indewi FROM ewkar ORDER BY indpra DESC, Nazwa");
  const std::string top = db_->rows("SELECT TOP 30 indewi FROM ewkar ORDER BY indpra DESC, Nazwa");
  EXPECT_EQ(all.substr(0, top.size()), top);
  EXPECT_EQ(std::count(top.begin(), top.end(), ';'), 29);
}

}  // namespace jet::sql::test
