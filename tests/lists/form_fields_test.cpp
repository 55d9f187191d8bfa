#include "lists/form_fields.h"

#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QCompleter>
#include <QTest>
#include <QVBoxLayout>

#include "list_fixture.h"
#include "lists/lookup_combo.h"
#include "lists/rst_check.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

TEST(FormFields, DatesAreReadInTheUsualForms) {
  const QDate november(2026, 11, 22);
  const struct {
    QString typed;
    QDate expected;
  } cases[] = {
      {u"22.11.2026"_s, november},
      {u"22-11-2026"_s, november},
      {u"2026-11-22"_s, november},
      {u"22/11/2026"_s, november},
      {u" 22.11.26 r. "_s, november},
      {u"2.1.1999"_s, QDate(1999, 1, 2)},
      {u"2.1.99"_s, QDate(1999, 1, 2)},
      {u"29.02.2024"_s, QDate(2024, 2, 29)},
      {u"29.02.2023"_s, {}},
      {u"31.11.2026"_s, {}},
      {u"11.22.2026"_s, {}},
      {u"22.11"_s, {}},
      {u"22.11.0026"_s, {}},
      {u"jutro"_s, {}},
      {{}, {}},
  };
  for (const auto& c : cases) EXPECT_EQ(dateFromText(c.typed), c.expected) << c.typed.toStdString();
}

TEST(FormFields, NumbersAreReadAndShownThePolishWay) {
  const struct {
    QString typed;
    bool money;
    std::optional<double> number;
    QString shown;
  } cases[] = {
      {u"12,5"_s, false, 12.5, u"12,5"_s},
      {u"12.5"_s, false, 12.5, u"12,5"_s},
      {u" 1 234 567,25 "_s, false, 1234567.25, u"1234567,25"_s},
      {u"1\u00a0234"_s, true, 1234.0, u"1234,00"_s},
      {u"-3"_s, false, -3.0, u"-3"_s},
      {u",5"_s, true, 0.5, u"0,50"_s},
      {u"0,1234"_s, true, 0.1234, u"0,1234"_s},
      {u"0,12345"_s, true, {}, u"0,12345"_s},
      {u"0,000001"_s, false, 0.000001, u"0,000001"_s},
      {u"999999999999"_s, true, 999999999999.0, u"999999999999,00"_s},
      {u"9999999999999"_s, true, {}, u"9999999999999"_s},
      {u"1 234,50 zł"_s, true, 1234.5, u"1234,50"_s},
      {u"1,2,3"_s, false, {}, u"1,2,3"_s},
      {u"-"_s, false, {}, u"-"_s},
      {u","_s, false, {}, u","_s},
      {u"5-2"_s, false, {}, u"5-2"_s},
      {{}, false, {}, {}},
  };
  for (const auto& c : cases) {
    NumberField field;
    if (c.money) field.setMoney();
    field.setText(c.typed);
    EXPECT_EQ(field.number(), c.number) << c.typed.toStdString();
    EXPECT_EQ(field.isSound(), c.number || c.shown.isEmpty()) << c.typed.toStdString();
    Q_EMIT field.editingFinished();
    EXPECT_EQ(field.text(), c.shown);
  }
  NumberField field;
  field.setNumber(1.0 / 3);
  EXPECT_EQ(field.text(), u"0,333333"_s);
  EXPECT_EQ(field.number(), 1.0 / 3);  // what was not touched keeps its decimals
}

TEST(FormFields, AFaultStandsBesideTheFieldUntilItIsMended) {
  QWidget form;
  auto* column = new QVBoxLayout(&form);
  auto* date = new DateField;
  auto* next = new QLineEdit;
  date->setObjectName(u"txtData"_s);
  column->addWidget(date);
  column->addWidget(next);
  form.show();
  QApplication::setActiveWindow(&form);
  date->setFocus();
  QTest::keyClicks(date, u"30.2.2024"_s);
  EXPECT_EQ(form.findChild<QLabel*>(u"txtDataBlad"_s), nullptr);
  QTest::keyClick(date, Qt::Key_Tab);
  auto* label = form.findChild<QLabel*>(u"txtDataBlad"_s);
  ASSERT_NE(label, nullptr);
  EXPECT_TRUE(label->isVisible());
  EXPECT_EQ(label->text(), u"Błędna data"_s);
  EXPECT_EQ(form.focusWidget(), next);
  date->setFocus();
  date->clear();
  EXPECT_FALSE(label->isVisible());
  QTest::keyClicks(date, u"2024-2-28"_s);
  QTest::keyClick(date, Qt::Key_Tab);
  EXPECT_FALSE(label->isVisible());
  EXPECT_EQ(date->text(), u"28.02.2024"_s);
}

