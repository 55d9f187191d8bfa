#include "register/register_record.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

#include "lists/form_fields.h"
#include "register/dlgParRejEwi.h"
#include "register/kreRejewi.h"
#include "register_fixture.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

struct RegisterTest : testing::Test, RegisterFixture {
  std::unique_ptr<dlgParRejEwi> dialog;
  void open() { dialog = std::make_unique<dlgParRejEwi>(session); }
  void choose(const QString& combo, const QString& value) {
    ASSERT_TRUE(setComboKey(*dialog->findChild<QComboBox*>(combo), value)) << combo.toStdString();
  }
  void apply() { dialog->findChild<QPushButton*>(u"cmdZastosuj"_s)->click(); }
  QString stored(const QString& field) {
    return ask(u"SELECT "_s + field + u" FROM swrew WHERE Indrew = 1"_s);
  }
};

TEST_F(RegisterTest, ShowsAndStoresEveryField) {
  open();
  EXPECT_EQ(dialog->findChild<QComboBox*>(u"cmbNumS1"_s)->currentText(), u"Nr rejestru"_s);
  EXPECT_EQ(dialog->findChild<QLabel*>(u"labNumery"_s)->text(),
            u"Przykładowe numery: 1/0123/2024, 1/0124/2024, 1/0125/2024"_s);
  choose(u"cmbNumS1"_s, u"/Numer"_s);
  choose(u"cmbNumS2"_s, u"/Miesiąc"_s);
  choose(u"cmbNumS3"_s, u"/"_s);
  choose(u"cmbNumSeparator"_s, u"-"_s);
  dialog->findChild<QLineEdit*>(u"txtNumPo"_s)->setText(u"KW"_s);
  EXPECT_EQ(dialog->findChild<QLabel*>(u"labNumery"_s)->text(),
            u"Przykładowe numery: 123-03-KW, 124-03-KW, 125-03-KW"_s);
  dialog->findChild<QRadioButton*>(u"obNumMiesieczna"_s)->setChecked(true);
  dialog->findChild<QCheckBox*>(u"cbCena"_s)->setChecked(true);
  dialog->findChild<QLineEdit*>(u"txtStartIlosc"_s)->setText(u"4"_s);
  apply();
  EXPECT_TRUE(messages.shown.empty());
  EXPECT_EQ(stored(u"NumSzablon & WysCena & NumMiesieczna & NumGrupa & Startilosc"_s),
            u"Numer-Miesiąc-KW-1-104"_s);
}

TEST_F(RegisterTest, RefusesNumbersThatCannotWork) {
  open();
  const auto refused = [this](const QString& start) {
    apply();
    EXPECT_TRUE(messages.takeOnly().text.startsWith(start));
    EXPECT_EQ(stored(u"NumSzablon"_s), u"Rejestr/Numer/Rok[4]"_s);
  };
  choose(u"cmbNumS2"_s, u"/"_s);
  refused(u"Przynajmniej jeden ze składników numeru ewidencyjnego powinien zawierać Numer."_s);
  choose(u"cmbNumS2"_s, u"/Numer"_s);
  dialog->findChild<QRadioButton*>(u"obNumMiesieczna"_s)->setChecked(true);
  refused(u"Jeżeli ustawiona jest miesięczna numeracja"_s);
  dialog->findChild<QRadioButton*>(u"obNumGrupa"_s)->setChecked(true);
  refused(u"Jeżeli ustawiona jest numeracja w ramach grupy"_s);
}

TEST_F(RegisterTest, ChangingToAListAsksAboutSets) {
  const int desk = item(u"Biurko"_s, kNowak), lamp = item(u"Lampka"_s, kNowak, desk);
  open();
  const struct {
    Answer answer;
    QString kind, lampPlace;
  } cases[] = {
      {Answer::Cancel, u"S"_s, u"1/1"_s}, {Answer::No, u"S"_s, u"1/1"_s}, {Answer::Yes, u"L"_s, u"1/0"_s}};
  for (const auto& c : cases) {
    choose(u"cmbRodzaj"_s, u"L"_s);
    dialog->findChild<QCheckBox*>(u"cbCena"_s)->toggle();
    messages.answers = {c.answer};
    apply();
    EXPECT_TRUE(
        messages.takeOnly().text.startsWith(u"Kartoteka posiada przedmioty tworzące struktury danych."_s));
    EXPECT_EQ(stored(u"Rodzaj"_s), c.kind);
    EXPECT_EQ(place(lamp), c.lampPlace);
  }
}

