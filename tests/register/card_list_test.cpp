#include <gtest/gtest.h>

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTest>

#include "lists/dlgFiltrUstaw.h"
#include "lists/sql_text.h"
#include "register/card_list_form.h"
#include "register/dokEWKAR.h"
#include "register_fixture.h"
#include "support/dialogs.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

TEST(CardConditions, TextAndDescription) {
  QuickFilter all;
  all.allRegisters = true;
  all.registerKey = 3;
  all.group = 7;
  all.groupName = u"Meble"_s;
  all.holder = kBin;
  all.holderName = u"[Kosz]"_s;
  all.name = u"ab"_s;
  all.number = u"12/"_s;
  all.serialNumber = u"X"_s;
  QuickFilter warehouse;
  warehouse.registerKey = 3;
  warehouse.holder = kWarehouse;
  warehouse.holderName = u"[Magazyn]"_s;
  QuickFilter odd;
  odd.allRegisters = true;
  odd.name = u"O'B[*"_s;
  const struct {
    QuickFilter quick;
    const char16_t* text;
    const char16_t* description;
    bool removable;
  } cases[] = {
      {{}, u" AND ewkar.indrew = 0", u"", false},
      {warehouse, u" AND ewkar.indrew = 3 AND ewkar.indpra = 0", u"Użytkownik = [Magazyn]", true},
      {all,
       u" AND ewkar.indgew = 7 AND ewkar.indpra = -1 AND ewkar.nazwa LIKE 'ab*'  AND ewkar.numewi LIKE "
       u"'12/*'  AND "
       u"ewkar.numser LIKE 'X*' ",
       u"Wszystki rejestry; Grupa = Meble; Użytkownik = [Kosz]; Nazwa = ab; Nr ewidencyjny = 12/; Nr seryjny "
       u"= X",
       true},
      {odd, u" AND ewkar.nazwa LIKE 'O''B[[]**' ", u"Wszystki rejestry; Nazwa = O'B[*", true},
  };
  for (const auto& c : cases) {
    const Conditions conditions = cardConditions(c.quick);
    EXPECT_EQ(conditions.text, QString::fromUtf16(c.text));
    EXPECT_EQ(conditions.description, QString::fromUtf16(c.description));
    EXPECT_EQ(conditions.removable, c.removable);
  }
}

TEST(CardSums, FormatGroupsEveryThreeDigits) {
  const QString space = QLocale().groupSeparator();
  EXPECT_EQ(sumText(0), u"0,00"_s);
  EXPECT_EQ(sumText(-999.5), u"-999,50"_s);
  EXPECT_EQ(sumText(1234567.891), u"1"_s + space + u"234"_s + space + u"567,89"_s);
  EXPECT_EQ(sumText(-1234), u"-1"_s + space + u"234,00"_s);
}

TEST(CardStatement, PutsTheConditionsIntoEachPart) {
  const QString statement =
      cardStatement(u" AND ewkar.nazwa LIKE 'warwhere*' "_s,
                    u" And ( swpra.nazwisko & ' ' & swpra.imie LIKE '*swpra.imie*' )"_s);
  const QStringList parts = statement.split(u"UNION"_s);
  ASSERT_EQ(parts.size(), 3);
  EXPECT_TRUE(parts[0].endsWith(
      u"And ewkar.indsew = swsew.indsew  AND ewkar.nazwa LIKE 'warwhere*'  And ( swpra.nazwisko "
      u"& ' ' & swpra.imie LIKE '*swpra.imie*' ) "_s));
  EXPECT_TRUE(
      parts[1].endsWith(u" AND ewkar.nazwa LIKE 'warwhere*'  And ( '[Magazyn]' LIKE '*swpra.imie*' ) "_s));
  EXPECT_TRUE(
      parts[2].endsWith(u" AND ewkar.nazwa LIKE 'warwhere*'  And ( '[Kosz]' LIKE '*swpra.imie*' ) "_s));
}

// Register 1: a desk in the warehouse with a lamp in it, a cabinet with Nowak, scrap in the bin, a door with
// nobody. Register 2: shoes with Adamska.
struct CardListTest : testing::Test, RegisterFixture {
  int desk = item(u"Biurko"_s, kWarehouse), lamp = item(u"Lampka"_s, kWarehouse, desk),
      cabinet = item(u"Szafa"_s, kNowak), scrap = item(u"Złom"_s, kBin), door = item(u"Drzwi"_s, 77),
      shoes = item(u"Buty"_s, kAdamska, 0, 2);
  std::unique_ptr<karEWKAR> list;

