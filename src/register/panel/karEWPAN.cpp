#include "register/panel/karEWPAN.h"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QVBoxLayout>

#include "errors/error_reporter.h"
#include "platform/resources.h"
#include "register/panel/panel_layout.h"

namespace tandeko {

namespace {

const QString kRegisterTable = QStringLiteral("swrew");

class HourGlass {
 public:
  HourGlass() { QApplication::setOverrideCursor(Qt::WaitCursor); }
  ~HourGlass() { QApplication::restoreOverrideCursor(); }
  HourGlass(const HourGlass&) = delete;
  HourGlass& operator=(const HourGlass&) = delete;
};

}  // namespace

karEWPAN::karEWPAN(Session& session, QWidget* parent) : ChildForm(parent), session_(session) {
  setObjectName(QStringLiteral("karEWPAN"));
  setWindowTitle(QStringLiteral("Panel operacyjny"));
  setWindowIcon(icon("panel"));
  build();
  readLayout();
  connect(&session_, &Session::userChanged, this, &ChildForm::commandsChanged);
  connect(&session_, &Session::databaseChanged, this, [this] {
    undo_.clear();
    copied_ = {};
    refill();
  });
  refill();
}

void karEWPAN::build() {
  const auto makeTree = [this](const char16_t* name, const char16_t* caption) {
    auto* tree = new ItemTreeView(this);
    tree->setObjectName(QString::fromUtf16(name));
    tree->setAccessibleName(QString::fromUtf16(caption));
    connectTree(*tree);
    return tree;
  };
  lstPracownik_ = new EmployeeList(this);
  lstPracownik_->setObjectName(QStringLiteral("lstPracownik"));
  treeSprzet_ = makeTree(u"treeSprzet", u"Przedmioty pracownika");
  treeMagazyn_ = makeTree(u"treeMagazyn", u"Magazyn");
  treeKosz_ = makeTree(u"treeKosz", u"Kosz");
  last_ = treeSprzet_;
  const auto makePane = [](const char16_t* name, const char16_t* label, const char16_t* caption,
                           QWidget* control) {
    return new Pane(QString::fromUtf16(name), QString::fromUtf16(label), QString::fromUtf16(caption),
                    control);
  };
  pbxPracownik_ = makePane(u"pbxPracownik", u"labPracownik", u"Pracownicy", lstPracownik_);
  pbxSprzet_ = makePane(u"pbxSprzet", u"labSprzet", u"Przedmioty pracownika", treeSprzet_);
  pbxMagazyn_ = makePane(u"pbxMagazyn", u"labMagazyn", u"Magazyn", treeMagazyn_);
  pbxKosz_ = makePane(u"pbxKosz", u"labKosz", u"Kosz", treeKosz_);

  coolOkno_ = new PaneContainer(this);
  coolOkno_->setObjectName(QStringLiteral("CoolOkno"));
  coolOkno_->setPanes({pbxPracownik_, pbxSprzet_, pbxMagazyn_, pbxKosz_});
  auto* whole = new QVBoxLayout(this);
  whole->setContentsMargins(4, 2, 4, 4);
  whole->addWidget(coolOkno_);

  connect(lstPracownik_, &EmployeeList::employeeSelected, this, [this] {
    PanelFillTree(*treeSprzet_, lstPracownik_->selectedEmployee());
    Q_EMIT commandsChanged();
  });
  connect(lstPracownik_, &EmployeeList::deleteKey, this, [this] { run(Command::PraUsun); });
  connect(lstPracownik_, &EmployeeList::newKey, this, [this] { run(Command::PraNowy); });
  connect(lstPracownik_, &EmployeeList::editRequested, this, [this] { run(Command::PraWlas); });
  connect(lstPracownik_, &EmployeeList::menuRequested, this, [this](const QPoint& at) {
    if (session_.frame()) session_.frame()->popupMenu(ContextMenu::PanelEmployees, at);
  });

  drag_ = new ItemDrag({treeSprzet_, treeMagazyn_, treeKosz_}, lstPracownik_, this);
  drag_->mayBegin = [this] { return mayChange(); };
  drag_->makesSets = [this] { return !register_.isList(); };
  drag_->hasHolder = [this](const ItemTreeView& tree) { return holderOf(tree).has_value(); };
  drag_->dropped = [this](ItemTreeView& source, int item, const ItemDrag::Target& target) {
    drop(source, item, target);
  };
  drag_->ended = [this] {
    if (std::exchange(refreshPending_, false)) KarRefresh();
  };
  installEventFilter(this);
}

void karEWPAN::connectTree(ItemTreeView& tree) {
  tree.installEventFilter(this);
  connect(&tree, &ItemTreeView::selectionMoved, this, [this, &tree] {
    showHolderInfo(tree);
    Q_EMIT commandsChanged();
  });
  const auto forward = [this, &tree](Command command) {
    return [this, &tree, command] {
      last_ = &tree;
      run(command);
    };
  };
  connect(&tree, &ItemTreeView::newItemKey, this, forward(Command::SprzNowy));
  connect(&tree, &ItemTreeView::deleteKey, this, forward(Command::SprzUsun));
  connect(&tree, &ItemTreeView::editKey, this, forward(Command::SprzWlas));
  connect(&tree, &ItemTreeView::leafDoubleClicked, this, forward(Command::SprzWlas));
  connect(&tree, &ItemTreeView::copyKey, this, forward(Command::SprzKopiuj));
  connect(&tree, &ItemTreeView::pasteKey, this, forward(Command::SprzWklej));
  connect(&tree, &ItemTreeView::cutKey, this, [this, &tree] {
    last_ = &tree;
    PanelCut();
  });
  connect(&tree, &ItemTreeView::menuRequested, this, [this, &tree](const QPoint& at) {
    last_ = &tree;
    Q_EMIT commandsChanged();
    if (session_.frame()) session_.frame()->popupMenu(ContextMenu::PanelItems, at);
  });
}

bool karEWPAN::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::FocusIn) {
    if (auto* tree = qobject_cast<ItemTreeView*>(watched); tree && tree != last_) {
      last_ = tree;
      Q_EMIT commandsChanged();
    }
  }
  if (event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress) {
    auto& key = static_cast<QKeyEvent&>(*event);
    if (key.matches(QKeySequence::Undo)) {
      key.accept();
      if (event->type() == QEvent::KeyPress) PanelUndo();
      return true;
    }
  }
  return ChildForm::eventFilter(watched, event);
}

