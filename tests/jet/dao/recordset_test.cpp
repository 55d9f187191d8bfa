// Recordsets as the programs above use them, on real files.

#include <gtest/gtest.h>

#include "jet/dao/dao.h"
#include "support/other_reader.h"
#include "support/temp_folder.h"

using jet::Value;

namespace {

// The DAO number of the error that `action` throws; 0 when it throws none.
template <typename Action>
int errorOf(Action action) {
  try {
    action();
  } catch (const jet::Error& error) {
    EXPECT_EQ(error.source().substr(0, 4), "DAO.");
    EXPECT_FALSE(error.description().empty());
    return error.number();
  }
  return 0;
}

class RecordsetTest : public ::testing::Test {
 protected:
  RecordsetTest() : db_(workspace_.createDatabase(folder_ / "t.mdb", jet::kPolishLocale)) {
    db_->execute(u"CREATE TABLE osoby (id COUNTER PRIMARY KEY, nazwisko TEXT(20) NOT NULL, wiek SHORT, uwagi MEMO)");
    for (const char16_t* name : {u"Łoś", u"Adamski", u"Żak", u"Lis"}) add(name);
  }

  void TearDown() override {
    db_.reset();
    expectOtherReaderAgrees(folder_ / "t.mdb");
  }

  void add(std::u16string_view name) {
    const auto rows = db_->openRecordset(u"SELECT * FROM osoby WHERE id = 0");
    rows->addNew();
    rows->field(u"nazwisko").setValue(Value(name));
    rows->update();
  }

  std::vector<std::u16string> names(jet::Recordset& rows) {
    std::vector<std::u16string> all;
    if (rows.recordCount() > 0)
      for (rows.moveFirst(); !rows.eof(); rows.moveNext()) all.push_back(rows.value(u"nazwisko").get<jet::Text>());
    return all;
  }

  TempFolder folder_;
  jet::Workspace workspace_;
  std::unique_ptr<jet::Database> db_;
};

}  // namespace

TEST_F(RecordsetTest, AddNewThroughAnEmptyQueryGivesTheKeyBack) {
  const auto rows = db_->openRecordset(u"SELECT * FROM osoby WHERE id = 0");
  EXPECT_EQ(rows->type(), jet::RecordsetType::Dynaset);
  EXPECT_TRUE(rows->bof() && rows->eof());
  EXPECT_EQ(errorOf([&] { rows->field(u"nazwisko").value(); }), 3021);
  EXPECT_EQ(errorOf([&] { rows->field(u"nazwisko").setValue(Value(u"x")); }), 3020);
  EXPECT_EQ(errorOf([&] { rows->update(); }), 3020);
  rows->addNew();
  rows->field(u"NAZWISKO").setValue(Value(u"Źrebiec"));
  rows->field(u"wiek").setValue(Value(u"41"));
  EXPECT_EQ(rows->field(u"wiek").value(), Value(int16_t{41})) << "converted to the field's type";
  rows->update();
  rows->setBookmark(rows->lastModified());
  EXPECT_EQ(rows->value(u"id"), Value(5));
  EXPECT_EQ(rows->value(u"nazwisko"), Value(u"Źrebiec"));
  EXPECT_EQ(errorOf([&] { rows->field(u"brak"); }), 3265);
}

TEST_F(RecordsetTest, SortsInPolishOrderAndMoves) {
  const auto rows = db_->openRecordset(u"SELECT * FROM osoby ORDER BY nazwisko");
  EXPECT_EQ(names(*rows), (std::vector<std::u16string>{u"Adamski", u"Lis", u"Łoś", u"Żak"}));
  EXPECT_EQ(errorOf([&] { rows->moveNext(); }), 3021);
  rows->moveLast();
  EXPECT_EQ(rows->absolutePosition(), 3);
  rows->move(-2);
  EXPECT_EQ(rows->value(u"nazwisko"), Value(u"Lis"));
  rows->movePrevious();
  rows->movePrevious();
  EXPECT_TRUE(rows->bof());
  EXPECT_EQ(errorOf([&] { rows->movePrevious(); }), 3021);
}

