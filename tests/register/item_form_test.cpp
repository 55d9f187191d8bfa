#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDropEvent>
#include <QFile>
#include <QLabel>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QUrl>

#include "lists/form_fields.h"
#include "register/dokEWKAR.h"
#include "register/frmPodziel.h"
#include "register/link_list.h"
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
    QApplication::setActiveWindow(form);
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

TEST_F(ItemFormTest, ImpossibleDatesAndNumbersAreShownAndNotStored) {
  const int desk = item(u"Biurko"_s, kNowak);
  sql(u"UPDATE swrew SET WysCena = True WHERE Indrew = 1"_s);
  open({desk, 0, 0, {}});
  const struct {
    QString name, typed, fault, mended, shown;
  } cases[] = {{u"txtDatazak"_s, u"31.2.2024"_s, u"Błędna data"_s, u"2024-02-29"_s, u"29.02.2024"_s},
               {u"txtIlosc"_s, u"1,2,3"_s, u"Błędna liczba"_s, u"1.5"_s, u"1,5"_s},
               {u"txtCenazak"_s, u"1,23456"_s, u"Błędna liczba"_s, u"1 234,5"_s, u"1234,50"_s}};
  for (const auto& c : cases) {
    auto* line = field<QLineEdit>(c.name);
    line->setFocus();
    line->selectAll();
    QTest::keyClicks(line, c.typed);
    EXPECT_EQ(form->findChild<QLabel*>(c.name + u"Blad"_s), nullptr) << "while typing";
    press(u"cmdZapisz"_s);
    EXPECT_TRUE(messages.takeOnly().text.startsWith(c.fault + u": "_s + c.typed));
    EXPECT_TRUE(form->isVisible());
    ASSERT_NE(form->findChild<QLabel*>(c.name + u"Blad"_s), nullptr);
    EXPECT_TRUE(field<QLabel>(c.name + u"Blad"_s)->isVisible());
    EXPECT_EQ(field<QLabel>(c.name + u"Blad"_s)->text(), c.fault);
    EXPECT_EQ(QApplication::focusWidget(), line);
    line->selectAll();
    QTest::keyClicks(line, c.mended);
    EXPECT_FALSE(field<QLabel>(c.name + u"Blad"_s)->isVisible());
    QTest::keyClick(line, Qt::Key_Tab);
    EXPECT_EQ(line->text(), c.shown);
  }
  EXPECT_EQ(ask(u"SELECT Ilosc & Datazak & Cenazak FROM ewkar"_s), u"1"_s);
  press(u"cmdZapisz"_s);
  EXPECT_EQ(ask(u"SELECT Ilosc & ' ' & Cenazak & ' ' & rok & ' ' & miesiac FROM ewkar"_s),
            u"1,5 1234,5 2024 2"_s);
}

TEST_F(ItemFormTest, TextsStopAtTheSizeOfTheirFields) {
  sql(u"UPDATE swrew SET WysNumewi = True, WysNumser = True, WysNumkat = True, NumEdycja = True WHERE Indrew = 1"_s);
  open({0, kNowak, 0, {}});
  for (const auto& [name, size] :
       {std::pair{u"txtNazwa"_s, 150}, {u"txtNumewi"_s, 50}, {u"txtNumser"_s, 50}, {u"txtNumkat"_s, 50}}) {
    auto* line = field<QLineEdit>(name);
    line->clear();
    QTest::keyClicks(line, QString(size + 1, u'7'));
    EXPECT_EQ(line->text().size(), size) << name.toStdString();
  }
  press(u"cmdZapisz"_s);
  EXPECT_EQ(ask(u"SELECT len(Nazwa) & ' ' & len(numewi) FROM ewkar"_s), u"150 50"_s);
}

TEST_F(ItemFormTest, WhatTheStatementRefusesIsReportedAndTheFormStays) {
  sql(u"UPDATE swrew SET NumEdycja = True WHERE Indrew = 1"_s);
  open({0, kNowak, 0, {}});
  type(u"txtNazwa"_s, u"Stół O'Neila"_s);
  type(u"txtNumewi"_s, u"A'1"_s);
  press(u"cmdZapisz"_s);
  ASSERT_EQ(failures.failures.size(), 1u);
  EXPECT_EQ(failures.failures[0].procedure, u"dokEWKAR.cmdZapisz"_s);
  EXPECT_TRUE(form->isVisible());
  EXPECT_EQ(form->mode(), u"Nowy"_s);
  type(u"txtNumewi"_s, u"A1"_s);
  press(u"cmdZapisz"_s);
  EXPECT_EQ(ask(u"SELECT Nazwa FROM ewkar"_s), u"Stół O'Neila"_s);
}

TEST_F(ItemFormTest, AnItemThatAnotherCopyDeletedIsTold) {
  const int desk = item(u"Biurko"_s, kNowak), lamp = item(u"Lampka"_s, kNowak);
  const QString gone = u"Przedmiot został w międzyczasie usunięty."_s;
  sql(u"UPDATE ewkar SET Ilosc = 4"_s);
  open({desk, 0, 0, {}});
  frmPodziel dialog(session, loadItem(db(), lamp).value(), 1, nullptr);
  dialog.findChild<QLineEdit*>(u"txtIlosc2"_s)->setText(u"3"_s);
  auto* split = dialog.findChild<QPushButton*>(u"cmdZapisz"_s);
  sql(u"UPDATE ewkar SET Ilosc = 2"_s);
  split->click();
  EXPECT_EQ(messages.takeOnly().text,
            u"Ilość przedmiotu została w międzyczasie zmieniona. Popraw ilość i spróbuj ponownie."_s);
  EXPECT_FALSE(split->isEnabled());
  dialog.findChild<QLineEdit*>(u"txtIlosc2"_s)->setText(u"1"_s);
  sql(u"DELETE FROM ewkar"_s);
  split->click();
  EXPECT_EQ(messages.takeOnly().text, gone);
  EXPECT_EQ(dialog.result(), QDialog::Rejected);

  type(u"txtNazwa"_s, u"Biurko 2"_s);
  press(u"cmdZapisz"_s);
  EXPECT_EQ(messages.takeOnly().text, gone);
  EXPECT_TRUE(form->isVisible());
  EXPECT_EQ(dokEWKAR::open(session, {lamp, 0, 0, {}}), nullptr);
  EXPECT_EQ(messages.takeOnly().text, gone);
  EXPECT_EQ(ask(u"SELECT count(*) FROM ewkar"_s), u"0"_s);
}

