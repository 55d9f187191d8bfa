#include "database/structure_update.h"

#include <QApplication>
#include <QFileInfo>

#include "session/names.h"

namespace tandeko {

namespace {

const QString kStatus = QStringLiteral("Aktualizacja status");
const QString kRunning = QStringLiteral("?");
const QString kDone = QStringLiteral("Ok");
const QString kFailed = QStringLiteral("Error");
constexpr qint64 kPatience = 30000;  // milliseconds
constexpr int kPause = 50;           // milliseconds

// Lets the window repaint until the tool has answered; gives the last answer seen.
QString waitForTool(Session& session) {
  const qint64 deadline = session.clock().ticks() + kPatience;
  for (;;) {
    const QString status = session.registry().read(kStructureToolKey, kStatus);
    if (status == kDone || status == kFailed || session.clock().ticks() - deadline >= 0) return status;
    session.clock().idle(kPause);
  }
}

}  // namespace

QString structureToolFile() {
#ifdef Q_OS_WIN
  return QStringLiteral("Fundamo.exe");
#else
  return QStringLiteral("fundamo");
#endif
}

QString packageProgram(Session& session, const QString& file) {
  for (const QString& folder :
       {session.settings().program().folderPrograms, session.settings().ownFolder()}) {
    const QString path = folder + u'/' + file;
    if (!folder.isEmpty() && QFileInfo(path).isFile()) return path;
  }
  return {};
}

bool updateStructure(Session& session, const QString& path, const QString& databaseName) {
  const QString tool = packageProgram(session, structureToolFile());
  if (tool.isEmpty()) {
    session.messages().inform(
        QStringLiteral(
            "Nie można zlokalizować programu Fundamo bazy (Fundamo.exe). Plik ten powinien znajdować "
            "się w katalogu programów pakietu Lorvel: ") +
        session.settings().program().folderPrograms);
    return false;
  }
  session.setStatusText(QStringLiteral("Aktualizacja struktury bazy: ") + databaseName +
                        QStringLiteral("... (proszę nie przerywać działania programu)"));
  QApplication::setOverrideCursor(Qt::WaitCursor);
  session.registry().write(kStructureToolKey, kStatus, kRunning);
  const bool started = session.shell().startProgram(tool, {QStringLiteral("A|") + path}) == ShellResult::Done;
  const QString status = started ? waitForTool(session) : kFailed;
  QApplication::restoreOverrideCursor();
  session.setStatusText({});
  if (status == kDone) return true;
  session.messages().fail(QStringLiteral("Aktualizacja bazy: ") + databaseName +
                          QStringLiteral(" nie powiodła się. Aby sprawdzić przyczynę błędu uruchom program "
                                         "Fundamo bazy, wybierz opcję: Aktualizuj, napraw bazę."));
  return false;
}

}  // namespace tandeko
