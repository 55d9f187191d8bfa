#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

#include "register/frmPodziel.h"
#include "register/panel/karEWPAN.h"
#include "register/panel/panel_layout.h"
#include "register_fixture.h"
#include "support/dialogs.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

// In the warehouse a desk with a lamp, and a chair; with Nowak a cabinet; in the bin scrap.
struct PanelTest : testing::Test, RegisterFixture {
  int desk = item(u"Biurko"_s, kWarehouse), lamp = item(u"Lampka"_s, kWarehouse, desk),
      chair = item(u"Krzesło"_s, kWarehouse), cabinet = item(u"Szafa"_s, kNowak),
      scrap = item(u"Złom"_s, kBin);
  std::unique_ptr<karEWPAN> panel;
  ItemTreeView *employee = nullptr, *warehouse = nullptr, *bin = nullptr;
  EmployeeList* people = nullptr;

  void SetUp() override { open(); }

  void open() {
    panel = std::make_unique<karEWPAN>(session);
    panel->resize(1000, 600);
    panel->show();
    panel->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(panel.get()));
    frame.opened = {panel.get()};
    employee = panel->findChild<ItemTreeView*>(u"treeSprzet"_s);
    warehouse = panel->findChild<ItemTreeView*>(u"treeMagazyn"_s);
    bin = panel->findChild<ItemTreeView*>(u"treeKosz"_s);
    people = panel->findChild<EmployeeList*>(u"lstPracownik"_s);
    people->select(kNowak);
    warehouse->expandAll();
  }

  static QPoint nodePoint(const ItemTreeView& tree, int item) {
    const QModelIndex index = tree.items().indexOf(item);
    EXPECT_TRUE(index.isValid()) << item;
    return tree.visualRect(index).center();
  }
  static QPoint freePoint(const ItemTreeView& tree) {
    return QPoint(tree.viewport()->width() / 2, tree.viewport()->height() - 30);
  }

  // Presses on the item, moves in steps to a point of another widget; the button stays down.
  void dragTo(ItemTreeView& from, int item, QWidget& to, const QPoint& at) {
    const QPoint start = nodePoint(from, item);
    QTest::mousePress(from.viewport(), Qt::LeftButton, {}, start);
    const QPoint end = from.viewport()->mapFromGlobal(to.mapToGlobal(at));
    for (const int percent : {2, 30, 60, 100})
      QTest::mouseMove(from.viewport(), start + (end - start) * percent / 100);
    released_ = [&from, end] { QTest::mouseRelease(from.viewport(), Qt::LeftButton, {}, end); };
  }
  void release() { released_(); }
  void drag(ItemTreeView& from, int item, QWidget& to, const QPoint& at) {
    dragTo(from, item, to, at);
    release();
  }
  void dragToNode(ItemTreeView& from, int item, ItemTreeView& to, int node) {
    drag(from, item, *to.viewport(), nodePoint(to, node));
  }
  void dragToFree(ItemTreeView& from, int item, ItemTreeView& to) {
    drag(from, item, *to.viewport(), freePoint(to));
  }

  QString places() {
    return (QStringList{place(desk), place(lamp), place(chair), place(cabinet), place(scrap)}).join(u' ');
  }
  QString texts(const ItemTreeView& tree) {
    QStringList all;
    for (const auto& node : tree.items().tree().nodes()) all << toQString(node.item.name);
    return all.join(u' ');
  }
  void selectNode(ItemTreeView& tree, int item) {
    tree.setFocus();
    tree.setCurrentIndex(tree.items().indexOf(item));
  }

 private:
  std::function<void()> released_;
};

const QString kStart = u"0/0 0/1 0/0 1/0 -1/0"_s;
const QString kWrong = u"Próba utworzenia błędnej struktury. Element nie zostanie przesunięty."_s;

TEST_F(PanelTest, ShowsEmployeesAndHolders) {
  EXPECT_EQ(panel->windowTitle(), u"Panel operacyjny"_s);
  EXPECT_EQ(people->model().entries().size(), 2u);
  EXPECT_EQ(people->model().index(0, 0).data().toString(), u"Adamska Ewa"_s);
  EXPECT_EQ(texts(*employee), u"Szafa"_s);
  EXPECT_EQ(texts(*warehouse), u"Biurko Krzesło Lampka"_s);  // sets first, level by level
  EXPECT_EQ(texts(*bin), u"Złom"_s);
  EXPECT_EQ(warehouse->items().indexOf(desk).data().toString(), u"Biurko [ 1szt]"_s);
  people->select(kAdamska);
  EXPECT_EQ(texts(*employee), QString());
}

