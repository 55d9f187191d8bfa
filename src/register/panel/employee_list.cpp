#include "register/panel/employee_list.h"

#include <QCollator>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <algorithm>

#include "people/employee_store.h"
#include "platform/statements.h"
#include "platform/text.h"
#include "register/panel/drop_delegate.h"
#include "register/panel/item_icons.h"

namespace tandeko {

namespace {

constexpr int kColumns = 3;
constexpr int kLargeIcon = 32, kSmallIcon = 16;

QString textIn(const EmployeeEntry& entry, int column) {
  return column == 0 ? entry.name : column == 1 ? entry.room : entry.phone;
}

}  // namespace

std::vector<EmployeeEntry> loadEmployees(jet::Database& database) {
  const auto rows =
      openRows(database, kEmployeeQuery + QStringLiteral(" ORDER BY swpra.nazwisko, swpra.imie "));
  std::vector<EmployeeEntry> entries;
  for (; !rows->eof(); rows->moveNext())
    entries.push_back({toInt(rows->value(u"indpra")), toBool(rows->value(u"Aktywny")),
                       toText(rows->value(u"NazwiskoImie")), toText(rows->value(u"Numpok")),
                       toText(rows->value(u"Telefon"))});
  return entries;
}

void EmployeeModel::setEntries(std::vector<EmployeeEntry> entries) {
  beginResetModel();
  entries_ = std::move(entries);
  endResetModel();
}

int EmployeeModel::rowOf(int id) const {
  const auto found =
      std::find_if(entries_.begin(), entries_.end(), [id](const auto& entry) { return entry.id == id; });
  return found == entries_.end() ? -1 : static_cast<int>(found - entries_.begin());
}

int EmployeeModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(entries_.size());
}

int EmployeeModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : kColumns; }

QVariant EmployeeModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const EmployeeEntry& entry = entries_[static_cast<size_t>(index.row())];
  switch (role) {
    case Qt::DisplayRole:
      return textIn(entry, index.column());
    case Qt::ToolTipRole:
      return entry.name;
    case Qt::DecorationRole:
      return index.column() == 0 ? QVariant(employeeIcon(entry.active)) : QVariant();
    default:
      return {};
  }
}

QVariant EmployeeModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  switch (section) {
    case 0:
      return QStringLiteral("Nazwisko, imię");
    case 1:
      return QStringLiteral("Nr pokoju");
    default:
      return QStringLiteral("Telefon");
  }
}

void EmployeeModel::sort(int column, Qt::SortOrder order) {
  if (column < 0) return;
  Q_EMIT layoutAboutToBeChanged();
  const QModelIndexList before = persistentIndexList();
  std::vector<int> ids;
  for (const QModelIndex& index : before) ids.push_back(entries_[static_cast<size_t>(index.row())].id);
  QCollator collator{QLocale(QLocale::Polish)};
  collator.setNumericMode(column != 0);  // room 9 before room 10
  std::stable_sort(entries_.begin(), entries_.end(), [&](const auto& a, const auto& b) {
    const int compared = collator.compare(textIn(a, column), textIn(b, column));
    return order == Qt::AscendingOrder ? compared < 0 : compared > 0;
  });
  for (qsizetype at = 0; at < before.size(); ++at)
    changePersistentIndex(before[at], index(rowOf(ids[static_cast<size_t>(at)]), before[at].column()));
  Q_EMIT layoutChanged();
}

EmployeeList::EmployeeList(QWidget* parent)
    : QStackedWidget(parent), details_(new QTreeView(this)), icons_(new QListView(this)) {
  details_->setRootIsDecorated(false);
  details_->setUniformRowHeights(true);
  details_->setAllColumnsShowFocus(true);
  icons_->setMovement(QListView::Static);
  icons_->setResizeMode(QListView::Adjust);
  icons_->setUniformItemSizes(true);
  prepare(*details_);
  prepare(*icons_);
  details_->setSortingEnabled(true);
  details_->header()->setSortIndicator(-1, Qt::AscendingOrder);
  details_->header()->setSectionsMovable(true);
  const int letter = details_->fontMetrics().averageCharWidth();
  for (const auto& [column, letters] : {std::pair{0, 31}, {1, 11}, {2, 15}})
    details_->header()->resizeSection(column, letter * letters);
  icons_->setSelectionModel(details_->selectionModel());
  connect(details_->selectionModel(), &QItemSelectionModel::currentChanged, this,
          [this](const QModelIndex& current) {
            const int employee = employeeAt(current);
            if (filling_ || employee == selected_) return;
            selected_ = employee;
            Q_EMIT employeeSelected(employee);
          });
  setMode(Mode::LargeIcons);
}

void EmployeeList::prepare(QAbstractItemView& view) {
  view.setModel(&model_);
  view.setSelectionMode(QAbstractItemView::SingleSelection);
  view.setSelectionBehavior(QAbstractItemView::SelectRows);
  view.setEditTriggers(QAbstractItemView::NoEditTriggers);
  view.setAccessibleName(QStringLiteral("Pracownicy"));
  view.setItemDelegate(new DropDelegate(
      [this](const QModelIndex& index) { return dropIndex_.isValid() && index.row() == dropIndex_.row(); },
      &view));
  view.installEventFilter(this);
  connect(&view, &QAbstractItemView::doubleClicked, this, &EmployeeList::editRequested);
  addWidget(&view);
}

