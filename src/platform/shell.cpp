#include "platform/shell.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

#ifdef Q_OS_WIN
#include <windows.h>

#include <htmlhelp.h>
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

// HTML Help's one function; none on a system without HTML Help.
using HtmlHelpFunction = HWND(WINAPI*)(HWND, LPCWSTR, UINT, DWORD_PTR);
const wchar_t kHtmlHelpLibrary[] = L"hhctrl.ocx";

HtmlHelpFunction htmlHelpOf(HMODULE library) {
  return library ? reinterpret_cast<HtmlHelpFunction>(
                       reinterpret_cast<void (*)()>(GetProcAddress(library, "HtmlHelpW")))
                 : nullptr;
}

bool showHelp(const QString& path, HelpView view) {
  const HtmlHelpFunction help =
      htmlHelpOf(LoadLibraryExW(kHtmlHelpLibrary, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
  const UINT command = view == HelpView::Index ? HH_DISPLAY_INDEX : HH_DISPLAY_TOC;
  return help && help(nullptr, reinterpret_cast<const wchar_t*>(path.utf16()), command, 0);
}

void closeHelp() {
  if (const HtmlHelpFunction help = htmlHelpOf(GetModuleHandleW(kHtmlHelpLibrary)))
    help(nullptr, nullptr, HH_CLOSE_ALL, 0);
}

#else

bool showHelp(const QString&, HelpView) { return false; }
void closeHelp() {}

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

SystemShell::~SystemShell() { closeHelp(); }

ShellResult SystemShell::openDocument(const QString& path) {
  const QFileInfo file(path);
  if (!file.exists()) return ShellResult::NotFound;
  if (!file.isReadable()) return ShellResult::NoAccess;
  return openByShell(QDir::toNativeSeparators(file.absoluteFilePath()));
}

ShellResult SystemShell::openHelp(const QString& path, HelpView view) {
  const QFileInfo file(path);
  if (file.isReadable() && showHelp(QDir::toNativeSeparators(file.absoluteFilePath()), view))
    return ShellResult::Done;
  return openDocument(path);
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