TEST_F(PanelTest, DragsMoveItemsBetweenAllPanes) {
  dragToFree(*warehouse, desk, *employee);
  EXPECT_EQ(places(), u"1/0 1/1 0/0 1/0 -1/0"_s);
  EXPECT_EQ(employee->selectedItem(), desk);
  EXPECT_EQ(texts(*warehouse), u"Krzesło"_s);
  dragToNode(*warehouse, chair, *employee, cabinet);
  EXPECT_EQ(places(), u"1/0 1/1 1/4 1/0 -1/0"_s);
  dragToFree(*employee, chair, *employee);  // to the top level of its tree
  EXPECT_EQ(places(), u"1/0 1/1 1/0 1/0 -1/0"_s);
  dragToFree(*employee, desk, *bin);
  EXPECT_EQ(places(), u"-1/0 -1/1 1/0 1/0 -1/0"_s);
  dragToFree(*bin, scrap, *warehouse);
  EXPECT_EQ(places(), u"-1/0 -1/1 1/0 1/0 0/0"_s);

  auto& list = people->view();
  const QPoint adamska = list.visualRect(list.model()->index(0, 0)).center();
  drag(*employee, cabinet, *list.viewport(), adamska);
  EXPECT_EQ(places(), u"-1/0 -1/1 1/0 2/0 0/0"_s);
  EXPECT_TRUE(messages.shown.empty());
  EXPECT_TRUE(failures.failures.empty());
  EXPECT_TRUE(frame.status.last().contains(u"Adamska Ewa"_s));

  for (int moves = 0; moves < 6; ++moves) QTest::keyClick(panel.get(), Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(places(), kStart);
  QTest::keyClick(panel.get(), Qt::Key_Z, Qt::ControlModifier);  // nothing left
  EXPECT_TRUE(messages.shown.empty());
}

TEST_F(PanelTest, DropsThatChangeNothing) {
  dragToNode(*warehouse, desk, *warehouse, desk);
  dragToNode(*warehouse, lamp, *warehouse, desk);  // its set already
  dragToFree(*warehouse, chair, *warehouse);       // at the top level already
  EXPECT_TRUE(messages.shown.empty());
  dragToNode(*warehouse, desk, *warehouse, lamp);
  const Message refused = messages.takeOnly();
  EXPECT_EQ(refused.text, kWrong);
  EXPECT_EQ(refused.icon, Icon::Exclamation);

  auto& list = people->view();
  drag(*employee, cabinet, *list.viewport(),
       list.visualRect(list.model()->index(1, 0)).center());  // whose it is

  const QPoint at = nodePoint(*warehouse, chair);  // a hand that shakes
  QTest::mousePress(warehouse->viewport(), Qt::LeftButton, {}, at);
  QTest::mouseMove(warehouse->viewport(), at + QPoint(2, 3));
  QTest::mouseRelease(warehouse->viewport(), Qt::LeftButton, {}, at + QPoint(2, 3));

  dragTo(*warehouse, chair, *employee->viewport(), freePoint(*employee));
  ASSERT_NE(QApplication::overrideCursor(), nullptr);
  QTest::keyClick(warehouse, Qt::Key_Escape);
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
  release();

  user(u"P+W"_s);
  dragToFree(*warehouse, chair, *employee);
  EXPECT_EQ(places(), kStart);
}

TEST_F(PanelTest, APlainListTakesEverythingAtTheTopLevel) {
  const int coat = item(u"Fartuch"_s, kWarehouse, 0, 2), shoes = item(u"Buty"_s, kNowak, 0, 2);
  session.setCurrentRegister(2);
  panel->KarRefresh();
  EXPECT_EQ(texts(*warehouse), u"Fartuch"_s);
  dragToNode(*warehouse, coat, *employee, shoes);
  EXPECT_EQ(place(coat), u"1/0"_s);
}

TEST_F(PanelTest, EveryOperationInAPlainList) {
  const int coat = item(u"Fartuch"_s, kWarehouse, 0, 2), shoes = item(u"Buty"_s, kNowak, 0, 2),
            rag = item(u"Szmata"_s, kBin, 0, 2);
  session.setCurrentRegister(2);
  panel->KarRefresh();
  const auto all = [&] { return (QStringList{place(coat), place(shoes), place(rag)}).join(u' '); };
  dragToNode(*warehouse, coat, *bin, rag);
  EXPECT_EQ(all(), u"-1/0 1/0 -1/0"_s);
  dragToNode(*bin, coat, *bin, rag);  // nothing to change
  EXPECT_EQ(all(), u"-1/0 1/0 -1/0"_s);
  QTest::keyClick(panel.get(), Qt::Key_Z, Qt::ControlModifier);
  selectNode(*employee, shoes);
  QTest::keyClick(employee, Qt::Key_C, Qt::ControlModifier);
  selectNode(*warehouse, coat);
  QTest::keyClick(warehouse, Qt::Key_V);
  EXPECT_EQ(ask(u"SELECT count(*) FROM ewkar WHERE indrew = 2 And indpra = 0 And parent Is Null"_s), u"2"_s);
  messages.answers = {Answer::Yes, Answer::Yes};
  selectNode(*employee, shoes);
  QTest::keyClick(employee, Qt::Key_Delete);
  selectNode(*bin, rag);
  QTest::keyClick(bin, Qt::Key_Delete);
  EXPECT_EQ(all(), u"0/0 -1/0 "_s);
  EXPECT_EQ(places(), kStart) << "the other register";
  EXPECT_TRUE(failures.failures.empty());
}

TEST_F(PanelTest, DamagedItemsAreShownAndCanBePutRight) {
  const int first = item(u"Para 1"_s, kWarehouse), second = item(u"Para 2"_s, kWarehouse, first),
            orphan = item(u"Sierota"_s, kWarehouse, 999), child = item(u"Wnuk"_s, kWarehouse, orphan);
  sql(u"UPDATE ewkar SET parent = %1 WHERE indewi = %2"_s.arg(second).arg(first));
  panel->KarRefresh();
  warehouse->expandAll();
  EXPECT_EQ(texts(*warehouse), u"Biurko Krzesło Para 1 Para 2 Sierota Lampka Wnuk"_s);
  dragToFree(*warehouse, first, *warehouse);  // to the top level: the circle is cut
  EXPECT_EQ(place(first) + u' ' + place(second), u"0/0 0/%1"_s.arg(first));
  dragToFree(*warehouse, orphan, *employee);
  EXPECT_EQ(place(orphan) + u' ' + place(child), u"1/0 1/%1"_s.arg(orphan));
  EXPECT_TRUE(messages.shown.empty());
}

TEST_F(PanelTest, WhoComesSecondIsTold) {
  jet::Workspace other;
  const auto database = other.openDatabase(toPath(path));
  const auto meanwhile = [&](const QString& statement) { execute(*database, statement); };
  const auto told = [this] { return messages.takeOnly().text; };
  meanwhile(u"UPDATE ewkar SET indpra = 2 WHERE indewi In (%1, %2)"_s.arg(desk).arg(lamp));
  dragToFree(*warehouse, desk, *employee);
  EXPECT_EQ(told(),
            u"Przedmiot „Biurko” został w międzyczasie przeniesiony przez innego użytkownika: Adamska Ewa. "
            u"Panel pokazuje teraz aktualny stan."_s);
  EXPECT_EQ(places(), u"2/0 2/1 0/0 1/0 -1/0"_s);
  EXPECT_EQ(texts(*warehouse), u"Krzesło"_s);

  meanwhile(u"UPDATE ewkar SET indpra = 1 WHERE indewi = "_s + str(scrap));
  selectNode(*bin, scrap);
  messages.answers = {Answer::Yes};
  QTest::keyClick(bin, Qt::Key_Delete);
  EXPECT_TRUE(messages.shown.back().text.contains(u"przeniesiony przez innego użytkownika: Nowak Jan"_s));
  EXPECT_EQ(place(scrap), u"1/0"_s) << "what is no longer in the bin is not deleted";
  messages.shown.clear();

  selectNode(*warehouse, chair);
  panel->run(Command::SprzKopiuj);
  meanwhile(u"DELETE FROM ewkar WHERE indewi = "_s + str(chair));
  dragToFree(*warehouse, chair, *bin);
  EXPECT_TRUE(told().contains(u"„Krzesło” został w międzyczasie usunięty"_s));
  selectNode(*employee, cabinet);
  panel->run(Command::SprzWklej);
  EXPECT_TRUE(told().startsWith(u"Nie można wkleić przedmiotu „Krzesło"_s));
  EXPECT_TRUE(failures.failures.empty());
}

TEST_F(PanelTest, WithoutEmployeesNothingCanBeDropped) {
  sql(u"DELETE FROM swpra"_s);
  panel->KarRefresh();
  dragTo(*warehouse, chair, *bin->viewport(), freePoint(*bin));
  ASSERT_NE(QApplication::overrideCursor(), nullptr);
  EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::ForbiddenCursor);
  release();
  EXPECT_EQ(place(chair), u"0/0"_s);
}

