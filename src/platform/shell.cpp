#include "platform/shell.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

#ifdef Q_OS_WIN
#include <windows.h>

#include <shellapi.h>
#endif

namespace tandeko {

namespace {

#ifdef Q_OS_WIN

ShellResult openByShell(const QString& what) {
  const auto code = reinterpret_cast<INT_PTR>(ShellExecuteW(
      nullptr, L"open", reinterpret_cast<const wchar_t*>(what.utf16()), nullptr, nullptr, SW_SHOWNORMAL));
  if (code > 32) return ShellResult::Done;
  switch (code) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
      return ShellResult::NotFound;
    case SE_ERR_ACCESSDENIED:
      return ShellResult::NoAccess;
    case SE_ERR_NOASSOC:
    case SE_ERR_ASSOCINCOMPLETE:
      return ShellResult::NoProgram;
    default:
      return ShellResult::Failed;
  }
}

#else

// The opener of the desktop ends at once when it hands over to a running desktop; without one it stays
// until the viewer ends, so only a quick end tells of a failure.
constexpr int kOpenerPatience = 1500;  // milliseconds

ShellResult openByShell(const QString& what) {
  const QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
  if (opener.isEmpty()) return ShellResult::NoProgram;
  auto* process = new QProcess;
  QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
  process->setStandardOutputFile(QProcess::nullDevice());
  process->setStandardErrorFile(QProcess::nullDevice());
  process->start(opener, {what});
  if (!process->waitForStarted()) {
    delete process;
    return ShellResult::Failed;
  }
  if (!process->waitForFinished(kOpenerPatience)) return ShellResult::Done;
  switch (process->exitCode()) {
    case 0:
      return ShellResult::Done;
    case 2:
      return ShellResult::NotFound;
    case 3:
      return ShellResult::NoProgram;
    case 4:
      return ShellResult::NoProgram;
    default:
      return ShellResult::Failed;
  }
}

#endif

}  // namespace

ShellResult SystemShell::openDocument(const QString& path) {
  const QFileInfo file(path);
  if (!file.exists()) return ShellResult::NotFound;
  if (!file.isReadable()) return ShellResult::NoAccess;
  return openByShell(QDir::toNativeSeparators(file.absoluteFilePath()));
}

ShellResult SystemShell::openAddress(const QString& address) { return openByShell(address); }

ShellResult SystemShell::startProgram(const QString& program, const QStringList& arguments) {
  const QFileInfo file(program);
  if (!file.exists()) return ShellResult::NotFound;
  if (!file.isExecutable()) return ShellResult::NoAccess;
  return QProcess::startDetached(file.absoluteFilePath(), arguments, file.absolutePath())
             ? ShellResult::Done
             : ShellResult::Failed;
}

}  // namespace tandeko