TEST_F(RegisterTest, ANoToTheLossOfSetsShowsTheOldKindEvenWhenTheNumberingIsRefused) {
  item(u"Lampka"_s, kNowak, item(u"Biurko"_s, kNowak));
  open();
  choose(u"cmbRodzaj"_s, u"L"_s);
  dialog->findChild<QRadioButton*>(u"obNumGrupa"_s)->setChecked(true);
  messages.answers = {Answer::No};
  apply();
  ASSERT_EQ(messages.shown.size(), 2u);
  EXPECT_EQ(messages.shown[1].icon, Icon::Information);
  EXPECT_EQ(comboKey(*dialog->findChild<QComboBox*>(u"cmbRodzaj"_s)).toString(), u"S"_s);
}

TEST_F(RegisterTest, WhatCannotBeStoredLeavesTheDialogAsItWas) {
  open();
  auto* name = dialog->findChild<QLineEdit*>(u"txtNazwa"_s);
  name->clear();
  QTest::keyClicks(name, QString(60, u'a'));
  EXPECT_EQ(name->text().size(), 50);
  name->setText(u"Rejestr O'Neila"_s);
  apply();
  ASSERT_EQ(failures.failures.size(), 1u);
  EXPECT_EQ(failures.failures[0].procedure, u"dlgParRejEwi.cmdZapisz"_s);
  EXPECT_EQ(name->text(), u"Rejestr O'Neila"_s);
  name->setText(u"Inny"_s);
  dialog->findChild<QLineEdit*>(u"txtStartIlosc"_s)->setText(u"1,2,3"_s);
  apply();
  EXPECT_TRUE(messages.takeOnly().text.startsWith(u"Błędna liczba: 1,2,3"_s));
  dialog->findChild<QLineEdit*>(u"txtStartIlosc"_s)->setText(u"2"_s);
  sql(u"DELETE FROM swrew WHERE Indrew = 1"_s);
  apply();
  EXPECT_EQ(messages.takeOnly().text, u"Rejestr został w międzyczasie usunięty."_s);
  EXPECT_EQ(ask(u"SELECT count(*) FROM swrew"_s), u"1"_s);
}

TEST_F(RegisterTest, ReadersHaveNoWizard) {
  user(u"P"_s);
  runRegisterWizard(session);
  EXPECT_EQ(messages.takeOnly().text, u"Nie masz uprawnień do zmiany rejestrów."_s);
}

TEST_F(RegisterTest, TheWizardCreatesAndDeletes) {
  item(u"Biurko"_s, kNowak);
  kreRejewi wizard(session, nullptr);
  wizard.show();
  wizard.next();
  auto* name = wizard.findChild<QLineEdit*>(u"txtNazwa"_s);
  wizard.next();
  EXPECT_EQ(messages.takeOnly().text, u"Wprowadź nazwę rejestru i spróbuj ponownie."_s);
  name->setText(u"Odzież"_s);
  wizard.next();
  EXPECT_EQ(messages.takeOnly().text,
            u"Rejestr o nazwie: Odzież istnieje w bazie. Zmień nazwę rejestru i spróbuj ponownie."_s);
  name->setText(u"Narzędzia"_s);
  for (int page = kreRejewi::NamePage; page < kreRejewi::SummaryPage; ++page) wizard.next();
  ASSERT_EQ(wizard.currentId(), int{kreRejewi::SummaryPage});
  EXPECT_EQ(wizard.buttonText(QWizard::FinishButton), u"Utwórz"_s);
  wizard.accept();
  EXPECT_TRUE(
      messages.takeOnly().text.startsWith(u"Rejestr o nazwie: Narzędzia został poprawnie utworzony."_s));
  EXPECT_EQ(ask(u"SELECT NumSzablon FROM swrew WHERE Nazwa = 'Narzędzia'"_s), u"Rejestr/Numer/Rok[4]"_s);

  ASSERT_TRUE(wizard.choose(kreRejewi::Operation::Delete, 1));
  wizard.accept();
  EXPECT_TRUE(messages.takeOnly().text.endsWith(u"Usunąć rejestr wraz z przedmiotami?."_s));
  messages.answers = {Answer::Yes};
  wizard.accept();
  EXPECT_EQ(messages.shown.back().text, u"Rejestr o nazwie: Wyposażenie został poprawnie usunięty. "_s);
  EXPECT_EQ(ask(u"SELECT count(*) FROM swrew"_s) + ask(u"SELECT count(*) FROM ewkar"_s), u"20"_s);
}

}  // namespace
}  // namespace tandeko