TEST_F(PanelTest, DeletesIntoTheBinAndFromIt) {
  selectNode(*warehouse, desk);
  QTest::keyClick(warehouse, Qt::Key_Delete);
  Message asked = messages.takeOnly();
  EXPECT_EQ(
      asked.text,
      u"Usuwany przedmiot: Biurko [ 1szt] posiada elementy składowe. Usunąć przedmiot wraz z elementami?"_s);
  EXPECT_EQ(asked.icon, Icon::Question);
  EXPECT_EQ(asked.buttons, Buttons::YesNo);
  EXPECT_EQ(asked.defaultButton, Answer::No);
  EXPECT_EQ(places(), kStart);

  messages.answers = {Answer::Yes, Answer::Yes};
  QTest::keyClick(warehouse, Qt::Key_Delete);
  EXPECT_EQ(places(), u"-1/0 -1/1 0/0 1/0 -1/0"_s);
  messages.shown.clear();
  selectNode(*bin, desk);
  QTest::keyClick(bin, Qt::Key_Delete);
  ASSERT_EQ(messages.shown.size(), 2u);
  EXPECT_EQ(messages.shown.back().text,
            u"Próba utworzenia błędnej struktury. Element nie zostanie usunięty."_s);

  messages.shown.clear();
  messages.answers = {Answer::Yes};
  selectNode(*bin, scrap);
  QTest::keyClick(bin, Qt::Key_Delete);
  EXPECT_EQ(messages.takeOnly().text, u"Usunąć przedmiot: Złom [ 1szt]?"_s);
  EXPECT_EQ(place(scrap), QString());
}

