#include <gtest/gtest.h>

#include <QComboBox>
#include <QListWidget>
#include <QPushButton>
#include <QStackedWidget>
#include <QTest>
#include <QToolButton>

#include "list_fixture.h"
#include "lists/dlgFiltrEdycja.h"
#include "lists/dlgFiltrUstaw.h"
#include "lists/form_fields.h"
#include "support/dialogs.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

struct FilterDialogsTest : testing::Test, ListFixture {
  FilterDialogsTest() : ListFixture({u"Biurko"_s, u"Szafa"_s, u"Biblioteka"_s, u"Lampa"_s}) {
    sql(u"UPDATE thing SET there = False, price = 100 WHERE id = 1"_s);
    sql(u"UPDATE thing SET day = Date() + 400 WHERE id = 2"_s);
    list->KarRefresh();
    store = std::make_unique<FilterStore>(registry, list->RegSection());
  }

  template <typename Widget>
  Widget& in(const char* name) {
    return *child<Widget>(*editor, name);
  }
  void click(const char* button) { in<QPushButton>(button).click(); }
  void choose(const char* combo, const QString& text) {
    const int at = in<QComboBox>(combo).findText(text);
    ASSERT_GE(at, 0) << text.toStdString();
    in<QComboBox>(combo).setCurrentIndex(at);
  }
  void openEditor(const QString& filter = {}) {
    editor = std::make_unique<dlgFiltrEdycja>(session, *list, filter);
    editor->show();
  }
  QStringList lines() {
    QStringList all;
    for (int i = 0; i < in<QListWidget>("lstWarunek").count(); ++i)
      all << in<QListWidget>("lstWarunek").item(i)->text();
    return all;
  }
  void apply(const QString& filter) {
    dlgFiltrUstaw dialog(session, *list);
    auto* filters = child<QListWidget>(dialog, "lstFiltr");
    filters->setCurrentItem(filters->findItems(filter, Qt::MatchExactly).value(0));
    child<QPushButton>(dialog, "cmdOK")->click();
  }

  std::unique_ptr<dlgFiltrEdycja> editor;
  std::unique_ptr<FilterStore> store;
};

TEST_F(FilterDialogsTest, RefusesWhatIsIncomplete) {
  openEditor();
  EXPECT_EQ(in<QComboBox>("cmbKolumna").count(), 6) << "what the list shows, not the query's other columns";
  click("cmdDodaj");
  Message said = messages.takeOnly();
  EXPECT_EQ(said.text, u"Wybierz kolumnę warunku filtru."_s);
  EXPECT_EQ(said.title, u"Błąd definicji warunku filtra"_s);
  EXPECT_EQ(said.icon, Icon::Exclamation);
  choose("cmbKolumna", u"Cena"_s);
  click("cmdDodaj");
  EXPECT_EQ(messages.takeOnly().text, u"Ustal operator porówniania warunku."_s);
  choose("cmbOperpor", u">"_s);
  click("cmdDodaj");
  EXPECT_EQ(messages.takeOnly().text, u"Wprowadź dane do pola wartość."_s);
  choose("cmbKolumna", u"Dzień"_s);
  click("cmdDodaj");
  EXPECT_EQ(messages.takeOnly().text, u"Wprowadź dane do pola wartość."_s);
  EXPECT_EQ(lines(), QStringList{u"1. Nowy warunek..."_s});
  choose("cmbOperpor", u"> dzisiaj"_s);
  click("cmdDodaj");
  EXPECT_EQ(lines(), QStringList{u"1. i Kolumna[Dzień] > dzisiaj "_s});

  click("cmdZapisz");
  said = messages.takeOnly();
  EXPECT_EQ(said.text, u"Wprowadź nazwę filtra."_s);
  EXPECT_EQ(said.title, u"Błąd Zapisu filtra"_s);
  EXPECT_TRUE(store->names().isEmpty());
}

TEST_F(FilterDialogsTest, AFilterIsMadeAppliedShownAndTakenAway) {
  openEditor();
  in<QLineEdit>("txtNazwa").setText(u"Biura \\ 50%"_s);
  choose("cmbKolumna", u"Nazwa"_s);
  choose("cmbOperpor", u"podobna do"_s);
  in<QLineEdit>("txtWartosc").setText(u"bi"_s);
  click("cmdDodaj");
  click("cmdNowy");
  choose("cmbKolumna", u"Jest"_s);
  choose("cmbOperpor", u"="_s);
  choose("cmbWartosc", u"Tak"_s);
  click("cmdNowy");  // takes the second condition along
  choose("cmbOperlog", u"lub"_s);
  choose("cmbKolumna", u"Cena"_s);
  choose("cmbOperpor", u">="_s);
  in<NumberField>("numWartosc").setText(u"99,5"_s);
  EXPECT_EQ(lines(), (QStringList{u"1. i Kolumna[Nazwa] podobna do 'bi'"_s, u"2. i Kolumna[Jest] = Tak"_s,
                                  u"3. Nowy warunek..."_s}));
  click("cmdZapisz");
  EXPECT_EQ(editor->result(), QDialog::Accepted);
  ASSERT_EQ(store->names(), QStringList{u"Biura \\ 50%"_s});
  EXPECT_EQ(store->load(u"Biura \\ 50%"_s)[0].field, u"thing.name"_s);

  apply(u"Biura \\ 50%"_s);
  EXPECT_EQ(names(), (QStringList{u"Biurko"_s, u"Biblioteka"_s}));
  EXPECT_EQ(list->description(),
            u"Filtr „Biura \\ 50%”: Nazwa podobna do '*bi*'; Jest = Tak; Cena >= 99.5; "_s);
  list->txtNazwa->setText(u"biu"_s);
  list->KarRefresh();
  EXPECT_EQ(names(), QStringList{u"Biurko"_s}) << "quick and named filter together, kept by a refresh";
  child<QToolButton>(*list, "cmdBezFiltru")->click();
  EXPECT_EQ(names().size(), 4);
  EXPECT_EQ(list->description(), QString());
  EXPECT_TRUE(failures.failures.empty());
}