TEST_F(RecordsetTest, FindsByCriterion) {
  for (const auto type : {jet::RecordsetType::Dynaset, jet::RecordsetType::Snapshot}) {
    const auto rows = db_->openRecordset(u"SELECT * FROM osoby ORDER BY nazwisko", type);
    rows->findFirst(u"nazwisko LIKE '?[oi]*'");
    ASSERT_FALSE(rows->noMatch());
    EXPECT_EQ(rows->value(u"nazwisko"), Value(u"Lis"));
    rows->findNext(u"id = 3");
    ASSERT_FALSE(rows->noMatch());
    const auto place = rows->bookmark();
    rows->findNext(u"id = 1");
    EXPECT_TRUE(rows->noMatch());
    EXPECT_EQ(rows->value(u"nazwisko"), Value(u"Żak")) << "stays where it was";
    rows->findLast(u"id < 3");
    EXPECT_EQ(rows->value(u"nazwisko"), Value(u"Łoś"));
    rows->setBookmark(place);
    EXPECT_EQ(rows->value(u"id"), Value(3));
    EXPECT_EQ(errorOf([&] { rows->setBookmark("nonsense"); }), 3159);
  }
}

TEST_F(RecordsetTest, EditTellsWhatAnotherRecordsetDid) {
  const auto rows = db_->openRecordset(u"SELECT * FROM osoby ORDER BY id");
  rows->edit();
  rows->field(u"wiek").setValue(Value(int16_t{30}));
  db_->execute(u"UPDATE osoby SET wiek = 99 WHERE id = 1");
  EXPECT_EQ(errorOf([&] { rows->update(); }), 3197);
  EXPECT_EQ(db_->openRecordset(u"SELECT wiek FROM osoby WHERE id = 1")->value(u"wiek"), Value(int16_t{99}));
  rows->cancelUpdate();
  rows->edit();
  rows->field(u"wiek").setValue(Value(int16_t{31}));
  rows->update();
  EXPECT_EQ(rows->value(u"wiek"), Value(int16_t{31}));

  rows->edit();
  db_->execute(u"DELETE FROM osoby WHERE id = 1");
  EXPECT_EQ(errorOf([&] { rows->update(); }), 3167);
  rows->cancelUpdate();
  EXPECT_EQ(errorOf([&] { rows->value(u"wiek"); }), 3167);
  EXPECT_EQ(errorOf([&] { rows->edit(); }), 3167);
}

TEST_F(RecordsetTest, RefusesWhatTheTableForbids) {
  const auto rows = db_->openRecordset(u"SELECT * FROM osoby ORDER BY id");
  rows->addNew();
  EXPECT_EQ(errorOf([&] { rows->field(u"nazwisko").setValue(Value(std::u16string(21, u'x'))); }), 3163);
  EXPECT_EQ(errorOf([&] { rows->field(u"wiek").setValue(Value(u"stary")); }), 3421);
  EXPECT_EQ(errorOf([&] { rows->update(); }), 3314);
  rows->cancelUpdate();
  rows->edit();
  EXPECT_EQ(errorOf([&] { rows->field(u"id").setValue(Value(77)); }), 3164);
  rows->cancelUpdate();
  EXPECT_EQ(db_->openRecordset(u"osoby")->recordCount(), 4);

  const auto totals = db_->openRecordset(u"SELECT Count(*) FROM osoby");
  EXPECT_EQ(totals->type(), jet::RecordsetType::Snapshot);
  EXPECT_FALSE(totals->updatable());
  EXPECT_EQ(errorOf([&] { totals->edit(); }), 3326);
  EXPECT_EQ(errorOf([&] { db_->openRecordset(u"DELETE FROM osoby"); }), 3064);
}