TEST_F(PanelTest, CopiesAndMovesWithTheKeyboard) {
  selectNode(*warehouse, desk);
  QTest::keyClick(warehouse, Qt::Key_C);  // plain, as with Ctrl
  selectNode(*employee, cabinet);
  QTest::keyClick(employee, Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(ask(u"SELECT count(*) FROM ewkar WHERE indpra = 1"_s), u"3"_s);
  EXPECT_EQ(ask(u"SELECT parent FROM ewkar WHERE indpra = 1 And Nazwa = 'Biurko'"_s), str(cabinet));

  selectNode(*warehouse, chair);
  QTest::keyClick(warehouse, Qt::Key_X, Qt::ControlModifier);
  bin->setFocus();
  bin->setCurrentIndex({});
  QTest::keyClick(bin, Qt::Key_V);
  EXPECT_EQ(place(chair), u"-1/0"_s);
  EXPECT_EQ(bin->selectedItem(), chair);
}

TEST_F(PanelTest, NewEditAndSplitOpenTheirForms) {
  selectNode(*warehouse, chair);
  QTest::keyClick(warehouse, Qt::Key_Insert);
  auto* form = qobject_cast<dokEWKAR*>(frame.opened.back());
  ASSERT_TRUE(form);
  EXPECT_EQ(form->KarParent(), u"karEWPAN"_s);
  EXPECT_EQ(child<QComboBox>(*form, "cmbPracownik")->currentText(), u"[Magazyn]"_s);
  EXPECT_TRUE(child<QComboBox>(*form, "cmbParent")->currentText().startsWith(u"Krzesło"_s));
  child<QLineEdit>(*form, "txtNazwa")->setText(u"Poduszka"_s);
  child<QPushButton>(*form, "cmdZapisz")->click();
  EXPECT_EQ(ask(u"SELECT parent FROM ewkar WHERE Nazwa = 'Poduszka' And indpra = 0"_s), str(chair));
  const int cushion = ask(u"SELECT indewi FROM ewkar WHERE Nazwa = 'Poduszka'"_s).toInt();
  EXPECT_EQ(warehouse->selectedItem(), cushion) << "the panel shows what was saved";

  QTest::keyClick(warehouse, Qt::Key_Return, Qt::ControlModifier);
  form = qobject_cast<dokEWKAR*>(frame.opened.back());
  EXPECT_EQ(form->recordKey(), cushion);

  selectNode(*warehouse, chair);
  panel->run(Command::SprzPodziel);
  EXPECT_EQ(messages.takeOnly().text,
            u"Nie można podzielić przedmiotu, który ma przypisane elementy. Usuń lub przesuń elementy "
            u"przypisane do przedmiotu i spróbuj ponownie."_s);
  sql(u"UPDATE ewkar SET Ilosc = 5 WHERE indewi = "_s + str(cushion));
  selectNode(*warehouse, cushion);
  onDialog<frmPodziel>([](frmPodziel& dialog) {
    child<QLineEdit>(dialog, "txtIlosc2")->setText(u"2"_s);
    child<QPushButton>(dialog, "cmdZapisz")->click();
  });
  panel->run(Command::SprzPodziel);
  EXPECT_EQ(ask(u"SELECT sum(Ilosc) & '/' & count(*) FROM ewkar WHERE Nazwa = 'Poduszka'"_s), u"5/2"_s);
  EXPECT_NE(warehouse->selectedItem(), cushion) << "the new part is selected";
  for (size_t at = 1; at < frame.opened.size(); ++at) delete frame.opened[at];
  frame.opened = {panel.get()};
}

TEST_F(PanelTest, CommandsFollowSelectionAndRights) {
  selectNode(*warehouse, chair);
  for (const Command command : {Command::SprzUsun, Command::SprzKopiuj, Command::PraUsun})
    EXPECT_TRUE(panel->supports(command));
  EXPECT_FALSE(panel->supports(Command::SprzWklej));  // nothing copied
  panel->run(Command::SprzKopiuj);
  EXPECT_TRUE(panel->supports(Command::SprzWklej));

  for (const auto& [level, allowed] :
       {std::pair{u"E+W"_s, true}, {u"E"_s, false}, {u"P+W"_s, false}, {u"P"_s, false}}) {
    user(level);
    for (const Command command : {Command::SprzUsun, Command::PraUsun, Command::SprzWklej})
      EXPECT_EQ(panel->supports(command), allowed) << level.toStdString();
    EXPECT_TRUE(panel->supports(Command::SprzKopiuj));
  }
  session.parameterWrite(u"UPRADswrew"_s, u"1e,"_s);  // this register may be changed all the same
  user(u"P+W"_s);
  EXPECT_TRUE(panel->supports(Command::SprzUsun));

  warehouse->setCurrentIndex({});
  EXPECT_FALSE(panel->supports(Command::SprzUsun));
  ASSERT_TRUE(session.BaseConnect(path, {}, false, true));
  user(u"E+W"_s);
  selectNode(*warehouse, chair);
  EXPECT_TRUE(panel->supports(Command::SprzKopiuj));
  EXPECT_FALSE(panel->supports(Command::SprzUsun));
}

TEST_F(PanelTest, MenusAndPanes) {
  QTest::mouseClick(warehouse->viewport(), Qt::RightButton, {}, nodePoint(*warehouse, chair));
  const auto openMenu = [](QWidget* widget, const QPoint& at) {
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, widget->mapToGlobal(at));
    QApplication::sendEvent(widget, &event);
  };
  openMenu(warehouse->viewport(), nodePoint(*warehouse, chair));
  openMenu(people->view().viewport(), QPoint(5, 5));
  EXPECT_EQ(frame.menus, (std::vector{ContextMenu::PanelItems, ContextMenu::PanelEmployees}));
  EXPECT_EQ(warehouse->selectedItem(), chair);

  panel->run(Command::PanelKosz);
  EXPECT_FALSE(panel->isOn(Command::PanelKosz));
  EXPECT_FALSE(bin->isVisible());
  panel->run(Command::PraWidokSzczeg);
  people->details().setColumnWidth(1, 77);
  panel->KarSaveParam(true);
  open();
  EXPECT_FALSE(panel->isOn(Command::PanelKosz));
  EXPECT_TRUE(panel->isOn(Command::PanelMagazyn));
  EXPECT_TRUE(panel->isOn(Command::PraWidokSzczeg));
  EXPECT_EQ(people->details().columnWidth(1), 77);
  panel->KarSaveParam(false);
  open();
  EXPECT_TRUE(panel->isOn(Command::PanelKosz));
  EXPECT_TRUE(panel->isOn(Command::PraWidokDuze));
}

