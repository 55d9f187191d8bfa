#include "jet/catalog/table.h"

#include <gmock/gmock.h>

#include <map>
#include <random>

#include "catalog_fixture.h"
#include "jet/format/text.h"
#include "support/other_reader.h"

namespace jet {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Stands in for the expressions of the SQL layer: a default is a number or a text, a rule "< n" or "<> text".
class Rules : public RuleEvaluator {
 public:
  Value defaultValue(const ColumnDef& column) override {
    if (column.type() == Type::Long) return Value(std::stoi(toUtf8(column.defaultValue)));
    return Value(Text(column.defaultValue));
  }
  bool satisfies(const std::u16string& rule, const TableDef& table, int ordinal,
                 std::span<const Value> values) override {
    const Value& value = values[static_cast<size_t>(ordinal >= 0 ? ordinal : table.columnOrdinal(u"number"))];
    if (value.isNull()) return true;
    if (rule.starts_with(u"<> ")) return value.get<Text>() != rule.substr(3);
    return value.get<int32_t>() < std::stoi(toUtf8(rule.substr(2)));
  }
};

class TableTest : public testing::Test {
 protected:
  void SetUp() override {
    db_ = createDatabase(folder_ / "test.mdb", 0x0415);
    db_.pager->begin();
  }
  void TearDown() override {
    if (!db_.pager) return;
    EXPECT_THAT(faults(), IsEmpty());
    db_.pager->commit();
    db_.catalog.reset();
    db_.pager.reset();
    expectOtherReaderAgrees(folder_ / "test.mdb");
  }

  Catalog& catalog() { return *db_.catalog; }
  std::unique_ptr<Table> open(std::u16string_view name) {
    return std::make_unique<Table>(catalog(), catalog().table(name), &rules_);
  }
  std::vector<std::string> faults() {
    std::vector<std::string> found;
    checkDatabase(catalog(), [&](const std::u16string& fault) { found.push_back(toUtf8(fault)); });
    return found;
  }
  // Rows of a table, each as its values joined with '|', in row order.
  std::vector<std::string> rows(std::u16string_view name) {
    const auto table = open(name);
    std::vector<std::string> found;
    for (Heap::Scan scan = table->scan(); scan.next();) {
      std::string text;
      const auto values = table->read(scan.id());
      for (const Value& value : *values) {
        if (!text.empty()) text += '|';
        if (const int32_t* number = value.getIf<int32_t>()) text += std::to_string(*number);
        if (const Text* t = value.getIf<Text>()) text += toUtf8(*t);
        if (value.isNull()) text += '-';
      }
      found.push_back(text);
    }
    return found;
  }

