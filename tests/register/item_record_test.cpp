#include "register/item_record.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <map>

#include "lists/rst_check.h"
#include "register/numbering.h"
#include "register_fixture.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

struct ItemRecordTest : testing::Test, RegisterFixture {
  ItemData chair() {
    ItemData item = proposeItem(db(), 1, QDate(2024, 3, 15));
    item.name = u"Krzesło"_s;
    item.number = NumNext(db(), 1, item.purchased, item.group);
    return item;
  }
  SaveResult save(ItemData& item, const QList<DocLink>& links = {}) {
    return saveItem(store(), item, u"AD"_s, links,
                    [this](const jet::Recordset& row) { return RstCheck(db(), row, u"EWKAR"_s, messages); });
  }
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
}

TEST_F(ItemRecordTest, ARowWithoutARequiredFieldIsNotWritten) {
  ItemData unnamed = chair();
  unnamed.name.clear();
  EXPECT_EQ(save(unnamed), SaveResult::Incomplete);
  EXPECT_EQ(messages.takeOnly().text,
            u"Pole [Nazwa] nie może być puste. Wprowadź dane i spróbuj ponownie."_s);
  EXPECT_EQ(ask(u"SELECT count(*) FROM ewkar"_s), u"0"_s);
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

TEST_F(ItemRecordTest, SplittingCopiesEveryFieldButTheThreeOfTheForm) {
  const int set = item(u"Zestaw"_s, kNowak), cable = item(u"Kabel"_s, kNowak, set);
  sql(u"UPDATE ewkar SET Ilosc = 1, Uwagi = 'zwój', Cenazak = 3.5, numewi = 'N1', Numser = 'S1', Numkat = "
      u"'K', "
      u"Datazak = #3/15/2024#, Data = #4/1/2024#, miesiac = 3, rok = 2024, Srodek = True, Indoso = 'XY', "
      u"ikona = 4, "
      u"Strord = 2.5, Strpoz = 7 WHERE indewi = "_s +
      str(cable));
  const int part = splitItem(store(), cable, 0.9, u"N2"_s, {});
  const auto source = openRows(db(), u"SELECT * FROM ewkar WHERE indewi = "_s + str(cable));
  const auto made = openRows(db(), u"SELECT * FROM ewkar WHERE indewi = "_s + str(part));
  ASSERT_FALSE(made->eof());
  const std::map<QString, std::pair<jet::Value, jet::Value>> different = {
      {u"Ilosc"_s, {jet::Value(0.1), jet::Value(0.9)}},
      {u"Numewi"_s, {jet::Value(u"N1"), jet::Value(u"N2")}},
      {u"Numser"_s, {jet::Value(u"S1"), jet::Value()}}};
  for (size_t at = 0; at < source->fieldCount(); ++at) {
    const jet::Value left = source->field(at).value(), right = made->field(at).value();
    const QString name = toQString(source->field(at).name());
    if (source->field(at).autoNumber()) continue;
    const auto other = different.find(name);
    EXPECT_EQ(left, other == different.end() ? right : other->second.first) << name.toStdString();
    EXPECT_EQ(right, other == different.end() ? left : other->second.second) << name.toStdString();
    EXPECT_FALSE(left.isNull()) << name.toStdString();
  }
  EXPECT_EQ(splitItem(store(), cable, 0.1, {}, {}), 0);  // all there is
  EXPECT_EQ(splitItem(store(), 99, 1, {}, {}), 0);
}

TEST_F(ItemRecordTest, LinksKeepTheirPlaceInTheDocumentsFolder) {
  const QString documents = file(u"Dokumenty"_s), outside = file(u"b.txt"_s);
  const struct {
    QString path, folder, stored;
  } cases[] = {
      {documents + u"/umowy/a.pdf"_s, documents, u"<Dokumenty>\\umowy\\a.pdf"_s},
      {documents + u"/a.pdf"_s, documents + u'/', u"<Dokumenty>\\a.pdf"_s},
      {documents + u"/x/../a.pdf"_s, documents, u"<Dokumenty>\\a.pdf"_s},
      {u"/a.pdf"_s, u"/"_s, u"<Dokumenty>\\a.pdf"_s},
      {documents + u"2/a.pdf"_s, documents, QDir::toNativeSeparators(documents + u"2/a.pdf"_s)},
      {outside, documents, outside},
      {outside, {}, outside},
  };
  for (const auto& c : cases) EXPECT_EQ(storedLinkPath(c.path, c.folder), c.stored) << c.path.toStdString();
  for (const QString& stored : {u"<Dokumenty>\\umowy\\a.pdf"_s, u"<Dokumenty>/umowy/a.pdf"_s})
    EXPECT_EQ(realLinkPath(stored, u"/inny"_s), QDir::toNativeSeparators(u"/inny/umowy/a.pdf"_s));
  EXPECT_EQ(realLinkPath(u"<Dokumenty>\\a.pdf"_s, {}), u"<Dokumenty>\\a.pdf"_s);

  ItemData item = chair();
  const QList<DocLink> links = {{u"a.pdf"_s, u"<Dokumenty>\\a.pdf"_s, jet::Value(int32_t{4})},
                                {u"b"_s, outside, {}}};
  ASSERT_EQ(save(item, links), SaveResult::Saved);
  ItemData other = chair();
  ASSERT_EQ(save(other, links), SaveResult::Saved);
  EXPECT_EQ(DocLinksLoad(db(), linkAddress(1, item.id)), links);
  ASSERT_EQ(save(item), SaveResult::Saved);
  EXPECT_TRUE(DocLinksLoad(db(), linkAddress(1, item.id)).isEmpty());
  EXPECT_EQ(DocLinksLoad(db(), linkAddress(1, other.id)), links);
}

// A session with a documents folder and files to link.
struct LinkingTest : ItemRecordTest {
  LinkingTest() : documents(file(u"Dokumenty"_s)) {
    session.settings().store(u"Folder dokumenty"_s, documents);
    session.settings().load();
  }
  QString make(const QString& name, const QByteArray& content) {
    QDir().mkpath(QFileInfo(name).path());
    QFile made(name);
    EXPECT_TRUE(made.open(QIODevice::WriteOnly));
    made.write(content);
    return name;
  }
  QByteArray content(const QString& name) {
    QFile there(documents + u'/' + name);
    return there.open(QIODevice::ReadOnly) ? there.readAll() : QByteArray();
  }
  QString documents;
};

TEST_F(LinkingTest, FilesAreCopiedIntoTheFolderWhenTheUserWants) {
  const QString outside = make(file(u"b.txt"_s), "jeden");
  const auto link = [&](std::deque<Answer> answers) {
    messages.answers = std::move(answers);
    messages.shown.clear();
    return linkTo(session, outside);
  };
  EXPECT_EQ(link({Answer::No})->path, outside);
  EXPECT_EQ(
      messages.takeOnly().text,
      u"Załączony plik nie znajduje się w folderze dokumentów programu: "_s + documents +
          u". Chcesz przekopiować plik do wspólnego folderu i ustawić ścieżkę na przekopiowany plik?"_s);
  EXPECT_EQ(link({Answer::Yes})->path, u"<Dokumenty>\\b.txt"_s);
  EXPECT_EQ(content(u"b.txt"_s), "jeden");
  EXPECT_EQ(link({Answer::Yes})->path, u"<Dokumenty>\\b.txt"_s);  // the same file once more
  EXPECT_EQ(messages.shown.size(), 1u);

  make(outside, "dwa");
  EXPECT_EQ(link({Answer::Yes, Answer::Cancel}), std::nullopt);
  EXPECT_EQ(content(u"b.txt"_s), "jeden");
  EXPECT_EQ(link({Answer::Yes, Answer::No})->path, u"<Dokumenty>\\b (2).txt"_s);
  EXPECT_EQ(content(u"b.txt"_s) + content(u"b (2).txt"_s), "jedendwa");
  EXPECT_EQ(link({Answer::Yes, Answer::Yes})->path, u"<Dokumenty>\\b.txt"_s);
  EXPECT_EQ(content(u"b.txt"_s), "dwa");
  EXPECT_EQ(QDir(documents).entryList(QDir::Files).size(), 2);

  make(file(u"plik"_s), {});
  session.settings().store(u"Folder dokumenty"_s, file(u"plik"_s));  // no folder at all
  session.settings().load();
  EXPECT_EQ(link({Answer::Yes}), std::nullopt);
  EXPECT_EQ(messages.shown.back().text, u"Błąd kopiowania pliku: b.txt"_s);
  EXPECT_EQ(messages.shown.back().icon, Icon::Critical);

  messages.files = {outside};
  DocLinkAdd(session);
  EXPECT_EQ(messages.choices.back().title, u"Dołącz wskazanie do dokumentu "_s);
}

TEST_F(LinkingTest, OpeningTellsAMissingProgramFromAMissingFile) {
  DocLinkOpen(session, u"<Dokumenty>\\b.txt"_s);
  EXPECT_EQ(shell.opened.last(), QDir::toNativeSeparators(documents + u"/b.txt"_s));
  const QString noProgram =
      u"System Windows nie znalazł aplikacji skojarzonej z tym rodzajem pliku. Zainstaluj program "
      u"otwierający pliki "
      u"tego rodzaju i spróbuj ponownie."_s;
  const QString noFile =
      u"Brak dostępu do pliku: /b.txt - sprawdź czy plik istnieje w podanej lokalizacji i czy masz "
      u"wymagane uprawnienia dostępu."_s;
  for (const auto& [result, text] : {std::pair{ShellResult::NoProgram, noProgram},
                                     {ShellResult::NotFound, noFile},
                                     {ShellResult::NoAccess, noFile}}) {
    shell.result = result;
    DocLinkOpen(session, u"/b.txt"_s);
    EXPECT_EQ(messages.takeOnly().text, text);
  }
}

}  // namespace
}  // namespace tandeko
