#include <gtest/gtest.h>

#include <QLabel>
#include <QTest>

#include "people_fixture.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

struct DictionaryTest : testing::Test, PeopleFixture {
  ChildForm* form = nullptr;
  QTreeWidget* list = nullptr;
  QString stem;

  void open(const QString& name) {
    closeForms();
    openDictionary(session, name);
    ASSERT_FALSE(frame.opened.empty());
    form = frame.opened.back();
    ASSERT_EQ(form->formName(), name);
    stem = name.mid(3);
    list = form->findChild<QTreeWidget*>(u"lst"_s + stem);
    ASSERT_TRUE(list);
  }
  QLineEdit* line(const char* name) { return child<QLineEdit>(*form, name); }
  QLineEdit* key() { return form->findChild<QLineEdit*>(u"txtInd"_s + stem.mid(2).toLower()); }
  void type(QLineEdit* field, const QString& text) {
    field->selectAll();
    field->del();
    field->insert(text);  // as an input method does
  }
  void press(const char* name) { child<QPushButton>(*form, name)->click(); }
  QString frameCaption() { return child<QGroupBox>(*form, "fraWlas")->title(); }
  QString entries() {
    QStringList all;
    for (int row = 0; row < list->topLevelItemCount(); ++row) all << list->topLevelItem(row)->text(1);
    return all.join(u'|');
  }
  void select(const QString& name) {
    const auto found = list->findItems(name, Qt::MatchExactly, 1);
    ASSERT_EQ(found.size(), 1);
    list->setCurrentItem(found.first());
  }
};

const struct {
  const char16_t *form, *caption, *table, *keyLabel, *nameLabel;
  const char16_t *inUse, *newKey;
} kDictionaries[] = {
    {u"sloSWGPC", u"Grupy pracowników", u"swgpc", u"Numer grupy", u"Nazwa grupy pracowników", u"Biuro", u"3"},
    {u"sloSWKOM", u"Działy firmy (komórki ogranizacyjne)", u"swkom", u"Numer", u"Nazwa działu firmy",
     u"Dyrekcja", u"3"},
    {u"sloSWJED", u"Jednostki miary", u"swjed", u"Symbol jednostki", u"Nazwa jednostki miary", u"sztuka",
     u"m'b "},
    {u"sloSWGEW", u"Grupy przedmiotów", u"swgew", u"Numer grupy", u"Nazwa grupy przedmiotów", u"Meble", u"2"},
    {u"sloSWSEW", u"Stany przedmiotów", u"swsew", u"Numer grupy", u"Nazwa stanu elementu wyposażenia",
     u"Dobry", u"2"},
};

TEST_F(DictionaryTest, EntriesAreAddedChangedAndDeleted) {
  for (const auto& d : kDictionaries) {
    SCOPED_TRACE(QString::fromUtf16(d.form).toStdString());
    open(QString::fromUtf16(d.form));
    const bool unit = stem == u"SWJED";
    EXPECT_EQ(form->windowTitle(), QString::fromUtf16(d.caption));
    QStringList labels;
    for (const auto* label : child<QGroupBox>(*form, "fraWlas")->findChildren<QLabel*>())
      labels << label->text();
    labels.sort();
    QStringList expected = {QString::fromUtf16(d.keyLabel), QString::fromUtf16(d.nameLabel)};
    if (!unit) expected << u"(Nadawany automatycznie)"_s;
    if (stem == u"SWKOM") expected << u"Adres elektroniczny (E-Mail)"_s;
    expected.sort();
    EXPECT_EQ(labels, expected);
    EXPECT_EQ(line("txtMail") != nullptr, stem == u"SWKOM");
    EXPECT_EQ(key()->isReadOnly(), !unit);
    const QString before = entries();

    press("cmdNowy");
    EXPECT_EQ(frameCaption(), u"Nowy wpis"_s);
    EXPECT_EQ(line("txtNazwa")->text() + key()->text(), QString());
    press("cmdZapisz");
    EXPECT_TRUE(
        messages.takeOnly().text.endsWith(u"nie może być puste. Wprowadź dane i spróbuj ponownie."_s));
    EXPECT_EQ(frameCaption(), u"Nowy wpis"_s);
    if (unit) type(key(), QString::fromUtf16(d.newKey));
    if (line("txtMail")) type(line("txtMail"), u"dzial@firma.example"_s);
    type(line("txtNazwa"), u"Żółw"_s);
    line("txtNazwa")->setFocus();
    QTest::keyClick(line("txtNazwa"), Qt::Key_Return);
    EXPECT_TRUE(messages.shown.empty());
    EXPECT_EQ(form->focusWidget(), line("txtNazwa"));
    EXPECT_EQ(frameCaption(), u"Właściwości"_s);
    EXPECT_EQ(entries(), before + u"|Żółw"_s);
    EXPECT_EQ(list->currentItem()->text(1), u"Żółw"_s);
    EXPECT_EQ(key()->text(), QString::fromUtf16(d.newKey));
    const QString table = QString::fromUtf16(d.table);
    const QString keyField = u"Ind"_s + stem.mid(2).toLower();
    EXPECT_EQ(ask(u"SELECT "_s + keyField + u" FROM "_s + table + u" WHERE Nazwa = 'Żółw'"_s),
              QString::fromUtf16(d.newKey));
    if (line("txtMail")) {
      EXPECT_EQ(ask(u"SELECT Email FROM swkom WHERE Nazwa = 'Żółw'"_s), u"dzial@firma.example"_s);
    }

    select(QString::fromUtf16(d.inUse));
    select(u"Żółw"_s);
    EXPECT_EQ(key()->text(), QString::fromUtf16(d.newKey)) << "read back by its key";
    type(line("txtNazwa"), u"Żuk"_s);
    press("cmdZapisz");
    EXPECT_EQ(entries(), before + u"|Żuk"_s);
    EXPECT_EQ(key()->text(), QString::fromUtf16(d.newKey));
    press("cmdUsun");
    EXPECT_EQ(entries(), before);
    EXPECT_TRUE(list->currentItem()) << "the neighbour is shown";
    EXPECT_EQ(line("txtNazwa")->text(), list->currentItem()->text(1));

    select(QString::fromUtf16(d.inUse));
    press("cmdUsun");
    EXPECT_TRUE(messages.shown.empty()) << "deleting asks nothing";
    ASSERT_EQ(failures.failures.size(), 1u);
    EXPECT_EQ(failures.failures[0].number, 3200);
    failures.failures.clear();
    EXPECT_EQ(entries(), before);
    EXPECT_EQ(line("txtNazwa")->text(), QString::fromUtf16(d.inUse));
  }
  EXPECT_TRUE(failures.failures.empty());
}

