#include "platform/mail.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

#ifdef Q_OS_WIN
#include <windows.h>

#include <mapi.h>

#include <string>
#include <vector>
#endif

namespace tandeko {

namespace {

QString encoded(const QString& text) { return QString::fromLatin1(QUrl::toPercentEncoding(text)); }

#ifdef Q_OS_WIN

// Simple MAPI, found at run time: a machine without a mail program has no such library.
ShellResult composeDirect(const Letter& letter) {
  const HMODULE library = LoadLibraryW(L"mapi32.dll");
  if (!library) return ShellResult::NoProgram;
  using Send = ULONG(FAR PASCAL*)(LHANDLE, ULONG_PTR, lpMapiMessage, FLAGS, ULONG);
  const auto send = reinterpret_cast<Send>(reinterpret_cast<void*>(GetProcAddress(library, "MAPISendMail")));
  ULONG status = MAPI_E_FAILURE;
  if (send) {
    std::string subject = letter.subject.toLocal8Bit().toStdString();
    std::string body = letter.body.toLocal8Bit().toStdString();
    std::string name = letter.to.toLocal8Bit().toStdString();
    std::string address = "SMTP:" + name;
    MapiRecipDesc recipient{};
    recipient.ulRecipClass = MAPI_TO;
    recipient.lpszName = name.data();
    recipient.lpszAddress = address.data();
    std::vector<std::string> paths;
    for (const QString& path : letter.attachments)
      paths.push_back(QDir::toNativeSeparators(path).toLocal8Bit().toStdString());
    std::vector<MapiFileDesc> files(paths.size());
    for (size_t i = 0; i < paths.size(); ++i) {
      files[i].nPosition = static_cast<ULONG>(-1);
      files[i].lpszPathName = paths[i].data();
    }
    MapiMessage message{};
    message.lpszSubject = subject.data();
    message.lpszNoteText = body.data();
    message.nRecipCount = letter.to.isEmpty() ? 0 : 1;
    message.lpRecips = letter.to.isEmpty() ? nullptr : &recipient;
    message.nFileCount = static_cast<ULONG>(files.size());
    message.lpFiles = files.empty() ? nullptr : files.data();
    status = send(0, 0, &message, MAPI_DIALOG | MAPI_LOGON_UI, 0);
  }
  FreeLibrary(library);
  if (status == SUCCESS_SUCCESS || status == MAPI_USER_ABORT) return ShellResult::Done;
  return ShellResult::Failed;
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
