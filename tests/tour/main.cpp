// A tour of the program on a real display: opens a firm, moves items with the real mouse (xdotool), checks the
// file after each step and leaves screenshots. Status 0 when everything was as it should be.
//
//   tour FIRM.mdb FOLDER

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QLocale>
#include <QProcess>
#include <QScreen>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <map>

#include "app/startup.h"
#include "platform/resources.h"
#include "platform/text.h"
#include "register/panel/karEWPAN.h"

namespace {

using namespace tandeko;

constexpr int kStepMs = 40;  // between two events of the mouse

void wait(int milliseconds) {
  QElapsedTimer timer;
  timer.start();
  while (timer.elapsed() < milliseconds) QApplication::processEvents(QEventLoop::AllEvents, 10);
}

class Tour {
 public:
  Tour(Session& session, mdiMenu& window, const QString& folder) : session_(session), window_(window), folder_(folder) {}

  bool run() {
    // The register whose items form sets.
    auto* registers = window_.findChild<QComboBox*>(QStringLiteral("cmbEwiRejestr"));
    const int computers = registers ? registers->findText(QStringLiteral("Sprzęt komputerowy")) : -1;
    if (!check(computers >= 0, "the register combo offers the firm's registers")) return false;
    registers->setCurrentIndex(computers);
    Q_EMIT registers->activated(computers);
    window_.openForm(QStringLiteral("karEWPAN"));
    wait(500);
    panel_ = qobject_cast<karEWPAN*>(window_.findForm(QStringLiteral("karEWPAN")));
    if (!check(panel_ != nullptr, "the panel opens")) return false;
    if (QWidget* frame = panel_->parentWidget()) frame->showMaximized();
    wait(500);
    employee_ = panel_->findChild<ItemTreeView*>(QStringLiteral("treeSprzet"));
    warehouse_ = panel_->findChild<ItemTreeView*>(QStringLiteral("treeMagazyn"));
    bin_ = panel_->findChild<ItemTreeView*>(QStringLiteral("treeKosz"));
    list_ = panel_->findChild<EmployeeList*>(QStringLiteral("lstPracownik"));
    if (!check(employee_ && warehouse_ && bin_ && list_, "the four panes are there")) return false;
    for (const EmployeeEntry& entry : list_->model().entries()) {
      list_->select(entry.id);
      wait(20);
      if (employee_->items().sets().size() > 1) break;
    }
    shot(QStringLiteral("panel"));
    giveOut();
    throwAway();
    takeBack();
    refuse();
    return failures_ == 0;
  }

 private:
  bool check(bool condition, const char* what) {
    std::printf("%s: %s\n", condition ? "ok" : "FAILED", what);
    std::fflush(stdout);
    failures_ += !condition;
    return condition;
  }

  void shot(const QString& name) {
    wait(200);
    window_.screen()->grabWindow(0).save(folder_ + u'/' + name + QStringLiteral(".png"));
  }

  static void mouse(const QStringList& words) {
    QProcess::execute(QStringLiteral("xdotool"), words);
    wait(kStepMs);
  }

  static void drag(const QPoint& from, const QPoint& to) {
    const auto moveTo = [](const QPoint& p) {
      mouse({QStringLiteral("mousemove"), QString::number(p.x()), QString::number(p.y())});
    };
    moveTo(from);
    mouse({QStringLiteral("mousedown"), QStringLiteral("1")});
    for (int step = 1; step <= 8; ++step) moveTo(from + (to - from) * step / 8);
    moveTo(to + QPoint(1, 1));
    mouse({QStringLiteral("mouseup"), QStringLiteral("1")});
    wait(300);
  }

  static QPoint middleOf(QAbstractItemView& view, const QModelIndex& index) {
    const QRect rect = view.visualRect(index);
    return view.viewport()->mapToGlobal(QPoint(rect.left() + qMin(40, rect.width() / 2), rect.center().y()));
  }

  static QPoint emptySpot(QAbstractItemView& view) {
    return view.viewport()->mapToGlobal(QPoint(view.viewport()->width() - 20, view.viewport()->height() - 8));
  }

  // The first set at the top of a tree, shown; an invalid index when it has none.
  static QModelIndex firstSet(ItemTreeView& tree) {
    for (const int item : tree.items().sets()) {
      const QModelIndex index = tree.items().indexOf(item);
      if (index.parent().isValid()) continue;
      tree.scrollTo(index, QAbstractItemView::PositionAtCenter);
      wait(100);
      return index;
    }
    return {};
  }

