#include "database/handy_list.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QTreeWidget>

#include "database/base_check.h"
#include "database/base_list.h"
#include "database/structure_update.h"
#include "support/dialogs.h"
#include "support/test_session.h"

using namespace tandeko;

namespace {

struct HandyList : testing::Test, TestSession {
  QString touch(const QString& name) {
    QFile created(file(name));
    EXPECT_TRUE(created.open(QIODevice::WriteOnly));
    return created.fileName();
  }
  QString value(const QString& subkey, const char16_t* name) {
    return registry.read(handyKey(subkey), QString::fromUtf16(name), QStringLiteral("(brak)"));
  }
};

}  // namespace

TEST_F(HandyList, AddingStoresTheFolderAndTheSchedules) {
  EXPECT_TRUE(handyAdd(session, touch(QStringLiteral("firma.mdb"))));
  const QString subkey = QStringLiteral("firma.mdb");
  EXPECT_EQ(value(subkey, u"Folder"), QDir::toNativeSeparators(folder.path()));
  EXPECT_EQ(value(subkey, u"Aktywna"), QStringLiteral("1"));
  EXPECT_EQ(value(subkey, u"Defragmentacja co dni"), QStringLiteral("30"));
  EXPECT_EQ(value(subkey, u"Kopia co dni"), QStringLiteral("3"));
  EXPECT_EQ(value(subkey, u"Kopia"), QStringLiteral("0"));
}

TEST_F(HandyList, AnEntryNamedWithoutTheExtensionIsTheSameDatabase) {
  registry.write(handyKey(QStringLiteral("firma")), QStringLiteral("Folder"), folder.path());
  registry.write(handyKey(QStringLiteral("firma")), QStringLiteral("Kopia co dni"), QStringLiteral("9"));
  handyAdd(session, touch(QStringLiteral("firma.mdb")));
  ASSERT_EQ(handyList(session).size(), 1);
  EXPECT_EQ(value(QStringLiteral("firma"), u"Kopia co dni"), QStringLiteral("9"));
  EXPECT_TRUE(handyList(session)[0].path().endsWith(QStringLiteral("firma.mdb")));
  EXPECT_TRUE(handyEntryOf(session, file(QStringLiteral("firma.mdb"))).has_value());
}

TEST_F(HandyList, KeptPasswordIsNotReadable) {
  handyAdd(session, touch(QStringLiteral("firma.mdb")));
  EXPECT_TRUE(handyKeepPassword(session, QStringLiteral("firma.mdb"), QStringLiteral("tajne")));
  EXPECT_EQ(handyPassword(session, QStringLiteral("firma.mdb")), QStringLiteral("tajne"));
  EXPECT_FALSE(registry.toBytes().contains("tajne"));
}

TEST_F(HandyList, ReadingOffersToDropUnreachableEntriesAndSkipsInactiveOnes) {
  const auto add = [this](const QString& name, const QString& active) {
    registry.write(handyKey(name), QStringLiteral("Folder"), folder.path());
    registry.write(handyKey(name), QStringLiteral("Aktywna"), active);
  };
  add(QStringLiteral("a.mdb"), QStringLiteral("1"));
  add(QStringLiteral("b.mdb"), QStringLiteral("0"));
  add(QStringLiteral("c.mdb"), QString());
  add(QStringLiteral("d.mdb"), QStringLiteral("1"));
  messages.answers = {Answer::Yes, Answer::No};
  Catalogue catalogue;
  QComboBox combo;
  EXPECT_FALSE(BaseListRead(session, catalogue, combo));
  ASSERT_EQ(messages.shown.size(), 2u);
  const Message& question = messages.shown[0];
  EXPECT_EQ(question.text,
            QStringLiteral("Brak dostępu do pliku bazy: ") +
                QDir::toNativeSeparators(file(QStringLiteral("a.mdb"))) +
                QStringLiteral(". Sprawdź plik, dysk lub połączenie sieciowe. Usunąć wskazanie do "
                               "bazy?"));
  EXPECT_EQ(question.icon, Icon::Question);
  EXPECT_EQ(question.buttons, Buttons::YesNo);
  EXPECT_EQ(question.defaultButton, Answer::No);
  EXPECT_FALSE(registry.hasKey(handyKey(QStringLiteral("a.mdb"))));
  EXPECT_TRUE(registry.hasKey(handyKey(QStringLiteral("d.mdb"))));
}

