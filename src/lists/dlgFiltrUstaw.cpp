#include "lists/dlgFiltrUstaw.h"

#include "errors/error_reporter.h"
#include "lists/dlgFiltrEdycja.h"
#include "ui_dlgFiltrUstaw.h"

namespace tandeko {

dlgFiltrUstaw::dlgFiltrUstaw(Session& session, KarForm& caller, QWidget* parent)
    : QDialog(parent),
      session_(session),
      caller_(caller),
      store_(session.registry(), caller.RegSection()),
      ui_(std::make_unique<Ui::dlgFiltrUstaw>()) {
  ui_->setupUi(this);
  setWindowTitle(QStringLiteral("Filtry: ") + caller.windowTitle());
  ui_->labOpis->setMinimumHeight(ui_->labOpis->fontMetrics().lineSpacing() * 3);
  connect(ui_->lstFiltr, &QListWidget::currentRowChanged, this, &dlgFiltrUstaw::selectionChanged);
  connect(ui_->lstFiltr, &QListWidget::itemDoubleClicked, ui_->cmdOK, &QPushButton::click);
  connect(ui_->cmdNowy, &QPushButton::clicked, this, [this] { edit(true); });
  connect(ui_->cmdPopraw, &QPushButton::clicked, this, [this] { edit(false); });
  connect(ui_->cmdUsun, &QPushButton::clicked, this, &dlgFiltrUstaw::removeFilter);
  connect(ui_->cmdZastosuj, &QPushButton::clicked, this, &dlgFiltrUstaw::apply);
  connect(ui_->cmdOK, &QPushButton::clicked, this, [this] {
    apply();
    accept();
  });
  connect(ui_->cmdAnuluj, &QPushButton::clicked, this, &QDialog::reject);
  fill(caller.filter().name);
}

dlgFiltrUstaw::~dlgFiltrUstaw() = default;

void dlgFiltrUstaw::fill(const QString& selected) {
  const int before = ui_->lstFiltr->currentRow();
  const QStringList names = store_.names();
  ui_->lstFiltr->clear();
  ui_->lstFiltr->addItems(names);
  const auto at = static_cast<int>(names.indexOf(selected));
  if (!names.isEmpty()) ui_->lstFiltr->setCurrentRow(at >= 0 ? at : qBound(0, before, int(names.size()) - 1));
  selectionChanged();
}

QString dlgFiltrUstaw::selectedFilter() const {
  const QListWidgetItem* item = ui_->lstFiltr->currentItem();
  return item ? item->text() : QString();
}

void dlgFiltrUstaw::selectionChanged() {
  const QString name = selectedFilter();
  for (QPushButton* button : {ui_->cmdPopraw, ui_->cmdUsun, ui_->cmdZastosuj})
    button->setEnabled(!name.isEmpty());
  ui_->labOpis->setText(name.isEmpty()
                            ? QStringLiteral("Brak filtrów. Utwórz pierwszy przyciskiem „Nowy...”.")
                            : filterTexts(store_.load(name)).description);
}

void dlgFiltrUstaw::edit(bool isNew) {
  dlgFiltrEdycja editor(session_, caller_, isNew ? QString() : selectedFilter(), this);
  if (editor.exec() == QDialog::Accepted) fill(editor.filterName());
}

void dlgFiltrUstaw::removeFilter() {
  const QString name = selectedFilter();
  if (name.isEmpty() || !session_.messages().ask(QStringLiteral("Filtr: ") + name +
                                                 QStringLiteral(" zostanie usunięty z listy. Usunąć filtr?")))
    return;
  store_.remove(name);
  fill({});
}

void dlgFiltrUstaw::apply() {
  const QString name = selectedFilter();
  const FilterTexts texts = filterTexts(store_.load(name));
  if (texts.any()) caller_.KarRefresh(name, texts.condition, texts.sums, texts.description, true);
}

}  // namespace tandeko