struct LookupTest : testing::Test, ListFixture {
  LookupTest() : ListFixture({u"Biurko"_s, u"Drabina"_s, u"Biurko"_s, u"Szafa"_s}) {
    form.setLayout(new QVBoxLayout);
    combo = new QComboBox;
    form.layout()->addWidget(combo);
    form.layout()->addWidget(new QLineEdit);
    makeSearchable(*combo);
    fill();
    form.show();
    QApplication::setActiveWindow(&form);
    combo->setFocus();
  }
  void fill() {
    fillLookup(*combo, session.database(), u"SELECT id, name FROM thing ORDER BY name, id"_s, true);
  }
  void typeOver(const QString& text) {
    combo->lineEdit()->selectAll();
    QTest::keyClicks(combo->lineEdit(), text);
  }
  // Out of the field by the keyboard; a list of matches that is open on a screen takes its own keys.
  void leave() {
    combo->completer()->popup()->hide();
    QApplication::setActiveWindow(&form);
    QTest::keyClick(combo->lineEdit(), Qt::Key_Tab);
  }
  QWidget form;
  QComboBox* combo = nullptr;
};

TEST_F(LookupTest, RowsAreThereByKey) {
  EXPECT_EQ(combo->count(), 5);
  EXPECT_EQ(comboNumber(*combo), 0);
  EXPECT_TRUE(setComboKey(*combo, 3));
  EXPECT_EQ(combo->currentIndex(), 2);
  sql(u"INSERT INTO thing (name) VALUES ('Antena')"_s);
  fill();
  EXPECT_EQ(combo->count(), 6);
  EXPECT_EQ(comboNumber(*combo), 3);  // stays chosen
  sql(u"DELETE FROM thing WHERE id = 3"_s);
  fill();
  EXPECT_EQ(comboNumber(*combo), 0);
  EXPECT_FALSE(setComboKey(*combo, 99));
}

TEST_F(LookupTest, TypingSearchesAndWhatIsNoEntryGivesWay) {
  typeOver(u"af"_s);
  EXPECT_EQ(combo->completer()->completionCount(), 1);
  EXPECT_EQ(combo->completer()->currentCompletion(), u"Szafa"_s);
  typeOver(u"szafa"_s);
  leave();
  EXPECT_EQ(comboNumber(*combo), 4);
  EXPECT_EQ(combo->currentText(), u"Szafa"_s);
  combo->setFocus();
  typeOver(u"RAB"_s);  // of one entry only
  leave();
  EXPECT_EQ(comboNumber(*combo), 2);
  setComboKey(*combo, 4);
  combo->setFocus();
  typeOver(u"Szafirek"_s);
  leave();
  EXPECT_EQ(comboNumber(*combo), 4);
  EXPECT_EQ(combo->currentText(), u"Szafa"_s);

  // The second of two entries of one name stays chosen.
  combo->setFocus();
  setComboKey(*combo, 3);
  for (const auto key : {Qt::Key_Return, Qt::Key_Tab}) {
    QTest::keyClick(combo->lineEdit(), key);
    EXPECT_EQ(comboNumber(*combo), 3);
  }
}

TEST(RstCheck, TheFirstFieldWithoutAValueIsTold) {
  TestSession files;
  jet::Workspace workspace;
  const auto database = workspace.createDatabase(toPath(files.file(u"a.mdb"_s)), jet::kPolishLocale);
  jet::NewTable table;
  table.name = u"swpra";
  const auto add = [&table](std::u16string name, jet::Type type, bool required,
                            std::optional<bool> emptyText) {
    jet::NewColumn column;
    column.name = std::move(name);
    column.type = type;
    column.required = required;
    column.allowZeroLength = emptyText;
    table.columns.push_back(column);
  };
  add(u"Indpra", jet::Type::Long, true, {});
  table.columns.back().autoNumber = true;
  add(u"Nazwisko", jet::Type::Text, true, true);
  add(u"Imie", jet::Type::Text, false, false);
  add(u"Indgpc", jet::Type::Long, true, {});
  add(u"Uwagi", jet::Type::Memo, true, true);
  database->define([&table](jet::Catalog& catalog) { catalog.createTable(table); });
  const auto rows = database->openRecordset(u"SELECT *, 1 AS Obce FROM swpra");
  const jet::Value name(u"Nowak"), group(int32_t{1}), none, empty(u"");
  const auto missing = [](const QString& field) {
    return u"Pole ["_s + field + u"] nie może być puste. Wprowadź dane i spróbuj ponownie."_s;
  };
  const QString shortText =
      u"Wymagane jest wprowadzenie danych do pola [Imie]. Wprowadź dane i spróbuj ponownie."_s;
  const struct {
    jet::Value surname, firstName, group, notes;
    QString told;
  } cases[] = {
      {name, none, group, name, {}},
      {none, none, none, none, missing(u"Nazwisko"_s)},
      {empty, name, group, name, missing(u"Nazwisko"_s)},
      {name, empty, none, none, shortText},
      {name, name, none, name, missing(u"Indgpc"_s)},
      {name, name, group, empty, missing(u"Uwagi"_s)},
  };
  for (const auto& c : cases) {
    rows->addNew();
    rows->field(u"Nazwisko").setValue(c.surname);
    rows->field(u"Imie").setValue(c.firstName);
    rows->field(u"Indgpc").setValue(c.group);
    rows->field(u"Uwagi").setValue(c.notes);
    EXPECT_EQ(RstCheck(*database, *rows, u"SWPRA"_s, files.messages), c.told.isEmpty());
    if (!c.told.isEmpty()) {
      EXPECT_EQ(files.messages.takeOnly().text, c.told);
    }
    rows->cancelUpdate();
  }
}

}  // namespace
}  // namespace tandeko