  void SetUp() override {
    sql(u"UPDATE ewkar SET Cenazak = 100, Ilosc = 2, Numewi = '7', Numser = 'SN-' & indewi"_s);
    list = std::make_unique<karEWKAR>(session);
    list->resize(900, 500);
    list->show();
    frame.opened = {list.get()};
  }

  QStringList column(int number) {
    QStringList all;
    for (int row = 0; row < list->DataSource().rows(); ++row) all << list->DataSource().cellText(row, number);
    return all;
  }
  QStringList names() { return column(11); }
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
  QString sums() {
    const auto* grid = child<QTableWidget>(*list, "gridSuma");
    return grid->item(0, 0)->text() + u'|' + grid->item(0, 1)->text() + u'|' + grid->item(0, 2)->text();
  }
};

TEST_F(CardListTest, ListsTheRegisterWithItsHolders) {
  EXPECT_EQ(names(), (QStringList{u"Biurko"_s, u"Lampka"_s, u"Szafa"_s, u"Złom"_s}));
  EXPECT_EQ(column(5), (QStringList{u"[Magazyn]"_s, u"[Magazyn]"_s, u"Nowak Jan"_s, u"[Kosz]"_s}));
  EXPECT_EQ(column(15).first(), u"200,00"_s);
  QStringList captions;
  for (int i = 0; i < 19; ++i)
    captions << list->DataSource().headerData(i, Qt::Horizontal, Qt::DisplayRole).toString();
  EXPECT_EQ(
      captions.join(u'|'),
      u"Data nabycia|Data przyjęcia|Nr grupy|Grupa|Nr użytkownika|Użytkownik|Nr ewidencyjny|Nr "
      u"katalogowy|Nr seryjny|Nr stanu|Stan|Nazwa przedmiotu|Ilość|Jm.|Cena nabycia|Wartość nabycia|Środek "
      u"trwały|Uwagi|Wprowadził"_s);
  session.setCurrentRegister(2);
  EXPECT_EQ(names(), QStringList{u"Buty"_s});
  list->run(Command::WszystkieRejestry);
  EXPECT_TRUE(list->isOn(Command::WszystkieRejestry));
  EXPECT_EQ(names().size(), 5);
  EXPECT_EQ(list->description(), u"Wszystki rejestry; "_s);
  EXPECT_TRUE(child<QWidget>(*list, "cmdBezFiltru")->isHidden()) << "nothing that it could take away";
}

TEST_F(CardListTest, QuickFiltersNarrowTheList) {
  type("txtNazwa", u"za"_s);
  EXPECT_EQ(names(), QStringList()) << "from the start of the name only";
  type("txtNazwa", u"SZ"_s);
  EXPECT_EQ(names(), QStringList{u"Szafa"_s});
  type("txtNazwa", {});
  type("txtNumser", u"sn-%1"_s.arg(lamp));
  EXPECT_EQ(names(), QStringList{u"Lampka"_s});
  type("txtNumser", {});
  choose("cmbPracownik", u"[Magazyn]"_s);
  EXPECT_EQ(names(), (QStringList{u"Biurko"_s, u"Lampka"_s}));
  choose("cmbPracownik", u"[Kosz]"_s);
  EXPECT_EQ(names(), QStringList{u"Złom"_s});
  choose("cmbPracownik", u"Nowak Jan"_s);
  choose("cmbGrupa", u"Meble"_s);
  EXPECT_EQ(names(), QStringList{u"Szafa"_s});
  EXPECT_EQ(child<QLabel>(*list, "labOpis")->text(), u"Grupa = Meble; Użytkownik = Nowak Jan"_s);
  sql(u"INSERT INTO swpra (Nazwisko, Imie, Indgpc, Indkom) VALUES ('Abc', 'Jan', 1, 1)"_s);
  list->KarRefresh();
  EXPECT_EQ(child<QComboBox>(*list, "cmbPracownik")->currentText(), u"Nowak Jan"_s)
      << "stays when the combo is read again";
  choose("cmbPracownik", {});
  choose("cmbGrupa", {});
  EXPECT_EQ(names().size(), 4);
}

