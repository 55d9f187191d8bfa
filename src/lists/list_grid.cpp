#include "lists/list_grid.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QSet>
#include <QStyleOptionHeader>
#include <algorithm>

namespace tandeko {

namespace {

constexpr int kRowPadding = 6;    // pixels above and below a row's text together
constexpr int kCellPadding = 14;  // pixels beside a cell's text together
constexpr int kSortArrow = 14;    // pixels beside a caption

// Raised digits, for the place of a column in the order.
QString raised(int number) {
  static const char16_t digits[] = u"⁰¹²³⁴⁵⁶⁷⁸⁹";
  QString text;
  for (const QChar digit : QString::number(number)) text += digits[digit.digitValue()];
  return text;
}

}  // namespace

SortHeader::SortHeader(QueryModel& model, QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent), model_(model) {
  setSectionsClickable(true);
  setSectionsMovable(true);
  setHighlightSections(false);
  setMinimumSectionSize(24);
  setContextMenuPolicy(Qt::CustomContextMenu);
  setToolTip(
      QStringLiteral("Kliknięcie sortuje, ponowne odwraca kolejność; z klawiszem Ctrl dodaje kolumnę do "
                     "sortowania. Prawy przycisk: wybór kolumn."));
  connect(this, &QHeaderView::sectionClicked, this,
          [this](int column) { Q_EMIT sortRequested(column, modifiers_.testFlag(Qt::ControlModifier)); });
}

void SortHeader::mouseReleaseEvent(QMouseEvent* event) {
  modifiers_ = event->modifiers();
  QHeaderView::mouseReleaseEvent(event);
}

void SortHeader::initStyleOptionForIndex(QStyleOptionHeader* option, int section) const {
  QHeaderView::initStyleOptionForIndex(option, section);
  bool descending = false;
  const int place = model_.sortPlace(section, &descending);
  if (place < 0) return;
  // The styles draw "SortDown" as the arrow of an ascending order.
  option->sortIndicator = descending ? QStyleOptionHeader::SortUp : QStyleOptionHeader::SortDown;
  if (model_.sortedByMany()) option->text += u' ' + raised(place + 1);
}

ListGrid::ListGrid(QueryModel& model, QWidget* parent)
    : QTableView(parent), model_(model), header_(new SortHeader(model, this)) {
  setHorizontalHeader(header_);
  setModel(&model_);
  setSelectionBehavior(SelectRows);
  setSelectionMode(ExtendedSelection);
  setEditTriggers(NoEditTriggers);
  setAlternatingRowColors(true);
  setWordWrap(false);
  setTextElideMode(Qt::ElideRight);
  setHorizontalScrollMode(ScrollPerPixel);
  setTabKeyNavigation(false);
  setCornerButtonEnabled(false);
  verticalHeader()->hide();
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  setFontSize(font().pointSize());
  connect(header_, &QWidget::customContextMenuRequested, this,
          [this](const QPoint& at) { chooseColumns(header_->mapToGlobal(at)); });
  connect(this, &QAbstractItemView::doubleClicked, this, [this] { Q_EMIT openRequested(); });
}

void ListGrid::setFontSize(int points) {
  if (points > 0) {
    QFont letters = font();
    letters.setPointSize(points);
    setFont(letters);
    header_->setFont(letters);
  }
  verticalHeader()->setMinimumSectionSize(fontMetrics().height());
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + kRowPadding);
  standardWidths();
}

int ListGrid::standardWidth(int column) const {
  const ListColumn& shown = model_.columns()[column];
  return std::max(shown.width * fontMetrics().averageCharWidth(),
                  header_->fontMetrics().horizontalAdvance(shown.caption) + kSortArrow) +
         kCellPadding;
}

void ListGrid::standardWidths() {
  for (int column = 0; column < model_.columns().size(); ++column) {
    setColumnHidden(column, model_.columns()[column].hidden);
    setColumnWidth(column, standardWidth(column));
    header_->moveSection(header_->visualIndex(column), column);
  }
}

void ListGrid::fitColumns() {
  for (const int column : shownColumns()) {
    // The visible rows only: the widest of a hundred thousand is not worth the wait.
    const int width = std::max(sizeHintForColumn(column), header_->sectionSizeHint(column));
    setColumnWidth(column, std::min(width + kCellPadding / 2, viewport()->width()));
  }
}

ColumnLayout ListGrid::columnLayout() const {
  ColumnLayout layout;
  for (int column = 0; column < model_.columns().size(); ++column)
    layout.columns << ColumnLayout::Column{isColumnHidden(column) ? 0 : columnWidth(column),
                                           header_->visualIndex(column)};
  layout.rowHeight = verticalHeader()->defaultSectionSize();
  return layout;
}

