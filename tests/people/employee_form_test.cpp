#include <gtest/gtest.h>

#include <QCheckBox>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTest>

#include "lists/form_fields.h"
#include "people_fixture.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

struct EmployeeFormTest : testing::Test, PeopleFixture {
  dokSWPRA* form = nullptr;

  void open(int employee, const QString& karParent = u"karSWPRA"_s) {
    form = dokSWPRA::open(session, employee, karParent);
    ASSERT_NE(form, nullptr);
  }
  template <typename Field>
  Field* field(const char* name) {
    auto* found = child<Field>(*form, name);
    EXPECT_NE(found, nullptr) << name;
    return found;
  }
  void type(const char* name, const QString& text) { field<QLineEdit>(name)->setText(text); }
  void press(const char* name) { field<QPushButton>(name)->click(); }
  void choose(const char* name, const QString& text) {
    field<QComboBox>(name)->setCurrentIndex(field<QComboBox>(name)->findText(text));
  }
  QString stored(const QString& column, int employee) {
    return ask(u"SELECT "_s + column + u" FROM swpra WHERE indpra = "_s + str(employee));
  }
};

TEST_F(EmployeeFormTest, ANewEmployeeIsCheckedAndStored) {
  ToldView &list = toldView(u"karSWPRA"_s), &panel = toldView(u"karEWPAN"_s);
  open(0);
  EXPECT_EQ(form->windowTitle(), u"Nowy pracownik"_s);
  EXPECT_EQ(form->mode(), u"Nowy"_s);
  EXPECT_EQ(field<QLineEdit>("txtIndpra")->text(), u"0"_s);
  field<QTabWidget>("tabDane")->setCurrentIndex(2);

  const struct {
    const char16_t* text;
    Icon icon;
    const char16_t* dictionary;
    std::function<void()> mend;
  } refusals[] = {
      {u"Wprowadź nazwisko pracownika i spróbuj ponownie.", Icon::Information, u"",
       [this] { type("txtNazwisko", u"  "_s); }},
      {u"Wprowadź nazwisko pracownika i spróbuj ponownie.", Icon::Information, u"",
       [this] { type("txtNazwisko", u"Żak"_s); }},
      {u"Wymagane jest wprowadzenie działu firmy. Chcesz zdefiniować działy teraz?", Icon::Question,
       u"sloSWKOM", [this] { choose("cmbKomorka", u"Hala"_s); }},
      {u"Wymagane jest wprowadzenie grupy pracowników. Chcesz zdefiniować grupy teraz?", Icon::Question,
       u"sloSWGPC", [this] { choose("cmbGrupa", u"Produkcja"_s); }},
  };
  for (const auto& refusal : refusals) {
    const QString dictionary = QString::fromUtf16(refusal.dictionary);
    for (const Answer answer : {Answer::No, Answer::Yes}) {
      messages.answers = {answer};
      press("cmdZapisz");
      const Message told = messages.takeOnly();
      EXPECT_EQ(told.text, QString::fromUtf16(refusal.text));
      EXPECT_EQ(told.icon, refusal.icon);
      EXPECT_TRUE(form->isVisible());
      EXPECT_EQ(frame.findForm(dictionary) != nullptr, answer == Answer::Yes && !dictionary.isEmpty());
    }
    EXPECT_EQ(field<QTabWidget>("tabDane")->currentIndex(), 0) << "where the missing field is";
    refusal.mend();
  }
  EXPECT_EQ(ask(u"SELECT count(*) FROM swpra"_s), u"3"_s);
  EXPECT_EQ(list.refreshed + panel.refreshed, 0);

  session.settings().store(u"Nie zamykaj"_s, u"1"_s);
  session.settings().load();
  press("cmdZapisz");
  EXPECT_TRUE(messages.shown.empty());
  EXPECT_TRUE(failures.failures.empty());
  EXPECT_TRUE(form->isVisible()) << "stays open when the user wants that";
  EXPECT_EQ(form->recordKey(), 4);
  EXPECT_EQ(field<QLineEdit>("txtIndpra")->text(), u"4"_s);
  EXPECT_EQ(form->mode(), u"Popraw"_s);
  EXPECT_EQ(form->windowTitle(), u"Dane pracownika: Żak "_s);
  EXPECT_EQ(ask(u"SELECT Nazwisko & '/' & Imie & '/' & Aktywny & '/' & Indgpc & '/' & Indkom & '/' & Email "
                u"FROM swpra WHERE indpra = 4"_s),
            u"Żak//-1/2/2/"_s);
  EXPECT_EQ(stored(u"Wzrost"_s, 4), u"-"_s);
  EXPECT_EQ(list.refreshed, 1);
  EXPECT_EQ(panel.refreshed, 1);
  press("cmdZapisz");
  EXPECT_FALSE(form->isVisible()) << "it is no new employee any more";
  EXPECT_EQ(ask(u"SELECT count(*) FROM swpra"_s), u"4"_s);
}