TEST_F(CardListTest, SumsFollowTheList) {
  sql(u"UPDATE ewkar SET Cenazak = 5000.25, Ilosc = 1.5 WHERE indewi = %1"_s.arg(cabinet));
  sql(u"UPDATE ewkar SET Cenazak = Null WHERE indewi = %1"_s.arg(scrap));
  list->KarRefresh();
  list->run(Command::Sumuj);
  const QString space = QLocale().groupSeparator();
  EXPECT_EQ(sums(), u"7,50|4,00|7"_s + space + u"900,38"_s);
  type("txtNazwa", u"UNION"_s);
  EXPECT_EQ(sums(), u"0,00|0,00|0,00"_s);
  type("txtNazwa", u"b"_s);
  EXPECT_EQ(sums(), u"2,00|1,00|200,00"_s);
  list->run(Command::Sumuj);
  EXPECT_FALSE(list->isOn(Command::Sumuj));
}

TEST_F(CardListTest, SumsAreThoseOfTheStatementsParts) {
  sql(u"UPDATE ewkar SET Cenazak = 17.35, Ilosc = 2.5 WHERE indewi In (%1, %2)"_s.arg(lamp).arg(cabinet));
  sql(u"UPDATE ewkar SET Cenazak = Null WHERE indewi = %1"_s.arg(scrap));
  list->KarRefresh();
  // Each part asked by itself for its totals, Null counting as 0.
  const auto asked = [this] {
    double totals[3] = {};
    for (const QString& part : splitOutside(list->statement(), u"UNION"_s)) {
      const auto row =
          openRows(db(), u"SELECT sum(ewkar.Ilosc), count(*), sum(ewkar.Ilosc * ewkar.cenazak)  "_s +
                             part.sliced(findOutside(part, u"FROM"_s)));
      for (size_t at = 0; at < 3; ++at) totals[at] += toDouble(row->field(at).value());
    }
    return sumText(totals[0]) + u'|' + sumText(totals[1]) + u'|' + sumText(totals[2]);
  };
  list->run(Command::Sumuj);
  EXPECT_EQ(sums(), asked());
  list->run(Command::WszystkieRejestry);
  EXPECT_EQ(sums(), asked());
  type("txtNazwa", u"l"_s);
  EXPECT_EQ(sums(), asked());
  EXPECT_EQ(sums().section(u'|', 1, 1), u"1,00"_s);
  choose("cmbPracownik", u"Nowak Jan"_s);
  EXPECT_EQ(sums(), asked());
}

TEST_F(CardListTest, DeletesExactlyWhatIsChosen) {
  list->goToKey(desk);
  list->run(Command::Usun);
  Message asked = messages.takeOnly();
  EXPECT_EQ(asked.text, u"Przedmiot: Biurko zostanie usunięty. Usunąć przedmiot?"_s);
  EXPECT_EQ(asked.title, u"Komunikat"_s);
  EXPECT_EQ(asked.icon, Icon::Question);
  EXPECT_EQ(asked.defaultButton, Answer::No);
  EXPECT_EQ(names().size(), 4);

  messages.answers = {Answer::Yes};
  list->run(Command::Usun);
  messages.takeOnly();
  EXPECT_EQ(names(), (QStringList{u"Lampka"_s, u"Szafa"_s, u"Złom"_s}));
  EXPECT_EQ(place(lamp), u"0/%1"_s.arg(desk)) << "components stay as they are";

  list->run(Command::ZaznaczWiersze);
  messages.answers = {Answer::Yes};
  list->run(Command::Usun);
  EXPECT_EQ(messages.takeOnly().text,
            u"Zostało zaznaczonych 3 przedmiotów do usunięcia. Usunąc z kartoteki zaznaczone przedmioty?"_s);
  EXPECT_EQ(ask(u"SELECT count(*) FROM ewkar"_s), u"2"_s) << "the door and the other register's shoes";
  EXPECT_FALSE(list->supports(Command::Usun));
}

