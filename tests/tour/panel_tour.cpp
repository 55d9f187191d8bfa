#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>
#include <algorithm>
#include <map>

#include "driver.h"
#include "platform/statements.h"
#include "platform/text.h"
#include "register/panel/karEWPAN.h"

namespace tandeko::tour {

namespace {

class PanelTour {
 public:
  explicit PanelTour(Driver& driver) : d_(driver) {}

  void run() {
    if (!open()) return;
    d_.shot(QStringLiteral("panel"));
    betweenPanes();
    ontoEmployees();
    intoSets();
    whereNothingCanBeDropped();
    expandAndScroll();
    panesChangePlaces();
    anotherCopy();
    byKeyboard();
    views();
    panel_->parentWidget()->close();
    Driver::wait(200);
  }

 private:
  bool open() {
    d_.window.openForm(QStringLiteral("karEWPAN"));
    Driver::wait(500);
    panel_ = qobject_cast<karEWPAN*>(d_.window.findForm(QStringLiteral("karEWPAN")));
    if (!d_.check(panel_ != nullptr, "the panel opens")) return false;
    if (QWidget* frame = panel_->parentWidget()) frame->showMaximized();
    Driver::wait(500);
    employee_ = panel_->findChild<ItemTreeView*>(QStringLiteral("treeSprzet"));
    warehouse_ = panel_->findChild<ItemTreeView*>(QStringLiteral("treeMagazyn"));
    bin_ = panel_->findChild<ItemTreeView*>(QStringLiteral("treeKosz"));
    list_ = panel_->findChild<EmployeeList*>(QStringLiteral("lstPracownik"));
    if (!d_.check(employee_ && warehouse_ && bin_ && list_, "the four panes are there")) return false;
    for (const EmployeeEntry& entry : list_->model().entries()) {
      list_->select(entry.id);
      Driver::wait(20);
      if (employee_->items().sets().size() > 1) break;
    }
    return true;
  }

  // The first set at the top of a tree, 0 when it has none.
  static int firstSet(ItemTreeView& tree) {
    for (const int item : tree.items().sets())
      if (!tree.items().indexOf(item).parent().isValid()) return item;
    return 0;
  }
  // An item at the top without components, beginning with `skip`; 0 when there is none.
  static int single(ItemTreeView& tree, int skip = 0) {
    for (int row = 0; row < tree.items().rowCount(); ++row) {
      const QModelIndex index = tree.items().index(row, 0);
      if (!tree.items().hasChildren(index) && skip-- == 0) return tree.items().itemAt(index);
    }
    return 0;
  }

  QPoint node(ItemTreeView& tree, int item) { return Driver::middleOf(tree, tree.items().indexOf(item)); }
  QPoint entry(int employee) {
    return Driver::middleOf(list_->view(), list_->model().index(list_->model().rowOf(employee), 0));
  }
  int other() const {
    for (const EmployeeEntry& entry : list_->model().entries())
      if (entry.id != list_->selectedEmployee()) return entry.id;
    return 0;
  }

  int holder(int item) { return d_.ask(QStringLiteral("SELECT indpra FROM ewkar WHERE indewi = ") + str(item)); }
  int parent(int item) { return d_.ask(QStringLiteral("SELECT parent FROM ewkar WHERE indewi = ") + str(item)); }

  // Whether the set and everything below it is with one holder, as the file says.
  bool allHeldBy(int item, int holder) {
    const auto rows = openRows(d_.session.database(), QStringLiteral("SELECT indewi, parent, indpra FROM ewkar"));
    std::map<int, std::pair<int, int>> items;  // parent, holder
    for (; !rows->eof(); rows->moveNext())
      items[toInt(rows->value(u"indewi"))] = {toInt(rows->value(u"parent")), toInt(rows->value(u"indpra"))};
    size_t found = 0;
    for (const auto& [key, place] : items) {
      int at = key;
      while (at != item && at != 0) at = items.count(at) ? items[at].first : 0;
      if (at != item) continue;
      if (place.second != holder) return false;
      ++found;
    }
    return found > 1;
  }

