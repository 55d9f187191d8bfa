// What only Windows has: its shell's ways to fail, its windows.

#include <QtGlobal>

#ifdef Q_OS_WIN

#include <gtest/gtest.h>

#include <windows.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <string>

#include "platform/shell.h"
#include "platform/window_search.h"
#include "support/scripted_messages.h"

using namespace tandeko;

namespace {

constexpr wchar_t kExtension[] = L"Software\\Classes\\.tandeko-proba";
constexpr wchar_t kKind[] = L"Software\\Classes\\tandeko-proba";

// Sets a command up for documents of a kind of their own: for this user, and for the machine where that is
// allowed (Wine looks there only).
struct Opener {
  explicit Opener(const wchar_t* command) {
    for (const HKEY branch : kBranches) {
      put(branch, kExtension, L"tandeko-proba");
      put(branch, (std::wstring(kKind) + L"\\shell\\open\\command").c_str(), command);
    }
  }
  ~Opener() {
    for (const HKEY branch : kBranches)
      for (const wchar_t* key : {kExtension, kKind}) RegDeleteTreeW(branch, key);
  }
  static void put(HKEY branch, const wchar_t* key, const std::wstring& value) {
    RegSetKeyValueW(branch, key, nullptr, REG_SZ, value.c_str(),
                    static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
  }
  static inline const HKEY kBranches[] = {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE};
};

void makeFile(const QString& path) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
}

}  // namespace

TEST(WindowsShell, OpensDocumentsWhereverTheyLie) {
  const Opener opener(L"cmd.exe /c copy \"%1\" \"%1.otwarty\"");
  const QTemporaryDir folder;
  const QString polish = folder.filePath(QStringLiteral("Żółta łódź & co"));
  const QString deep =
      folder.filePath(QString(90, u'a') + u'/' + QString(90, u'b') + u'/' + QString(90, u'c'));
  for (const QString& place : {polish, deep}) {
    ASSERT_TRUE(QDir().mkpath(place));
    const QString document = place + QStringLiteral("/umowa nr 1.tandeko-proba");
    makeFile(document);
    SystemShell shell;
    EXPECT_EQ(shell.openDocument(document), ShellResult::Done) << document.toStdString();
    const auto opened = [&] {
      return !QDir(place).entryList({QStringLiteral("*.otwarty")}, QDir::Files).isEmpty();
    };
    EXPECT_TRUE(QTest::qWaitFor(opened, 10000)) << document.toStdString();
  }
}

TEST(WindowsShell, TellsAMissingDocumentFromAMissingProgram) {
  const QTemporaryDir folder;
  const QString document = folder.filePath(QStringLiteral("umowa.bez-programu"));
  SystemShell shell;
  EXPECT_EQ(shell.openDocument(document), ShellResult::NotFound);
  EXPECT_EQ(shell.openDocument(QStringLiteral("\\\\nie-ma-serwera\\udział\\umowa.txt")),
            ShellResult::NotFound);
  makeFile(document);
  EXPECT_EQ(shell.openDocument(document), ShellResult::NoProgram);
  EXPECT_NE(shell.openAddress(QStringLiteral("bez-programu:x")), ShellResult::Done);
}

TEST(WindowsShell, AProgramGetsItsWordsAsTheyAre) {
  const QTemporaryDir folder;
  const QString script = folder.filePath(QStringLiteral("program łódź.cmd"));
  QFile file(script);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("@copy %1 words\r\n");
  file.close();
  const QString document = folder.filePath(QStringLiteral("Żółta łódź.txt"));
  makeFile(document);
  SystemShell shell;
  EXPECT_EQ(shell.startProgram(script, {QDir::toNativeSeparators(document)}), ShellResult::Done);
  EXPECT_TRUE(
      QTest::qWaitFor([&] { return QFile::exists(folder.filePath(QStringLiteral("words"))); }, 10000));
}

// The program's own windows are no other copy's; those of other programs are tried with whole programs.
TEST(WindowsWindowSearch, DoesNotFindItsOwnWindows) {
  const HWND window = CreateWindowW(L"STATIC", L"Próba 12345", WS_POPUP | WS_VISIBLE, 0, 0, 100, 100, nullptr,
                                    nullptr, nullptr, nullptr);
  if (!window) GTEST_SKIP() << "no display";
  EXPECT_FALSE(systemWindowSearch()->find(QStringLiteral("Próba 12345")));
  DestroyWindow(window);
}

#endif
