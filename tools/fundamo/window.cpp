#include "window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include "jet/format/error.h"
#include "platform/text.h"
#include "structure/create.h"
#include "structure/mend.h"
#include "structure/upgrade.h"

using namespace tandeko;
using Outcome = structure::UpgradeResult::Outcome;

namespace {

constexpr int kWrongPassword = 3031;

FileChoice databaseChoice(const QString& title) {
  return {title, {}, QStringLiteral("Baza danych MS Access (*.mdb)"), QStringLiteral("mdb"), {}};
}

QString shown(const std::filesystem::path& path) { return QDir::toNativeSeparators(fromPath(path)); }

}  // namespace

Window::Window(MessageService& messages)
    : messages_(messages),
      create_(new QPushButton(QStringLiteral("&Utwórz bazę"))),
      upgrade_(new QPushButton(QStringLiteral("&Aktualizuj, napraw bazę"))),
      step_(new QLabel(QStringLiteral("Wybierz polecenie."))),
      progress_(new QProgressBar),
      report_(new QPlainTextEdit) {
  setWindowTitle(QStringLiteral("Fundamo bazy"));
  create_->setObjectName(QStringLiteral("cmdUtworz"));
  upgrade_->setObjectName(QStringLiteral("cmdAktualizuj"));
  report_->setObjectName(QStringLiteral("txtRaport"));
  report_->setReadOnly(true);
  report_->setPlaceholderText(QStringLiteral("Tu pojawi się sprawozdanie."));
  create_->setToolTip(QStringLiteral("Zakłada nową, pustą bazę firmy"));
  upgrade_->setToolTip(
      QStringLiteral("Naprawia uszkodzony plik i uzupełnia brakujące części bazy; przedtem robi kopię"));
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(create_);
  buttons->addWidget(upgrade_);
  buttons->addStretch();
  auto* all = new QVBoxLayout(this);
  all->addLayout(buttons);
  all->addWidget(step_);
  all->addWidget(progress_);
  all->addWidget(report_);
  report_->setAccessibleName(QStringLiteral("Sprawozdanie"));
  report_->setTabChangesFocus(true);
  progress_->setAccessibleName(QStringLiteral("Postęp"));
  resize(fontMetrics().averageCharWidth() * 90, fontMetrics().height() * 22);
  connect(create_, &QPushButton::clicked, this, &Window::createDatabase);
  connect(upgrade_, &QPushButton::clicked, this, &Window::upgradeDatabase);
}

void Window::createDatabase() {
  const QString file = messages_.saveFile(databaseChoice(QStringLiteral("Utwórz bazę")));
  if (file.isEmpty()) return;
  report_->clear();
  setBusy(true);
  showProgress(0, 1, QStringLiteral("Tworzenie bazy..."));
  try {
    structure::createDatabase(toPath(file));
    tell(QStringLiteral("Utworzono bazę: ") + QDir::toNativeSeparators(file));
    showProgress(1, 1, QStringLiteral("Gotowe."));
  } catch (const std::exception& failure) {
    showFailure(QStringLiteral("Nie utworzono bazy: ") + QDir::toNativeSeparators(file), failure);
  }
  setBusy(false);
}

void Window::upgradeDatabase() {
  const QString file = messages_.openFile(databaseChoice(QStringLiteral("Aktualizuj, napraw bazę")));
  if (file.isEmpty()) return;
  report_->clear();
  QString password;
  while (!tryUpgrade(file, password)) {
    bool confirmed = false;
    password =
        QInputDialog::getText(this, QFileInfo(file).completeBaseName(), QStringLiteral("Podaj hasło bazy:"),
                              QLineEdit::Password, {}, &confirmed);
    if (!confirmed) return;
  }
}

bool Window::tryUpgrade(const QString& file, const QString& password) {
  setBusy(true);
  bool known = true;
  try {
    showProgress(0, 1, QStringLiteral("Sprawdzanie pliku..."));
    mend(file, password);
    upgrade(file, password);
    showProgress(1, 1, QStringLiteral("Gotowe."));
  } catch (const jet::Error& error) {
    known = error.number() != kWrongPassword;
    if (known)
      showFailure(QStringLiteral("Nie zaktualizowano bazy: ") + QDir::toNativeSeparators(file), error);
  } catch (const std::exception& failure) {
    showFailure(QStringLiteral("Nie zaktualizowano bazy: ") + QDir::toNativeSeparators(file), failure);
  }
  setBusy(false);
  return known;
}

void Window::mend(const QString& file, const QString& password) {
  const auto result = structure::mendDatabase(toPath(file), toU16(password), [this](double done) {
    showProgress(static_cast<int>(done * 100), 100, QStringLiteral("Naprawa pliku..."));
  });
  tell(QStringLiteral("Baza: ") + QDir::toNativeSeparators(file));
  if (!result.mended) return tell(QStringLiteral("Plik bazy jest nieuszkodzony."));
  tell(QStringLiteral("Kopia uszkodzonego pliku: ") + shown(result.copy));
  for (const auto& line : result.report) tell(toQString(line));
  tell(result.lossless ? QStringLiteral("Plik bazy został naprawiony, niczego nie utracono.")
                       : QStringLiteral("Plik bazy został naprawiony."));
}

void Window::upgrade(const QString& file, const QString& password) {
  const auto result = structure::upgradeDatabase(toPath(file), toU16(password),
                                                 [this](int done, int total, const std::u16string& what) {
                                                   showProgress(done, total, toQString(what));
                                                 });
  if (!result.copy.empty()) tell(QStringLiteral("Kopia sprzed aktualizacji: ") + shown(result.copy));
  for (const auto& line : result.report) tell(toQString(line));
  if (result.outcome == Outcome::Current) tell(QStringLiteral("Struktura bazy jest aktualna."));
  if (result.outcome == Outcome::Upgraded) tell(QStringLiteral("Struktura bazy została zaktualizowana."));
}

void Window::tell(const QString& line) { report_->appendPlainText(line); }

void Window::showFailure(const QString& what, const std::exception& failure) {
  const auto* error = dynamic_cast<const jet::Error*>(&failure);
  const QString why = error ? toQString(structure::explain(*error)) : QString::fromUtf8(failure.what());
  showProgress(0, 1, QStringLiteral("Nie udało się."));
  tell(what + u'\n' + why);
  messages_.refuse(what + QStringLiteral(".\n\nPrzyczyna: ") + why + u'.');
}

// The window is drawn between the steps of the work; clicks wait until its end.
void Window::showProgress(int done, int total, const QString& what) {
  progress_->setRange(0, total);
  progress_->setValue(done);
  step_->setText(what);
  QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void Window::setBusy(bool busy) {
  busy_ = busy;
  create_->setEnabled(!busy);
  upgrade_->setEnabled(!busy);
  if (busy)
    QApplication::setOverrideCursor(Qt::WaitCursor);
  else
    QApplication::restoreOverrideCursor();
}

// The work is not broken off.
void Window::closeEvent(QCloseEvent* event) { event->setAccepted(!busy_); }
