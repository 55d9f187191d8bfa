#include "register/item_store.h"

#include <gtest/gtest.h>

#include "people/employee_store.h"
#include "register/item_tree.h"
#include "register_fixture.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

// In the warehouse: a desk with a lamp and a drawer, a lock in the drawer; a chair; two items that are each
// other's parent. With Nowak: a cabinet.
struct ItemStoreTest : testing::Test, RegisterFixture {
  int desk = item(u"Biurko"_s, kWarehouse), lamp = item(u"Lampka"_s, kWarehouse, desk),
      drawer = item(u"Szuflada"_s, kWarehouse, desk), lock = item(u"Zamek"_s, kWarehouse, drawer),
      chair = item(u"Krzesło"_s, kWarehouse), cabinet = item(u"Szafa"_s, kNowak);

  QStringList places() {
    QStringList all;
    for (int id = desk; id <= cabinet; ++id) all << place(id);
    return all;
  }
};

TEST_F(ItemStoreTest, MovesKeepSetsTogetherAndCanBeTakenBack) {
  const QStringList before = places();
  const struct {
    const char* what;
    int item, holder, parent;
    MoveResult result;
    QStringList after;  // desk, lamp, drawer, lock, chair, cabinet; empty: as before
  } cases[] = {
      {"a set to an employee",
       desk,
       kNowak,
       0,
       MoveResult::Moved,
       {u"1/0"_s, u"1/1"_s, u"1/1"_s, u"1/3"_s, u"0/0"_s, u"1/0"_s}},
      {"a set into an employee's item",
       desk,
       kNowak,
       cabinet,
       MoveResult::Moved,
       {u"1/6"_s, u"1/1"_s, u"1/1"_s, u"1/3"_s, u"0/0"_s, u"1/0"_s}},
      {"a component out of its set, into the bin",
       drawer,
       kBin,
       0,
       MoveResult::Moved,
       {u"0/0"_s, u"0/1"_s, u"-1/0"_s, u"-1/3"_s, u"0/0"_s, u"1/0"_s}},
      {"within the warehouse",
       drawer,
       kWarehouse,
       chair,
       MoveResult::Moved,
       {u"0/0"_s, u"0/1"_s, u"0/5"_s, u"0/3"_s, u"0/0"_s, u"1/0"_s}},
      {"to the top level of the same tree",
       lock,
       kWarehouse,
       0,
       MoveResult::Moved,
       {u"0/0"_s, u"0/1"_s, u"0/1"_s, u"0/0"_s, u"0/0"_s, u"1/0"_s}},
      {"where it is", lamp, kWarehouse, desk, MoveResult::Unchanged, {}},
      {"into itself", desk, kWarehouse, desk, MoveResult::WrongStructure, {}},
      {"into its own component", desk, kWarehouse, lock, MoveResult::WrongStructure, {}},
      {"into an item of another holder", lamp, kWarehouse, cabinet, MoveResult::WrongStructure, {}},
      {"into its own component at another holder", desk, kNowak, lock, MoveResult::WrongStructure, {}},
      {"a deleted item", 99, kNowak, 0, MoveResult::Gone, {}},
  };
  for (const auto& c : cases) {
    const MoveOutcome outcome = PanelMoveItem(store(), c.item, c.holder, c.parent);
    EXPECT_EQ(outcome.result, c.result) << c.what;
    EXPECT_EQ(places(), c.after.isEmpty() ? before : c.after) << c.what;
    if (outcome.result == MoveResult::Moved) {
      EXPECT_EQ(undoMove(store(), outcome.record), QString()) << c.what;
    }
    ASSERT_EQ(places(), before) << c.what;
  }
}

TEST_F(ItemStoreTest, MoveOfABrokenPairRepairsIt) {
  sql(u"UPDATE ewkar SET parent = %1 WHERE indewi = %2"_s.arg(lock).arg(
      desk));  // desk > drawer > lock > desk
  EXPECT_FALSE(StructCheck(store(), chair, kWarehouse, drawer));
  EXPECT_EQ(PanelMoveToBin(store(), desk, 0).result, MoveResult::Moved);
  EXPECT_EQ(places(), (QStringList{u"-1/0"_s, u"-1/1"_s, u"-1/1"_s, u"-1/3"_s, u"0/0"_s, u"1/0"_s}));
}

TEST_F(ItemStoreTest, UndoRefusesWhatHasChangedSince) {
  const MoveOutcome move = PanelMoveItem(store(), drawer, kNowak, 0);
  sql(u"UPDATE ewkar SET indpra = 2 WHERE indewi = "_s + str(lock));
  EXPECT_EQ(undoMove(store(), move.record), u"Zamek"_s);
  sql(u"UPDATE ewkar SET indpra = 1 WHERE indewi = "_s + str(lock));
  sql(u"UPDATE ewkar SET indpra = -1 WHERE indewi = "_s + str(desk));  // the set it came from
  EXPECT_EQ(undoMove(store(), move.record), u"Biurko"_s);
  EXPECT_EQ(place(drawer), u"1/0"_s);
}

