#include "register/item_record.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include "register/numbering.h"
#include "register_fixture.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

struct ItemRecordTest : testing::Test, RegisterFixture {
  ItemData chair() {
    ItemData item = proposeItem(db(), 1, QDate(2024, 3, 15));
    item.name = u"Krzesło"_s;
    return item;
  }
  SaveResult save(ItemData& item) { return saveItem(store(), item, u"AD"_s, {}); }
  void settings(const QString& numberTemplate, bool monthly, bool perGroup) {
    sql(u"UPDATE swrew SET NumSzablon = '%1', NumMiesieczna = %2, NumGrupa = %3 WHERE Indrew = 1"_s.arg(
        numberTemplate, monthly ? u"True"_s : u"False"_s, perGroup ? u"True"_s : u"False"_s));
  }
};

TEST_F(ItemRecordTest, ANewItemGetsTheRegistersProposalsAndTheNextNumber) {
  ItemData first = chair();
  EXPECT_EQ(first.group, 1);
  EXPECT_EQ(first.state, 1);
  EXPECT_EQ(first.unit, u"szt"_s);
  EXPECT_EQ(first.quantity, 1.0);
  EXPECT_EQ(first.number, u"1/0001/2024"_s);
  ASSERT_EQ(save(first), SaveResult::Saved);
  EXPECT_GT(first.id, 0);
  EXPECT_EQ(chair().number, u"1/0002/2024"_s);
  EXPECT_EQ(ask(u"SELECT miesiac & '/' & rok & ' ' & Indoso & ' ' & indrew FROM ewkar"_s), u"3/2024 AD 1"_s);
}

TEST_F(ItemRecordTest, NumbersRestartWithTheirPeriod) {
  const QDate march(2024, 3, 15), april(2024, 4, 1), nextYear(2025, 3, 1);
  const auto add = [this](const QString& number, const QDate& date, int group) {
    ItemData item = chair();
    item.number = number;
    item.purchased = date;
    item.group = group;
    ASSERT_EQ(save(item), SaveResult::Saved);
  };
  settings(u"Rok[2]/Miesiąc/Numer"_s, true, false);
  add(u"24/03/0007"_s, march, 1);
  add(u"24/03/0012"_s, march, 1);
  add(u"9999 z ręki"_s, march, 1);  // follows no template
  EXPECT_EQ(NumLast(db(), 1, march, 1)->number, 12);
  EXPECT_EQ(NumLast(db(), 1, march, 1)->text, u"24/03/0012"_s);
  EXPECT_EQ(NumNext(db(), 1, march, 0), u"24/03/0013"_s);
  EXPECT_EQ(NumNext(db(), 1, april, 0), u"24/04/0001"_s);
  EXPECT_EQ(NumNext(db(), 1, QDate(), 0), u"?"_s);
  settings(u"Rok[2]/Miesiąc/Numer"_s, false, false);
  EXPECT_EQ(NumNext(db(), 1, april, 0), u"24/04/0013"_s);
  EXPECT_EQ(NumNext(db(), 1, nextYear, 0), u"25/03/0001"_s);

  settings(u"Grupa-Numer"_s, false, true);
  sql(u"INSERT INTO swgew (Nazwa) VALUES ('Lampy')"_s);
  add(u"02-0041"_s, march, 2);
  EXPECT_EQ(NumNext(db(), 1, nextYear, 2), u"02-0042"_s);
  EXPECT_EQ(NumNext(db(), 1, march, 0), u"? - Błędna grupa"_s);
  sql(u"UPDATE ewkar SET numewi = '02-32767' WHERE Indgew = 2"_s);
  EXPECT_THROW(NumNext(db(), 1, march, 2), jet::Error);
  sql(u"UPDATE swrew SET NumAuto = False"_s);
  EXPECT_EQ(NumNext(db(), 1, march, 2), u"?"_s);
}

TEST_F(ItemRecordTest, ChecksGoInOrder) {
  ItemData item;
  const std::pair<ItemFault, std::function<void()>> steps[] = {
      {ItemFault::NoName, [&] { item.name = u"a\\b"_s; }},
      {ItemFault::NameWithBackslash, [&] { item.name = u"ab"_s; }},
      {ItemFault::NoGroup, [&] { item.group = 1; }},
      {ItemFault::NoState, [&] { item.state = 1; }},
      {ItemFault::NoUnit, [&] { item.unit = u"szt"_s; }},
  };
  for (const auto& [fault, mend] : steps) {
    EXPECT_EQ(checkItem(item), fault);
    mend();
  }
  EXPECT_EQ(checkItem(item), ItemFault::None);
}

TEST_F(ItemRecordTest, EveryFieldComesBackAndAnotherItemsNumberIsTold) {
  ItemData item = chair();
  item.price = 12.5;
  item.quantity = 2.25;
  item.serialNumber = u"S'1"_s;
  item.catalogNumber = u"K"_s;
  item.issued = QDate(2023, 12, 31);
  item.notes = QString(3000, u'ż');
  item.fixedAsset = true;
  item.holder = kNowak;
  ASSERT_EQ(save(item), SaveResult::Saved);
  const ItemData read = loadItem(db(), item.id).value();
  EXPECT_EQ(read.price, 12.5);
  EXPECT_EQ(read.quantity, 2.25);
  EXPECT_EQ(read.serialNumber, u"S'1"_s);
  EXPECT_EQ(read.issued, item.issued);
  EXPECT_EQ(read.purchased, item.purchased);
  EXPECT_EQ(read.notes, item.notes);
  EXPECT_TRUE(read.fixedAsset);
  EXPECT_EQ(read.holder, kNowak);
  EXPECT_EQ(itemWithNumber(db(), 0, item.number), u"Krzesło"_s);
  EXPECT_EQ(itemWithNumber(db(), item.id, item.number), std::nullopt);
  EXPECT_EQ(itemWithNumber(db(), 0, u"O'Neil"_s), std::nullopt);
}