void ListGrid::setColumnLayout(const ColumnLayout& layout) {
  if (layout.columns.size() != model_.columns().size()) return;
  QList<int> byPlace;
  for (int column = 0; column < layout.columns.size(); ++column) {
    const int width = layout.columns[column].width;
    if (width >= 0) setColumnHidden(column, width == 0);
    if (width > 0) setColumnWidth(column, width);
    if (layout.columns[column].place >= 0) byPlace << column;
  }
  std::sort(byPlace.begin(), byPlace.end(),
            [&](int a, int b) { return layout.columns[a].place < layout.columns[b].place; });
  for (const int column : byPlace)
    header_->moveSection(header_->visualIndex(column), layout.columns[column].place);
  if (layout.rowHeight > 0) verticalHeader()->setDefaultSectionSize(layout.rowHeight);
}

QList<int> ListGrid::shownColumns() const {
  QList<int> columns;
  for (int place = 0; place < header_->count(); ++place) {
    const int column = header_->logicalIndex(place);
    if (!isColumnHidden(column)) columns << column;
  }
  return columns;
}

QList<int> ListGrid::selectedRows() const {
  QList<int> rows;
  for (const QItemSelectionRange& range : selectionModel()->selection())
    for (int row = range.top(); row <= range.bottom(); ++row) rows << row;
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  return rows;
}

void ListGrid::goToRow(int row, int wanted) {
  if (row < 0 || row >= model_.rows()) return;
  const QList<int> columns = shownColumns();
  int column = wanted;
  if (column < 0 || isColumnHidden(column)) column = currentIndex().column();
  if (column < 0 || isColumnHidden(column)) column = columns.value(0);
  const QModelIndex index = model_.index(row, column);
  setCurrentIndex(index);
  scrollTo(index);
}

void ListGrid::selectRows(const QList<int>& ascending) {
  QItemSelection selection;
  const int last = static_cast<int>(model_.columns().size()) - 1;
  for (qsizetype begin = 0; begin < ascending.size();) {
    qsizetype end = begin + 1;
    while (end < ascending.size() && ascending[end] == ascending[end - 1] + 1) ++end;
    selection.append(
        QItemSelectionRange(model_.index(ascending[begin], 0), model_.index(ascending[end - 1], last)));
    begin = end;
  }
  selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void ListGrid::chooseColumns(const QPoint& at) {
  QMenu menu(this);
  const bool onlyOne = shownColumns().size() == 1;
  for (int column = 0; column < model_.columns().size(); ++column) {
    QAction* entry = menu.addAction(model_.columns()[column].caption);
    entry->setCheckable(true);
    entry->setChecked(!isColumnHidden(column));
    entry->setEnabled(isColumnHidden(column) || !onlyOne);
    connect(entry, &QAction::toggled, this, [this, column](bool shown) {
      setColumnHidden(column, !shown);
      if (shown && columnWidth(column) < 10) setColumnWidth(column, standardWidth(column));
    });
  }
  menu.addSeparator();
  connect(menu.addAction(QStringLiteral("Dopasuj szerokość kolumn")), &QAction::triggered, this,
          &ListGrid::fitColumns);
  connect(menu.addAction(QStringLiteral("Standardowe kolumny")), &QAction::triggered, this,
          &ListGrid::standardWidths);
  menu.exec(at);
}

void ListGrid::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy)) return Q_EMIT copyRequested();
  if (event->matches(QKeySequence::SelectAll)) return Q_EMIT markAllRequested();
  if (event->modifiers() == Qt::NoModifier || event->modifiers() == Qt::KeypadModifier)
    switch (event->key()) {
      case Qt::Key_Return:
      case Qt::Key_Enter:
        return Q_EMIT openRequested();
      case Qt::Key_Insert:
        return Q_EMIT newRequested();
      case Qt::Key_Delete:
        return Q_EMIT deleteRequested();
      case Qt::Key_Home:
        return goToRow(0);
      case Qt::Key_End:
        return goToRow(model_.rows() - 1);
      default:
        break;
    }
  QTableView::keyPressEvent(event);
}

void ListGrid::paintEvent(QPaintEvent* event) {
  QTableView::paintEvent(event);
  if (model_.rows() > 0) return;
  QPainter painter(viewport());
  painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
  painter.drawText(viewport()->rect().adjusted(0, 2 * fontMetrics().height(), 0, 0),
                   Qt::AlignHCenter | Qt::AlignTop, QStringLiteral("Brak wierszy do wyświetlenia"));
}

void ListGrid::contextMenuEvent(QContextMenuEvent* event) {
  const QModelIndex index = indexAt(event->pos());
  if (event->reason() == QContextMenuEvent::Mouse) {
    if (index.isValid() && !selectionModel()->isRowSelected(index.row(), {})) setCurrentIndex(index);
    return Q_EMIT menuRequested(event->globalPos());
  }
  const QRect cell = visualRect(currentIndex());
  Q_EMIT menuRequested(viewport()->mapToGlobal(cell.isValid() ? cell.bottomLeft() : QPoint()));
}

void ListGrid::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
  QTableView::selectionChanged(selected, deselected);
  Q_EMIT selectionMoved();
}

}  // namespace tandeko