TEST_F(RecordsetTest, TransactionsNestAndRollBack) {
  workspace_.beginTrans();
  db_->execute(u"DELETE FROM osoby WHERE id = 1");
  workspace_.beginTrans();
  db_->execute(u"DELETE FROM osoby");
  EXPECT_EQ(db_->openRecordset(u"osoby")->recordCount(), 0);
  workspace_.rollback();
  EXPECT_EQ(db_->openRecordset(u"osoby")->recordCount(), 3);
  workspace_.commitTrans();
  EXPECT_EQ(errorOf([&] { workspace_.commitTrans(); }), 3034);
  EXPECT_EQ(db_->openRecordset(u"osoby")->recordCount(), 3);

  // A key given out in a transaction that was rolled back leaves no gap in the data, only in the numbers.
  workspace_.beginTrans();
  add(u"Mróz");
  workspace_.rollback();
  add(u"Wróbel");
  const auto last = db_->openRecordset(u"SELECT Max(id) AS n FROM osoby");
  EXPECT_GE(last->value(u"n").get<int32_t>(), 5);
  EXPECT_TRUE(db_->check([](const std::u16string& fault) { ADD_FAILURE() << jet::toUtf8(fault); }));

  for (int i = 0; i < 5; ++i) workspace_.beginTrans();
  EXPECT_EQ(errorOf([&] { workspace_.beginTrans(); }), 3003);
  for (int i = 0; i < 5; ++i) workspace_.rollback();
}

TEST_F(RecordsetTest, OpensWithPasswordReadOnlyAndExclusive) {
  db_->newPassword(u"", u"zażółć");
  const auto path = db_->path();
  db_->close();
  EXPECT_EQ(errorOf([&] { workspace_.openDatabase(path); }), 3031);
  EXPECT_EQ(errorOf([&] { workspace_.openDatabase(path, {.connect = u";pwd=Zażółć;"}); }), 3031);
  auto reader = workspace_.openDatabase(path, {.readOnly = true, .connect = u";PWD=zażółć;"});
  EXPECT_EQ(reader->openRecordset(u"osoby")->recordCount(), 4);
  EXPECT_FALSE(reader->openRecordset(u"osoby")->updatable());
  EXPECT_EQ(errorOf([&] { reader->execute(u"DELETE FROM osoby"); }), 3027);
  EXPECT_EQ(errorOf([&] { reader->openRecordset(u"osoby")->edit(); }), 3027);
  const int held = errorOf([&] { workspace_.openDatabase(path, {.exclusive = true, .connect = u";pwd=zażółć;"}); });
  EXPECT_TRUE(held == 3045 || held == 3356) << held;
  reader.reset();
  db_ = workspace_.openDatabase(path, {.exclusive = true, .connect = u";pwd=zażółć;"});
  EXPECT_EQ(errorOf([&] { db_->newPassword(u"zazolc", u""); }), 3031);
  db_->newPassword(u"zażółć", u"");
  db_.reset();
  EXPECT_EQ(workspace_.openDatabase(path)->openRecordset(u"osoby")->recordCount(), 4);
}

TEST_F(RecordsetTest, LongNotesAreKeptWhole) {
  std::u16string note;
  for (int i = 0; i < 3000; ++i) note += u"żółw " + jet::fromUtf8(std::to_string(i)) + u'\n';
  const auto rows = db_->openRecordset(u"SELECT * FROM osoby WHERE id = 2");
  rows->edit();
  rows->field(u"uwagi").setValue(Value(note));
  rows->update();
  EXPECT_EQ(rows->value(u"uwagi"), Value(note));
  db_->close();
  db_ = workspace_.openDatabase(folder_ / "t.mdb");
  EXPECT_EQ(db_->openRecordset(u"SELECT uwagi FROM osoby WHERE id = 2")->value(u"uwagi"), Value(note));
}