TEST_F(CardListTest, RightsDecideWhatCanBeChanged) {
  const auto* cmdUsun = child<QPushButton>(*list, "cmdUsun");
  EXPECT_TRUE(cmdUsun->isEnabled());
  sql(u"INSERT INTO dbpar (Indpar, Wartosc) VALUES ('UPRADswrew', '2p,')"_s);
  list->run(Command::WszystkieRejestry);
  list->run(Command::ZaznaczWiersze);
  messages.answers = {Answer::Yes, Answer::Yes};
  list->run(Command::Usun);
  EXPECT_EQ(messages.takeOnly().text,
            u"Brak prawa do zmiany danych jednego z rejestrów, do których należą przedmioty."_s);
  EXPECT_EQ(ask(u"SELECT count(*) FROM ewkar"_s), u"6"_s);

  const struct {
    const char16_t* level;
    bool may;
  } levels[] = {{u"E+W", true}, {u"P+W", false}, {u"E", false}, {u"E+W+R", true}};
  for (const auto& level : levels) {
    user(QString::fromUtf16(level.level));
    EXPECT_EQ(list->supports(Command::Nowy), level.may) << QString::fromUtf16(level.level).toStdString();
    EXPECT_EQ(cmdUsun->isEnabled(), level.may);
    EXPECT_TRUE(list->supports(Command::Popraw)) << "looking is always allowed";
  }
  session.setCurrentRegister(2);
  EXPECT_FALSE(list->supports(Command::Nowy));
}

TEST_F(CardListTest, OpensTheItemAndGoesToWhatWasSaved) {
  list->goToKey(cabinet);
  QTest::keyClick(&list->grid(), Qt::Key_Return);
  auto* form = qobject_cast<dokEWKAR*>(frame.opened.back());
  ASSERT_TRUE(form);
  EXPECT_EQ(form->recordKey(), cabinet);
  EXPECT_EQ(form->KarParent(), u"karEWKAR"_s);
  child<QLineEdit>(*form, "txtNazwa")->setText(u"Aaa"_s);
  list->goToKey(scrap);
  messages.answers = {Answer::Yes};  // the number is another item's as well
  child<QPushButton>(*form, "cmdZapisz")->click();
  EXPECT_EQ(names().first(), u"Aaa"_s);
  EXPECT_EQ(list->currentKey(), cabinet);
  delete form;
}

TEST_F(CardListTest, ANamedFilterOnTheHolderReachesWarehouseAndBin) {
  const QString holder = u"swpra.nazwisko & ' ' & swpra.imie"_s;
  FilterStore store(registry, list->RegSection());
  store.save(u"kto"_s,
             {{u"And"_s, holder, u"Użytkownik"_s, u"LIKE"_s, u"'*a*'"_s, u"podobna do"_s},
              {u"And"_s, u"ewkar.Ilosc * ewkar.Cenazak"_s, u"Wartość nabycia"_s, u">"_s, u"50"_s, u">"_s}});
  dlgFiltrUstaw dialog(session, *list);
  child<QPushButton>(dialog, "cmdZastosuj")->click();
  EXPECT_TRUE(failures.failures.empty());
  EXPECT_EQ(names(), (QStringList{u"Biurko"_s, u"Lampka"_s, u"Szafa"_s}));
  EXPECT_EQ(list->description(), u"Filtr „kto”: Użytkownik podobna do '*a*'; Wartość nabycia > 50; "_s);
}

TEST_F(CardListTest, BandsKeepTheirOrderAndWidth) {
  auto* bands = child<BandContainer>(*list, "coolWPKAR");
  EXPECT_EQ(bands->order(), u"1"_s);
  bands->setOrder(u"3,1,99,3"_s);
  EXPECT_EQ(bands->order(), u"3,1,2,4,5,6"_s);
  bands->setWidths(u"0,400"_s);
  list->KarSaveParam(true);
  karEWKAR again(session);
  EXPECT_EQ(child<BandContainer>(again, "coolWPKAR")->order(), u"3,1,2,4,5,6"_s);
  EXPECT_EQ(child<Band>(again, "pboxNumewi")->wantedWidth(), 400);
  again.KarSaveParam(false);
  EXPECT_EQ(child<BandContainer>(again, "coolWPKAR")->order(), u"1"_s);
}

TEST_F(CardListTest, ABandIsDraggedToAnotherPlace) {
  auto* bands = child<BandContainer>(*list, "coolWPKAR");
  auto* third = child<Band>(*list, "pboxNumser");
  QTest::mousePress(third, Qt::LeftButton, {}, QPoint(2, 8));
  QTest::mouseRelease(third, Qt::LeftButton, {}, third->mapFromParent(QPoint(1, 5)));
  EXPECT_EQ(bands->bands().first(), third);
  EXPECT_EQ(third->pos(), QPoint(0, 0));
}

}  // namespace
}  // namespace tandeko
