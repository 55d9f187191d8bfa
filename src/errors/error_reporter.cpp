#include "errors/error_reporter.h"

#include <QApplication>
#include <cstdlib>

#include "errors/dlgError.h"
#include "errors/error_files.h"

namespace tandeko {

namespace {

QString descriptionsFolder(Session& session) {
  const QString folder = session.settings().stored(QStringLiteral("Folder pakiet"));
  return folder.isEmpty() ? session.settings().ownFolder() : folder;
}

void show(Session& session, const Failure& failure, const QString& explanation) {
  if (session.failureView()) return session.failureView()->showFailure(failure, explanation);
  QApplication::setOverrideCursor(Qt::ArrowCursor);
  dlgError dialog(session, failure, explanation, session.frame() ? session.frame()->window() : nullptr);
  const int answer = dialog.exec();
  QApplication::restoreOverrideCursor();
  // At once: nothing of this session is to be saved, and an open transaction is undone by the next opener.
  if (answer == QDialog::Rejected) std::_Exit(EXIT_FAILURE);
}

}  // namespace

void reportFailure(Session& session, const Failure& failure) {
  try {
    const QString explanation = describeFailure(descriptionsFolder(session), failure.kind(), failure.number);
    if (session.settings().stored(QStringLiteral("Zapisz błędy"), QStringLiteral("0")) == u"1")
      logFailure(errorLogPath(), failure, session.clock().now());
    show(session, failure, explanation);
  } catch (...) {
    // The reporter never reports its own failures.
  }
}

}  // namespace tandeko
