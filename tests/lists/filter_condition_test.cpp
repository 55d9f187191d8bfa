#include "lists/filter_condition.h"

#include <gtest/gtest.h>

#include "lists/filter_store.h"
#include "session/names.h"
#include "support/scripted_messages.h"
#include "support/temp_folder.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

FilterOperator named(FieldKind kind, const QString& display) {
  for (const FilterOperator& op : filterOperators(kind))
    if (op.display == display) return op;
  ADD_FAILURE() << display.toStdString() << " is not offered";
  return {};
}

FilterCondition condition(const QString& logical, const QString& field, const QString& op,
                          const QString& value) {
  return {logical, field, field.toUpper(), op, value, op};
}

TEST(FilterCondition, ValuesAsStoredAndAsShown) {
  const struct {
    FieldKind kind;
    const char16_t* op;
    FilterEntry entry;
    const char16_t* value;  // null: missing
    const char16_t* shown;
  } cases[] = {
      {FieldKind::Text, u"=", {u"abc"_s, {}, {}, true}, u"'abc'", u"'abc'"},
      {FieldKind::Text, u"podobna do", {u"abc"_s, {}, {}, true}, u"'*abc*'", u"'abc'"},
      {FieldKind::Text, u"niepodobna do", {u"a*c"_s, {}, {}, true}, u"'*a*c*'", u"'a*c'"},
      {FieldKind::Text, u"=", {u"O'Neil"_s, {}, {}, true}, u"'O''Neil'", u"'O''Neil'"},
      {FieldKind::Text, u"podobna do", {u"[nowy"_s, {}, {}, true}, u"'*[[]nowy*'", u"'[[]nowy'"},
      {FieldKind::Text, u"=", {}, u"''", u"''"},
      {FieldKind::Text, u"pusta", {u"abc"_s, {}, {}, true}, u"", u""},
      {FieldKind::Number, u">=", {{}, u"12,50"_s, {}, true}, u"12.50", u"12.50"},
      {FieldKind::Number, u"=", {{}, u" "_s, {}, true}, nullptr, nullptr},
      {FieldKind::Number, u"niepusta", {{}, u" "_s, {}, true}, u"", u""},
      {FieldKind::Date, u"<", {{}, {}, QDate(2026, 2, 3), true}, u"DateValue('03.02.2026')", u"03.02.2026"},
      {FieldKind::Date, u"=", {}, nullptr, nullptr},
      {FieldKind::Date, u"< dzisiaj", {}, u"", u""},
      {FieldKind::YesNo, u"=", {{}, {}, {}, true}, u"True", u"Tak"},
      {FieldKind::YesNo, u"<>", {{}, {}, {}, false}, u"False", u"Nie"},
  };
  for (const auto& c : cases) {
    const FilterOperator op = named(c.kind, QString::fromUtf16(c.op));
    const auto value = filterValue(c.kind, op, c.entry);
    ASSERT_EQ(value.has_value(), c.value != nullptr) << op.display.toStdString();
    if (!value) continue;
    EXPECT_EQ(*value, QString::fromUtf16(c.value));
    EXPECT_EQ(shownValue(*value), QString::fromUtf16(c.shown));
    if (!op.takesValue()) continue;
    const FilterEntry back = filterEntry(c.kind, *value);
    EXPECT_EQ(filterValue(c.kind, op, back), value) << "an edited condition changes by itself";
    EXPECT_EQ(back.text, c.kind == FieldKind::Text ? c.entry.text : QString());
  }
}

TEST(FilterCondition, OperatorsFollowTheKindOfColumn) {
  const auto offers = [](FieldKind kind, const QString& sql) {
    for (const FilterOperator& op : filterOperators(kind))
      if (op.sql == sql) return true;
    return false;
  };
  EXPECT_TRUE(offers(FieldKind::Text, u"NOT LIKE"_s));
  EXPECT_FALSE(offers(FieldKind::Number, u"LIKE"_s));
  EXPECT_FALSE(offers(FieldKind::Text, u"> Date()"_s));
  EXPECT_TRUE(offers(FieldKind::Date, u"> Date()"_s));
  EXPECT_FALSE(offers(FieldKind::YesNo, u">"_s));
  EXPECT_EQ(named(FieldKind::Number, u"pusta"_s).sql, u"Is Null"_s);
  EXPECT_EQ(named(FieldKind::Date, u"= dzisiaj"_s).sql, u"= Date()"_s);
}

