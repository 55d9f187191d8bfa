#include "session/settings.h"

#include <gtest/gtest.h>

#include "session/names.h"
#include "support/test_session.h"

using namespace tandeko;

namespace {

const QString kAtExit = QStringLiteral("Zapisz przy wyjsciu");
const QString kBaza = QStringLiteral("Baza");

}  // namespace

TEST(Settings, AreWrittenAtExitOnlyWhenTheUserWantsIt) {
  for (const QString& option : {QStringLiteral("0"), QStringLiteral("1"), QString()}) {
    MemoryRegistry registry;
    if (!option.isEmpty()) registry.write(kProgramKey, kAtExit, option);
    registry.write(kProgramKey, kBaza, QStringLiteral("stara.mdb"));
    Settings settings(registry);
    EXPECT_EQ(settings.SettingGet(kBaza), QStringLiteral("stara.mdb"));
    settings.SettingSet(kBaza, QStringLiteral("nowa.mdb"));
    settings.SettingSet(QStringLiteral("Rok"), QStringLiteral("2024"));
    EXPECT_EQ(registry.read(kProgramKey, kBaza), QStringLiteral("stara.mdb"))
        << "nothing is written before the end";
    settings.SettingsSaveAtExit();
    const bool saved = option == u"1";
    EXPECT_EQ(registry.read(kProgramKey, kBaza),
              saved ? QStringLiteral("nowa.mdb") : QStringLiteral("stara.mdb"));
    EXPECT_EQ(registry.read(kProgramKey, QStringLiteral("Rok"), QStringLiteral("-")),
              saved ? QStringLiteral("2024") : QStringLiteral("-"));
  }
}

TEST(Settings, CacheAnswersBeforeTheRegistry) {
  MemoryRegistry registry;
  Settings settings(registry);
  EXPECT_EQ(settings.SettingGet(kBaza, QStringLiteral("a")), QStringLiteral("a"));
  registry.write(kProgramKey, kBaza, QStringLiteral("b"));
  EXPECT_EQ(settings.SettingGet(kBaza, QStringLiteral("c")), QStringLiteral("a"));
  settings.store(kBaza, QStringLiteral("d"));
  EXPECT_EQ(settings.SettingGet(kBaza), QStringLiteral("d"));
  EXPECT_EQ(settings.stored(kBaza), QStringLiteral("d"));
}

// Turning the option on in the settings dialog counts for the same session.
TEST(Settings, OptionChangedInTheDialogCountsAtOnce) {
  MemoryRegistry registry;
  Settings settings(registry);
  settings.store(kAtExit, QStringLiteral("1"));
  settings.SettingSet(kBaza, QStringLiteral("x.mdb"));
  settings.SettingsSaveAtExit();
  EXPECT_EQ(registry.read(kProgramKey, kBaza), QStringLiteral("x.mdb"));
}

TEST(Settings, MissingAndDamagedValuesFallBack) {
  MemoryRegistry registry;
  Settings settings(registry);
  settings.createKeys();
  settings.load();
  EXPECT_TRUE(settings.program().openOnDoubleClick);
  EXPECT_FALSE(settings.program().keepNewFormOpen);
  EXPECT_EQ(settings.program().listFontSize, 8);
  EXPECT_EQ(settings.program().folderPrograms, programFolder());
  EXPECT_TRUE(settings.program().readOnlyColor.isValid());
  EXPECT_EQ(registry.subkeys(kFamilyKey),
            (QStringList{QStringLiteral("Bazy danych"), QStringLiteral("Filtry"), QStringLiteral("Raporty"),
                         QStringLiteral("Tandeko")}));

  registry.write(kProgramKey, QStringLiteral("Rozmiar czcionki kartoteki"), QStringLiteral("dużo"));
  registry.write(kProgramKey, QStringLiteral("Rozmiar czcionki slownika"), QStringLiteral("100000"));
  registry.write(kProgramKey, QStringLiteral("Kolor tla"), QStringLiteral("?"));
  registry.write(kProgramKey, QStringLiteral("Auto Refresh"), QStringLiteral("x"));
  settings.load();
  EXPECT_EQ(settings.program().listFontSize, 8);
  EXPECT_LE(settings.program().dictionaryFontSize, 72);
  EXPECT_TRUE(settings.program().readOnlyColor.isValid());
  EXPECT_EQ(settings.program().autoRefreshMinutes, 0);
}
