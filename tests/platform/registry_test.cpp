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

#include "support/scripted_messages.h"

using namespace tandeko;

namespace {

const QString kKey = QStringLiteral("SOFTWARE\\Kwarcel Software\\Lorvel\\Próba");

struct RegistryFile {
  QTemporaryDir folder;
  QString path = folder.filePath(QStringLiteral("a/registry"));
};

}  // namespace

TEST(Registry, AnyNameAndValueComesBackFromTheFile) {
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
  RegistryFile file;
  FileRegistry writer(file.path);
  for (const QString& name : odd) ASSERT_TRUE(writer.write(kKey, name, name + name));
  // Names of keys cannot hold a backslash: it separates them.
  for (const QString& name : {odd[0], odd[2], odd[3], odd[5]})
    ASSERT_TRUE(writer.createKey(kKey + u'\\' + name));

  const FileRegistry reader(file.path);
  for (const QString& name : odd) EXPECT_EQ(reader.read(kKey, name, QStringLiteral("brak")), name + name);
  EXPECT_EQ(reader.valueNames(kKey).size(), odd.size());
  for (const QString& name : {odd[0], odd[2], odd[3], odd[5]})
    EXPECT_TRUE(reader.hasKey(kKey + u'\\' + name));
  EXPECT_EQ(reader.subkeys(kKey).size(), 4);
}

TEST(Registry, NamesIgnoreCaseAndKeepTheirFirstForm) {
  MemoryRegistry registry;
  registry.write(kKey, QStringLiteral("Folder"), QStringLiteral("a"));
  registry.write(kKey.toUpper(), QStringLiteral("FOLDER"), QStringLiteral("b"));
  EXPECT_EQ(registry.read(kKey, QStringLiteral("folder")), QStringLiteral("b"));
  EXPECT_EQ(registry.valueNames(kKey), QStringList{QStringLiteral("Folder")});
  EXPECT_EQ(registry.subkeys(QStringLiteral("software\\kwarcel software\\lorvel")),
            QStringList{QStringLiteral("Próba")});
}

TEST(Registry, SubkeysComeInAlphabeticalOrderAndLeaveWithTheirContent) {
  MemoryRegistry registry;
  for (const QString& name : {QStringLiteral("c.mdb"), QStringLiteral("A.mdb"), QStringLiteral("b.mdb")})
    registry.write(kKey + u'\\' + name, QStringLiteral("x"), name);
  EXPECT_EQ(registry.subkeys(kKey),
            (QStringList{QStringLiteral("A.mdb"), QStringLiteral("b.mdb"), QStringLiteral("c.mdb")}));
  EXPECT_TRUE(registry.removeKey(kKey + QStringLiteral("\\a.mdb")));
  EXPECT_FALSE(registry.removeKey(kKey + QStringLiteral("\\a.mdb")));
  EXPECT_EQ(registry.read(kKey + QStringLiteral("\\A.mdb"), QStringLiteral("x"), QStringLiteral("-")),
            QStringLiteral("-"));
  EXPECT_EQ(registry.subkeys(kKey).size(), 2);
}

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