TEST(FilterCondition, TextsOfAFilter) {
  const FilterCondition a = condition(u"And"_s, u"a"_s, u"="_s, u"1"_s);
  const FilterCondition b = condition(u"Or"_s, u"b"_s, u"Is Null"_s, {});
  const FilterCondition c = condition(u"And"_s, u"c"_s, u"="_s, u"True"_s);
  const FilterCondition sum = condition(u"Or"_s, u"Sum(d)"_s, u">"_s, u"5"_s);
  const struct {
    QList<FilterCondition> conditions;
    const char16_t* condition;
    const char16_t* sums;
    const char16_t* description;
  } cases[] = {
      {{}, u"", u"", u""},
      {{a}, u" And ( a = 1 )", u"", u"A = 1; "},
      {{b}, u" And ( b Is Null  )", u"", u"B Is Null ; "},
      {{a, b}, u" And ( a = 1 Or b Is Null  )", u"", u"A = 1; B Is Null ; "},
      {{a, b, c}, u" And ( a = 1 Or b Is Null  And c = True )", u"", u"A = 1; B Is Null ; C = Tak; "},
      {{sum}, u"", u" And ( Sum(d) > 5 )", u"SUM(D) > 5; "},
      {{sum, c, a}, u" And ( c = True And a = 1 )", u" And ( Sum(d) > 5 )", u"C = Tak; A = 1; SUM(D) > 5; "},
  };
  for (const auto& test : cases) {
    const FilterTexts texts = filterTexts(test.conditions);
    EXPECT_EQ(texts.condition, QString::fromUtf16(test.condition));
    EXPECT_EQ(texts.sums, QString::fromUtf16(test.sums));
    EXPECT_EQ(texts.description, QString::fromUtf16(test.description));
    EXPECT_EQ(texts.any(), !test.conditions.isEmpty());
  }
}

TEST(FilterCondition, LinesOfTheEditor) {
  EXPECT_EQ(conditionLine(1, {}), u"1. Nowy warunek..."_s);
  FilterCondition shown{u"Or"_s,   u"ewkar.Nazwa"_s, u"Nazwa przedmiotu"_s,
                        u"LIKE"_s, u"'*biur*'"_s,    u"podobna do"_s};
  EXPECT_EQ(conditionLine(2, shown), u"2. lub Kolumna[Nazwa przedmiotu] podobna do 'biur'"_s);
  shown.logical = u"And"_s;
  EXPECT_EQ(conditionLine(12, shown), u"12. i Kolumna[Nazwa przedmiotu] podobna do 'biur'"_s);
}

TEST(FilterStore, EveryPrintableNameAndEveryValueComesBack) {
  const TempFolder folder;
  FileRegistry registry(QString::fromStdString((folder / "registry").string()));
  FilterStore store(registry, u"karEWKAR"_s);
  const QStringList names = {
      u"50% taniej"_s, u"a\\b\\c"_s, u"%5C i %25"_s, u"[x]=\"y\"; ł/Ż"_s,
      u"\\"_s,         u"%"_s,       u"x%255C"_s,    u"#;='\"`~!@$^&*(){}|<>?,.:+-_"_s};
  for (const QString& name : names) {
    FilterCondition kept = condition(u"Or"_s, name, u"LIKE"_s, u"'*"_s + name + u"*'"_s);
    ASSERT_TRUE(store.save(name, {kept, FilterCondition{}}));
    EXPECT_TRUE(store.contains(name));
    EXPECT_EQ(store.load(name), QList<FilterCondition>{kept}) << name.toStdString();
  }
  QStringList stored = store.names();
  stored.sort();
  QStringList expected = names;
  expected.sort();
  EXPECT_EQ(stored, expected);
  EXPECT_TRUE(registry.hasKey(kFiltersKey + u"\\karEWKAR\\50% taniej\\1"_s));
  EXPECT_TRUE(FilterStore(registry, u"karSWPRA"_s).names().isEmpty());
  ASSERT_TRUE(store.remove(u"a\\b\\c"_s));
  EXPECT_EQ(store.names().size(), names.size() - 1);
}

TEST(FilterStore, ManyConditionsKeepTheirOrderAndOldOnesGo) {
  MemoryRegistry registry;
  FilterStore store(registry, u"karEWKAR"_s);
  QList<FilterCondition> many;
  for (int i = 1; i <= 12; ++i) many << condition(u"And"_s, u"f%1"_s.arg(i), u"="_s, QString::number(i));
  ASSERT_TRUE(store.save(u"dwanaście"_s, many));
  EXPECT_EQ(store.load(u"dwanaście"_s), many);
  ASSERT_TRUE(store.save(u"Dwanaście"_s, {many[3]}));
  EXPECT_EQ(store.load(u"dwanaście"_s), QList<FilterCondition>{many[3]});
  EXPECT_EQ(store.names(), QStringList{u"Dwanaście"_s});
}

TEST(FilterStore, WordsThatAStatementWouldRunAreNotTakenFromTheRegistry) {
  MemoryRegistry registry;
  FilterStore store(registry, u"karEWKAR"_s);
  ASSERT_TRUE(store.save(u"x"_s, {condition(u"And"_s, u"a"_s, u"="_s, u"1"_s)}));
  registry.write(kFiltersKey + u"\\karEWKAR\\x\\1"_s, u"Operator logiczny"_s, u"Xor 1=1) Or ("_s);
  EXPECT_EQ(store.load(u"x"_s).first().logical, u"And"_s);
}

}  // namespace
}  // namespace tandeko
