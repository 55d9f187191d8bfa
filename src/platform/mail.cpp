#include "platform/mail.h"

#include <QDir>
#include <QEventLoop>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

#ifdef Q_OS_WIN
#include <windows.h>

// After windows.h.
#include <mapi.h>
#include <objbase.h>

#include <string>
#include <thread>
#include <vector>
#endif

namespace tandeko {

namespace {

QString encoded(const QString& text) { return QString::fromLatin1(QUrl::toPercentEncoding(text)); }

#ifdef Q_OS_WIN

// Simple MAPI with wide texts, which the system makes narrow for mail programs that know no others; the
// compiler's headers have only the narrow one.
struct WideRecipient {
  ULONG reserved, kind;
  const wchar_t *name, *address;
  ULONG entrySize;
  void* entry;
};
struct WideFile {
  ULONG reserved, flags, position;
  const wchar_t *path, *name;
  void* type;
};
struct WideMessage {
  ULONG reserved;
  const wchar_t *subject, *text, *type, *received, *conversation;
  FLAGS flags;
  WideRecipient* originator;
  ULONG recipients;
  WideRecipient* recipient;
  ULONG files;
  WideFile* file;
};
using SendWide = ULONG(FAR PASCAL*)(LHANDLE, ULONG_PTR, WideMessage*, FLAGS, ULONG);

constexpr ULONG kNowhere = static_cast<ULONG>(-1);  // an attachment that stands at no place of the text
constexpr FLAGS kAsk = MAPI_DIALOG | MAPI_LOGON_UI;

ULONG sendWide(SendWide send, const Letter& letter) {
  const std::wstring subject = letter.subject.toStdWString(), body = letter.body.toStdWString(),
                     name = letter.to.toStdWString(), address = L"SMTP:" + name;
  WideRecipient recipient{0, MAPI_TO, name.c_str(), address.c_str(), 0, nullptr};
  std::vector<std::wstring> paths;
  for (const QString& path : letter.attachments)
    paths.push_back(QDir::toNativeSeparators(path).toStdWString());
  std::vector<WideFile> files;
  for (const std::wstring& path : paths) files.push_back({0, 0, kNowhere, path.c_str(), nullptr, nullptr});
  WideMessage message{};
  message.subject = subject.c_str();
  message.text = body.c_str();
  message.recipients = letter.to.isEmpty() ? 0 : 1;
  message.recipient = letter.to.isEmpty() ? nullptr : &recipient;
  message.files = static_cast<ULONG>(files.size());
  message.file = files.empty() ? nullptr : files.data();
  return send(0, 0, &message, kAsk, 0);
}

// Whether the user or the machine has a mail program that MAPI could start. The system's library is there
// without one, too, and would say so in a box of its own.
bool hasMailProgram() {
  for (const HKEY branch : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
    wchar_t name[256] = L"";
    DWORD size = sizeof name;
    const LONG status =
        RegGetValueW(branch, L"Software\\Clients\\Mail", nullptr, RRF_RT_REG_SZ, nullptr, name, &size);
    if (status == ERROR_MORE_DATA || (status == ERROR_SUCCESS && name[0] != L'\0')) return true;
  }
  return false;
}

ULONG send(const Letter& letter) {
  const HMODULE library = LoadLibraryExW(L"mapi32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  if (!library) return MAPI_E_FAILURE;
  const auto wide = reinterpret_cast<SendWide>(
      reinterpret_cast<void (*)()>(GetProcAddress(library, "MAPISendMailW")));
  const ULONG status = wide ? sendWide(wide, letter) : ULONG{MAPI_E_NOT_SUPPORTED};
  FreeLibrary(library);
  return status;
}

// The mail program keeps the call until the letter is sent or given up; on a thread of its own, so that the
// windows are painted meanwhile. Some change the current folder.
ShellResult composeDirect(const Letter& letter) {
  if (!hasMailProgram()) return ShellResult::NoProgram;
  const QString folder = QDir::currentPath();
  ULONG status = MAPI_E_FAILURE;
  QEventLoop waiting;
  std::thread work([&] {
    const bool com = SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    status = send(letter);
    if (com) CoUninitialize();
    QMetaObject::invokeMethod(&waiting, &QEventLoop::quit, Qt::QueuedConnection);
  });
  waiting.exec(QEventLoop::ExcludeUserInputEvents);
  work.join();
  QDir::setCurrent(folder);
  return status == SUCCESS_SUCCESS || status == MAPI_USER_ABORT ? ShellResult::Done : ShellResult::Failed;
}

#else

ShellResult composeDirect(const Letter& letter) {
  const QString handler = QStandardPaths::findExecutable(QStringLiteral("xdg-email"));
  if (handler.isEmpty()) return ShellResult::NoProgram;
  QStringList arguments = {QStringLiteral("--utf8"), QStringLiteral("--subject"), letter.subject,
                           QStringLiteral("--body"), letter.body};
  for (const QString& path : letter.attachments) arguments << QStringLiteral("--attach") << path;
  if (!letter.to.isEmpty()) arguments << letter.to;
  return QProcess::startDetached(handler, arguments) ? ShellResult::Done : ShellResult::Failed;
}

#endif

}  // namespace

QString mailAddress(const Letter& letter) {
  return QStringLiteral("mailto:") + letter.to + QStringLiteral("?subject=") + encoded(letter.subject) +
         QStringLiteral("&Body=") + encoded(letter.body);
}

ShellResult SystemMail::compose(const Letter& letter) { return composeDirect(letter); }

}  // namespace tandeko
