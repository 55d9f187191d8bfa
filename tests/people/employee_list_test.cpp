#include <gtest/gtest.h>

#include <QLabel>
#include <QTest>

#include "lists/dlgFiltrUstaw.h"
#include "people/employee_query.h"
#include "people_fixture.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

TEST(EmployeeConditions, TextAndDescription) {
  EmployeeFilter all;
  all.group = 4;
  all.groupName = u"Biuro"_s;
  all.room = u"1"_s;
  all.name = u"Kow"_s;
  all.department = 7;
  all.departmentName = u"Hala"_s;
  EmployeeFilter odd;
  odd.name = u"O'B[*"_s;
  const struct {
    EmployeeFilter filter;
    const char16_t* text;
    const char16_t* description;
  } cases[] = {
      {{}, u"", u""},
      {all,
       u" AND swpra.indgpc = 4 AND swpra.numpok LIKE '1*'  AND ( swpra.nazwisko LIKE 'Kow*' OR swpra.imie "
       u"LIKE 'Kow' )  AND swpra.indkom = 7",
       u"Grupa = Biuro; Nr pokoju = 1; Nazwisko = Kow; Dział firmy = Hala"},
      {odd, u" AND ( swpra.nazwisko LIKE 'O''B[[]**' OR swpra.imie LIKE 'O''B[[]*' ) ", u"Nazwisko = O'B[*"},
  };
  for (const auto& c : cases) {
    const Conditions conditions = employeeConditions(c.filter);
    EXPECT_EQ(conditions.text, QString::fromUtf16(c.text));
    EXPECT_EQ(conditions.description, QString::fromUtf16(c.description));
    EXPECT_EQ(conditions.removable, !conditions.text.isEmpty());
  }
}

struct EmployeeListTest : testing::Test, PeopleFixture {
  karSWPRA* list = new karSWPRA(session);

  void SetUp() override {
    list->resize(900, 500);
    frame.showForm(list);
  }
  QStringList column(int number) {
    QStringList all;
    for (int row = 0; row < list->DataSource().rows(); ++row) all << list->DataSource().cellText(row, number);
    return all;
  }
  QString names() { return column(3).join(u'|'); }
  void type(const char* field, const QString& text) {
    auto* line = child<QLineEdit>(*list, field);
    line->setText(text);
    QTest::keyClick(line, Qt::Key_Return);
  }
  void choose(const char* name, const QString& text) {
    auto* combo = child<QComboBox>(*list, name);
    ASSERT_GE(combo->findText(text), 0);
    combo->setCurrentIndex(combo->findText(text));
  }
  QString description() { return child<QLabel>(*list, "labOpis")->text(); }
};

TEST_F(EmployeeListTest, ShowsEmployeesInTheirColumns) {
  QStringList captions, cells;
  for (int i = 0; i < 11; ++i) {
    captions << list->DataSource().headerData(i, Qt::Horizontal, Qt::DisplayRole).toString();
    cells << list->DataSource().cellText(0, i);
  }
  EXPECT_EQ(captions.join(u'|'),
            u"Aktywny|Grupa|Dział firmy|Nazwisko, imię|Nr pokoju|Telefon|Adres elektroniczny "
            u"(E-Mail)|Wzrost|Nr kolnierza|Nr buta|Uwagi"_s);
  EXPECT_EQ(cells.join(u'|'), u"Tak|Biuro|Dyrekcja|Kowal Jan|12|555||182,5|41||"_s);
  EXPECT_EQ(names(), u"Kowal Jan|Kowalska Janina|Nowak Kow"_s);
  EXPECT_EQ(column(0).join(u'|'), u"Tak|Nie|Tak"_s);
  EXPECT_FALSE(list->supports(Command::Sumuj));
}

TEST_F(EmployeeListTest, QuickFiltersNarrowTheList) {
  const struct {
    const char16_t *name, *room, *group, *department, *found, *description;
  } cases[] = {
      {u"kow", u"", u"", u"", u"Kowal Jan|Kowalska Janina|Nowak Kow", u"Nazwisko = kow"},
      {u"Jan", u"", u"", u"", u"Kowal Jan", u"Nazwisko = Jan"},
      {u"ow", u"", u"", u"", u"", u"Nazwisko = ow"},
      {u"", u"12", u"", u"", u"Kowal Jan|Kowalska Janina", u"Nr pokoju = 12"},
      {u"", u"", u"Biuro", u"", u"Kowal Jan|Nowak Kow", u"Grupa = Biuro"},
      {u"k", u"1", u"Biuro", u"Dyrekcja", u"Kowal Jan",
       u"Grupa = Biuro; Nr pokoju = 1; Nazwisko = k; Dział firmy = Dyrekcja"},
      {u"", u"", u"", u"", u"Kowal Jan|Kowalska Janina|Nowak Kow", u""},
  };
  for (const auto& c : cases) {
    choose("cmbGrupa", QString::fromUtf16(c.group));
    choose("cmbDzial", QString::fromUtf16(c.department));
    type("txtNumpok", QString::fromUtf16(c.room));
    type("txtNazwisko", QString::fromUtf16(c.name));
    EXPECT_EQ(names(), QString::fromUtf16(c.found)) << QString::fromUtf16(c.name).toStdString();
    EXPECT_EQ(description(), QString::fromUtf16(c.description));
  }
}