TEST_F(ItemRecordTest, SetsAreOfTheSameHolderAndNeverBelowTheItem) {
  const int desk = item(u"Biurko"_s, kNowak), drawer = item(u"Szuflada"_s, kNowak, desk);
  ItemData edited = loadItem(db(), desk).value();
  edited.parent = drawer;
  EXPECT_EQ(save(edited), SaveResult::WrongSet);
  edited.parent = 0;
  edited.holder = kAdamska;
  EXPECT_EQ(save(edited), SaveResult::Saved);
  EXPECT_EQ(place(drawer), u"2/1"_s);  // components follow
  ItemData fresh = chair();
  fresh.holder = kNowak;
  fresh.parent = desk;
  EXPECT_EQ(save(fresh), SaveResult::WrongSet);
  EXPECT_EQ(ask(u"SELECT count(*) FROM ewkar"_s), u"2"_s);
  sql(u"DELETE FROM ewkar WHERE indewi = "_s + str(drawer));
  edited.id = drawer;
  EXPECT_EQ(save(edited), SaveResult::Gone);
}

TEST_F(ItemRecordTest, SplittingLeavesTheRest) {
  const int cable = item(u"Kabel"_s, kNowak);
  sql(u"UPDATE ewkar SET Ilosc = 10, Uwagi = 'zwój', Cenazak = 3 WHERE indewi = "_s + str(cable));
  const int part = splitItem(store(), cable, 3, u"N2"_s, u"S2"_s);
  EXPECT_EQ(ask(u"SELECT Ilosc FROM ewkar WHERE indewi = "_s + str(cable)), u"7"_s);
  EXPECT_EQ(ask(u"SELECT Ilosc & Uwagi & Cenazak & numewi & numser & indpra FROM ewkar WHERE indewi = "_s +
                str(part)),
            u"3zwój3N2S21"_s);
  EXPECT_EQ(splitItem(store(), cable, 7, {}, {}), 0);
  EXPECT_EQ(splitItem(store(), 99, 1, {}, {}), 0);
}

TEST_F(ItemRecordTest, LinksKeepTheirPlaceInTheDocumentsFolder) {
  const QString documents = file(u"Dokumenty"_s), inside = documents + u"/umowy/a.pdf"_s,
                outside = file(u"b.txt"_s);
  EXPECT_EQ(storedLinkPath(inside, documents), u"<Dokumenty>\\umowy\\a.pdf"_s);
  EXPECT_EQ(realLinkPath(u"<Dokumenty>\\umowy\\a.pdf"_s, u"/inny"_s), u"/inny/umowy/a.pdf"_s);
  EXPECT_EQ(storedLinkPath(outside, documents), outside);
  EXPECT_EQ(storedLinkPath(documents + u"2/a.pdf"_s, documents), documents + u"2/a.pdf"_s);

  ItemData item = chair();
  const QList<DocLink> links = {{u"a.pdf"_s, u"<Dokumenty>\\a.pdf"_s, 4}, {u"b"_s, outside, std::nullopt}};
  ASSERT_EQ(saveItem(store(), item, u"AD"_s, links), SaveResult::Saved);
  EXPECT_EQ(DocLinksLoad(db(), linkAddress(1, item.id)), links);
  ASSERT_EQ(saveItem(store(), item, u"AD"_s, {}), SaveResult::Saved);
  EXPECT_EQ(ask(u"SELECT count(*) FROM dblnk"_s), u"0"_s);

  session.settings().store(u"Folder dokumenty"_s, documents);
  session.settings().load();
  QFile(outside).open(QIODevice::WriteOnly);
  messages.answers = {Answer::Yes};
  EXPECT_EQ(linkTo(session, outside)->path, u"<Dokumenty>\\b.txt"_s);
  EXPECT_TRUE(QFile::exists(documents + u"/b.txt"_s));
  messages.shown.clear();
  messages.answers = {Answer::Yes};
  EXPECT_EQ(linkTo(session, outside), std::nullopt);  // taken
  EXPECT_EQ(messages.shown.back().text, u"Błąd kopiowania pliku: b.txt"_s);

  DocLinkOpen(session, u"<Dokumenty>\\b.txt"_s);
  EXPECT_EQ(shell.opened.last(), documents + u"/b.txt"_s);
  for (const auto& [result, text] : {std::pair{ShellResult::NoProgram, u"System Windows nie znalazł"_s},
                                     {ShellResult::NotFound, u"Brak dostępu do pliku: "_s + outside}}) {
    shell.result = result;
    messages.shown.clear();
    DocLinkOpen(session, outside);
    EXPECT_TRUE(messages.takeOnly().text.startsWith(text));
  }
}

}  // namespace
}  // namespace tandeko
