#include "lists/dlgZnajdz.h"

#include <QApplication>
#include <QKeyEvent>

#include "errors/error_reporter.h"
#include "lists/long_work.h"
#include "lists/row_search.h"
#include "ui_dlgZnajdz.h"

namespace tandeko {

namespace {

// Forms for entering data, which are never searched.
bool isDataEntry(const ChildForm& form) { return form.formName().startsWith(u"daj"); }

}  // namespace

dlgZnajdz& dlgZnajdz::of(Session& session, KarForm& caller) {
  QWidget* frame = session.frame() ? session.frame()->window() : nullptr;
  QWidget* parent = frame ? frame : caller.window();
  auto* dialog = parent->findChild<dlgZnajdz*>(QStringLiteral("dlgZnajdz"), Qt::FindDirectChildrenOnly);
  if (!dialog) dialog = new dlgZnajdz(session, parent);
  dialog->setCaller(caller);
  return *dialog;
}

void dlgZnajdz::open(Session& session, KarForm& caller) {
  if (isDataEntry(caller)) return;
  dlgZnajdz& dialog = of(session, caller);
  dialog.ui_->labWynik->clear();
  dialog.ui_->txtSzukaj->selectAll();
  dialog.ui_->txtSzukaj->setFocus();
  dialog.show();
  dialog.raise();
  dialog.activateWindow();
}

void dlgZnajdz::repeat(Session& session, KarForm& caller) {
  if (isDataEntry(caller)) return;
  dlgZnajdz& dialog = of(session, caller);
  if (dialog.ui_->txtSzukaj->text().isEmpty())
    open(session, caller);
  else
    dialog.search();
}

dlgZnajdz::dlgZnajdz(Session& session, QWidget* parent)
    : QDialog(parent), session_(session), ui_(std::make_unique<Ui::dlgZnajdz>()) {
  ui_->setupUi(this);
  connect(ui_->cmdSzukaj, &QPushButton::clicked, this, &dlgZnajdz::search);
  connect(ui_->cmdAnuluj, &QPushButton::clicked, this, &dlgZnajdz::reject);
}

dlgZnajdz::~dlgZnajdz() = default;

void dlgZnajdz::setCaller(KarForm& caller) {
  if (caller_ == &caller || searching_) return;
  caller_ = &caller;
  // Without the list there is nothing to search.
  connect(&caller, &QObject::destroyed, this, [this] {
    if (!caller_) hide();
  });
  ui_->cmbKolumna->clear();
  ui_->cmbKolumna->addItem(QStringLiteral("... (wszystkie)"));
  for (const ListColumn& column : caller.DataSource().columns()) ui_->cmbKolumna->addItem(column.caption);
  ui_->cmbKolumna->setCurrentIndex(0);
  ui_->labWynik->clear();
}

bool dlgZnajdz::search() {
  if (searching_ || !caller_ || ui_->txtSzukaj->text().isEmpty()) return false;
  Outcome outcome = Outcome::NotFound;
  guarded(session_, "cmdSzukaj_Click", [&] {
    const int rows = caller_->DataSource().rows();
    if (rows == 0) {
      ui_->labWynik->setText(QStringLiteral("Lista nie zawiera wierszy."));
      return;
    }
    const int start = caller_->grid().currentRow() + 1;
    outcome = walk(start, rows);
    if (outcome == Outcome::NotFound &&
        session_.messages().ask(
            QStringLiteral("Osiągnięty został ostatni wiersz tabeli. Chcesz rozpocząć przesukiwanie od "
                           "początku tabeli?"),
            {}, Answer::Yes) &&
        caller_)
      outcome = walk(0, std::min(start, caller_->DataSource().rows()));
    finish(outcome);
  });
  if (outcome == Outcome::NotFound) QApplication::beep();
  return outcome == Outcome::Found;
}

dlgZnajdz::Outcome dlgZnajdz::walk(int from, int to) {
  ListGrid& grid = caller_->grid();
  const int chosen = ui_->cmbKolumna->currentIndex() - 1;
  const RowSearch search(caller_->DataSource(), ui_->txtSzukaj->text(),
                         chosen >= 0 ? QList<int>{chosen} : grid.shownColumns());
  const KarForm::Busy busy(*caller_);
  LongWork work(session_, QStringLiteral("Wyszukiwanie..."), this);
  searching_ = true;
  stop_ = false;
  ui_->cmdSzukaj->setEnabled(false);
  Outcome outcome = Outcome::NotFound;
  for (int row = from; row < to; ++row) {
    const bool escape =
        work.step([&] { return QStringLiteral("Wyszukiwanie... wiersz %1 z %2").arg(row + 1).arg(to); });
    if (escape || stop_) {
      outcome = Outcome::Stopped;
      break;
    }
    if (const int column = search.columnIn(row); column >= 0) {
      grid.goToRow(row, column);
      outcome = Outcome::Found;
      break;
    }
  }
  searching_ = false;
  ui_->cmdSzukaj->setEnabled(true);
  return outcome;
}

void dlgZnajdz::finish(Outcome outcome) {
  switch (outcome) {
    case Outcome::Found:
      ui_->labWynik->setText(
          QStringLiteral("Znaleziono w wierszu %1.").arg(caller_->grid().currentRow() + 1));
      if (ui_->cbUkryj->isChecked()) hide();
      return;
    case Outcome::NotFound:
      return ui_->labWynik->setText(QStringLiteral("Nie znaleziono szukanego tekstu."));
    case Outcome::Stopped:
      return ui_->labWynik->setText(QStringLiteral("Wyszukiwanie przerwane."));
  }
}

void dlgZnajdz::reject() {
  stop_ = true;
  QDialog::reject();
}

bool dlgZnajdz::event(QEvent* event) {
  if (event->type() == QEvent::WindowActivate && session_.frame())
    if (auto* active = qobject_cast<KarForm*>(session_.frame()->activeForm());
        active && !isDataEntry(*active))
      setCaller(*active);
  return QDialog::event(event);
}

void dlgZnajdz::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_F3)
    search();
  else
    QDialog::keyPressEvent(event);
}

}  // namespace tandeko
