#include "lists/kar_form.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMdiSubWindow>
#include <QScrollBar>
#include <QSet>
#include <numeric>

#include "errors/error_reporter.h"
#include "lists/dlgFiltrUstaw.h"
#include "lists/dlgZnajdz.h"
#include "lists/row_copy.h"
#include "platform/resources.h"
#include "platform/text.h"
#include "session/names.h"

namespace tandeko {

namespace {

// Milliseconds after the last key. A list that is slow to answer waits for the end of the word.
constexpr int kQuickDelay = 25, kSlowDelay = 250;
constexpr int kSlow = 250;  // milliseconds of a query
const QString kSort = QStringLiteral("Sort ");

// What stays when a list is read again: the current row and the selection by key, the place on the screen.
class RowKeeper {
 public:
  explicit RowKeeper(const ListGrid& grid)
      : row_(grid.currentRow()), key_(grid.rows().key(row_)), offset_(row_ - grid.rowAt(0)) {
    const QList<int> rows = grid.selectedRows();
    all_ = rows.size() > 1 && rows.size() == grid.rows().rows();
    if (rows.size() > 1 && !all_)
      for (const int row : rows) selected_ << grid.rows().key(row);
  }

  void restore(ListGrid& grid) const {
    const QueryModel& model = grid.rows();
    if (model.rows() == 0) return;
    const int found = key_ > 0 ? model.rowOf(key_) : -1;
    const int row = found >= 0 ? found : std::clamp(row_, 0, model.rows() - 1);
    grid.goToRow(row);
    if (row_ >= 0 && offset_ >= 0) grid.verticalScrollBar()->setValue(std::max(0, row - offset_));
    grid.scrollTo(grid.currentIndex());
    if (all_) grid.selectAll();
    if (selected_.isEmpty()) return;
    QList<int> rows;
    for (int at = 0; at < model.rows(); ++at)
      if (selected_.contains(model.key(at))) rows << at;
    if (!rows.isEmpty()) grid.selectRows(rows);
  }

