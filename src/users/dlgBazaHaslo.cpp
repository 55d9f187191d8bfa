#include "users/dlgBazaHaslo.h"

#include "ui_dlgBazaHaslo.h"

namespace tandeko {

dlgBazaHaslo::dlgBazaHaslo(Session& session, Mode mode, const QString& caption, QWidget* parent)
    : QDialog(parent), session_(session), mode_(mode), ui_(std::make_unique<Ui::dlgBazaHaslo>()) {
  ui_->setupUi(this);
  setWindowTitle(caption);
  ui_->txtHaslo->setMinimumWidth(fontMetrics().averageCharWidth() * 32);
  const bool twice = mode == Mode::NewUser;
  ui_->labPotwierdz->setVisible(twice);
  ui_->txtPotwierdz->setVisible(twice);
  ui_->cbZapisz->setVisible(!twice);
  if (twice) ui_->labPytanie->setText(QStringLiteral("Podaj nowe hasło"));
  connect(ui_->cmdOK, &QPushButton::clicked, this, &dlgBazaHaslo::confirm);
  connect(ui_->cmdAnuluj, &QPushButton::clicked, this, &QDialog::reject);
}

dlgBazaHaslo::~dlgBazaHaslo() = default;

QString dlgBazaHaslo::password() const { return ui_->txtHaslo->text(); }

bool dlgBazaHaslo::keep() const { return mode_ == Mode::Open && ui_->cbZapisz->isChecked(); }

void dlgBazaHaslo::confirm() {
  if (mode_ == Mode::Open && password().isEmpty()) {
    session_.messages().refuse(QStringLiteral("Wprowadź haslo dostępu do bazy lub naciśnij Anuluj."));
    ui_->txtHaslo->setFocus();
    return;
  }
  if (mode_ == Mode::NewUser && password() != ui_->txtPotwierdz->text()) {
    session_.messages().refuse(QStringLiteral(
        "Hasła wprowadzone w polach: 'Wprowadź' i 'Potwierdź' muszą być identyczne. Popraw hasło i spróbuj "
        "ponownie."));
    ui_->txtPotwierdz->selectAll();
    ui_->txtPotwierdz->setFocus();
    return;
  }
  accept();
}

}  // namespace tandeko
