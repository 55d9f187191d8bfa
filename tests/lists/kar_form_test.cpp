#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QTest>
#include <QTimer>

#include "list_fixture.h"
#include "lists/row_copy.h"
#include "session/names.h"
#include "support/dialogs.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

const QStringList kThings = {u"Biurko"_s, u"Szafa"_s, u"Anteny"_s, u"Szafka"_s, u"Lampa"_s};

struct KarFormTest : testing::Test, ListFixture {
  KarFormTest() : ListFixture(kThings) {}

  void clickHeader(int column, Qt::KeyboardModifiers keys = {}) {
    QHeaderView* header = list->grid().horizontalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, keys,
                      QPoint(header->sectionViewportPosition(column) + 12, header->height() / 2));
  }
  QString clipboard() const { return QApplication::clipboard()->text(); }
};

TEST_F(KarFormTest, ShowsCellsTheWayOfTheirColumn) {
  const QueryModel& rows = list->DataSource();
  sql(u"UPDATE thing SET price = 1234.5678, day = #2/3/2026 14:30#, notes = 'raz' & Chr(13) & Chr(10) & "
      u"'dwa' WHERE "
      u"id = 1"_s);
  sql(u"UPDATE thing SET price = Null, day = Null, there = False WHERE id = 2"_s);
  list->KarRefresh();
  const auto row = [&rows](int at) {
    QStringList cells;
    for (int column = 0; column < rows.columnCount(); ++column)
      cells << rows.data(rows.index(at, column), Qt::DisplayRole).toString();
    return cells.join(u'|');
  };
  EXPECT_EQ(row(0), u"1|Biurko|1234,5678|03.02.2026|Tak|raz dwa"_s);
  EXPECT_EQ(row(1), u"2|Szafa|||Nie|"_s);
  EXPECT_EQ(row(2), u"3|Anteny|12,50|03.02.2026|Tak|"_s);
}

TEST_F(KarFormTest, HeaderClicksSortAndCtrlAddsAColumn) {
  clickHeader(1);
  EXPECT_EQ(names(), (QStringList{u"Anteny"_s, u"Biurko"_s, u"Lampa"_s, u"Szafa"_s, u"Szafka"_s}));
  clickHeader(1);
  EXPECT_EQ(names().first(), u"Szafka"_s);
  EXPECT_EQ(list->sort(), u"2 DESC"_s);
  sql(u"UPDATE thing SET price = 99 WHERE name LIKE 'Sz*'"_s);
  clickHeader(2);
  clickHeader(0, Qt::ControlModifier);
  clickHeader(0, Qt::ControlModifier);
  EXPECT_EQ(list->sort(), u"3 ASC, 1 DESC"_s);
  EXPECT_EQ(names(), (QStringList{u"Lampa"_s, u"Anteny"_s, u"Biurko"_s, u"Szafka"_s, u"Szafa"_s}));
  bool descending = false;
  EXPECT_EQ(list->DataSource().sortPlace(0, &descending), 1);
  EXPECT_TRUE(descending);
}

TEST_F(KarFormTest, ARefreshKeepsTheCurrentRowAndTheMarkedOnes) {
  list->goToKey(4);
  sql(u"INSERT INTO thing (name) VALUES ('Nowa')"_s);
  sql(u"DELETE FROM thing WHERE id = 1"_s);
  list->KarRefresh();
  EXPECT_EQ(list->currentKey(), 4);
  sql(u"DELETE FROM thing WHERE id = 4"_s);
  list->KarRefresh();
  EXPECT_EQ(list->currentKey(), 5) << "the row that took its place";

  list->grid().selectRows({0, 2, 3});
  sql(u"DELETE FROM thing WHERE id = 2"_s);
  list->KarRefresh();
  QList<int> keys;
  for (const int row : list->grid().selectedRows()) keys << list->DataSource().key(row);
  EXPECT_EQ(keys, (QList<int>{5, 6}));
}

TEST_F(KarFormTest, AStatementThatFailsLeavesTheRowsAndIsReported) {
  list->KarRefresh(u"zły"_s, u" And ( nie ma = 1 )"_s, {}, u"nie ma = 1; "_s, true);
  ASSERT_EQ(failures.failures.size(), 1u);
  EXPECT_EQ(failures.failures[0].procedure, u"KarRefresh"_s);
  EXPECT_EQ(names(), kThings);
  list->KarRefresh();
  EXPECT_EQ(failures.failures.size(), 1u) << "the refused filter is not applied";
}