TEST_F(PanelTest, PanesChangePlacesByTheirCaptions) {
  const auto pane = [this](const char16_t* name) {
    return panel->findChild<Pane*>(QString::fromUtf16(name));
  };
  const auto left = [&](const char16_t* name) { return pane(name)->mapTo(panel.get(), QPoint()).x(); };
  const auto dragCaption = [](Pane* from, Pane* to, bool giveUp) {
    QWidget* caption = from->findChild<QLabel*>()->parentWidget();
    const QPoint end = caption->mapFromGlobal(to->mapToGlobal(to->rect().center()));
    QTest::mousePress(caption, Qt::LeftButton, {}, QPoint(3, 3));
    QTest::mouseMove(caption, QPoint(3, 3) + (end - QPoint(3, 3)) / 2);
    QTest::mouseMove(caption, end);
    if (giveUp) QTest::keyClick(from, Qt::Key_Escape);
    QTest::mouseRelease(caption, Qt::LeftButton, {}, end);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
  };
  auto* container = panel->findChild<PaneContainer*>(u"CoolOkno"_s);
  dragCaption(pane(u"pbxKosz"), pane(u"pbxPracownik"), true);
  EXPECT_EQ(container->order(), u"1"_s);
  const QList<int> sizes = container->sizes();
  dragCaption(pane(u"pbxKosz"), pane(u"pbxPracownik"), false);
  EXPECT_EQ(container->order(), u"4,2,3,1"_s);
  EXPECT_EQ(container->sizes(), sizes) << "the places keep their sizes";
  QTest::qWait(10);
  EXPECT_LT(left(u"pbxKosz"), left(u"pbxSprzet"));
  EXPECT_EQ(left(u"pbxPracownik"), left(u"pbxMagazyn"));
  panel->run(Command::PanelKosz);
  panel->KarSaveParam(true);
  open();
  container = panel->findChild<PaneContainer*>(u"CoolOkno"_s);
  EXPECT_EQ(container->order(), u"4,2,3,1"_s);
  EXPECT_FALSE(bin->isVisible());
  EXPECT_TRUE(people->isVisible());
  panel->run(Command::PanelKosz);
  EXPECT_TRUE(bin->isVisible());
  for (const char16_t* text : {u"9,,x,2,2", u"", u"0"}) {
    container->setOrder(QString::fromUtf16(text));
    EXPECT_TRUE(people->isVisible() && employee->isVisible() && warehouse->isVisible());
  }
}