  ScratchFolder folder_;
  OpenDatabase db_;
  Rules rules_;
};

NewColumn column(const char16_t* name, Type type, int size = 0) {
  NewColumn c;
  c.name = name, c.type = type, c.size = size;
  return c;
}

NewIndex index(const char16_t* name, std::vector<std::pair<std::u16string, bool>> columns) {
  NewIndex i;
  i.name = name, i.columns = std::move(columns);
  return i;
}

TEST_F(TableTest, ValuesThatAreNotGivenAreFilledIn) {
  NewTable made{u"t",
                {column(u"id", Type::Long), column(u"number", Type::Long), column(u"name", Type::Text),
                 column(u"flag", Type::Boolean), column(u"other", Type::Text)},
                {},
                {},
                {}};
  made.columns[0].autoNumber = true;
  made.columns[1].defaultValue = u"7";
  made.columns[2].defaultValue = u"nowy";
  catalog().createTable(made);
  auto table = open(u"t");
  const auto id = [&](std::vector<std::optional<Value>> values) {
    return table->read(table->insert(std::move(values)))->at(0).get<int32_t>();
  };
  EXPECT_EQ(id({}), 1);
  EXPECT_EQ(table->lastAutoNumber(), 1);
  EXPECT_EQ(id({std::nullopt, Value(), Value(u"x")}), 2);
  EXPECT_EQ(id({Value(40)}), 40);
  EXPECT_EQ(id({Value(5)}), 5);  // a smaller one does not set the counter back
  EXPECT_EQ(id({Value()}), 41);
  EXPECT_THAT(rows(u"t"),
              ElementsAre("1|7|nowy||-", "2|-|x||-", "40|7|nowy||-", "5|7|nowy||-", "41|7|nowy||-"));
  EXPECT_EQ(catalog().counts(table->def().page).lastAutoNumber, 41);
  // The counter goes back with a transaction that is taken back.
  db_.pager->begin();
  table->insert({});
  db_.pager->rollback();
  EXPECT_EQ(id({}), 42);
}

TEST_F(TableTest, EachRefusalHasItsNumberAndLeavesNothingBehind) {
  NewTable parent{u"parent", {column(u"id", Type::Long)}, {index(u"PrimaryKey", {{u"id", false}})}, {}, {}};
  parent.indexes[0].primary = true;
  catalog().createTable(parent);
  NewTable made{
      u"t",
      {column(u"id", Type::Long), column(u"number", Type::Long), column(u"name", Type::Text, 10),
       column(u"memo", Type::Memo), column(u"parent", Type::Long), column(u"code", Type::Text, 5)},
      {index(u"pair", {{u"number", true}, {u"name", false}}), index(u"PrimaryKey", {{u"id", false}})},
      u"< 1000",
      u""};
  made.columns[1].validationRule = u"< 100";
  made.columns[1].validationText = u"Za dużo";
  made.columns[2].required = true;
  made.columns[2].allowZeroLength = false;
  made.columns[3].validationRule = u"<> zakazane";
  made.indexes[0].unique = true;
  made.indexes[1].primary = true;
  catalog().createTable(made);
  Relation relation{u"rel", u"parent", u"t", {{u"id", u"parent"}}};
  catalog().createRelation(relation);
  auto parents = open(u"parent"), table = open(u"t");
  const RowId one = parents->insert({Value(1)});
  const std::u16string memo(5000, u'm');
  const RowId first = table->insert({Value(1), Value(5), Value(u"Łódź"), Value(memo), Value(1)});
  const RowId second = table->insert({Value(2), Value(6), Value(u"b"), Value(memo), Value()});
  const auto before = rows(u"t");
  const PageNumber pages = db_.pager->pageCount();
  const auto counts = catalog().counts(table->def().page);

  using Values = std::vector<std::optional<Value>>;
  struct Case {
    int error;
    Values values;
  };
  const std::vector<Case> cases{
      {3314, {Value(3), Value(500), Value(), Value(memo), Value(9)}},
      {3315, {Value(3), Value(500), Value(u""), Value(memo), Value(9)}},
      {3163, {Value(3), Value(500), Value(u"12345678901"), Value(memo), Value(9)}},
      {3163, {Value(3), Value(5), Value(u"x"), Value(memo), Value(), Value(u"123456")}},
      {3316, {Value(), Value(500), Value(u"x"), Value(memo), Value(9)}},
      {3317, {Value(), Value(50), Value(u"x"), Value(u"zakazane"), Value(9)}},
      {3058, {Value(), Value(5), Value(u"łódź "), Value(memo), Value(9)}},
      {3022, {Value(1), Value(50), Value(u"x"), Value(memo), Value(9)}},
      {3022, {Value(3), Value(5), Value(u"łódź  "), Value(memo), Value(9)}},
      {3201, {Value(3), Value(50), Value(u"x"), Value(memo), Value(9)}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(errorOf([&] { table->insert(c.values); }), c.error);
    std::vector<Table::Change> changes;
    for (size_t i = 0; i < c.values.size(); ++i) changes.push_back({static_cast<int>(i), *c.values[i]});
    EXPECT_EQ(errorOf([&] { table->update(second, changes); }), c.error);
  }
  EXPECT_EQ(errorOf([&] { parents->remove(one); }), 3200);
  const Table::Change renumber{0, Value(8)};
  EXPECT_EQ(errorOf([&] { parents->update(one, {&renumber, 1}); }), 3200);
  const RowId gone{first.page, 200};
  EXPECT_EQ(errorOf([&] { table->remove(gone); }), 3167);
  EXPECT_EQ(errorOf([&] { table->update(gone, {&renumber, 1}); }), 3167);

  EXPECT_EQ(rows(u"t"), before);
  EXPECT_EQ(db_.pager->pageCount(), pages);
  EXPECT_EQ(catalog().counts(table->def().page).rows, counts.rows);
  // What is forbidden for one row is fine for another, or once the obstacle is gone.
  const std::vector<Table::Change> same{{0, Value(1)}, {1, Value(5)}, {2, Value(u"ŁÓDŹ")}, {4, Value(1)}};
  table->update(first, same);
  table->insert({Value(3), Value(), Value(u"b")});  // Null in a unique key collides with nothing
  table->insert({Value(4), Value(), Value(u"b")});
  table->remove(first);
  parents->update(one, {&renumber, 1});
  parents->remove(one);
}

TEST_F(TableTest, TextsOfTheRulesAreInTheErrors) {
  NewTable made{u"t", {column(u"number", Type::Long)}, {}, u"< 10", u""};
  made.columns[0].validationRule = u"< 100";
  made.columns[0].validationText = u"Za dużo";
  catalog().createTable(made);
  auto table = open(u"t");
  const auto described = [&](int number) {
    try {
      table->insert({Value(number)});
    } catch (const Error& error) {
      return toUtf8(error.description());
    }
    return std::string();
  };
  EXPECT_EQ(described(500), "Za dużo");
  EXPECT_THAT(described(50), testing::AllOf(testing::HasSubstr("< 10"), testing::HasSubstr("'t'")));
}

// a(id) <- b(id, a) <- c(b), all cascading; d(a) refers without cascade or with "set Null".
class CascadeTest : public TableTest {
 protected:
  void make(bool setNull) {
    const auto keyed = [&](const char16_t* name, std::vector<NewColumn> columns) {
      NewTable made{name, std::move(columns), {index(u"PrimaryKey", {{u"id", false}})}, {}, {}};
      made.indexes[0].primary = true;
      catalog().createTable(made);
    };
    keyed(u"a", {column(u"id", Type::Text, 10)});
    keyed(u"b", {column(u"id", Type::Long), column(u"a", Type::Text, 10)});
    NewTable c{u"c", {column(u"b", Type::Long), column(u"text", Type::Memo)}, {}, {}, {}};
    catalog().createTable(c);
    keyed(u"d", {column(u"id", Type::Long), column(u"a", Type::Text, 10)});
    Relation ab{u"ab", u"a", u"b", {{u"id", u"a"}}};
    ab.cascadeUpdates = ab.cascadeDeletes = true;
    catalog().createRelation(ab);
    Relation bc{u"bc", u"b", u"c", {{u"id", u"b"}}};
    bc.cascadeUpdates = bc.cascadeDeletes = true;
    catalog().createRelation(bc);
    Relation ad{u"ad", u"a", u"d", {{u"id", u"a"}}};
    ad.cascadeNull = setNull;
    catalog().createRelation(ad);
    auto a = open(u"a"), b = open(u"b"), c2 = open(u"c");
    one_ = a->insert({Value(u"one")});
    a->insert({Value(u"two")});
    for (int i = 0; i < 4; ++i) b->insert({Value(i), Value(i < 2 ? u"ONE" : u"two")});
    for (int i = 0; i < 8; ++i) c2->insert({Value(i / 2), Value(std::u16string(100, u'x'))});
  }
  RowId one_;
};

TEST_F(CascadeTest, DeletesAndUpdatesGoDown) {
  make(false);
  auto a = open(u"a"), b = open(u"b");
  Table::Change rename{0, Value(u"Uno")};
  a->update(one_, {&rename, 1});
  EXPECT_THAT(rows(u"b"), ElementsAre("0|Uno", "1|Uno", "2|two", "3|two"));
  // The same key in other letters: nothing to do below.
  rename.value = Value(u"UNO");
  a->update(one_, {&rename, 1});
  EXPECT_THAT(rows(u"b"), ElementsAre("0|Uno", "1|Uno", "2|two", "3|two"));
  a->remove(one_);
  EXPECT_THAT(rows(u"b"), ElementsAre("2|two", "3|two"));
  EXPECT_EQ(rows(u"c").size(), 4u);
}

TEST_F(CascadeTest, OneRefusalTakesEverythingBack) {
  make(false);
  auto a = open(u"a"), d = open(u"d");
  d->insert({Value(1), Value(u"one")});
  EXPECT_EQ(errorOf([&] { a->remove(one_); }), 3200);
  const Table::Change rename{0, Value(u"uno")};
  EXPECT_EQ(errorOf([&] { a->update(one_, {&rename, 1}); }), 3200);
  EXPECT_EQ(rows(u"b").size(), 4u);
  EXPECT_EQ(rows(u"c").size(), 8u);
  EXPECT_EQ(rows(u"b")[0], "0|ONE");
  // The rule of a row further down refuses the cascade.
  Property rule{u"ValidationRule", Type::Memo, true, {}};
  PropertySet set;
  set.setText(u"ValidationRule", u"<> uno", Type::Memo);
  catalog().setColumnProperty(u"b", u"a", set.items[0]);
  open(u"d")->remove([&] {
    auto table = open(u"d");
    Heap::Scan scan = table->scan();
    EXPECT_TRUE(scan.next());
    return scan.id();
  }());
  EXPECT_EQ(errorOf([&] { open(u"a")->update(one_, {&rename, 1}); }), 3404);
  EXPECT_EQ(rows(u"b")[0], "0|ONE");
}

TEST_F(CascadeTest, SetNullKeepsTheRows) {
  make(true);
  auto a = open(u"a"), d = open(u"d");
  d->insert({Value(1), Value(u"one")});
  d->insert({Value(2), Value(u"two")});
  a->remove(one_);
  EXPECT_THAT(rows(u"d"), ElementsAre("1|-", "2|two"));
}

TEST_F(TableTest, LongChainsOfOneTableGoAtOnce) {
  NewTable made{u"tree",
                {column(u"id", Type::Long), column(u"parent", Type::Long)},
                {index(u"PrimaryKey", {{u"id", false}})},
                {},
                {}};
  made.indexes[0].primary = true;
  catalog().createTable(made);
  Relation self{u"self", u"tree", u"tree", {{u"id", u"parent"}}};
  self.cascadeDeletes = true;
  catalog().createRelation(self);
  auto tree = open(u"tree");
  const RowId root = tree->insert({Value(0), Value(0)});  // a row may refer to itself
  EXPECT_EQ(errorOf([&] { tree->insert({Value(1), Value(2)}); }), 3201);
  for (int i = 1; i < 20000; ++i) tree->insert({Value(i), Value(i - 1)});
  tree->remove(root);
  EXPECT_THAT(rows(u"tree"), IsEmpty());
}

TEST_F(TableTest, RowsTooLongMoveTheirMemosOut) {
  NewTable made{u"t", {}, {}, {}, {}};
  for (int i = 0; i < 35; ++i) {
    made.columns.push_back(
        column(fromUtf8("c" + std::to_string(i)).c_str(), i < 5 ? Type::Text : Type::Memo, 255));
  }
  for (NewColumn& c : made.columns) c.compressed = false;
  catalog().createTable(made);
  auto table = open(u"t");
  std::vector<std::optional<Value>> values(35);
  for (size_t i = 0; i < 35; ++i)
    values[i] = Value(std::u16string(i < 5 ? 250 : 32, static_cast<char16_t>(u'a' + i)));
  const RowId row = table->insert(values);
  auto read = *table->read(row);
  for (size_t i = 0; i < 35; ++i) EXPECT_EQ(read[i], *values[i]);
  // Memos in the row, then longer texts beside them.
  for (size_t i = 0; i < 5; ++i) values[i] = Value(u"short");
  const RowId second = table->insert(values);
  std::vector<Table::Change> changes;
  for (int i = 0; i < 5; ++i) changes.push_back({i, Value(std::u16string(255, u'z'))});
  table->update(second, changes);
  EXPECT_EQ(table->read(second)->at(34), *values[34]);
  EXPECT_EQ(table->read(second)->at(4), changes[4].value);
  table->remove(row);
  table->remove(second);
}

TEST_F(TableTest, IndexScansKeepToTheirRange) {
  NewTable made{u"t",
                {column(u"a", Type::Long), column(u"b", Type::Text)},
                {index(u"up", {{u"a", false}, {u"b", false}}), index(u"down", {{u"a", true}})},
                {},
                {}};
  catalog().createTable(made);
  auto table = open(u"t");
  for (int i = 0; i < 50; ++i)
    for (const char16_t* b : {u"x", u"y", u"ż"}) table->insert({Value(i), Value(b)});
  const auto key = [&](int real, std::vector<Value> values) { return table->indexKey(real, values); };
  const auto found = [&](int real, const Table::KeyRange& range, bool backwards) {
    std::vector<int> numbers;
    Table::IndexScan scan(*table, real, range, backwards);
    while (scan.next()) numbers.push_back(table->read(scan.row())->at(0).get<int32_t>());
    return numbers;
  };
  const int up = table->def().index(u"up")->real, down = table->def().index(u"down")->real;
  struct Case {
    const char* name;
    int real;
    Table::KeyRange range;
    size_t count;
    int first, last;
  };
  const std::vector<Case> cases{
      {"all", up, {}, 150, 0, 49},
      {"equal", up, {key(up, {Value(7)}), key(up, {Value(7)})}, 3, 7, 7},
      {"equal, two columns",
       up,
       {key(up, {Value(7), Value(u"Y ")}), key(up, {Value(7), Value(u"y")})},
       1,
       7,
       7},
      {"from", up, {key(up, {Value(45)}), ""}, 15, 45, 49},
      {"above", up, {key(up, {Value(45)}), "", true}, 12, 46, 49},
      {"to", up, {"", key(up, {Value(4)})}, 15, 0, 4},
      {"below", up, {"", key(up, {Value(4)}), false, true}, 12, 0, 3},
      {"between", up, {key(up, {Value(10)}), key(up, {Value(20)}), true, true}, 27, 11, 19},
      {"nothing", up, {key(up, {Value(60)}), key(up, {Value(70)})}, 0, 0, 0},
      {"descending", down, {key(down, {Value(20)}), key(down, {Value(10)})}, 33, 20, 10},
      {"descending below", down, {key(down, {Value(20)}), "", true}, 60, 19, 0},
  };
  for (const Case& c : cases) {
    const auto forward = found(c.real, c.range, false);
    ASSERT_EQ(forward.size(), c.count) << c.name;
    auto backward = found(c.real, c.range, true);
    std::reverse(backward.begin(), backward.end());
    EXPECT_EQ(forward, backward) << c.name;
    if (c.count == 0) continue;
    EXPECT_EQ(forward.front(), c.first) << c.name;
    EXPECT_EQ(forward.back(), c.last) << c.name;
  }
}

// Random changes of a table with five indexes, a memo and a cascading relationship to itself.
TEST_F(TableTest, AgreesWithAMap) {
  NewTable made{u"t",
                {column(u"id", Type::Long), column(u"parent", Type::Long), column(u"name", Type::Text, 50),
                 column(u"when", Type::Date), column(u"text", Type::Memo), column(u"price", Type::Currency)},
                {index(u"PrimaryKey", {{u"id", false}}), index(u"name", {{u"name", false}}),
                 index(u"when", {{u"when", true}, {u"name", false}}), index(u"price", {{u"price", false}})},
                {},
                {}};
  made.indexes[0].primary = true;
  made.indexes[3].ignoreNulls = true;
  catalog().createTable(made);
  Relation self{u"self", u"t", u"t", {{u"id", u"parent"}}};
  self.cascadeDeletes = self.cascadeUpdates = true;
  catalog().createRelation(self);
  ASSERT_EQ(catalog().table(u"t")->realIndexes.size(), 5u);

  struct Row {
    RowId where;
    std::vector<Value> values;
  };
  std::map<int32_t, Row> model;
  std::mt19937 random(17);
  auto table = open(u"t");
  const auto someId = [&]() -> Value {
    if (model.empty() || random() % 5 == 0) return {};
    auto it = model.lower_bound(static_cast<int32_t>(random() % 20000));
    return Value(it == model.end() ? model.begin()->first : it->first);
  };
  const auto randomText = [&](size_t longest) {
    static const std::u16string letters = u"aąbcćdeę fghi-jklłmnńoóprsśtuwyzźżAŻ";
    std::u16string text;
    for (size_t length = random() % longest; text.size() < length;)
      text += letters[random() % letters.size()];
    return text;
  };
  const auto randomRow = [&](int32_t id) {
    std::vector<Value> values{
        Value(id), someId(), Value(randomText(50)), Value(Date{40000.0 + random() % 1000 / 8.0}),
        Value(),   Value()};
    const size_t kind = random() % 10;
    if (kind > 0) values[4] = Value(randomText(kind == 1 ? 9000 : kind < 4 ? 900 : 40));
    if (random() % 2) values[5] = Value(Currency{static_cast<int64_t>(random())});
    return values;
  };
  const std::function<void(int32_t)> removeFromModel = [&](int32_t id) {
    model.erase(id);
    std::vector<int32_t> children;
    for (const auto& [child, row] : model)
      if (row.values[1] == Value(id)) children.push_back(child);
    for (const int32_t child : children)
      if (model.contains(child)) removeFromModel(child);
  };
  // Rows that go in together refer to each other too; one that is refused takes all back.
  const auto insertMany = [&] {
    Transaction level(*db_.pager);
    Table::Insertion insertion(*table, random() % 2 ? 500 : 100'000);
    std::map<int32_t, Row> added;
    for (size_t count = random() % 60; added.size() < count;) {
      const auto id = static_cast<int32_t>(random() % 20000);
      std::vector<Value> values = randomRow(id);
      if (!added.empty() && random() % 4 == 0) values[1] = Value(added.rbegin()->first);
      RowId where;
      const int error = errorOf([&] { where = insertion.insert({values.begin(), values.end()}); });
      ASSERT_EQ(error, model.contains(id) || added.contains(id) ? 3022 : 0);
      if (error != 0) return;
      added[id] = {where, std::move(values)};
    }
    insertion.finish();
    level.commit();
    model.merge(added);
  };
  for (int step = 0; step < 10000; ++step) {
    const size_t action = random() % 10;
    if (step % 100 == 0) {
      ASSERT_NO_FATAL_FAILURE(insertMany());
    } else if (action < 5 || model.empty()) {
      const auto id = static_cast<int32_t>(random() % 20000);
      std::vector<Value> values = randomRow(id);
      std::vector<std::optional<Value>> given(values.begin(), values.end());
      RowId where;
      const int error = errorOf([&] { where = table->insert(given); });
      ASSERT_EQ(error, model.contains(id) ? 3022 : 0);
      if (error == 0) model[id] = {where, std::move(values)};
    } else {
      auto it = model.lower_bound(static_cast<int32_t>(random() % 20000));
      if (it == model.end()) it = model.begin();
      const int32_t id = it->first;
      if (action < 9) {
        const bool renumber = random() % 8 == 0;
        std::vector<Value> values = randomRow(renumber ? static_cast<int32_t>(random() % 20000) : id);
        std::vector<Table::Change> changes;
        for (int i = renumber ? 0 : 1; i < 6; ++i)
          if (renumber || random() % 2) changes.push_back({i, values[static_cast<size_t>(i)]});
        if (changes.empty()) continue;
        const int32_t newId = values[0].get<int32_t>();
        const bool taken = newId != id && model.contains(newId);
        // Its own old number is no parent any more when it gets a new one.
        const bool orphan = renumber && newId != id && values[1] == Value(id);
        const int error = errorOf([&] { table->update(it->second.where, changes); });
        ASSERT_EQ(error, taken ? 3022 : orphan ? 3201 : 0);
        if (error != 0) continue;
        for (const Table::Change& change : changes)
          it->second.values[static_cast<size_t>(change.ordinal)] = change.value;
        if (newId != id) {
          auto node = model.extract(it);
          node.key() = newId;
          model.insert(std::move(node));
          for (auto& [child, row] : model)
            if (row.values[1] == Value(id)) row.values[1] = Value(newId);
        }
      } else {
        table->remove(it->second.where);
        removeFromModel(id);
      }
    }
    if (step % 2500 == 2499) {
      ASSERT_THAT(faults(), IsEmpty()) << step;
    }
  }
  size_t count = 0;
  for (Heap::Scan scan = table->scan(); scan.next(); ++count) {
    const auto values = *table->read(scan.id());
    const auto expected = model.find(values[0].get<int32_t>());
    ASSERT_NE(expected, model.end());
    EXPECT_EQ(values, expected->second.values);
    EXPECT_EQ(scan.id(), expected->second.where);
  }
  EXPECT_EQ(count, model.size());
  EXPECT_GT(count, 100u);
  std::vector<RowId> all;
  for (const auto& [id, row] : model) all.push_back(row.where);
  for (const RowId row : all)
    if (table->fetch(row)) table->remove(row);
  EXPECT_THAT(rows(u"t"), IsEmpty());
}

}  // namespace
}  // namespace jet