TEST_F(KarFormTest, AQuickFilterFollowsTheKeysAndEscapeClearsIt) {
  auto* bar = child<QFrame>(*list, "pboxOpis");
  EXPECT_TRUE(bar->isHidden());
  list->txtNazwa->setFocus();
  QTest::keyClicks(list->txtNazwa, u"sza"_s);
  EXPECT_EQ(names().size(), 5) << "waits for the next key";
  EXPECT_TRUE(QTest::qWaitFor([this] { return names().size() == 2; }, 2000));
  EXPECT_FALSE(bar->isHidden());
  EXPECT_EQ(child<QLabel>(*list, "labOpis")->text(), u"Nazwa = sza"_s);
  QTest::keyClicks(list->txtNazwa, u"fk"_s);
  QTest::keyClick(list->txtNazwa, Qt::Key_Down);
  EXPECT_EQ(names(), QStringList{u"Szafka"_s}) << "going to the rows takes what was typed along";
  QTest::keyClick(list->txtNazwa, Qt::Key_Escape);
  EXPECT_EQ(names(), kThings);
  EXPECT_TRUE(bar->isHidden());
  EXPECT_TRUE(list->isVisible());

  // An unfinished pattern and an apostrophe are texts like any other.
  for (const char16_t* typed : {u"[", u"O'", u"sz[a"}) {
    list->txtNazwa->setText(QString::fromUtf16(typed));
    QTest::keyClick(list->txtNazwa, Qt::Key_Return);
    EXPECT_EQ(names().size(), 0);
  }
  EXPECT_TRUE(failures.failures.empty());
}