TEST_F(PanelTest, ARefreshKeepsWhatIsOpenAndSelected) {
  selectNode(*warehouse, lamp);
  warehouse->collapse(warehouse->items().indexOf(desk));
  warehouse->expand(warehouse->items().indexOf(desk));
  selectNode(*warehouse, lamp);
  sql(u"UPDATE ewkar SET Nazwa = 'Ławka' WHERE indewi = "_s + str(desk));
  panel->KarRefresh();
  EXPECT_EQ(warehouse->selectedItem(), lamp);
  EXPECT_TRUE(warehouse->isExpanded(warehouse->items().indexOf(desk)));
  EXPECT_EQ(people->selectedEmployee(), kNowak);
  EXPECT_EQ(texts(*warehouse), u"Krzesło Ławka Lampka"_s);
}

TEST_F(PanelTest, DeletesAnEmployee) {
  messages.answers = {Answer::Yes};
  people->view().setFocus();
  QTest::keyClick(&people->view(), Qt::Key_Delete);
  const Message asked = messages.takeOnly();
  EXPECT_EQ(asked.text, u"Pracownik: Nowak Jan zostanie usunięty ze słownika. Usunąć pracownika?"_s);
  EXPECT_EQ(asked.title, u"Komunikat"_s);
  EXPECT_EQ(place(cabinet), u"0/0"_s);
  EXPECT_EQ(people->model().entries().size(), 1u);
  EXPECT_EQ(texts(*warehouse), u"Biurko Krzesło Szafa Lampka"_s);
}

TEST_F(PanelTest, FailuresAreReportedAndTheTreesStay) {
  sql(u"DROP TABLE swpra"_s);
  sql(u"DROP TABLE swrew"_s);
  panel->KarRefresh();
  ASSERT_FALSE(failures.failures.empty());
  EXPECT_EQ(failures.failures.back().kind(), u"DAO"_s);
  EXPECT_EQ(people->model().entries().size(), 2u);
}

}  // namespace
}  // namespace tandeko