 private:
  int row_;
  int key_;
  int offset_;  // of the current row from the first visible one
  bool all_ = false;
  QSet<int> selected_;
};

}  // namespace

void Conditions::add(const QString& condition, const QString& words) {
  text += condition;
  removable |= !condition.isEmpty() && !words.isEmpty();
  if (words.isEmpty()) return;
  if (!description.isEmpty() && !description.endsWith(u"; ")) description += QStringLiteral("; ");
  description += words;
}

KarForm::KarForm(Session& session, const QString& formName, QList<ListColumn> columns,
                 const QString& standardSort)
    : session_(session),
      model_(new QueryModel(std::move(columns), 0, this)),
      grid_(new ListGrid(*model_, this)),
      page_(new QVBoxLayout(this)),
      standardSort_(standardSort),
      sort_(standardSort) {
  setObjectName(formName);
  page_->setContentsMargins(4, 4, 4, 4);
  page_->setSpacing(4);
  quickDelay_.setSingleShot(true);
  connect(&quickDelay_, &QTimer::timeout, this, &KarForm::requery);
  connect(grid_, &ListGrid::openRequested, this, [this] {
    if (session_.settings().program().openOnDoubleClick || !QApplication::mouseButtons())
      run(Command::Popraw);
  });
  connect(grid_, &ListGrid::newRequested, this, [this] { run(Command::Nowy); });
  connect(grid_, &ListGrid::deleteRequested, this, [this] { run(Command::Usun); });
  connect(grid_, &ListGrid::copyRequested, this, [this] { copyMarkedRows(true); });
  connect(grid_, &ListGrid::markAllRequested, this, [this] { run(Command::ZaznaczWiersze); });
  connect(grid_, &ListGrid::selectionMoved, this, &ChildForm::commandsChanged);
  connect(grid_, &ListGrid::menuRequested, this, [this](const QPoint& at) {
    if (session_.frame()) session_.frame()->popupMenu(ContextMenu::RegisterList, at);
  });
  connect(static_cast<SortHeader*>(grid_->horizontalHeader()), &SortHeader::sortRequested, this,
          &KarForm::sortBy);
  connect(&session_.settings(), &Settings::changed, this, [this] {
    grid_->setFontSize(session_.settings().program().listFontSize);
    readLayout();
  });
  connect(&session_, &Session::userChanged, this, &ChildForm::commandsChanged);
}

void KarForm::open() {
  buildDescriptionBar();
  page_->addWidget(grid_, 1);
  setFocusProxy(grid_);
  grid_->setFontSize(session_.settings().program().listFontSize);
  readLayout();
  KarRefresh();
}

void KarForm::buildDescriptionBar() {
  pboxOpis_ = new QFrame(this);
  pboxOpis_->setObjectName(QStringLiteral("pboxOpis"));
  pboxOpis_->setFrameShape(QFrame::StyledPanel);
  pboxOpis_->setAutoFillBackground(true);
  pboxOpis_->setBackgroundRole(QPalette::ToolTipBase);
  pboxOpis_->setForegroundRole(QPalette::ToolTipText);
  auto* picture = new QLabel(pboxOpis_);
  picture->setPixmap(icon("filter").pixmap(16));
  labOpis_ = new QLabel(pboxOpis_);
  labOpis_->setObjectName(QStringLiteral("labOpis"));
  labOpis_->setForegroundRole(QPalette::ToolTipText);
  labOpis_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  labOpis_->setMinimumWidth(40);
  labOpis_->setWordWrap(true);
  cmdBezFiltru_ = new QToolButton(pboxOpis_);
  cmdBezFiltru_->setObjectName(QStringLiteral("cmdBezFiltru"));
  cmdBezFiltru_->setText(QStringLiteral("Usuń filtr"));
  cmdBezFiltru_->setToolTip(QStringLiteral("Pokazuje znów wszystkie wiersze"));
  cmdBezFiltru_->setAutoRaise(true);
  cmdBezFiltru_->setIcon(icon("delete"));
  cmdBezFiltru_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  connect(cmdBezFiltru_, &QToolButton::clicked, this, [this] {
    {
      const Loading loading(*this);
      clearQuickFilters();
    }
    KarRefresh({}, {}, {}, {}, false);
    grid_->setFocus();
  });
  auto* row = new QHBoxLayout(pboxOpis_);
  row->setContentsMargins(6, 1, 2, 1);
  row->addWidget(picture);
  row->addWidget(labOpis_, 1);
  row->addWidget(cmdBezFiltru_);
  page_->addWidget(pboxOpis_);
  pboxOpis_->hide();
}

QString KarForm::qualifier() const { return QString::number(session_.settings().program().listFontSize); }

QString KarForm::layoutGroup() const { return kProgramKey + u'\\' + formName(); }

void KarForm::readLayout() {
  const int columns = static_cast<int>(model_->columns().size());
  grid_->setColumnLayout(ColumnLayout::load(session_.registry(), formName(), qualifier(), columns));
  sort_ = session_.registry().read(layoutGroup(), kSort, standardSort_);
  // A text that names a column that the list no longer has would make the list unusable.
  const auto known = [this](const SortKey& key) {
    for (const ListColumn& column : model_->columns())
      if (column.sortColumn().compare(key.column, Qt::CaseInsensitive) == 0) return true;
    return false;
  };
  const QList<SortKey> keys = sortKeys(sort_);
  if (keys.isEmpty() || !std::all_of(keys.begin(), keys.end(), known)) sort_ = standardSort_;
  model_->setSort(sortKeys(sort_));
  readBands();
}

void KarForm::KarSaveParam(bool save) {
  if (save) session_.registry().createKey(layoutGroup());
  storeBands(save);
  if (save) {
    session_.registry().write(layoutGroup(), kSort, sort_);
    grid_->columnLayout().store(session_.registry(), formName(), qualifier());
    return;
  }
  session_.registry().removeValue(layoutGroup(), kSort);
  ColumnLayout::forget(session_.registry(), formName());
  session_.messages().inform(
      QStringLiteral("Standardowa szerokość kolumn tablicy zostanie ustawiona po ponownym otwarciu okna."));
}

bool KarForm::query() {
  quickDelay_.stop();
  return guarded(session_, "KarRefresh", [this] {
    const Conditions quick = quickConditions();
    if (session_.databaseOpen()) {
      QElapsedTimer timer;
      timer.start();
      const QString statement = buildStatement(quick.text, filter_.condition);
      auto rows = session_.database().openRecordset(toU16(statement + QStringLiteral(" ORDER BY ") + sort_),
                                                    jet::RecordsetType::Snapshot);
      const RowKeeper keeper(*grid_);
      statement_ = statement;
      model_->setRows(std::move(rows));
      keeper.restore(*grid_);
      lastQuery_ = timer.elapsed();
    } else {
      model_->setRows(nullptr);
    }
    Conditions all = quick;
    if (!filter_.name.isEmpty())
      all.add({}, QStringLiteral("Filtr „") + filter_.name + QStringLiteral("”: ") + filter_.description);
    description_ = all.description;
    removable_ = !filter_.name.isEmpty() || quick.removable;
    showDescription();
    rowsChanged();
    Q_EMIT commandsChanged();
  });
}

void KarForm::showDescription() {
  QString shown = description_.trimmed();
  if (shown.endsWith(u';')) shown.chop(1);
  labOpis_->setText(shown);
  pboxOpis_->setVisible(!shown.isEmpty());
  cmdBezFiltru_->setVisible(removable_);
}

void KarForm::sortBy(int column, bool add) {
  const QString before = sort_;
  sort_ = sortClicked(sort_, model_->columns()[column].sortColumn(), add);
  if (!query()) sort_ = before;
  model_->setSort(sortKeys(sort_));
}

void KarForm::requery() {
  if (busy_ > 0)
    refreshPending_ = true;
  else
    query();
}

void KarForm::KarRefresh() {
  if (busy_ == 0) {
    const Loading loading(*this);
    guarded(session_, "KarRefresh", [this] { reloadChoices(); });
  }
  requery();
}

void KarForm::KarRefresh(const QString& filterName, const QString& condition, const QString& sums,
                         const QString& description, bool apply) {
  const AppliedFilter before = filter_;
  filter_ = apply ? AppliedFilter{filterName, condition, sums, description} : AppliedFilter{};
  // A condition that the database refuses must not stay in the way of every later refresh.
  if (!query()) filter_ = before;
}

KarForm::Busy::Busy(KarForm& form) : form_(form) { ++form_.busy_; }

KarForm::Busy::~Busy() {
  if (--form_.busy_ > 0) return;
  if (std::exchange(form_.refreshPending_, false)) form_.query();
  Q_EMIT form_.commandsChanged();  // what the work forbade is allowed again
}

int KarForm::currentKey() const { return model_->key(grid_->currentRow()); }

bool KarForm::goToKey(int key) {
  const int row = model_->rowOf(key);
  grid_->goToRow(row);
  return row >= 0;
}

bool KarForm::mayChange() const {
  return session_.databaseOpen() && !session_.database().readOnly() && session_.UserCanWrite();
}

bool KarForm::supports(Command command) const {
  if (!session_.databaseOpen() || busy_ > 0) return false;
  switch (command) {
    case Command::Nowy:
      return mayChange();
    case Command::Popraw:
      return grid_->currentRow() >= 0;
    case Command::Usun:
      return grid_->currentRow() >= 0 && mayChange();
    case Command::Filtr:
      return true;
    case Command::Znajdz:
    case Command::ZaznaczWiersze:
    case Command::KopiujWiersze:
      return model_->rows() > 0;
    default:
      return false;
  }
}

void KarForm::run(Command command) {
  if (!supports(command)) return;
  switch (command) {
    case Command::Nowy:
      return newRecord();
    case Command::Popraw:
      return editRecord();
    case Command::Usun:
      return deleteRecords();
    case Command::Znajdz:
      return dlgZnajdz::open(session_, *this);
    case Command::Filtr:
      dlgFiltrUstaw(session_, *this, window()).exec();
      return;
    case Command::ZaznaczWiersze:
      return markRows();
    case Command::KopiujWiersze:
      return copyMarkedRows(false);
    default:
      return;
  }
}

void KarForm::closeWindow() {
  if (auto* window = qobject_cast<QMdiSubWindow*>(parentWidget()))
    window->close();
  else
    close();
}

void KarForm::markRows() {
  session_.setStatusText(QStringLiteral("Zaznaczanie wierszy..."));
  grid_->selectAll();
  session_.setStatusText({});
}

void KarForm::copyMarkedRows(bool currentToo) {
  guarded(session_, "KopiujWiersze", [this, currentToo] {
    QList<int> rows = grid_->selectedRows();
    const bool marked = rows.size() > 1;
    if (!marked && !(currentToo && rows.size() == 1)) {
      rows.resize(model_->rows());
      std::iota(rows.begin(), rows.end(), 0);
    }
    const Busy busy(*this);
    int done = 0;
    const QString text = copyRows(session_, *model_, rows, grid_->shownColumns(), done);
    QApplication::clipboard()->setText(text);
    if (!marked) return;
    if (done < rows.size())
      grid_->selectRows(rows.sliced(done));
    else
      grid_->goToRow(grid_->currentRow());
  });
}

void KarForm::addQuickText(QLineEdit* field) {
  field->setClearButtonEnabled(true);
  field->installEventFilter(this);
  connect(field, &QLineEdit::textChanged, this, [this] {
    if (loading_ == 0) quickDelay_.start(lastQuery_ > kSlow ? kSlowDelay : kQuickDelay);
  });
  connect(field, &QLineEdit::returnPressed, this, &KarForm::requery);
}

void KarForm::addQuickCombo(QComboBox* combo) {
  if (combo->lineEdit()) combo->lineEdit()->installEventFilter(this);
  combo->installEventFilter(this);
  connect(combo, &QComboBox::currentIndexChanged, this, [this, combo] {
    if (combo->lineEdit()) combo->lineEdit()->home(false);  // the beginning tells more than the end
    if (loading_ == 0) requery();
  });
}

bool KarForm::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    auto* field = qobject_cast<QLineEdit*>(watched);
    auto* combo = qobject_cast<QComboBox*>(field ? field->parent() : watched);
    if (combo && key == Qt::Key_Escape && !combo->currentText().isEmpty()) {
      combo->setCurrentIndex(0);
      if (field) field->clear();
      return true;
    }
    if (field && !combo && key == Qt::Key_Escape && !field->text().isEmpty()) {
      field->clear();
      requery();
      return true;
    }
    if (field && !combo && (key == Qt::Key_Down || key == Qt::Key_PageDown)) {
      if (quickDelay_.isActive()) requery();
      grid_->setFocus();
      return true;
    }
  }
  return ChildForm::eventFilter(watched, event);
}

void KarForm::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) {
    if (focusWidget() == grid_ && grid_->selectedRows().size() > 1)
      grid_->goToRow(grid_->currentRow());
    else
      closeWindow();
    return;
  }
  if (event->key() == Qt::Key_F5) return KarRefresh();
  if (event->key() == Qt::Key_F3 && supports(Command::Znajdz)) return dlgZnajdz::repeat(session_, *this);
  ChildForm::keyPressEvent(event);
}

}  // namespace tandeko