void EmployeeList::setMode(Mode mode) {
  mode_ = mode;
  const bool large = mode == Mode::LargeIcons;
  icons_->setViewMode(large ? QListView::IconMode : QListView::ListMode);
  icons_->setMovement(QListView::Static);
  icons_->setFlow(mode == Mode::List ? QListView::TopToBottom : QListView::LeftToRight);
  icons_->setWrapping(true);
  icons_->setResizeMode(QListView::Adjust);
  icons_->setUniformItemSizes(true);
  icons_->setWordWrap(large);
  icons_->setTextElideMode(Qt::ElideRight);
  const int icon = large ? kLargeIcon : kSmallIcon;
  icons_->setIconSize({icon, icon});
  sizeCells();
  const bool focused = view().hasFocus();
  setCurrentWidget(mode == Mode::Details ? static_cast<QWidget*>(details_) : icons_);
  setFocusProxy(&view());
  if (focused) view().setFocus();
  if (view().currentIndex().isValid()) view().scrollTo(view().currentIndex());
}

// Names below large pictures break over lines; beside small ones the widest of them fits.
void EmployeeList::sizeCells() {
  const QFontMetrics metrics(icons_->font());
  const int letter = metrics.averageCharWidth();
  const bool large = mode_ == Mode::LargeIcons;
  QSize cell(letter * 17, kLargeIcon + metrics.height() * 5 / 2);
  if (!large) {
    int widest = letter * 14;
    for (const EmployeeEntry& entry : model_.entries())
      widest = qMax(widest, metrics.horizontalAdvance(entry.name));
    cell = QSize(qMin(widest, letter * 40) + kSmallIcon + letter * 3, qMax(kSmallIcon, metrics.height()) + 4);
  }
  icons_->setGridSize(cell);
  static_cast<DropDelegate*>(icons_->itemDelegate())->setRowSize(cell, large);
}

QAbstractItemView& EmployeeList::view() { return *static_cast<QAbstractItemView*>(currentWidget()); }

void EmployeeList::setEntries(std::vector<EmployeeEntry> entries) {
  filling_ = true;
  model_.setEntries(std::move(entries));
  sizeCells();
  const auto& header = *details_->header();
  if (header.sortIndicatorSection() >= 0)
    model_.sort(header.sortIndicatorSection(), header.sortIndicatorOrder());
  const int row = qMax(model_.rowOf(selected_), isEmpty() ? -1 : 0);
  details_->setCurrentIndex(row < 0 ? QModelIndex() : model_.index(row, 0));
  filling_ = false;
  selected_ = employeeAt(details_->currentIndex());
  if (row >= 0) view().scrollTo(model_.index(row, 0));
}

int EmployeeList::selectedEmployee() const { return selected_; }

QString EmployeeList::selectedName() const {
  const int row = model_.rowOf(selected_);
  return row < 0 ? QString() : model_.entries()[static_cast<size_t>(row)].name;
}

void EmployeeList::select(int employee) {
  const int row = model_.rowOf(employee);
  if (row >= 0) view().setCurrentIndex(model_.index(row, 0));
}

QModelIndex EmployeeList::indexAtGlobal(const QPoint& globalPosition) const {
  const auto* shown = static_cast<const QAbstractItemView*>(currentWidget());
  const QPoint local = shown->viewport()->mapFromGlobal(globalPosition);
  return shown->viewport()->rect().contains(local) ? shown->indexAt(local) : QModelIndex();
}

int EmployeeList::employeeAt(const QModelIndex& index) const {
  return index.isValid() ? model_.entries()[static_cast<size_t>(index.row())].id : 0;
}

void EmployeeList::showDropTarget(const QModelIndex& index) {
  if (dropIndex_ == index) return;
  dropIndex_ = index;
  view().viewport()->update();
}

bool EmployeeList::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress: {
      const auto& key = static_cast<const QKeyEvent&>(*event);
      const bool edit = key.modifiers().testFlag(Qt::ControlModifier) &&
                        (key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter);
      if (key.key() != Qt::Key_Insert && key.key() != Qt::Key_Delete && !edit) break;
      event->accept();
      if (event->type() == QEvent::KeyPress) handleKey(key);
      return true;
    }
    case QEvent::ContextMenu: {
      const auto& menu = static_cast<const QContextMenuEvent&>(*event);
      QPoint place = menu.globalPos();
      if (menu.reason() == QContextMenuEvent::Keyboard && view().currentIndex().isValid())
        place = view().viewport()->mapToGlobal(view().visualRect(view().currentIndex()).center());
      Q_EMIT menuRequested(place);
      return true;
    }
    default:
      break;
  }
  return QStackedWidget::eventFilter(watched, event);
}

bool EmployeeList::handleKey(const QKeyEvent& key) {
  if (key.key() == Qt::Key_Insert)
    Q_EMIT newKey();
  else if (key.key() == Qt::Key_Delete)
    Q_EMIT deleteKey();
  else
    Q_EMIT editRequested();
  return true;
}

}  // namespace tandeko