TEST_F(ItemStoreTest, AMoveMadeMeanwhileByAnotherCopyIsFollowed) {
  jet::Workspace other;
  const auto database = other.openDatabase(toPath(path));
  ASSERT_EQ(PanelMoveItem({other, *database, 1}, desk, kAdamska, 0).result, MoveResult::Moved);
  const Placement seen{desk, kWarehouse, 0};
  EXPECT_EQ(PanelMoveItem(store(), desk, kNowak, 0, seen).result, MoveResult::Elsewhere);
  EXPECT_EQ(place(lock), u"2/3"_s) << "nothing is taken from the one who was faster";
  EXPECT_EQ(PanelMoveItem(store(), desk, kNowak, 0).result, MoveResult::Moved);
  EXPECT_EQ(places(), (QStringList{u"1/0"_s, u"1/1"_s, u"1/1"_s, u"1/3"_s, u"0/0"_s, u"1/0"_s}));
}

TEST_F(ItemStoreTest, NothingIsMovedWhenOneComponentCannotBe) {
  jet::Workspace other;
  const auto database = other.openDatabase(toPath(path));
  other.beginTrans();
  execute(*database, u"UPDATE ewkar SET Uwagi = 'x' WHERE indewi = "_s + str(lock));
  const QStringList before = places();
  EXPECT_THROW(PanelMoveItem(store(), desk, kNowak, 0), jet::Error);
  other.rollback();
  EXPECT_EQ(places(), before);
}

TEST_F(ItemStoreTest, PasteCopiesASubtreeFieldByField) {
  sql(u"UPDATE ewkar SET Uwagi = 'długa', Cenazak = 12.5, Numewi = 'A/1' WHERE indewi = "_s + str(lock));
  const int copy = PanelPaste(store(), desk, kNowak, cabinet, false);
  ASSERT_GT(copy, cabinet);
  const auto tree = ItemTree::load(db(), 1, kNowak);
  QStringList shown;
  for (const auto& node : tree.nodes())
    shown << u"%1<%2"_s.arg(toQString(node.item.name))
                 .arg(node.parent < 0 ? QString()
                                      : toQString(tree.nodes()[static_cast<size_t>(node.parent)].item.name));
  EXPECT_EQ(shown, (QStringList{u"Szafa<"_s, u"Biurko<Szafa"_s, u"Lampka<Biurko"_s, u"Szuflada<Biurko"_s,
                                u"Zamek<Szuflada"_s}));
  EXPECT_EQ(ask(u"SELECT Uwagi & Cenazak & Numewi FROM ewkar WHERE indpra = 1 And Nazwa = 'Zamek'"_s),
            u"długa12,5A/1"_s);
  EXPECT_EQ(place(lock), u"0/3"_s);

  const int listed = PanelPaste(store(2), desk, kWarehouse, 0, true);
  EXPECT_EQ(ask(u"SELECT count(*) FROM ewkar WHERE indrew = 2 And indpra = 0 And parent Is Null"_s), u"4"_s);
  EXPECT_GT(listed, copy);
  EXPECT_EQ(PanelPaste(store(), 999, kNowak, 0, false), 0);
  EXPECT_EQ(PanelPaste(store(), lock, kNowak, chair, false), 0) << "the set is in the warehouse";
  EXPECT_EQ(PanelPaste(store(), lock, kNowak, 999, false), 0);
  EXPECT_EQ(ask(u"SELECT count(*) FROM ewkar WHERE indpra = 1"_s), u"5"_s);
}

TEST_F(ItemStoreTest, OnlyItemsWithoutComponentsLeaveTheBin) {
  PanelMoveToBin(store(), drawer, 0);
  EXPECT_EQ(deleteFromBin(store(), drawer), DeleteResult::HasComponents);
  EXPECT_EQ(deleteFromBin(store(), lock), DeleteResult::Deleted);
  EXPECT_EQ(deleteFromBin(store(), drawer), DeleteResult::Deleted);
  EXPECT_EQ(deleteFromBin(store(), drawer), DeleteResult::NotInBin);
  EXPECT_EQ(deleteFromBin(store(), cabinet), DeleteResult::NotInBin) << "an employee's";
  EXPECT_EQ(place(cabinet), u"1/0"_s);
  EXPECT_EQ(place(drawer), QString());
}

TEST_F(ItemStoreTest, ItemsOfADeletedEmployeeReturnWithTheirStructure) {
  PanelMoveItem(store(), desk, kNowak, cabinet);
  PanelMoveItem(store(), chair, kAdamska, 0);
  EXPECT_EQ(deleteEmployee(session.workspace(), db(), kNowak), 5);
  EXPECT_EQ(places(), (QStringList{u"0/6"_s, u"0/1"_s, u"0/1"_s, u"0/3"_s, u"2/0"_s, u"0/0"_s}));
}

}  // namespace
}  // namespace tandeko