  // A set through all pairs of trees and back to the warehouse.
  void betweenPanes() {
    const int set = firstSet(*warehouse_);
    if (!d_.check(set > 0, "the warehouse holds a set")) return;
    const int person = list_->selectedEmployee();
    const struct {
      ItemTreeView *from, *to;
      int holder;
      const char* what;
    } moves[] = {
        {warehouse_, employee_, person, "warehouse to employee: the set went with its components"},
        {employee_, bin_, kBin, "employee to bin"},
        {bin_, warehouse_, kWarehouse, "bin to warehouse"},
        {warehouse_, bin_, kBin, "warehouse to bin"},
        {bin_, employee_, person, "bin to employee"},
        {employee_, warehouse_, kWarehouse, "employee to warehouse"},
    };
    for (const auto& move : moves) {
      d_.drag(node(*move.from, set), Driver::emptySpot(*move.to));
      d_.check(allHeldBy(set, move.holder) && move.to->items().indexOf(set).isValid() &&
                   !move.from->items().indexOf(set).isValid(),
               move.what);
      if (move.to == employee_ && move.from == warehouse_) d_.shot(QStringLiteral("panel-after-move"));
    }
  }

  void ontoEmployees() {
    const int set = firstSet(*warehouse_), person = list_->selectedEmployee(), second = other();
    d_.drag(node(*warehouse_, set), entry(second), [&] { d_.shot(QStringLiteral("panel-drag")); });
    d_.check(allHeldBy(set, second), "warehouse to an employee's entry");
    list_->select(second);
    Driver::wait(100);
    d_.drag(node(*employee_, set), entry(second));
    d_.check(allHeldBy(set, second), "onto the entry of who has it already: nothing changes");
    d_.drag(node(*employee_, set), entry(person));
    d_.check(allHeldBy(set, person), "employee to another employee's entry");
    list_->select(person);
    Driver::wait(100);
    d_.drag(node(*employee_, set), Driver::emptySpot(*bin_));
    d_.drag(node(*bin_, set), entry(second));
    d_.check(allHeldBy(set, second), "bin to an employee's entry");
    d_.click(entry(second));
    d_.check(list_->selectedEmployee() == second && employee_->items().indexOf(set).isValid(),
             "a click on the entry shows it");
    d_.drag(node(*employee_, set), Driver::emptySpot(*warehouse_));
    d_.check(allHeldBy(set, kWarehouse), "and back");
    d_.click(entry(person));
  }