TEST_F(ItemFormTest, APeriodWithoutNumbersLeftIsReportedAndTheFormOpens) {
  const int desk = item(u"Biurko"_s, kNowak);
  sql(u"UPDATE ewkar SET numewi = '1/32767/2024', rok = 2024 WHERE indewi = "_s + str(desk));
  open({0, kNowak, 0, {}});
  ASSERT_EQ(failures.failures.size(), 1u);
  EXPECT_EQ(failures.failures[0].number, 6);
  EXPECT_EQ(text(u"txtNumewi"_s), u"?"_s);
  type(u"txtDatazak"_s, u"1.1.2025"_s);
  EXPECT_EQ(text(u"txtNumewi"_s), u"1/0001/2025"_s);
}

TEST_F(ItemFormTest, TheRegisterHidesAndLocksFields) {
  const struct {
    QString flag, field;
  } cases[] = {{u"WysNumewi"_s, u"txtNumewi"_s},
               {u"WysNumkat"_s, u"txtNumkat"_s},
               {u"WysNumser"_s, u"txtNumser"_s},
               {u"WysIlosc"_s, u"txtIlosc"_s},
               {u"WysCena"_s, u"txtCenazak"_s}};
  sql(u"UPDATE swrew SET WysIlosc = False WHERE Indrew = 1"_s);
  for (const auto& shown : cases) {
    sql(u"UPDATE swrew SET %1 = True WHERE Indrew = 1"_s.arg(shown.flag));
    open({0, kNowak, 0, {}});
    for (const auto& c : cases) EXPECT_EQ(field<QWidget>(c.field)->isVisible(), c.flag == shown.flag);
    sql(u"UPDATE swrew SET %1 = False WHERE Indrew = 1"_s.arg(shown.flag));
  }
  EXPECT_TRUE(field<QLineEdit>(u"txtNumewi"_s)->isReadOnly());
  sql(u"UPDATE swrew SET NumEdycja = True WHERE Indrew = 1"_s);
  open({0, kNowak, 0, {}});
  EXPECT_FALSE(field<QLineEdit>(u"txtNumewi"_s)->isReadOnly());
}

TEST_F(ItemFormTest, DocumentsAreDroppedPastedRenamedAndStored) {
  const int desk = item(u"Biurko"_s, kNowak);
  open({desk, 0, 0, {}});
  auto* list = field<LinkList>(u"lstZrodlo"_s);
  const auto make = [this](const QString& name) {
    QFile made(file(name));
    EXPECT_TRUE(made.open(QIODevice::WriteOnly));
    return file(name);
  };
  const QString scan = make(u"skan.pdf"_s), bill = make(u"faktura.pdf"_s);
  QMimeData dropped;
  dropped.setUrls({QUrl::fromLocalFile(scan), QUrl::fromLocalFile(bill)});
  QDragEnterEvent enter(QPoint(5, 5), Qt::MoveAction | Qt::CopyAction, &dropped, Qt::LeftButton,
                        Qt::NoModifier);
  QApplication::sendEvent(list->viewport(), &enter);
  EXPECT_TRUE(enter.isAccepted());
  QDropEvent drop(QPointF(5, 5), Qt::MoveAction | Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(list->viewport(), &drop);
  EXPECT_EQ(drop.dropAction(), Qt::CopyAction);

  QGuiApplication::clipboard()->setText(u"zwykły tekst"_s);
  EXPECT_FALSE(form->supports(Command::ZrodloWklej));
  QGuiApplication::clipboard()->setText(u'"' + scan + u"\"\r\n"_s);
  QTest::keyClick(list, Qt::Key_V, Qt::ControlModifier);
  const auto names = [list] {
    QStringList all;
    for (const DocLink& link : list->links()) all << link.name;
    return all.join(u' ');
  };
  EXPECT_EQ(names(), u"skan.pdf faktura.pdf skan.pdf (2)"_s);

  auto* first = list->topLevelItem(0);
  first->setText(0, u"Faktura.PDF"_s);
  EXPECT_EQ(messages.takeOnly().text,
            u"Dokument o nazwie: Faktura.PDF jest już na liście. Zmień nazwę i spróbuj ponownie."_s);
  first->setText(0, u"  "_s);
  EXPECT_EQ(first->text(0), u"skan.pdf"_s);
  first->setText(0, u"Skan umowy"_s);
  list->setCurrentItem(first);
  messages.files = {bill};
  form->run(Command::ZrodloPlik);  // keeps the name that was given
  list->setCurrentItem(list->topLevelItem(2));
  QTest::keyClick(list, Qt::Key_Delete);
  EXPECT_EQ(names(), u"Skan umowy faktura.pdf"_s);
  press(u"cmdZapisz"_s);
  EXPECT_EQ(DocLinksLoad(db(), linkAddress(1, desk)),
            (QList<DocLink>{{u"faktura.pdf"_s, bill, {}}, {u"Skan umowy"_s, bill, {}}}));
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
