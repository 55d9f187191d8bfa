#include <gtest/gtest.h>

#include "sql_fixture.h"

namespace jet::sql::test {

namespace {

// Small tables with Nulls, repeated keys and texts that differ in case only.
class SelectTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    db_ = new SqlDatabase;
    db_->script(R"(
      CREATE TABLE t (id LONG CONSTRAINT PrimaryKey PRIMARY KEY, a LONG, s TEXT(50), m MEMO, d DATETIME, c CURRENCY, b BIT);
      INSERT INTO t VALUES (1, 10, 'Ala', 'x', #1/2/2001#, 1.5, True);
      INSERT INTO t VALUES (2, 20, 'ala ', NULL, #3/4/2002#, 2.5, False);
      INSERT INTO t VALUES (3, NULL, 'Łoś', 'y', NULL, NULL, True);
      INSERT INTO t VALUES (4, 20, NULL, 'z', #1/2/2001#, 10, False);
      INSERT INTO t VALUES (5, 10, 'lis', 'x', #5/6/1999#, -1, True);
      CREATE TABLE u (id LONG CONSTRAINT PrimaryKey PRIMARY KEY, t LONG, n TEXT(20), s TEXT(50));
      CREATE INDEX t ON u (t);
      INSERT INTO u VALUES (1, 1, 'jeden', 'ALA');
      INSERT INTO u VALUES (2, 1, 'dwa', 'lis');
      INSERT INTO u VALUES (3, 3, 'trzy', NULL);
      INSERT INTO u VALUES (4, NULL, 'nic', 'ala');
      INSERT INTO u VALUES (5, 9, 'obcy', 'kot');
      CREATE TABLE e (x LONG, y TEXT(10));
    )");
  }
  static void TearDownTestSuite() {
    delete db_;
    db_ = nullptr;
  }
  static void check(std::initializer_list<QueryCase> cases) {
    for (const auto& [sql, expected] : cases) EXPECT_EQ(db_->rows(sql), expected) << sql;
  }
  static SqlDatabase* db_;
};

SqlDatabase* SelectTest::db_ = nullptr;

}  // namespace

TEST_F(SelectTest, ConditionsAndNulls) {
  check({
      {"SELECT id FROM t WHERE a = 10", "1; 5"},
      {"SELECT id FROM t WHERE a <> 10", "2; 4"},
      {"SELECT id FROM t WHERE NOT a = 10", "2; 4"},
      {"SELECT id FROM t WHERE a = Null", ""},
      {"SELECT id FROM t WHERE a IS NULL OR s IS NULL", "3; 4"},
      {"SELECT id FROM t WHERE IsNull(a)", "3"},
      {"SELECT id FROM t WHERE s = 'ALA'", "1; 2"},
      {"SELECT id FROM t WHERE s LIKE 'a*'", "1; 2"},
      {"SELECT id FROM t WHERE s LIKE 'ala'", "1"},
      {"SELECT id FROM t WHERE s NOT LIKE 'a*'", "3; 5"},
      {"SELECT id FROM t WHERE s LIKE '[kl]?s'", "5"},
      {"SELECT id FROM t WHERE s ALIKE '%o_'", "3"},
      {"SELECT id FROM t WHERE a LIKE '1*'", "1; 5"},
      {"SELECT id FROM t WHERE a BETWEEN 15 AND 5", "1; 5"},
      {"SELECT id FROM t WHERE a NOT BETWEEN 5 AND 15", "2; 4"},
      {"SELECT id FROM t WHERE a IN (20, 30)", "2; 4"},
      {"SELECT id FROM t WHERE a IN (20, NULL)", "2; 4"},
      {"SELECT id FROM t WHERE a NOT IN (20, NULL)", ""},
      {"SELECT id FROM t WHERE b", "1; 3; 5"},
      {"SELECT id FROM t WHERE b = -1 AND NOT b = False", "1; 3; 5"},
      {"SELECT id FROM t WHERE d = #1/2/2001# AND c > 1.5", "4"},
      {"SELECT id FROM t WHERE d < Date() AND Year(d) = 1999", "5"},
      {"SELECT id FROM t WHERE a AND 4", "2; 4"},
      {"SELECT id FROM t WHERE a = '10'", "error 3464"},
      {"SELECT id FROM t WHERE s > 5", "error 3464"},
      {"SELECT id FROM t WHERE 1 = 0", ""},
      {"SELECT id FROM t WHERE IIf(a = 20, 1/0, 1) = 1", "error 11"},
      {"SELECT id FROM t WHERE a = 20 AND IIf(a = 20, 1, 1/0) = 1", "2; 4"},
  });
}

TEST_F(SelectTest, OutputsAndWithoutFrom) {
  check({
      {"SELECT 1+1, 'a' & Null, Null & Null, 5 Mod 3", "2|a|-|2"},
      {"SELECT 2^3, -2^2, 7\\2, 7/2", "8|-4|3|3.5"},
      {"SELECT id, a*2 AS x, x+1 AS y FROM t WHERE id = 1", "1|20|21"},
      {"SELECT id, 1/(a-10) FROM t WHERE id < 3", "1|-; 2|0.1"},
      {"SELECT IIf(a Is Null, 'brak', a) FROM t WHERE id IN (1, 3)", "10; brak"},
      {"SELECT Choose(id, 'a', 'b'), Switch(id=1, 'x', id=2, 1/0) FROM t WHERE id IN (1, 5)", "a|x; -|-"},
      {"SELECT True, b, c*2 FROM t WHERE id = 1", "-1|-1|3"},
      {"SELECT x.id FROM t AS x WHERE x.id = 1", "1"},
      {"SELECT [id] FROM [t] WHERE [t].[s] = 'lis'", "5"},
      {"SELECT Left(s, 2) FROM t WHERE s IS NOT NULL AND left$(s, 1) = 'l'", "li"},
      {"SELECT nofunction(1)", "error 3085"},
      {"SELECT Left('a')", "error 3075"},
      {"SELECT id FROM t WHERE nocolumn = 1 AND other = 2", "error 3061"},
      {"SELECT id FROM nowhere", "error 3078"},
      {"nowhere", "error 3078"},
      {"[no where]", "error 3078"},
      {"SELEKT id FROM t", "error 3129"},
      {"SELECT id FROM t, u", "error 3079"},
      {"SELECT z.id FROM t", "error 3061"},
      {"SELECT t.* FROM t, t", "error 3074"},
      {"SELECT a AS x, b AS x FROM t", "error 3062"},
      {"SELECT y+1 AS x, x+1 AS y FROM t", "error 3103"},
      {"SELECT *", "error 3067"},
  });
}

TEST_F(SelectTest, NamesOfColumns) {
  const QueryCase cases[] = {
      {"SELECT id, a AS [Nowa], count(*) FROM t GROUP BY id, a", "id,Nowa,Expr1002"},
      {"SELECT t.id, u.id, n FROM t, u", "t.id,u.id,n"},
      {"SELECT x.id, u.n FROM t AS x, u", "id,n"},
      {"SELECT t.s, u.s AS s2 FROM t, u", "s,s2"},
      {"SELECT * FROM t INNER JOIN u ON t.id = u.t", "t.id,a,t.s,m,d,c,b,u.id,t,n,u.s"},
      {"SELECT id, id FROM t", "Expr1000,id"},
      {"SELECT 1, id+1, s FROM t UNION SELECT id, id, s FROM t", "Expr1000,Expr1001,s"},
      {"SELECT id AS s, s FROM t", "s,t.s"},
  };
  for (const auto& [sql, expected] : cases) EXPECT_EQ(db_->names(sql), expected) << sql;
}

TEST_F(SelectTest, Joins) {
  check({
      {"SELECT t.id, u.id FROM t, u WHERE t.id = u.t ORDER BY u.id", "1|1; 1|2; 3|3"},
      {"SELECT t.id, u.id FROM t INNER JOIN u ON t.id = u.t ORDER BY 2", "1|1; 1|2; 3|3"},
      {"SELECT t.id, u.id FROM t LEFT JOIN u ON t.id = u.t ORDER BY t.id, u.id",
       "1|1; 1|2; 2|-; 3|3; 4|-; 5|-"},
      {"SELECT t.id, u.id FROM t RIGHT JOIN u ON t.id = u.t ORDER BY u.id", "1|1; 1|2; 3|3; -|4; -|5"},
      {"SELECT t.id, u.id FROM t LEFT JOIN u ON t.id = u.t WHERE u.id IS NULL ORDER BY t.id",
       "2|-; 4|-; 5|-"},
      {"SELECT t.id, u.id FROM t LEFT JOIN u ON (t.id = u.t AND u.n LIKE 'd*') ORDER BY t.id",
       "1|2; 2|-; 3|-; 4|-; 5|-"},
      {"SELECT t.id, u.id FROM t LEFT JOIN u ON (t.id = u.t AND t.a = 99) ORDER BY t.id",
       "1|-; 2|-; 3|-; 4|-; 5|-"},
      {"SELECT t.id, u.id FROM t INNER JOIN u ON t.s = u.s ORDER BY t.id, u.id", "1|1; 1|4; 2|1; 2|4; 5|2"},
      {"SELECT t.id, u.id FROM t INNER JOIN u ON t.id < u.t AND u.id = 3 ORDER BY t.id", "1|3; 2|3"},
      {"SELECT t.id, u.id FROM t LEFT JOIN u ON t.id > u.t ORDER BY t.id, u.id",
       "1|-; 2|1; 2|2; 3|1; 3|2; 4|1; 4|2; 4|3; 5|1; 5|2; 5|3"},
      {"SELECT count(*) FROM t, u", "25"},
      {"SELECT count(*) FROM t, e", "0"},
      {"SELECT count(*) FROM t LEFT JOIN e ON t.id = e.x", "5"},
      {"SELECT t.id, u.id, v.id FROM (t INNER JOIN u ON t.id = u.t) LEFT JOIN u AS v ON u.s = v.n ORDER BY "
       "u.id",
       "1|1|-; 1|2|-; 3|3|-"},
      {"SELECT t.id, v.id FROM t LEFT JOIN (u INNER JOIN u AS v ON u.s = v.s) ON t.id = u.t ORDER BY t.id, "
       "v.id",
       "1|1; 1|2; 1|4; 2|-; 3|-; 4|-; 5|-"},
      {"SELECT a.id, b.id, u.id FROM t AS a, t AS b, u WHERE a.a = b.a AND b.id = u.t ORDER BY 1, 2, 3",
       "1|1|1; 1|1|2; 5|1|1; 5|1|2"},
      {"SELECT t.id FROM t, u WHERE t.id = u.t AND (u.n = 'dwa' OR t.s = 'Łoś') ORDER BY t.id", "1; 3"},
      {"SELECT t.id FROM t INNER JOIN u ON t.id = u.n", "error 3464"},
      {"SELECT t.id FROM (t LEFT JOIN u ON t.id = u.t) INNER JOIN u AS v ON u.id = v.id", "error 3258"},
      {"SELECT t.id FROM e, t INNER JOIN u ON e.x = u.t", "error 3082"},
  });
}

TEST_F(SelectTest, OuterJoinsOverManyRowsUseTheHashTable) {
  SqlDatabase db;
  db.script("CREATE TABLE p (k LONG, v TEXT(20)); CREATE TABLE q (k DOUBLE, w LONG)");
  db.repeat(200, "INSERT INTO p VALUES (%, 'v%')");
  db.repeat(200, "INSERT INTO q VALUES (% * 2, % Mod 3)");
  EXPECT_NE(db.explain("SELECT * FROM p LEFT JOIN q ON p.k = q.k").find("outer hash join"),
            std::string::npos);
  EXPECT_EQ(db.rows("SELECT count(*), count(w) FROM p LEFT JOIN q ON p.k = q.k"), "200|100");
  EXPECT_EQ(db.rows("SELECT count(*), count(p.k) FROM p RIGHT JOIN q ON (p.k = q.k AND w = 1)"), "200|33");
  EXPECT_EQ(db.rows("SELECT count(*) FROM p, q WHERE p.k = q.k AND w = 1"), "33");
}

TEST_F(SelectTest, GroupsAndAggregates) {
  check({
      {"SELECT count(*), count(a), sum(a), avg(a), min(a), max(a), first(a), last(a) FROM t",
       "5|4|60|15|10|20|10|10"},
      {"SELECT count(*), count(x), sum(x), max(y) FROM e", "0|0|-|-"},
      {"SELECT a, count(*), sum(c) FROM t GROUP BY a", "-|1|-; 10|2|0.5; 20|2|12.5"},
      {"SELECT s, count(*) FROM t GROUP BY s", "-|1; Ala|2; lis|1; Łoś|1"},
      {"SELECT a FROM t GROUP BY a HAVING count(*) > 1 ORDER BY sum(c) DESC", "20; 10"},
      {"SELECT a+1, count(*) AS ile FROM t GROUP BY a+1 ORDER BY ile, 1", "-|1; 11|2; 21|2"},
      {"SELECT t.a, count(*)*2+a FROM t WHERE a > 0 GROUP BY a", "10|14; 20|24"},
      {"SELECT sum(a*c) FROM t", "255"},
      {"SELECT max(s), min(s) FROM t", "Łoś|Ala"},
      {"SELECT x.n, count(*) FROM (SELECT a AS n FROM t) AS x GROUP BY x.n", "-|1; 10|2; 20|2"},
      {"SELECT id, a FROM t GROUP BY a", "error 3122"},
      {"SELECT sum(id) FROM t WHERE sum(id) > 1", "error 3096"},
      {"SELECT sum(count(*)) FROM t", "error 3095"},
      {"SELECT a FROM t GROUP BY sum(a)", "error 3098"},
      {"SELECT * FROM t GROUP BY a", "error 3121"},
      {"SELECT (SELECT count(*) FROM u WHERE u.t = t.a) FROM t GROUP BY t.a", "0; 0; 0"},
      {"SELECT 'x' FROM t HAVING count(*) > 5", ""},
  });
}

TEST_F(SelectTest, OrderDistinctTop) {
  check({
      {"SELECT id FROM t ORDER BY s", "4; 1; 2; 5; 3"},
      {"SELECT id FROM t ORDER BY s DESC", "3; 5; 1; 2; 4"},
      {"SELECT id FROM t ORDER BY a DESC, id DESC", "4; 2; 5; 1; 3"},
      {"SELECT id, c FROM t ORDER BY 2", "3|-; 5|-1; 1|1.5; 2|2.5; 4|10"},
      {"SELECT id AS x FROM t ORDER BY x DESC", "5; 4; 3; 2; 1"},
      {"SELECT id FROM t ORDER BY -id", "5; 4; 3; 2; 1"},
      {"SELECT id FROM t ORDER BY b, id", "1; 3; 5; 2; 4"},
      {"SELECT t.id, u.id FROM t, u WHERE t.id = u.t ORDER BY u.id DESC", "3|3; 1|2; 1|1"},
      {"SELECT DISTINCT a FROM t", "10; 20; -"},
      {"SELECT DISTINCT s FROM t ORDER BY s", "-; Ala; lis; Łoś"},
      {"SELECT DISTINCT a, b FROM t ORDER BY a DESC, b", "20|0; 10|-1; -|-1"},
      {"SELECT DISTINCTROW t.id FROM t INNER JOIN u ON t.id = u.t", "1; 3"},
      {"SELECT DISTINCT a FROM t ORDER BY id", "error 3093"},
      {"SELECT TOP 2 id FROM t", "1; 2"},
      {"SELECT TOP 2 id FROM t ORDER BY a", "3; 1; 5"},
      {"SELECT TOP 1 id FROM t ORDER BY id DESC", "5"},
      {"SELECT TOP 50 PERCENT id FROM t ORDER BY id", "1; 2; 3"},
      {"SELECT TOP 40 PERCENT id FROM t", "1; 2"},
      {"SELECT DISTINCT TOP 1 a FROM t", "10"},
      {"SELECT TOP 0 id FROM t ORDER BY id", ""},
      {"SELECT id FROM t ORDER BY 9", "error 3070"},
      {"SELECT id FROM t ORDER BY nocolumn", "error 3061"},
  });
}

TEST_F(SelectTest, Unions) {
  check({
      {"SELECT a FROM t UNION SELECT t FROM u ORDER BY a", "-; 1; 3; 9; 10; 20"},
      {"SELECT a FROM t UNION ALL SELECT a FROM t WHERE a = 10 ORDER BY 1", "-; 10; 10; 10; 10; 20; 20"},
      {"SELECT s FROM t UNION SELECT s FROM u ORDER BY s", "-; Ala; kot; lis; Łoś"},
      {"SELECT 1 UNION ALL SELECT 1 UNION SELECT 2 UNION ALL SELECT 2", "1; 2; 2"},
      {"SELECT id, 'x' FROM t WHERE id = 1 UNION SELECT 'tekst', 5 FROM t WHERE id = 1", "1|x; tekst|5"},
      {"SELECT 1, Null FROM t WHERE id=1 UNION SELECT 1.5, 'a' FROM t WHERE id=1", "1|-; 1.5|a"},
      {"TABLE e UNION SELECT id, n FROM u WHERE id = 1", "1|jeden"},
      {"(SELECT 1 UNION ALL SELECT 1) UNION ALL (SELECT 1 UNION SELECT 1)", "1; 1; 1"},
      {"SELECT TOP 1 id FROM t UNION SELECT TOP 1 id+1 FROM t", "1; 2"},
      {"SELECT id FROM t UNION SELECT id, t FROM u", "error 3307"},
      {"SELECT id FROM t UNION SELECT id FROM u ORDER BY n", "error 3351"},
      {"SELECT id FROM t UNION SELECT id FROM u ORDER BY 2", "error 3351"},
  });
}

TEST_F(SelectTest, LongMemosAreNeitherCutNorConfused) {
  SqlDatabase db;
  db.script("CREATE TABLE l (k LONG, m MEMO)");
  const std::string text(300, 'a'), further(5000, 'b');
  for (const auto& value : {text + "1", text + "2", text + "1", text + further})
    db.run("INSERT INTO l VALUES (1, '" + value + "')");
  EXPECT_EQ(db.rows("SELECT Len(m) FROM (SELECT k, m FROM l UNION SELECT k, m FROM l) AS x ORDER BY 1"),
            "301; 301; 5300");
  EXPECT_EQ(db.rows("SELECT DISTINCT m FROM l WHERE Len(m) > 400"), text + further);
}

TEST_F(SelectTest, Subqueries) {
  check({
      {"SELECT t.s FROM t INNER JOIN (SELECT t.id AS k, t.s FROM t) AS x ON t.id = x.k WHERE x.s = 'lis'",
       "lis"},
      {"SELECT id FROM t WHERE id IN (SELECT t FROM u)", "1; 3"},
      {"SELECT id FROM t WHERE id NOT IN (SELECT t FROM u)", ""},
      {"SELECT id FROM t WHERE id NOT IN (SELECT t FROM u WHERE t IS NOT NULL)", "2; 4; 5"},
      {"SELECT id FROM t WHERE s IN (SELECT s FROM u)", "1; 2; 5"},
      {"SELECT id FROM t WHERE a NOT IN (SELECT x FROM e)", "1; 2; 3; 4; 5"},
      {"SELECT id FROM t WHERE EXISTS (SELECT * FROM u WHERE u.t = t.id)", "1; 3"},
      {"SELECT id FROM t WHERE NOT EXISTS (SELECT * FROM u WHERE u.t = t.id AND n <> 'dwa')", "2; 4; 5"},
      {"SELECT id, (SELECT count(*) FROM u WHERE u.t = t.id) FROM t", "1|2; 2|0; 3|1; 4|0; 5|0"},
      {"SELECT id, (SELECT max(n) FROM u WHERE u.t = t.id) AS x FROM t ORDER BY 2 DESC, 1",
       "3|trzy; 1|jeden; 2|-; 4|-; 5|-"},
      {"SELECT (SELECT id FROM u WHERE id = 99)", "-"},
      {"SELECT (SELECT id FROM u)", "error 3354"},
      {"SELECT (SELECT id, n FROM u WHERE id = 1)", "error 3306"},
      {"SELECT id FROM t WHERE a > ALL (SELECT a FROM t AS x WHERE x.id IN (1, 5))", "2; 4"},
      {"SELECT id FROM t WHERE a >= ANY (SELECT a FROM t WHERE a = 20)", "2; 4"},
      {"SELECT id FROM t WHERE a = SOME (SELECT x FROM e)", ""},
      {"SELECT id FROM t WHERE a > ALL (SELECT x FROM e) ORDER BY id", "1; 2; 3; 4; 5"},
      {"SELECT id FROM t WHERE a = (SELECT max(a) FROM t)", "2; 4"},
      {"SELECT id FROM t AS o WHERE id = (SELECT max(id) FROM t WHERE a = o.a) ORDER BY id", "4; 5"},
      {"SELECT id FROM t AS o WHERE (SELECT count(*) FROM t AS i WHERE i.a = o.a AND EXISTS (SELECT * FROM u "
       "WHERE u.t = i.id AND u.t <= o.id)) = 1",
       "1; 5"},
      {"SELECT x.k FROM (SELECT id AS k, a FROM t WHERE a = 20) AS x WHERE x.k > 2", "4"},
      {"SELECT k FROM [SELECT id AS k FROM t]. AS x WHERE k = 3", "3"},
      {"SELECT id FROM t WHERE id IN (SELECT t FROM u UNION SELECT id FROM u WHERE id = 5)", "1; 3; 5"},
      {"SELECT x.a, y.a FROM (SELECT DISTINCT a FROM t) AS x INNER JOIN (SELECT TOP 1 a FROM t ORDER BY a "
       "DESC) AS y ON x.a = y.a",
       "20|20; 20|20"},
      {"SELECT id FROM t WHERE s IN (SELECT id FROM u)", "error 3464"},
      {"SELECT id FROM t WHERE id IN (SELECT id, t FROM u)", "error 3306"},
  });
}

TEST_F(SelectTest, CorrelatedQueriesWithoutIndexBuildOneHashTable) {
  SqlDatabase db;
  db.script("CREATE TABLE big (k LONG, v LONG)");
  db.repeat(300, "INSERT INTO big VALUES (% - 100 * (% \\ 100), %)");
  EXPECT_EQ(db.rows("SELECT count(*) FROM big AS o WHERE v = (SELECT max(v) FROM big WHERE k = o.k)"), "100");
  EXPECT_EQ(
      db.rows("SELECT count(*) FROM big AS o WHERE EXISTS (SELECT * FROM big WHERE k = o.k AND v > o.v)"),
      "200");
}

TEST_F(SelectTest, Crosstabs) {
  check({
      {"TRANSFORM count(*) SELECT a FROM t GROUP BY a PIVOT b", "-|1|-; 10|2|-; 20|-|2"},
      {"TRANSFORM sum(c) SELECT b, sum(c) AS razem FROM t GROUP BY b PIVOT a IN (20, 10)",
       "-1|0.5|-|0.5; 0|12.5|12.5|-"},
      {"SELECT * FROM t WHERE id IN (TRANSFORM count(*) SELECT a FROM t GROUP BY a PIVOT b)", "error 3306"},
  });
  EXPECT_EQ(db_->names("TRANSFORM count(*) SELECT s FROM t GROUP BY s PIVOT a"), "s,<>,10,20");
  EXPECT_EQ(db_->names("TRANSFORM sum(c) SELECT b, sum(c) AS razem FROM t GROUP BY b PIVOT a IN (20, 10)"),
            "b,razem,20,10");
}

TEST_F(SelectTest, Parameters) {
  const Parameters values = {{u"p", Value(10)}, {u"od dnia", Value(u"2001-01-02")}};
  EXPECT_EQ(db_->rows("SELECT id FROM t WHERE a = p", values), "1; 5");
  EXPECT_EQ(
      db_->rows("PARAMETERS [Od dnia] DATETIME, q TEXT(10); SELECT id FROM t WHERE d = [od DNIA]", values),
      "1; 4");
  EXPECT_EQ(db_->rows("PARAMETERS [Forms!f!p] LONG; SELECT id FROM t WHERE a = Forms!f!p",
                      {{u"Forms!f!p", Value(u"20")}}),
            "2; 4");
  EXPECT_EQ(db_->rows("PARAMETERS q LONG; SELECT id FROM t WHERE a = q", values), "error 3061");
  try {
    db_->engine().query(u"SELECT x, y FROM t WHERE x = z");
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), 3061);
    EXPECT_NE(e.description().find(u"3"), std::u16string::npos) << e.what();
  }
}

TEST_F(SelectTest, TablesByName) {
  EXPECT_EQ(db_->rows("e"), "");
  EXPECT_EQ(db_->names("[u]"), "id,t,n,s");
  EXPECT_EQ(db_->rows("UPDATE t SET a = 1"), "error 3064");
  EXPECT_EQ(db_->run("SELECT 1"), "error 3065");
  EXPECT_TRUE(db_->engine().isQuery(u"u"));
  EXPECT_FALSE(db_->engine().isQuery(u"SELECT * INTO x FROM u"));
}

TEST_F(SelectTest, ResultColumnsDescribeTheirSource) {
  const auto columns = db_->engine().query(u"SELECT s AS nazwa, a, a+0.5, id & '' FROM t")->columns();
  EXPECT_EQ(columns[0].size, 50);
  EXPECT_EQ(columns[0].sourceTable, u"t");
  EXPECT_EQ(columns[0].sourceColumn, u"s");
  EXPECT_EQ(columns[1].type, Type::Long);
  EXPECT_EQ(columns[2].type, Type::Double);
  EXPECT_TRUE(columns[2].sourceColumn.empty());
  EXPECT_EQ(columns[3].type, Type::Text);
}

TEST_F(SelectTest, RowsGoToASinkUntilItStops) {
  struct Sink : RowSink {
    size_t width = 0;
    std::vector<Value> seen;
    void begin(const std::vector<ResultColumn>& columns) override { width = columns.size(); }
    bool row(std::span<const Value> values) override {
      seen.push_back(values[1]);
      return seen.size() < 2;
    }
  } sink;
  db_->engine().query(u"SELECT * FROM t", sink);
  EXPECT_EQ(sink.width, 7u);
  EXPECT_EQ(sink.seen, (std::vector<Value>{Value(10), Value(20)}));
}

TEST_F(SelectTest, Dynasets) {
  auto plan =
      db_->engine().dynaset(u"SELECT s, a*2 AS x, id FROM t WHERE id IN (SELECT t FROM u) ORDER BY id DESC");
  ASSERT_TRUE(plan);
  EXPECT_EQ(plan->ordinals, (std::vector<int>{2, -1, 0}));
  ASSERT_EQ(plan->rows.size(), 2u);
  uint64_t identity = 0, other = 4711;
  const auto row = db_->engine().dynasetRow(*plan, plan->rows[1], identity);
  ASSERT_TRUE(row);
  EXPECT_EQ(*row, (std::vector<Value>{Value(u"Ala"), Value(20), Value(1)}));
  EXPECT_TRUE(db_->engine().dynasetRow(*plan, plan->rows[1], identity));
  EXPECT_FALSE(db_->engine().dynasetRow(*plan, plan->rows[1], other)) << "another record";
  EXPECT_FALSE(db_->engine().dynasetRow(*plan, RowId{1, 200}, identity));
  for (const auto* sql :
       {u"SELECT DISTINCT a FROM t", u"SELECT count(*) FROM t", u"SELECT t.id FROM t, u",
        u"SELECT id FROM t UNION SELECT id FROM u", u"SELECT a FROM t GROUP BY a", u"SELECT 1"})
    EXPECT_FALSE(db_->engine().dynaset(sql)) << toUtf8(sql);
  EXPECT_EQ(db_->engine().dynaset(u"SELECT TOP 2 * FROM t ORDER BY s DESC")->rows.size(), 2u);
  EXPECT_EQ(db_->engine().dynaset(u"u")->rows.size(), 5u);
}

TEST_F(SelectTest, CriteriaOverResultColumns) {
  const auto result = db_->engine().query(u"SELECT t.id, u.id, n FROM t, u");
  const auto matches = db_->engine().criterion(u"[t.id] = 2 And u.id > 1 Or n = 'DWA'", result->columns());
  const std::vector<Value> second = {Value(2), Value(3), Value(u"x")},
                           other = {Value(1), Value(3), Value(u"x")},
                           named = {Value(9), Value(), Value(u"dwa")};
  EXPECT_TRUE(matches(second));
  EXPECT_FALSE(matches(other));
  EXPECT_TRUE(matches(named));
  EXPECT_EQ(
      outcome([&] { return Value(db_->engine().criterion(u"nothing = 1", result->columns())(second)); }),
      "error 3070");
  EXPECT_EQ(outcome([&] { return Value(db_->engine().criterion(u"n =", result->columns())(second)); }),
            "error 3075");
}

}  // namespace jet::sql::test