TEST_F(DictionaryTest, ChangesAreSettledBeforeAnythingElseIsShown) {
  const auto toAnother = [this] { select(u"Produkcja"_s); };
  const auto toNew = [this] { press("cmdNowy"); };
  const auto close = [this] { press("cmdZamknij"); };
  const struct {
    const char* name;
    std::function<void()> leave;
    Answer answer;
    const char16_t *names, *shown;
  } cases[] = {
      {"another, dropped", toAnother, Answer::No, u"Biuro|Produkcja", u"Produkcja"},
      {"another, saved", toAnother, Answer::Yes, u"Archiwum|Produkcja", u"Produkcja"},
      {"new, dropped", toNew, Answer::No, u"Archiwum|Produkcja", u""},
      {"new, saved", toNew, Answer::Yes, u"Biuro|Produkcja", u""},
      {"closed, dropped", close, Answer::No, u"Biuro|Produkcja", u"Archiwum"},
      {"closed, saved", close, Answer::Yes, u"Archiwum|Produkcja", u"Archiwum"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    open(u"sloSWGPC"_s);
    const QString first = list->topLevelItem(0)->text(1);
    type(line("txtNazwa"), first == u"Biuro" ? u"Archiwum"_s : u"Biuro"_s);
    messages.answers = {c.answer};
    c.leave();
    const Message asked = messages.takeOnly();
    EXPECT_EQ(asked.text, u"Dane zostały zmienione. Zapisać zmiany?"_s);
    EXPECT_EQ(asked.buttons, Buttons::YesNo);
    EXPECT_EQ(ask(u"SELECT Nazwa FROM swgpc ORDER BY Nazwa"_s), QString::fromUtf16(c.names));
    if (!form->isVisible()) continue;
    EXPECT_EQ(entries(), QString::fromUtf16(c.names));
    EXPECT_EQ(line("txtNazwa")->text(), QString::fromUtf16(c.shown));
    press("cmdZamknij");
    EXPECT_TRUE(messages.shown.empty());
  }
}

TEST_F(DictionaryTest, ARefusedSaveKeepsTheEntryInTheFields) {
  open(u"sloSWGPC"_s);
  line("txtNazwa")->clear();
  QTest::keyClicks(line("txtNazwa"), u" "_s);
  line("txtNazwa")->clear();
  messages.answers = {Answer::Yes};
  select(u"Produkcja"_s);
  ASSERT_EQ(messages.shown.size(), 2u);
  EXPECT_EQ(messages.shown[1].text, u"Pole [Nazwa] nie może być puste. Wprowadź dane i spróbuj ponownie."_s);
  EXPECT_EQ(list->currentItem()->text(1), u"Biuro"_s);
  EXPECT_EQ(line("txtNazwa")->text(), QString());
  press("cmdAnuluj");
  EXPECT_EQ(line("txtNazwa")->text(), u"Biuro"_s);

  press("cmdNowy");
  type(line("txtNazwa"), u"Produkcja"_s);
  press("cmdAnuluj");
  EXPECT_EQ(frameCaption(), u"Właściwości"_s);
  EXPECT_EQ(line("txtNazwa")->text(), u"Biuro"_s);
  EXPECT_EQ(entries(), u"Biuro|Produkcja"_s);
}

TEST_F(DictionaryTest, ATakenSymbolIsReportedAndARenamedOneFollows) {
  open(u"sloSWJED"_s);
  press("cmdNowy");
  type(key(), u"szt"_s);
  type(line("txtNazwa"), u"inna"_s);
  press("cmdZapisz");
  ASSERT_EQ(failures.failures.size(), 1u);
  EXPECT_EQ(failures.failures[0].number, 3022);
  EXPECT_EQ(frameCaption(), u"Nowy wpis"_s);
  EXPECT_EQ(line("txtNazwa")->text(), u"inna"_s);
  type(key(), u"SZT'1"_s);
  press("cmdZapisz");
  EXPECT_EQ(key()->text(), u"SZT'1"_s);
  type(key(), u"m²"_s);
  press("cmdZapisz");
  EXPECT_EQ(ask(u"SELECT Indjed FROM swjed WHERE Nazwa = 'inna'"_s), u"m²"_s);
  EXPECT_EQ(list->currentItem()->text(0), u"m²"_s);
}

}  // namespace
}  // namespace tandeko