TEST_F(FilterDialogsTest, EveryKindOfConditionRuns) {
  const struct {
    const char16_t* column;
    const char16_t* op;
    const char16_t* value;
    QStringList found;
  } cases[] = {
      {u"Nazwa", u"=", u"Lampa", {u"Lampa"_s}},
      {u"Nazwa", u"niepodobna do", u"b", {u"Szafa"_s, u"Lampa"_s}},
      {u"Nazwa", u"podobna do", u"O'N[", {}},
      {u"Uwagi", u"pusta", u"", {u"Biurko"_s, u"Szafa"_s, u"Biblioteka"_s, u"Lampa"_s}},
      {u"Uwagi", u"niepusta", u"", {}},
      {u"Cena", u">", u"12.5", {u"Biurko"_s}},
      {u"Dzień", u"=", u"3-2-2026", {u"Biurko"_s, u"Biblioteka"_s, u"Lampa"_s}},
      {u"Dzień", u"> dzisiaj", u"", {u"Szafa"_s}},
      {u"Jest", u"<>", u"Tak", {u"Biurko"_s}},
  };
  for (const auto& c : cases) {
    openEditor();
    in<QLineEdit>("txtNazwa").setText(u"f"_s);
    choose("cmbKolumna", QString::fromUtf16(c.column));
    choose("cmbOperpor", QString::fromUtf16(c.op));
    in<QLineEdit>("txtWartosc").setText(QString::fromUtf16(c.value));
    in<NumberField>("numWartosc").setText(QString::fromUtf16(c.value));
    in<DateField>("datWartosc").setText(QString::fromUtf16(c.value));
    messages.answers = {Answer::Yes};  // the filter of the case before
    click("cmdZapisz");
    messages.answers.clear();
    apply(u"f"_s);
    EXPECT_EQ(names(), c.found) << QString::fromUtf16(c.column).toStdString() << ' '
                                << QString::fromUtf16(c.op).toStdString();
  }
  EXPECT_TRUE(failures.failures.empty());
}

TEST_F(FilterDialogsTest, EditingRenamesAndAsksBeforeChangesAreLost) {
  store->save(u"stary"_s, {{u"And"_s, u"thing.name"_s, u"Nazwa"_s, u"LIKE"_s, u"'*sz*'"_s, u"podobna do"_s},
                           {u"Or"_s, u"price"_s, u"Cena"_s, u">"_s, u"5.5"_s, u">"_s}});
  openEditor(u"stary"_s);
  EXPECT_EQ(in<QLineEdit>("txtWartosc").text(), u"sz"_s);
  in<QListWidget>("lstWarunek").setCurrentRow(1);
  EXPECT_EQ(in<NumberField>("numWartosc").text(), u"5,5"_s);
  EXPECT_EQ(in<QComboBox>("cmbOperlog").currentText(), u"lub"_s);
  editor->reject();
  EXPECT_TRUE(messages.shown.empty()) << "nothing was changed";

  openEditor(u"stary"_s);
  in<QLineEdit>("txtNazwa").setText(u"nowy"_s);
  click("cmdUsun");
  messages.answers = {Answer::Cancel, Answer::Yes};
  click("cmdAnuluj");
  EXPECT_TRUE(editor->isVisible());
  click("cmdAnuluj");
  EXPECT_EQ(messages.shown[1].text, u"Dane filtra: nowy zostały zmienione. Zapisać zmiany?"_s);
  EXPECT_EQ(messages.shown[1].title, u"Filtr"_s);
  EXPECT_EQ(store->names(), QStringList{u"nowy"_s});
  EXPECT_EQ(store->load(u"nowy"_s).size(), 1);

  messages.shown.clear();
  dlgFiltrUstaw dialog(session, *list);
  child<QPushButton>(dialog, "cmdUsun")->click();
  EXPECT_EQ(messages.takeOnly().text, u"Filtr: nowy zostanie usunięty z listy. Usunąć filtr?"_s);
  EXPECT_EQ(store->names().size(), 1) << "No is the default";
  messages.answers = {Answer::Yes};
  child<QPushButton>(dialog, "cmdUsun")->click();
  EXPECT_TRUE(store->names().isEmpty());
}

}  // namespace
}  // namespace tandeko
