#include "errors/dlgError.h"

#include <QStyle>

#include "errors/support_letter.h"
#include "ui_dlgError.h"

namespace tandeko {

namespace {

const QString kLogSetting = QStringLiteral("Zapisz błędy");

}  // namespace

dlgError::dlgError(Session& session, const Failure& failure, const QString& explanation, QWidget* parent)
    : QDialog(parent),
      session_(session),
      failure_(failure),
      explanation_(explanation),
      ui_(std::make_unique<Ui::dlgError>()) {
  ui_->setupUi(this);
  const QFontMetrics metrics(font());
  const int iconSize = style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
  ui_->imgBlad->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxCritical).pixmap(iconSize));
  ui_->imgBlad->setFixedWidth(iconSize + metrics.averageCharWidth());
  ui_->labOpis2->setText(explanation);
  // On a small screen a wrapped text would be the first to be cut.
  const int width = metrics.averageCharWidth() * 75;
  ui_->labOpis2->setMinimumSize(width, ui_->labOpis2->heightForWidth(width));
  ui_->txtNumer->setText(QString::number(failure.number));
  ui_->txtZrodlo->setText(failure.source);
  ui_->txtOpis1->setPlainText(failure.description + QStringLiteral(" [") + failure.procedure + u']');
  ui_->txtOpis1->setFixedHeight(metrics.lineSpacing() * 4);
  ui_->cbZapisz->setChecked(session.settings().stored(kLogSetting, QStringLiteral("0")) == u"1");

  connect(ui_->cbZapisz, &QCheckBox::toggled, this, [this](bool on) {
    session_.settings().store(kLogSetting, on ? QStringLiteral("1") : QStringLiteral("0"));
  });
  connect(ui_->cmdKontynuuj, &QPushButton::clicked, this, &QDialog::accept);
  connect(ui_->cmdPrzerwij, &QPushButton::clicked, this, &dlgError::stop);
  connect(ui_->cmdWyslij, &QPushButton::clicked, this, &dlgError::send);
}

dlgError::~dlgError() = default;

void dlgError::stop() {
  const bool sure = session_.messages().ask(QStringLiteral(
      "Nastąpi przerwanie działania programu. Wszystkie niezapisane dane zostaną utracone. Kontynuować?"));
  if (sure) done(QDialog::Rejected);
}

void dlgError::send() {
  if (!sendFailureReport(session_, failure_, explanation_))
    session_.messages().refuse(QStringLiteral("Nie można uruchomić programu poczty elektronicznej."));
}

}  // namespace tandeko