TEST_F(EmployeeFormTest, EveryFieldIsShownAndStored) {
  open(kKowal);
  EXPECT_EQ(form->windowTitle(), u"Dane pracownika: Kowal Jan"_s);
  EXPECT_EQ(field<QLineEdit>("txtWzrost")->text(), u"182,5"_s);
  EXPECT_EQ(field<QLineEdit>("txtObuwie")->text(), QString());
  EXPECT_EQ(field<QComboBox>("cmbGrupa")->currentText(), u"Biuro"_s);
  EXPECT_TRUE(field<QCheckBox>("cbAktywny")->isChecked());
  const QString address = QString(80, u'a') + u"@firma.example.pl"_s;
  const std::pair<const char*, QString> texts[] = {{"txtNazwisko", u"Kowal-O'Hara"_s},
                                                   {"txtImie", u"Jan Maria"_s},
                                                   {"txtNumpok", u"7a"_s},
                                                   {"txtTelefon", {}},
                                                   {"txtEmail", address},
                                                   {"txtWzrost", u"180.25"_s},
                                                   {"txtKolnierz", {}},
                                                   {"txtObuwie", u"43,5"_s}};
  for (const auto& [name, text] : texts) type(name, text);
  choose("cmbGrupa", u"Produkcja"_s);
  choose("cmbKomorka", u"Hala"_s);
  field<QCheckBox>("cbAktywny")->setChecked(false);
  field<QPlainTextEdit>("txtUwagi")->setPlainText(u"wiersz 1\nwiersz 2"_s);
  QTest::keyClick(field<QLineEdit>("txtImie"), Qt::Key_Return);
  EXPECT_FALSE(form->isVisible());
  EXPECT_EQ(ask(u"SELECT Nazwisko & '/' & Imie & '/' & Aktywny & '/' & Indgpc & '/' & Indkom & '/' & Numpok "
                u"& '/' & Email FROM swpra WHERE indpra = 1"_s),
            u"Kowal-O'Hara/Jan Maria/0/2/2/7a/"_s + address);
  EXPECT_EQ(ask(u"SELECT Wzrost & '/' & Kolnierz & '/' & Obuwie & '/' & Telefon & '/' & Uwagi FROM swpra "
                u"WHERE indpra = 1"_s),
            u"180,25//43,5//wiersz 1\nwiersz 2"_s);
  EXPECT_EQ(stored(u"Telefon"_s, kKowal), u"-"_s) << "an empty field is Null";
}

TEST_F(EmployeeFormTest, SizesTakeNumbersOnlyAndNothingLongerThanItsField) {
  open(kKowalska);
  for (const char* name : {"txtWzrost", "txtKolnierz", "txtObuwie"}) {
    QTest::keyClicks(field<QLineEdit>(name), u"1x7e2,5 cm"_s);
    EXPECT_EQ(field<QLineEdit>(name)->text(), u"172,5"_s) << name;
  }
  QTest::keyClicks(field<QLineEdit>("txtNumpok"), QString(30, u'9'));
  EXPECT_EQ(field<QLineEdit>("txtNumpok")->text().size(), 20);
  const auto* email = field<QLineEdit>("txtEmail");
  EXPECT_GT(email->width(),
            email->fontMetrics().horizontalAdvance(u"aleksandra.wisniewska-kowalczyk@zaklady.example"_s));
}

TEST_F(EmployeeFormTest, KeysTurnThePages) {
  open(kKowal);
  const auto* tabs = field<QTabWidget>("tabDane");
  const std::pair<Qt::Key, int> keys[] = {
      {Qt::Key_PageDown, 1}, {Qt::Key_PageDown, 2}, {Qt::Key_PageDown, 0}, {Qt::Key_PageUp, 2}};
  for (const auto& [key, page] : keys) {
    QTest::keyClick(form->focusWidget(), key, Qt::ControlModifier);
    EXPECT_EQ(tabs->currentIndex(), page);
    EXPECT_TRUE(form->focusWidget()->isVisible());
  }
}

TEST_F(EmployeeFormTest, OneFormForAnEmployeeAndTwoEmployeesOfOneName) {
  open(kKowal);
  dokSWPRA* first = form;
  open(kKowal, kPanelCaller);
  EXPECT_EQ(form, first);
  open(0);
  dokSWPRA* second = form;
  open(0);
  EXPECT_NE(form, second) << "new employees have a form each";
  for (dokSWPRA* each : {form, second}) {
    form = each;
    type("txtNazwisko", u"Kowal"_s);
    type("txtImie", u"Jan"_s);
    choose("cmbGrupa", u"Biuro"_s);
    choose("cmbKomorka", u"Hala"_s);
    press("cmdZapisz");
  }
  EXPECT_EQ(ask(u"SELECT indpra FROM swpra WHERE Nazwisko = 'Kowal' ORDER BY indpra"_s), u"1|4|5"_s);
}