  void intoSets() {
    const int item = single(*warehouse_), set = firstSet(*employee_), mate = single(*warehouse_, 1);
    if (!d_.check(item > 0 && set > 0 && mate > 0, "single items are there")) return;
    d_.drag(node(*warehouse_, item), node(*employee_, set));
    d_.check(parent(item) == set && holder(item) == list_->selectedEmployee(),
             "dropped on an item it becomes its component");
    d_.drag(node(*employee_, item), Driver::emptySpot(*employee_));
    d_.check(parent(item) < 1 && holder(item) == list_->selectedEmployee(),
             "on the empty space of its tree it returns to the top level");
    d_.drag(node(*employee_, item), node(*warehouse_, mate));
    d_.check(parent(item) == mate && holder(item) == kWarehouse, "into an item of another pane");

    const int whole = firstSet(*warehouse_);
    warehouse_->expand(warehouse_->items().indexOf(whole));
    const int component =
        warehouse_->items().itemAt(warehouse_->items().index(0, 0, warehouse_->items().indexOf(whole)));
    d_.expectWindow("a drop on the item's own component is refused",
                    [this](QWidget&) { d_.shot(QStringLiteral("panel-refusal")); });
    const QPoint to = node(*warehouse_, component);
    const QRect from = warehouse_->visualRect(warehouse_->items().indexOf(whole));
    d_.drag(warehouse_->viewport()->mapToGlobal(QPoint(from.left() + 40, from.center().y())), to);
    Driver::wait(1'700);
    d_.check(allHeldBy(whole, kWarehouse) && parent(whole) < 1, "and nothing was changed");
  }

  void whereNothingCanBeDropped() {
    const int item = single(*warehouse_);
    const auto cursor = [] {
      return QApplication::overrideCursor() ? QApplication::overrideCursor()->shape() : Qt::ArrowCursor;
    };
    const QPoint beside = d_.window.mapToGlobal(QPoint(d_.window.width() / 2, 8));
    const auto* image = panel_->findChild<QLabel*>(QStringLiteral("labPrzesuwany"));
    d_.drag(node(*warehouse_, item), beside, [&] {
      d_.check(cursor() == Qt::ForbiddenCursor, "beside the panes the cursor says no");
      d_.check(image->isVisible(), "the item follows the pointer");
      d_.shot(QStringLiteral("panel-no-drop"));
      d_.move(Driver::emptySpot(*bin_));
      d_.check(cursor() == Qt::ClosedHandCursor, "over a pane it says yes again");
      d_.keys({QStringLiteral("Escape")});
      d_.check(!QApplication::overrideCursor() && !image->isVisible(), "Escape gives the drag up");
    });
    d_.drag(node(*warehouse_, item), beside);
    d_.check(holder(item) == kWarehouse && !QApplication::overrideCursor(), "and nothing was moved");
  }

  void expandAndScroll() {
    const int set = firstSet(*warehouse_), item = single(*warehouse_, 2);
    warehouse_->collapse(warehouse_->items().indexOf(set));
    const QPoint over = node(*warehouse_, set);
    d_.drag(Driver::middleOf(*employee_, employee_->items().index(0, 0)), over, [&] {
      Driver::wait(1'000);
      d_.check(warehouse_->isExpanded(warehouse_->items().indexOf(set)), "a closed set opens under the pointer");
      d_.keys({QStringLiteral("Escape")});
    });
    warehouse_->expandAll();
    QScrollBar& bar = *warehouse_->verticalScrollBar();
    const QPoint from = node(*warehouse_, item);
    const int before = bar.value();
    d_.drag(from, warehouse_->viewport()->mapToGlobal(QPoint(60, warehouse_->viewport()->height() - 6)), [&] {
      Driver::wait(800);
      d_.check(bar.value() > before, "near the lower edge the tree scrolls");
      d_.keys({QStringLiteral("Escape")});
    });
  }

  void panesChangePlaces() {
    auto* container = panel_->findChild<PaneContainer*>(QStringLiteral("CoolOkno"));
    const auto caption = [this](const char* name) {
      const auto* label = panel_->findChild<QLabel*>(QString::fromLatin1(name));
      return label->mapToGlobal(label->rect().center());
    };
    d_.drag(caption("labMagazyn"), caption("labPracownik"), [&] { d_.shot(QStringLiteral("panel-pane-drag")); });
    d_.check(container->order() == u"3,2,1,4", "panes change places by their captions");
    d_.shot(QStringLiteral("panel-order"));
    d_.drag(caption("labMagazyn"), caption("labPracownik"));
    d_.check(container->order() == u"1", "and back");
  }

  void anotherCopy() {
    const int item = single(*warehouse_), person = other();
    d_.check(d_.elsewhere(QStringLiteral("UPDATE ewkar SET indpra = %1 WHERE indewi = %2").arg(person).arg(item)),
             "another process moves an item");
    d_.expectWindow("the second copy is told", [this](QWidget&) { d_.shot(QStringLiteral("panel-second")); });
    d_.drag(node(*warehouse_, item), Driver::emptySpot(*bin_));
    Driver::wait(1'700);
    d_.check(holder(item) == person, "and takes nothing from the first");
    d_.elsewhere(QStringLiteral("UPDATE ewkar SET indpra = 0 WHERE indewi = %1").arg(item));
    panel_->KarRefresh();
    d_.check(warehouse_->items().indexOf(item).isValid(), "a refresh shows what the other did");
  }

  void byKeyboard() {
    const int item = single(*warehouse_), person = list_->selectedEmployee();
    const auto choose = [](ItemTreeView& tree, int wanted) {
      tree.setFocus();
      tree.setCurrentIndex(tree.items().indexOf(wanted));
      Driver::wait(50);
    };
    const QString name = QStringLiteral("SELECT count(*) FROM ewkar WHERE Nazwa = (SELECT Nazwa FROM ewkar "
                                        "WHERE indewi = %1) And indpra = %2");
    choose(*warehouse_, item);
    d_.keys({QStringLiteral("ctrl+x")});
    employee_->setFocus();
    employee_->setCurrentIndex({});
    d_.keys({QStringLiteral("ctrl+v")});
    d_.check(holder(item) == person, "cut and pasted by keyboard: handed out");
    d_.keys({QStringLiteral("ctrl+z")});
    d_.check(holder(item) == kWarehouse, "Ctrl+Z takes it back");

    const int before = d_.ask(name.arg(item).arg(person));
    choose(*warehouse_, item);
    d_.keys({QStringLiteral("c")});
    employee_->setFocus();
    employee_->setCurrentIndex({});
    d_.keys({QStringLiteral("v")});
    d_.check(d_.ask(name.arg(item).arg(person)) == before + 1, "a plain C and V copy");
    const int copy = employee_->selectedItem();
    const auto answerYes = [this](QWidget&) { d_.keys({QStringLiteral("alt+t")}); };
    d_.expectWindow("Delete asks", answerYes);
    d_.keys({QStringLiteral("Delete")});
    Driver::wait(1'700);
    d_.check(holder(copy) == kBin, "Delete scraps it");
    choose(*bin_, copy);
    d_.expectWindow("Delete asks in the bin", [&](QWidget& box) {
      d_.shot(QStringLiteral("panel-delete"));
      answerYes(box);
    });
    d_.keys({QStringLiteral("Delete")});
    Driver::wait(1'700);
    d_.check(holder(copy) == -1000, "and from the bin it is gone");
  }

  // The employee list in its four views, the panes hidden.
  void views() {
    const struct {
      Command command;
      const char16_t* name;
    } all[] = {{Command::PraWidokMale, u"panel-small"},
               {Command::PraWidokLista, u"panel-list"},
               {Command::PraWidokSzczeg, u"panel-details"}};
    for (const auto& view : all) {
      panel_->run(view.command);
      d_.shot(QString::fromUtf16(view.name));
    }
    const auto& entries = list_->model().entries();
    const int first = entries.front().id;
    for (int clicks = 0; clicks < 2; ++clicks) {
      d_.click(list_->details().header()->viewport()->mapToGlobal(QPoint(20, 8)));
      Driver::wait(400);  // or the next click makes it a double click
    }
    d_.check(entries.back().id == first, "two clicks on the header turn the list round");
    panel_->run(Command::PanelKosz);
    d_.check(!bin_->isVisible() && warehouse_->isVisible(), "the bin hides");
    d_.shot(QStringLiteral("panel-without-bin"));
    panel_->run(Command::PanelKosz);
    panel_->run(Command::PraWidokDuze);
    d_.shotOfMenu(entry(list_->selectedEmployee()), QStringLiteral("panel-menu"));
    d_.shotOfMenu(node(*warehouse_, firstSet(*warehouse_)), QStringLiteral("panel-menu-item"));
  }

  Driver& d_;
  karEWPAN* panel_ = nullptr;
  ItemTreeView *employee_ = nullptr, *warehouse_ = nullptr, *bin_ = nullptr;
  EmployeeList* list_ = nullptr;
};

}  // namespace

void tourPanel(Driver& driver) { PanelTour(driver).run(); }

}  // namespace tandeko::tour