TEST_F(HandyList, AnEntryThatCannotBeDroppedIsTold) {
  struct LockedRegistry : MemoryRegistry {
    bool removeKey(const QString&) override { return false; }
  } locked;
  Session other{Platform{locked, messages, shell, mail, clock, windows}};
  locked.write(handyKey(QStringLiteral("a.mdb")), QStringLiteral("Folder"), folder.path());
  locked.write(handyKey(QStringLiteral("a.mdb")), QStringLiteral("Aktywna"), QStringLiteral("1"));
  messages.answers = {Answer::Yes};
  Catalogue catalogue;
  QComboBox combo;
  EXPECT_FALSE(BaseListRead(other, catalogue, combo));
  ASSERT_EQ(messages.shown.size(), 2u);
  EXPECT_EQ(messages.shown[1].text, QStringLiteral("Błąd usuwania klucza bazy z rejestru."));
  EXPECT_EQ(messages.shown[1].buttons, Buttons::Ok);
}

TEST_F(HandyList, APathThatIsNoDatabaseFailsWithoutAWord) {
  for (const QString& path : {QStringLiteral("*.mdb"), QStringLiteral("/gdzie/lista.txt"), QString()})
    EXPECT_FALSE(BaseCheck(session, path, {}).ok);
  EXPECT_TRUE(messages.shown.empty());
  EXPECT_TRUE(failures.failures.empty());
}

TEST_F(HandyList, StructureVersionPartsAreComparedSeparately) {
  const struct {
    int major, minor;
    ProgramVersion required;
    bool outdated;
  } cases[] = {
      {1, 5, {1, 5, 0}, false}, {1, 6, {1, 5, 0}, false}, {1, 4, {1, 5, 0}, true},
      {0, 9, {1, 5, 0}, true},  {2, 0, {1, 5, 0}, true},  {2, 5, {1, 5, 0}, false},
  };
  for (const auto& c : cases)
    EXPECT_EQ(structureOutdated(c.major, c.minor, c.required), c.outdated) << c.major << "." << c.minor;
}

namespace {

// The structure tool's stand-in, in the folder "Folder pakiet".
struct StructureTool : HandyList {
  StructureTool() {
    session.settings().store(QStringLiteral("Folder pakiet"), folder.path());
    session.settings().load();
    touch(structureToolFile());
  }
  void answer(const QString& status) {
    registry.write(kStructureToolKey, QStringLiteral("Aktualizacja status"), status);
  }
  bool update() {
    return updateStructure(session, QStringLiteral("C:\\firma.mdb"), QStringLiteral("firma.mdb"));
  }
};

}  // namespace

TEST_F(StructureTool, ItsAnswerDecides) {
  const struct {
    QString answer;
    bool ok;
    qint64 waited;
  } cases[] = {
      {QStringLiteral("Ok"), true, 200}, {QStringLiteral("Error"), false, 200}, {QString(), false, 30000}};
  for (const auto& c : cases) {
    messages.shown.clear();
    shell.started.clear();
    const qint64 begin = clock.ticksNow;
    clock.onIdle = [&] {
      EXPECT_EQ(registry.read(kStructureToolKey, QStringLiteral("Aktualizacja status")), QStringLiteral("?"));
      if (!c.answer.isEmpty() && clock.ticksNow - begin >= 200) answer(c.answer);
    };
    EXPECT_EQ(update(), c.ok);
    EXPECT_EQ(clock.ticksNow - begin, c.waited);
    EXPECT_EQ(shell.started,
              QStringList{folder.path() + u'/' + structureToolFile() + QStringLiteral(" A|C:\\firma.mdb")});
    if (c.ok) {
      EXPECT_TRUE(messages.shown.empty());
    } else {
      const Message message = messages.takeOnly();
      EXPECT_EQ(message.text,
                QStringLiteral("Aktualizacja bazy: firma.mdb nie powiodła się. Aby sprawdzić przyczynę "
                               "błędu uruchom program Fundamo bazy, wybierz opcję: Aktualizuj, napraw "
                               "bazę."));
      EXPECT_EQ(message.icon, Icon::Critical);
    }
  }
}

TEST_F(StructureTool, IsLookedForInThePackageThenBesideTheProgram) {
  QTemporaryDir own;
  session.settings().setOwnFolder(own.path());
  QFile(own.filePath(structureToolFile())).open(QIODevice::WriteOnly);
  EXPECT_EQ(packageProgram(session, structureToolFile()), folder.path() + u'/' + structureToolFile());
  QFile::remove(file(structureToolFile()));
  EXPECT_EQ(packageProgram(session, structureToolFile()), own.path() + u'/' + structureToolFile());
  QFile::remove(own.filePath(structureToolFile()));
  EXPECT_FALSE(update());
  const Message message = messages.takeOnly();
  EXPECT_EQ(message.text,
            QStringLiteral(
                "Nie można zlokalizować programu Fundamo bazy (Fundamo.exe). Plik ten powinien znajdować "
                "się w katalogu programów pakietu Lorvel: ") +
                folder.path());
  EXPECT_EQ(message.icon, Icon::Information);
  EXPECT_TRUE(shell.started.isEmpty());
}