  // Holders of the item and everything below it, read from the file.
  std::vector<int> holders(int item) {
    const std::unique_ptr<jet::Recordset> rows = session_.database().openRecordset(
        toU16(QStringLiteral("SELECT indewi, parent, indpra FROM ewkar WHERE indewi = %1 OR parent > 0").arg(item)),
        jet::RecordsetType::Snapshot);
    std::map<int, std::pair<int, int>> items;  // parent, holder
    for (; !rows->eof(); rows->moveNext()) {
      const jet::Value parent = rows->value(u"parent");
      items[rows->value(u"indewi").get<int32_t>()] = {parent.isNull() ? 0 : parent.get<int32_t>(),
                                                      rows->value(u"indpra").get<int32_t>()};
    }
    std::vector<int> found;
    for (const auto& [key, entry] : items) {
      int at = key;
      while (at != item && at != 0) at = items.count(at) ? items[at].first : 0;
      if (at == item) found.push_back(entry.second);
    }
    return found;
  }

  bool allHeldBy(int item, int holder) {
    const auto all = holders(item);
    return all.size() > 1 && std::all_of(all.begin(), all.end(), [holder](int h) { return h == holder; });
  }

  // From the warehouse to the employee: the set with all its components.
  void giveOut() {
    const QModelIndex index = firstSet(*warehouse_);
    if (!check(index.isValid(), "the warehouse holds a set")) return;
    item_ = warehouse_->items().itemAt(index);
    drag(middleOf(*warehouse_, index), emptySpot(*employee_));
    check(allHeldBy(item_, list_->selectedEmployee()), "a set and its components went to the employee");
    check(employee_->items().indexOf(item_).isValid() && !warehouse_->items().indexOf(item_).isValid(),
          "both trees show it");
    shot(QStringLiteral("panel-after-move"));
  }

  void throwAway() {
    const QModelIndex index = employee_->items().indexOf(item_);
    if (!check(index.isValid(), "the employee holds the set")) return;
    employee_->scrollTo(index, QAbstractItemView::PositionAtCenter);
    wait(100);
    drag(middleOf(*employee_, index), emptySpot(*bin_));
    check(allHeldBy(item_, -1), "the set went to the bin");
  }

  void takeBack() {
    const QModelIndex index = bin_->items().indexOf(item_);
    if (!check(index.isValid(), "the bin shows the set")) return;
    bin_->scrollTo(index, QAbstractItemView::PositionAtCenter);
    wait(100);
    drag(middleOf(*bin_, index), emptySpot(*warehouse_));
    check(allHeldBy(item_, 0), "the set is back in the warehouse");
  }

  // A set dropped on its own component stays where it is.
  void refuse() {
    const QModelIndex index = warehouse_->items().indexOf(item_);
    if (!check(index.isValid(), "the warehouse shows the set again")) return;
    warehouse_->expand(index);
    const QModelIndex component = warehouse_->items().index(0, 0, index);
    warehouse_->scrollTo(component, QAbstractItemView::PositionAtCenter);
    wait(100);
    QTimer::singleShot(1'500, &window_, [this] {
      QWidget* box = QApplication::activeModalWidget();
      if (!check(box != nullptr, "a drop on the item's own component is refused")) return;
      shot(QStringLiteral("panel-refusal"));
      box->close();
    });
    drag(middleOf(*warehouse_, index), middleOf(*warehouse_, component));
    wait(1'500);
    check(allHeldBy(item_, 0), "and nothing was changed");
  }

  Session& session_;
  mdiMenu& window_;
  QString folder_;
  karEWPAN* panel_ = nullptr;
  ItemTreeView *employee_ = nullptr, *warehouse_ = nullptr, *bin_ = nullptr;
  EmployeeList* list_ = nullptr;
  int item_ = 0;
  int failures_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  QLocale::setDefault(QLocale(QLocale::Polish, QLocale::Poland));
  QApplication application(argc, argv);
  QApplication::setApplicationName(kProgramName);
  if (application.arguments().size() != 3) return std::fputs("tour FIRM.mdb FOLDER\n", stderr), 2;
  useResources();
  const QString file = QFileInfo(application.arguments()[1]).absoluteFilePath();
  const QString folder = QFileInfo(application.arguments()[2]).absoluteFilePath();
  QDir().mkpath(folder);

  // The administrator has no password and is let in without a question when he was the last user.
  MemoryRegistry registry;
  registry.write(kProgramKey, QStringLiteral("Uzytkownik"), QStringLiteral("AD"));
  const auto windows = systemWindowSearch();
  ScreenMessages messages;
  SystemShell shell;
  SystemMail mail;
  SystemClock clock;
  Session session(Platform{registry, messages, shell, mail, clock, *windows});
  const auto window = startUp(session, file);
  if (!window || !session.databaseOpen()) return std::fputs("the firm does not open\n", stderr), 1;
  window->showMaximized();
  wait(800);
  const bool passed = Tour(session, *window, folder).run();
  window->close();
  return passed ? 0 : 1;
}
