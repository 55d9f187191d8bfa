#include <gtest/gtest.h>

#include <QComboBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

#include "lists/form_fields.h"
#include "register/dokEWKAR.h"
#include "register/frmPodziel.h"
#include "register_fixture.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

struct ItemFormTest : testing::Test, RegisterFixture {
  dokEWKAR* form = nullptr;

  void TearDown() override {
    if (frame.opened.empty()) return;
    for (ChildForm* each : frame.opened) delete each;
  }
  void open(const ItemFormRequest& request) {
    form = dokEWKAR::open(session, request);
    ASSERT_NE(form, nullptr);
    form->setAttribute(Qt::WA_DeleteOnClose, false);
  }
  template <typename Field>
  Field* field(const QString& name) {
    auto* found = form->findChild<Field*>(name);
    EXPECT_NE(found, nullptr) << name.toStdString();
    return found;
  }
  void type(const QString& name, const QString& text) { field<QLineEdit>(name)->setText(text); }
  void press(const QString& name) { field<QPushButton>(name)->click(); }
  QString text(const QString& name) { return field<QLineEdit>(name)->text(); }
};

TEST_F(ItemFormTest, ANewItemIsCheckedNumberedAndStored) {
  const int desk = item(u"Biurko"_s, kNowak);
  open({0, kNowak, desk, u"karEWPAN"_s});
  EXPECT_EQ(form->windowTitle(), u"Nowy przedmiot"_s);
  EXPECT_EQ(form->mode(), u"Nowy"_s);
  EXPECT_EQ(ask(u"SELECT Nazwa FROM dbfir"_s), u"Nazwa firmy..."_s);
  EXPECT_EQ(field<QComboBox>(u"cmbPracownik"_s)->currentText(), u"Nowak Jan"_s);
  EXPECT_EQ(field<QComboBox>(u"cmbParent"_s)->currentText(), u"Biurko"_s);
  EXPECT_EQ(text(u"txtNumewi"_s), u"1/0001/2024"_s);
  type(u"txtDatazak"_s, u"5.1.2023"_s);
  EXPECT_EQ(text(u"txtNumewi"_s), u"1/0001/2023"_s);
  type(u"txtDatazak"_s, {});
  EXPECT_EQ(text(u"txtNumewi"_s), u"?"_s);
  type(u"txtDatazak"_s, u"15.3.2024"_s);

  const auto refused = [this](const QString& expected) {
    press(u"cmdZapisz"_s);
    EXPECT_EQ(messages.takeOnly().text, expected);
    EXPECT_EQ(ask(u"SELECT count(*) FROM ewkar"_s), u"1"_s);
  };
  refused(u"Wprowadź nazwę przedmiotu i spróbuj ponownie."_s);
  type(u"txtNazwa"_s, u"C:\\"_s);
  refused(u"Nazwa przedmiotu nie może zawierać znaku \\. Popraw nazwę i spróbuj ponownie."_s);
  type(u"txtNazwa"_s, u"Lampka"_s);
  for (const auto& [combo, question] :
       {std::pair{
            u"cmbGrupa"_s,
            u"Wymagane jest wprowadzenie grupy przedmiotów. Chcesz zdefiniować grupy przedmiotów teraz?"_s},
        {u"cmbStan"_s,
         u"Wymagane jest wprowadzenie stanu przedmiotu. Chcesz zdefiniować stany przedmiotów teraz?"_s},
        {u"cmbIndjed"_s,
         u"Wymagane jest wprowadzenie jednostki miary. Chcesz zdefiniować jednostki teraz?"_s}}) {
    field<QComboBox>(combo)->setCurrentIndex(-1);
    refused(question);
    field<QComboBox>(combo)->setCurrentIndex(0);
  }
  type(u"txtIlosc"_s, u"2,5"_s);
  type(u"txtCenazak"_s, u"10"_s);
  EXPECT_EQ(text(u"txtWartosc"_s), u"25,00"_s);

  QList<int> told;
  QObject::connect(form, &RecordForm::saved, [&told](int key) { told << key; });
  QTest::keyClick(form, Qt::Key_Return);
  EXPECT_TRUE(messages.shown.empty());
  EXPECT_FALSE(form->isVisible());
  EXPECT_EQ(form->windowTitle(), u"Przedmiot: Lampka"_s);
  EXPECT_EQ(form->mode(), u"Popraw"_s);
  ASSERT_EQ(told.size(), 1);
  EXPECT_EQ(place(told[0]), u"1/%1"_s.arg(desk));
  EXPECT_EQ(ask(u"SELECT Ilosc & ' ' & Cenazak & ' ' & numewi FROM ewkar WHERE Nazwa = 'Lampka'"_s),
            u"2,5 10 1/0001/2024"_s);
}