TEST_F(KarFormTest, CopiesMarkedRowsOrAll) {
  sql(u"UPDATE thing SET notes = 'a' & Chr(9) & 'b.' & Chr(13) & Chr(10) & 'c' WHERE id = 2"_s);
  list->KarRefresh();
  list->run(Command::KopiujWiersze);
  EXPECT_EQ(clipboard().count(u"\r\n"_s), 6) << "captions and every row";
  EXPECT_TRUE(clipboard().startsWith(
      u"Numer\tNazwa\tCena\tDzień\tJest\tUwagi\r\n1\tBiurko\t12,50\t03.02.2026\tTak\t\r\n"_s));

  list->grid().selectRows({1, 4});
  list->grid().setColumnHidden(2, true);
  list->grid().setColumnHidden(3, true);
  list->grid().horizontalHeader()->moveSection(1, 0);
  list->run(Command::KopiujWiersze);
  EXPECT_EQ(clipboard(), u"Nazwa\tNumer\tJest\tUwagi\r\nSzafa\t2\tTak\ta b. c\r\nLampa\t5\tTak\t\r\n"_s);
  EXPECT_EQ(list->grid().selectedRows().size(), 1) << "copied rows are no longer marked";

  list->goToKey(3);
  QTest::keyClick(&list->grid(), Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(clipboard(), u"Nazwa\tNumer\tJest\tUwagi\r\nAnteny\t3\tTak\t\r\n"_s);
  list->run(Command::ZaznaczWiersze);
  EXPECT_EQ(list->grid().selectedRows().size(), 5);
}

TEST(ClipboardCell, NeverBreaksTheTable) {
  const struct {
    const char16_t* cell;
    const char16_t* written;
  } cases[] = {{u"a\r\nb", u"a b"},    {u"a\n\rb", u"a b"},    {u"koniec.\rdalej", u"koniec dalej"},
               {u"a\tb\tc", u"a b c"}, {u"a\nb\rc", u"a b c"}, {u"", u""}};
  for (const auto& c : cases)
    EXPECT_EQ(clipboardCell(QString::fromUtf16(c.cell)), QString::fromUtf16(c.written));
}

// Long enough for several pauses of the work.
struct LongListTest : testing::Test, ListFixture {
  LongListTest() : ListFixture(manyThings()) {}
  static QStringList manyThings() {
    QStringList things;
    for (int i = 0; i < 3000; ++i) things << u"Rzecz %1"_s.arg(i);
    return things;
  }
};

TEST_F(LongListTest, EscapeStopsCopyingWhenTheUserWantsIt) {
  // Every question is answered late enough for the next pause to come.
  messages.answers = {Answer::No, Answer::Yes};
  QTimer escape;
  QObject::connect(&escape, &QTimer::timeout, &escape,
                   [this] { QTest::keyClick(&list->grid(), Qt::Key_Escape); });
  escape.start(0);
  QList<int> rows;
  for (int turn = 0; turn < 400; ++turn)
    for (int row = 0; row < list->DataSource().rows(); ++row) rows << row;
  int done = 0;
  const QString text = copyRows(session, list->DataSource(), rows, {0, 1}, done);
  EXPECT_EQ(messages.shown.size(), 2u);
  EXPECT_EQ(messages.shown[0].text, u"Przerwać kopiowanie wierszy?"_s);
  EXPECT_GT(done, 0);
  EXPECT_LT(done, rows.size());
  EXPECT_EQ(text.count(u"\r\n"_s), done + 1);
  EXPECT_TRUE(list->isVisible()) << "the key does not reach the list";
}

TEST_F(LongListTest, AListDoesNotChangeUnderWorkOnIt) {
  {
    const KarForm::Busy busy(*list);
    sql(u"DELETE FROM thing WHERE id > 10"_s);
    list->KarRefresh();
    EXPECT_EQ(list->DataSource().rows(), 3000);
    EXPECT_FALSE(list->supports(Command::KopiujWiersze));
  }
  EXPECT_EQ(list->DataSource().rows(), 10);
}

TEST_F(KarFormTest, KeepsItsLookUntilTheStandardOneIsAskedFor) {
  list->grid().setColumnWidth(1, 233);
  list->grid().setColumnHidden(5, true);
  list->grid().horizontalHeader()->moveSection(4, 0);
  clickHeader(1);
  list->KarSaveParam(true);
  const auto reopened = [this] { return std::make_unique<ThingList>(session); };
  auto again = reopened();
  EXPECT_EQ(again->grid().columnWidth(1), 233);
  EXPECT_TRUE(again->grid().isColumnHidden(5));
  EXPECT_EQ(again->grid().horizontalHeader()->visualIndex(4), 0);
  EXPECT_EQ(again->sort(), u"2 ASC"_s);

  list->KarSaveParam(false);
  EXPECT_EQ(messages.takeOnly().text,
            u"Standardowa szerokość kolumn tablicy zostanie ustawiona po ponownym otwarciu okna."_s);
  again = reopened();
  EXPECT_NE(again->grid().columnWidth(1), 233);
  EXPECT_FALSE(again->grid().isColumnHidden(5));
  EXPECT_EQ(again->sort(), u"1 ASC"_s);

  registry.write(kProgramKey + u"\\karTHING"_s, u"Sort "_s, u"77 ASC, DROP TABLE"_s);
  EXPECT_EQ(reopened()->sort(), u"1 ASC"_s);
}

TEST_F(KarFormTest, TheLastColumnCannotBeHidden) {
  for (int column = 1; column < 6; ++column) list->grid().setColumnHidden(column, true);
  QStringList enabled;
  QTimer::singleShot(50, [&] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(menu);
    for (const QAction* entry : menu->actions())
      if (entry->isCheckable() && entry->isEnabled()) enabled << entry->text();
    menu->actions()[1]->trigger();
    menu->close();
  });
  Q_EMIT list->grid().horizontalHeader()->customContextMenuRequested(QPoint(5, 5));
  EXPECT_EQ(enabled, (QStringList{u"Nazwa"_s, u"Cena"_s, u"Dzień"_s, u"Jest"_s, u"Uwagi"_s}));
  EXPECT_FALSE(list->grid().isColumnHidden(1));
}

TEST_F(KarFormTest, KeysOfTheGrid) {
  list->grid().setFocus();
  QTest::keyClick(&list->grid(), Qt::Key_End);
  EXPECT_EQ(list->currentKey(), 5);
  QTest::keyClick(&list->grid(), Qt::Key_Return);
  EXPECT_EQ(list->edited, 5);
  list->grid().selectAll();
  QTest::keyClick(&list->grid(), Qt::Key_Escape);
  EXPECT_EQ(list->grid().selectedRows().size(), 1);
  EXPECT_TRUE(list->isVisible());
  QTest::keyClick(&list->grid(), Qt::Key_Escape);
  EXPECT_FALSE(list->isVisible());
}

}  // namespace
}  // namespace tandeko