TEST_F(EmployeeListTest, ANamedFilterIsMergedWithTheQuickOnesAndShown) {
  const QString name = u"swpra.Nazwisko & ' ' & swpra.Imie"_s;
  ASSERT_TRUE(list->columnsQuery().contains(name)) << "the expression that the filter dialog offers";
  FilterStore(registry, list->RegSection())
      .save(u"wysocy"_s, {{u"And"_s, u"swpra.wzrost"_s, u"Wzrost"_s, u">"_s, u"180"_s, u">"_s},
                          {u"Or"_s, name, u"Nazwisko, imię"_s, u"LIKE"_s, u"'*nowak*'"_s, u"podobna do"_s},
                          {u"Or"_s, u"swpra.Aktywny"_s, u"Aktywny"_s, u"="_s, u"False"_s, u"="_s}});
  dlgFiltrUstaw dialog(session, *list);
  child<QPushButton>(dialog, "cmdZastosuj")->click();
  EXPECT_EQ(names(), u"Kowal Jan|Kowalska Janina|Nowak Kow"_s);
  type("txtNumpok", u"1"_s);
  EXPECT_EQ(names(), u"Kowal Jan|Kowalska Janina"_s);
  EXPECT_EQ(description(),
            u"Nr pokoju = 1; Filtr „wysocy”: Wzrost > 180; Nazwisko, imię podobna do '*nowak*'; Aktywny = "
            u"Nie"_s);
  child<QToolButton>(*list, "cmdBezFiltru")->click();
  EXPECT_EQ(names().count(u'|'), 2);
  EXPECT_EQ(description(), QString());
  EXPECT_EQ(child<QLineEdit>(*list, "txtNumpok")->text(), QString());
}

TEST_F(EmployeeListTest, SortingAndBandsBelongToTheLayout) {
  auto* bands = child<BandContainer>(*list, "collSWPRA");
  const auto clickHeader = [this](int column) {
    auto* header = list->grid().horizontalHeader();
    const QPoint at(header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
                    header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, at);
  };
  clickHeader(3);
  EXPECT_EQ(names(), u"Nowak Kow|Kowalska Janina|Kowal Jan"_s);
  clickHeader(1);
  EXPECT_EQ(column(1).join(u'|'), u"Biuro|Biuro|Produkcja"_s);
  bands->setOrder(u"3,1"_s);
  list->KarSaveParam(true);
  karSWPRA again(session);
  EXPECT_EQ(again.sort(), u"3 ASC"_s);
  EXPECT_EQ(child<BandContainer>(again, "collSWPRA")->order(), u"3,1,2,4,5"_s);
  again.KarSaveParam(false);
  EXPECT_EQ(karSWPRA(session).sort(), kEmployeeSort);
}

TEST_F(EmployeeListTest, DeletingSendsTheItemsToTheWarehouse) {
  ToldView &cards = toldView(u"karEWKAR"_s), &panel = toldView(u"karEWPAN"_s);
  list->goToKey(kKowal);
  list->run(Command::Usun);
  const Message asked = messages.takeOnly();
  EXPECT_EQ(asked.text, u"Pracownik: Kowal Jan zostanie usunięty ze słownika. Usunąć pracownika?"_s);
  EXPECT_EQ(asked.title, u"Komunikat"_s);
  EXPECT_EQ(asked.icon, Icon::Question);
  EXPECT_EQ(asked.buttons, Buttons::YesNo);
  EXPECT_EQ(asked.defaultButton, Answer::No);
  EXPECT_EQ(ask(u"SELECT indpra FROM swpra"_s), u"1|2|3"_s);
  EXPECT_EQ(cards.refreshed, 0);

  messages.answers = {Answer::Yes};
  list->run(Command::Usun);
  EXPECT_EQ(names(), u"Kowalska Janina|Nowak Kow"_s);
  EXPECT_EQ(list->currentKey(), kKowalska) << "the list stays at the same place";
  EXPECT_EQ(ask(u"SELECT Nazwa & ' ' & indpra & ' ' & parent FROM ewkar ORDER BY indewi"_s),
            u"Komputer 0 |Monitor 0 1|Kabel 3 "_s);
  EXPECT_EQ(cards.refreshed, 1);
  EXPECT_EQ(panel.refreshed, 1);
  EXPECT_EQ(frame.status.last(), u"Usunięto pracownika: Kowal Jan, przedmioty przeniesione do magazynu: 2"_s);
}

TEST_F(EmployeeListTest, OpensTheEmployeeAndGoesToWhoWasSaved) {
  list->goToKey(kNowak);
  QTest::keyClick(&list->grid(), Qt::Key_Return);
  auto* form = qobject_cast<dokSWPRA*>(frame.opened.back());
  ASSERT_TRUE(form);
  EXPECT_EQ(form->recordKey(), kNowak);
  EXPECT_EQ(form->KarParent(), u"karSWPRA"_s);
  child<QLineEdit>(*form, "txtNazwisko")->setText(u"Abacki"_s);
  list->goToKey(kKowalska);
  child<QPushButton>(*form, "cmdZapisz")->click();
  EXPECT_EQ(names(), u"Abacki Kow|Kowal Jan|Kowalska Janina"_s);
  EXPECT_EQ(list->currentKey(), kNowak);

  sql(u"DELETE FROM swpra WHERE indpra = 2"_s);
  list->goToKey(kKowalska);
  const size_t before = frame.opened.size();
  list->run(Command::Popraw);
  EXPECT_EQ(frame.opened.size(), before);
  EXPECT_EQ(names(), u"Abacki Kow|Kowal Jan"_s) << "one who is gone leaves the list";
}

}  // namespace
}  // namespace tandeko
