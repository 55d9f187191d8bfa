#include "platform/registry.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <thread>
#include <vector>

#ifdef Q_OS_UNIX
#include <sys/wait.h>
#include <unistd.h>
#include <csignal>
#endif

#ifdef Q_OS_WIN
#include <windows.h>
#endif

#include "support/scripted_messages.h"

using namespace tandeko;

namespace {

const QString kKey = QStringLiteral("SOFTWARE\\Kwarcel Software\\Lorvel\\Próba");

struct RegistryFile {
  QTemporaryDir folder;
  QString path = folder.filePath(QStringLiteral("a/registry"));
  std::unique_ptr<Registry> open() const { return std::make_unique<FileRegistry>(path); }
};

struct RegistryInMemory {
  std::shared_ptr<MemoryRegistry> content = std::make_shared<MemoryRegistry>();
  std::shared_ptr<Registry> open() const { return content; }
};

#ifdef Q_OS_WIN
struct RealRegistry {
  RealRegistry() { open()->removeKey(kKey); }
  ~RealRegistry() { open()->removeKey(kKey); }
  std::unique_ptr<Registry> open() const { return systemRegistry(); }
};
using Kinds = testing::Types<RegistryInMemory, RegistryFile, RealRegistry>;
#else
using Kinds = testing::Types<RegistryInMemory, RegistryFile>;
#endif

template <typename Kind>
struct AnyRegistry : testing::Test {
  Kind kind;
};
TYPED_TEST_SUITE(AnyRegistry, Kinds);

}  // namespace

TYPED_TEST(AnyRegistry, AnyNameAndValueComesBack) {
  const QStringList odd = {
      QStringLiteral("Zażółć gęślą jaźń"),
      QStringLiteral("a\\b"),
      QStringLiteral("a/b=c"),
      QStringLiteral("[klucz]"),
      QStringLiteral(" pusty"),
      QStringLiteral("100%0041"),
      QStringLiteral("dwie\nlinie\r\ttab"),
      QStringLiteral(";x"),
      QString(u""_qs),
  };
  const QString longText = QStringLiteral("ż%1").arg(QString(70000, u'x'));
  const QString longName(255, u'ł');
  {
    const auto writer = this->kind.open();
    for (const QString& name : odd) ASSERT_TRUE(writer->write(kKey, name, name + name));
    ASSERT_TRUE(writer->write(kKey, longName, longText));
    // Names of keys cannot hold a backslash: it separates them.
    for (const QString& name : {odd[0], odd[2], odd[3], odd[5], longName})
      ASSERT_TRUE(writer->createKey(kKey + u'\\' + name));
  }
  const auto reader = this->kind.open();
  for (const QString& name : odd) EXPECT_EQ(reader->read(kKey, name, QStringLiteral("brak")), name + name);
  EXPECT_EQ(reader->read(kKey, longName), longText);
  EXPECT_EQ(reader->read(kKey, QStringLiteral("nie ma"), QStringLiteral("brak")), QStringLiteral("brak"));
  EXPECT_EQ(reader->valueNames(kKey).size(), odd.size() + 1);
  for (const QString& name : {odd[0], odd[2], odd[3], odd[5], longName})
    EXPECT_TRUE(reader->hasKey(kKey + u'\\' + name));
  EXPECT_EQ(reader->subkeys(kKey).size(), 5);
}

TYPED_TEST(AnyRegistry, NamesIgnoreCaseAndKeepTheirFirstForm) {
  const auto registry = this->kind.open();
  registry->write(kKey + QStringLiteral("\\Żółw"), QStringLiteral("Łódź"), QStringLiteral("a"));
  registry->write(kKey.toUpper() + QStringLiteral("\\ŻÓŁW"), QStringLiteral("ŁÓDŹ"), QStringLiteral("b"));
  EXPECT_EQ(registry->read(kKey + QStringLiteral("\\żółw"), QStringLiteral("łódź")), QStringLiteral("b"));
  EXPECT_EQ(registry->valueNames(kKey + QStringLiteral("\\żółw")), QStringList{QStringLiteral("Łódź")});
  EXPECT_EQ(registry->subkeys(kKey.toLower()), QStringList{QStringLiteral("Żółw")});
  EXPECT_TRUE(registry->removeValue(kKey + QStringLiteral("\\żółw"), QStringLiteral("ŁÓDź")));
  EXPECT_FALSE(registry->removeValue(kKey + QStringLiteral("\\żółw"), QStringLiteral("ŁÓDź")));
}

TYPED_TEST(AnyRegistry, SubkeysComeInAlphabeticalOrderAndLeaveWithTheirContent) {
  const auto registry = this->kind.open();
  for (const QString& name : {QStringLiteral("c.mdb"), QStringLiteral("A.mdb"), QStringLiteral("b.mdb")})
    registry->write(kKey + u'\\' + name + QStringLiteral("\\1"), QStringLiteral("x"), name);
  EXPECT_EQ(registry->subkeys(kKey),
            (QStringList{QStringLiteral("A.mdb"), QStringLiteral("b.mdb"), QStringLiteral("c.mdb")}));
  EXPECT_TRUE(registry->removeKey(kKey + QStringLiteral("\\a.mdb")));
  EXPECT_FALSE(registry->removeKey(kKey + QStringLiteral("\\a.mdb")));
  EXPECT_EQ(registry->read(kKey + QStringLiteral("\\A.mdb\\1"), QStringLiteral("x"), QStringLiteral("-")),
            QStringLiteral("-"));
  EXPECT_EQ(registry->subkeys(kKey).size(), 2);
  EXPECT_FALSE(registry->removeKey(QStringLiteral("\\"))) << "that is everything";
  EXPECT_TRUE(registry->hasKey(kKey));
}