QString karEWPAN::layoutQualifier() const {
  return QString::number(session_.settings().program().listFontSize);
}

void karEWPAN::readLayout() {
  const PanelLayout layout = PanelLayout::load(session_.registry(), layoutQualifier());
  lstPracownik_->setMode(static_cast<EmployeeList::Mode>(layout.employeeView));
  setPaneShown(Command::PanelMagazyn, layout.warehouseShown);
  setPaneShown(Command::PanelKosz, layout.binShown);
  QHeaderView& header = *lstPracownik_->details().header();
  for (int column = 0; column < layout.columns.columns.size(); ++column) {
    const auto& [width, place] = layout.columns.columns[column];
    if (width > 0) header.resizeSection(column, width);
    if (place >= 0) header.moveSection(header.visualIndex(column), place);
  }
  coolOkno_->setOrder(layout.order);
  coolOkno_->setPaneSizes(layout.paneSizes, layout.stackSizes);
}

void karEWPAN::KarSaveParam(bool save) {
  if (!save) {
    PanelLayout::forget(session_.registry());
    session_.messages().inform(
        QStringLiteral("Standardowa szerokość kolumn tablicy zostanie ustawiona po ponownym otwarciu okna."));
    return;
  }
  PanelLayout layout;
  layout.employeeView = static_cast<int>(lstPracownik_->mode());
  layout.warehouseShown = isOn(Command::PanelMagazyn);
  layout.binShown = isOn(Command::PanelKosz);
  const QHeaderView& header = *lstPracownik_->details().header();
  for (int column = 0; column < header.count(); ++column)
    layout.columns.columns.append({header.sectionSize(column), header.visualIndex(column)});
  layout.order = coolOkno_->order();
  layout.paneSizes = coolOkno_->sizes();
  layout.stackSizes = coolOkno_->stackSizes();
  layout.store(session_.registry(), layoutQualifier());
}

