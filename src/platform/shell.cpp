#include "platform/shell.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#ifdef Q_OS_WIN
#include <QApplication>
#include <QWidget>

#include <windows.h>

#include <htmlhelp.h>
#include <shellapi.h>

#include <array>
#endif

namespace tandeko {

namespace {

#ifdef Q_OS_WIN

constexpr qsizetype kShellPath = MAX_PATH - 1;  // characters

// The shell takes no longer paths, but short names of folders. (A file's short name has another extension.)
// `path` itself where the drive keeps none.
QString pathForShell(const QString& path) {
  if (path.size() <= kShellPath) return path;
  const auto name = path.lastIndexOf(u'\\');
  const bool server = path.startsWith(u"\\\\");
  const QString folder = (server ? QStringLiteral("\\\\?\\UNC") + path.mid(1, name - 1)
                                 : QStringLiteral("\\\\?\\") + path.first(name));
  std::array<wchar_t, MAX_PATH + 16> buffer{};
  const DWORD size = GetShortPathNameW(reinterpret_cast<const wchar_t*>(folder.utf16()), buffer.data(),
                                       static_cast<DWORD>(buffer.size()));
  if (size == 0 || size >= buffer.size()) return path;
  const QString shortened = QString::fromWCharArray(buffer.data(), static_cast<qsizetype>(size));
  return (server ? u'\\' + shortened.mid(7) : shortened.mid(4)) + path.mid(name);
}

// A file that another program has open and does not share is accessible all the same.
bool mayRead(const QString& path) {
  const HANDLE file = CreateFileW(reinterpret_cast<const wchar_t*>(path.utf16()), GENERIC_READ,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) return GetLastError() != ERROR_ACCESS_DENIED;
  CloseHandle(file);
  return true;
}

HWND activeWindow() {
  const QWidget* window = QApplication::activeWindow();
  return window ? reinterpret_cast<HWND>(window->winId()) : nullptr;
}

// The shell's own boxes stay away: the caller has words for each failure. (The application object has
// prepared COM on this thread, which openers may need.)
ShellResult openByShell(const QString& what) {
  SHELLEXECUTEINFOW call{};
  call.cbSize = sizeof call;
  call.fMask = SEE_MASK_FLAG_NO_UI;
  call.hwnd = activeWindow();
  call.lpVerb = L"open";
  call.lpFile = reinterpret_cast<const wchar_t*>(what.utf16());
  call.nShow = SW_SHOWNORMAL;
  if (ShellExecuteExW(&call)) return ShellResult::Done;
  switch (reinterpret_cast<INT_PTR>(call.hInstApp)) {
    case SE_ERR_FNF:
    case SE_ERR_PNF:
    case ERROR_BAD_NETPATH:
      return ShellResult::NotFound;
    case SE_ERR_ACCESSDENIED:
      // Also when the user, whom the system asked, called it off.
      return GetLastError() == ERROR_CANCELLED ? ShellResult::Done : ShellResult::NoAccess;
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
QString pathForShell(const QString& path) { return path; }
bool mayRead(const QString& path) { return QFileInfo(path).isReadable(); }

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
  const QString whole = QDir::toNativeSeparators(file.absoluteFilePath());
  return mayRead(whole) ? openByShell(pathForShell(whole)) : ShellResult::NoAccess;
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