TEST_F(ItemFormTest, DuplicateNumbersAreAskedAbout) {
  const int first = item(u"Biurko"_s, kNowak), second = item(u"Szafa"_s, kNowak);
  sql(u"UPDATE ewkar SET numewi = 'A/1' WHERE indewi = "_s + str(first));
  open({second, 0, 0, {}});
  type(u"txtNumewi"_s, u"A/1"_s);
  press(u"cmdZapisz"_s);
  EXPECT_EQ(
      messages.takeOnly().text,
      u"Wprowadzony numer ewidencyjny posiada już przedmiot: Biurko. Chcesz zapisać przedmiot z tym samym numerem ewidencyjnym?"_s);
  messages.answers = {Answer::Yes};
  press(u"cmdZapisz"_s);
  EXPECT_EQ(ask(u"SELECT count(*) FROM ewkar WHERE numewi = 'A/1'"_s), u"2"_s);
}

TEST_F(ItemFormTest, AnItemCannotBelongToItsOwnComponent) {
  const int desk = item(u"Biurko"_s, kNowak), lamp = item(u"Lampka"_s, kNowak, desk);
  open({desk, 0, 0, {}});
  EXPECT_EQ(form->windowTitle(), u"Przedmiot: Biurko"_s);
  EXPECT_EQ(dokEWKAR::open(session, {desk, 0, 0, {}}), form);
  ASSERT_TRUE(setComboKey(*field<QComboBox>(u"cmbParent"_s), lamp));
  press(u"cmdZapisz"_s);
  EXPECT_EQ(messages.takeOnly().text,
            u"Element nie może należeć do wskazanego zestawu. Popraw dane i spróbuj ponownie"_s);
  setComboKey(*field<QComboBox>(u"cmbPracownik"_s), kWarehouse);  // other sets there
  EXPECT_EQ(field<QComboBox>(u"cmbParent"_s)->count(), 1);
  press(u"cmdZapisz"_s);
  EXPECT_EQ(place(lamp), u"0/1"_s);
}

TEST_F(ItemFormTest, ClosingOffersToSave) {
  const int desk = item(u"Biurko"_s, kNowak);
  open({desk, 0, 0, {}});
  type(u"txtNazwa"_s, u"Biurko 2"_s);
  messages.answers = {Answer::Cancel, Answer::No};
  QTest::keyClick(form, Qt::Key_Escape);
  const Message asked = messages.takeOnly();
  EXPECT_EQ(asked.text, u"Dane zostały zmienione. Zapisać zmiany?"_s);
  EXPECT_EQ(asked.buttons, Buttons::YesNoCancel);
  EXPECT_TRUE(form->isVisible());
  form->close();
  EXPECT_FALSE(form->isVisible());
  EXPECT_EQ(ask(u"SELECT Nazwa FROM ewkar"_s), u"Biurko"_s);
}

TEST_F(ItemFormTest, ReadersSeeAndCannotStore) {
  const int desk = item(u"Biurko"_s, kNowak);
  user(u"P"_s);
  open({desk, 0, 0, {}});
  EXPECT_TRUE(field<QLineEdit>(u"txtNazwa"_s)->isReadOnly());
  EXPECT_FALSE(field<QComboBox>(u"cmbGrupa"_s)->isEnabled());
  EXPECT_FALSE(field<QPushButton>(u"cmdZapisz"_s)->isEnabled());
  EXPECT_FALSE(form->supports(Command::ZrodloNowy));
}

TEST_F(ItemFormTest, SplitTakesLessThanThereIs) {
  const int cable = item(u"Kabel"_s, kNowak);
  sql(u"UPDATE ewkar SET Ilosc = 10 WHERE indewi = "_s + str(cable));
  frmPodziel dialog(session, loadItem(db(), cable).value(), 1, nullptr);
  auto* quantity = dialog.findChild<QLineEdit*>(u"txtIlosc2"_s);
  auto* save = dialog.findChild<QPushButton*>(u"cmdZapisz"_s);
  auto* state = dialog.findChild<QLabel*>(u"labStan"_s);
  const struct {
    QString typed, left, caption;
    bool allowed;
  } cases[] = {{{}, u"10"_s, u"Stan"_s, false},
               {u"10"_s, u"0"_s, u"Stan po podziale"_s, false},
               {u"0"_s, u"10"_s, u"Stan"_s, false},
               {u"2,5"_s, u"7,5"_s, u"Stan po podziale"_s, true}};
  for (const auto& c : cases) {
    quantity->setText(c.typed);
    EXPECT_EQ(dialog.findChild<QLineEdit*>(u"txtIlosc"_s)->text(), c.left);
    EXPECT_EQ(state->text(), c.caption);
    EXPECT_EQ(save->isEnabled(), c.allowed) << c.typed.toStdString();
  }
  save->click();
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_EQ(ask(u"SELECT Ilosc FROM ewkar WHERE indewi = "_s + str(dialog.newItem())), u"2,5"_s);
}

}  // namespace
}  // namespace tandeko