void karEWPAN::setPaneShown(Command command, bool shown) {
  Pane* pane = command == Command::PanelMagazyn ? pbxMagazyn_ : pbxKosz_;
  coolOkno_->setPaneShown(*pane, shown);
  if (!shown && last_ == pane->control()) last_ = treeSprzet_;
}

void karEWPAN::KarRefresh() {
  if (drag_->dragging()) {
    refreshPending_ = true;
    return;
  }
  refill();
}

void karEWPAN::refill() {
  register_ = {};
  guarded(session_, "PanelReadRegister", [this] {
    if (session_.databaseOpen())
      register_ = loadRegister(session_.database(), session_.currentRegister()).value_or(CurrentRegister{});
  });
  PanelFillEmployees();
  PanelFillTree(*treeMagazyn_, kWarehouse);
  PanelFillTree(*treeKosz_, kBin);
  Q_EMIT commandsChanged();
}

bool karEWPAN::PanelFillEmployees() {
  const bool done = guarded(session_, "PanelFillEmployees", [this] {
    const HourGlass wait;
    lstPracownik_->setEntries(session_.databaseOpen() ? loadEmployees(session_.database())
                                                      : std::vector<EmployeeEntry>{});
  });
  pbxPracownik_->setInfo(lstPracownik_->isEmpty() ? QString()
                                                  : QString::number(lstPracownik_->model().entries().size()));
  return PanelFillTree(*treeSprzet_, lstPracownik_->selectedEmployee()) && done;
}

bool karEWPAN::PanelFillTree(ItemTreeView& tree, int holder, int item) {
  return guarded(session_, "PanelFillTree", [&] {
    const HourGlass wait;
    const bool nothing =
        !session_.databaseOpen() || register_.key < 1 || (&tree == treeSprzet_ && holder < 1);
    tree.setTree(nothing ? ItemTree{} : ItemTree::load(session_.database(), register_.key, holder), register_,
                 item);
  });
}

void karEWPAN::showHolderInfo(ItemTreeView& tree) {
  const auto count = tree.items().tree().nodes().size();
  QString info = count > 0 ? QString::number(count) : QString();
  if (&tree == treeSprzet_ && lstPracownik_->selectedEmployee() > 0)
    info = lstPracownik_->selectedName() + (count > 0 ? QStringLiteral(": ") + info : QString());
  paneOf(tree).setInfo(info);
}

Pane& karEWPAN::paneOf(const ItemTreeView& tree) {
  return *(&tree == treeSprzet_ ? pbxSprzet_ : &tree == treeMagazyn_ ? pbxMagazyn_ : pbxKosz_);
}

std::optional<int> karEWPAN::holderOf(const ItemTreeView& tree) const {
  if (&tree == treeMagazyn_) return kWarehouse;
  if (&tree == treeKosz_) return kBin;
  const int employee = lstPracownik_->selectedEmployee();
  return employee > 0 ? std::optional(employee) : std::nullopt;
}

ItemTreeView* karEWPAN::treeOf(int holder) {
  if (holder == kWarehouse) return treeMagazyn_;
  if (holder < kWarehouse) return treeKosz_;
  return holder == lstPracownik_->selectedEmployee() ? treeSprzet_ : nullptr;
}

QString karEWPAN::holderName(int holder) const {
  if (holder == kWarehouse) return QStringLiteral("[Magazyn]");
  if (holder < kWarehouse) return QStringLiteral("[Kosz]");
  const auto& entries = lstPracownik_->model().entries();
  const int row = lstPracownik_->model().rowOf(holder);
  return row < 0 ? QString::number(holder) : entries[static_cast<size_t>(row)].name;
}

ItemStore karEWPAN::store() const { return {session_.workspace(), session_.database(), register_.key}; }

bool karEWPAN::mayChange() const {
  if (!session_.databaseOpen() || register_.key < 1) return false;
  try {
    return !session_.database().readOnly() && session_.UserCanWrite() &&
           !session_.UserReadOnly(kRegisterTable, register_.key);
  } catch (const jet::Error&) {
    return false;  // rights that cannot be read are none
  }
}

void karEWPAN::refreshLists() {
  session_.KarRefresh(QStringLiteral("karEWKAR"));
  Q_EMIT commandsChanged();
}

}  // namespace tandeko