#ifdef Q_OS_WIN
// Administrators and other programs write there, too.
TEST(WindowsRegistry, ReadsValuesThatOthersWrote) {
  const RealRegistry real;
  const auto registry = real.open();
  ASSERT_TRUE(registry->createKey(kKey));
  HKEY key = nullptr;
  ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, reinterpret_cast<const wchar_t*>(kKey.utf16()), 0, KEY_SET_VALUE,
                          &key),
            ERROR_SUCCESS);
  SetEnvironmentVariableW(L"TANDEKO_FOLDER", L"C:\\Łódź");
  const auto put = [key](const wchar_t* name, DWORD type, const void* bytes, DWORD size) {
    return RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(bytes), size);
  };
  put(L"rozwijany", REG_EXPAND_SZ, L"%TANDEKO_FOLDER%\\Bazy", sizeof L"%TANDEKO_FOLDER%\\Bazy");
  put(L"bez zera", REG_SZ, L"żółw", 4 * sizeof(wchar_t));
  put(L"z zerem w środku", REG_SZ, L"a\0b", sizeof L"a\0b");
  put(L"pusty", REG_SZ, nullptr, 0);
  const DWORD number = 7;
  put(L"liczba", REG_DWORD, &number, sizeof number);
  RegCloseKey(key);
  const auto read = [&](const QString& name) { return registry->read(kKey, name, QStringLiteral("brak")); };
  EXPECT_EQ(read(QStringLiteral("rozwijany")), QStringLiteral("C:\\Łódź\\Bazy"));
  EXPECT_EQ(read(QStringLiteral("bez zera")), QStringLiteral("żółw"));
  EXPECT_EQ(read(QStringLiteral("z zerem w środku")), QStringLiteral("a"));
  EXPECT_EQ(read(QStringLiteral("pusty")), QString(u""_qs));
  EXPECT_EQ(read(QStringLiteral("liczba")), QStringLiteral("brak"));
}
#endif

TEST(Registry, CopiesWritingAtOnceLoseNothing) {
  RegistryFile file;
  constexpr int kCopies = 4, kValues = 25;
  std::vector<std::thread> copies;
  for (int copy = 0; copy < kCopies; ++copy)
    copies.emplace_back([&file, copy] {
      FileRegistry registry(file.path);
      for (int i = 0; i < kValues; ++i)
        registry.write(kKey, QStringLiteral("%1-%2").arg(copy).arg(i), QString::number(i));
    });
  for (std::thread& copy : copies) copy.join();
  EXPECT_EQ(FileRegistry(file.path).valueNames(kKey).size(), kCopies * kValues);
}

TEST(Registry, AnotherCopysChangeIsSeenAtOnce) {
  RegistryFile file;
  FileRegistry one(file.path), other(file.path);
  one.write(kKey, QStringLiteral("Aktualizacja status"), QStringLiteral("?"));
  EXPECT_EQ(other.read(kKey, QStringLiteral("Aktualizacja status")), QStringLiteral("?"));
  other.write(kKey, QStringLiteral("Aktualizacja status"), QStringLiteral("Ok"));
  EXPECT_EQ(one.read(kKey, QStringLiteral("Aktualizacja status")), QStringLiteral("Ok"));
}

TEST(Registry, AFileThatCannotBeWrittenChangesNothing) {
  QTemporaryDir folder;
  FileRegistry registry(folder.path());  // a folder where the file should be
  EXPECT_FALSE(registry.write(kKey, QStringLiteral("a"), QStringLiteral("b")));
  EXPECT_EQ(registry.read(kKey, QStringLiteral("a"), QStringLiteral("-")), QStringLiteral("-"));
}

TEST(Registry, OnlyTheUserMayReadTheFile) {
#ifdef Q_OS_WIN
  GTEST_SKIP() << "the registry itself is used there";
#endif
  RegistryFile file;
  FileRegistry(file.path).createKey(kKey);
  EXPECT_FALSE(QFile::permissions(file.path) & (QFile::ReadGroup | QFile::ReadOther));
}

#ifdef Q_OS_UNIX
TEST(Registry, ACopyKilledWhileItWritesLeavesEverythingReadable) {
  RegistryFile file;
  FileRegistry registry(file.path);
  ASSERT_TRUE(registry.write(kKey, QStringLiteral("stała"), QStringLiteral("wartość")));
  for (int round = 0; round < 15; ++round) {
    const pid_t writer = fork();
    if (writer == 0) {
      FileRegistry own(file.path);
      for (int i = 0;; ++i) own.write(kKey, QStringLiteral("licznik %1").arg(i % 50), QString(i % 400, u'x'));
    }
    usleep(3000 + 2111 * static_cast<useconds_t>(round));
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);
    EXPECT_EQ(registry.read(kKey, QStringLiteral("stała")), QStringLiteral("wartość"));
    EXPECT_TRUE(registry.write(kKey, QStringLiteral("po"), QString::number(round)))
        << "the dead copy's lock is open";
  }
  EXPECT_GT(registry.valueNames(kKey).size(), 2);
}
#endif