TEST_F(EmployeeFormTest, LeavingOffersToSave) {
  open(kKowal);
  form->close();
  EXPECT_TRUE(messages.shown.empty()) << "nothing was changed";
  const struct {
    Answer answer;
    bool visible;
    const char16_t* stored;
  } cases[] = {
      {Answer::Cancel, true, u"Kowal"}, {Answer::No, false, u"Kowal"}, {Answer::Yes, false, u"Kowalik"}};
  for (const auto& c : cases) {
    closeForms();
    open(kKowal);
    type("txtNazwisko", u"Kowalik"_s);
    messages.answers = {c.answer};
    press("cmdAnuluj");
    EXPECT_EQ(messages.takeOnly().text, u"Dane zostały zmienione. Zapisać zmiany?"_s);
    EXPECT_EQ(form->isVisible(), c.visible);
    EXPECT_EQ(stored(u"Nazwisko"_s, kKowal), QString::fromUtf16(c.stored));
  }
  closeForms();
  for (const auto& change : std::initializer_list<std::function<void()>>{
           [this] { field<QCheckBox>("cbAktywny")->toggle(); },
           [this] { choose("cmbGrupa", u"Produkcja"_s); }, [this] { type("txtObuwie", u"44"_s); },
           [this] { field<QPlainTextEdit>("txtUwagi")->setPlainText(u"x"_s); }}) {
    open(kNowak);
    change();
    messages.answers = {Answer::No};
    QTest::keyClick(form, Qt::Key_Escape);
    messages.takeOnly();
    closeForms();
  }
}

TEST_F(EmployeeFormTest, AFailedSaveKeepsTheFormAndItsEntries) {
  sql(u"INSERT INTO swgpc (Nazwa) VALUES ('Straż')"_s);
  open(kKowal);
  type("txtImie", u"Adam"_s);
  choose("cmbGrupa", u"Straż"_s);
  sql(u"DELETE FROM swgpc WHERE Nazwa = 'Straż'"_s);  // by another copy
  press("cmdZapisz");
  ASSERT_EQ(failures.failures.size(), 1u);
  EXPECT_EQ(failures.failures[0].number, 3201);
  EXPECT_TRUE(form->isVisible());
  EXPECT_EQ(field<QLineEdit>("txtImie")->text(), u"Adam"_s);
  EXPECT_EQ(stored(u"Imie"_s, kKowal), u"Jan"_s);

  choose("cmbGrupa", u"Produkcja"_s);
  sql(u"ALTER TABLE swpra ALTER COLUMN Email TEXT(100) NOT NULL"_s);
  press("cmdZapisz");
  EXPECT_EQ(messages.takeOnly().text,
            u"Pole [Email] nie może być puste. Wprowadź dane i spróbuj ponownie."_s);
  EXPECT_EQ(stored(u"Imie"_s, kKowal), u"Jan"_s);
  type("txtEmail", u"adam@firma.example"_s);
  press("cmdZapisz");
  EXPECT_EQ(stored(u"Imie & Indgpc"_s, kKowal), u"Adam2"_s) << "and can be saved when it is mended";

  open(kNowak);
  type("txtImie", u"Adam"_s);
  sql(u"DELETE FROM swpra WHERE indpra = 3"_s);
  press("cmdZapisz");
  EXPECT_EQ(messages.takeOnly().text, u"Pracownik został w międzyczasie usunięty."_s);
  EXPECT_TRUE(form->isVisible());
  EXPECT_EQ(dokSWPRA::open(session, 99, {}), nullptr);
}

TEST_F(EmployeeFormTest, DictionariesFillTheCombosOfAnOpenForm) {
  open(kKowal);
  openDictionary(session, u"sloSWGPC"_s);
  auto& dictionary = *frame.opened.back();
  child<QPushButton>(dictionary, "cmdNowy")->click();
  child<QLineEdit>(dictionary, "txtNazwa")->setText(u"Straż"_s);
  child<QPushButton>(dictionary, "cmdZapisz")->click();
  EXPECT_GE(field<QComboBox>("cmbGrupa")->findText(u"Straż"_s), 0);
  EXPECT_EQ(field<QComboBox>("cmbGrupa")->currentText(), u"Biuro"_s) << "the choice stays";
  form->close();
  EXPECT_TRUE(messages.shown.empty()) << "and is no change of the employee";
}

TEST_F(EmployeeFormTest, SendsMailToTheAddressShown) {
  open(kKowal);
  EXPECT_FALSE(field<QPushButton>("cmdWyslij")->isEnabled());
  type("txtEmail", u" jan@firma.example "_s);
  press("cmdWyslij");
  EXPECT_EQ(shell.opened, QStringList{u"mailto:jan@firma.example"_s});
  EXPECT_TRUE(messages.shown.empty());
  shell.result = ShellResult::NoProgram;
  press("cmdWyslij");
  EXPECT_EQ(messages.takeOnly().icon, Icon::Exclamation);
}

}  // namespace
}  // namespace tandeko
