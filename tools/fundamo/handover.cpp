#include "handover.h"

#include <QDir>
#include <QFileInfo>

#include "console/console.h"
#include "jet/format/text.h"
#include "platform/secret.h"
#include "platform/text.h"
#include "session/names.h"
#include "structure/upgrade.h"

using namespace tandeko;

namespace {

const QString kStatus = QStringLiteral("Aktualizacja status");

// The password that the user let the program keep with the database's entry in the handy list.
QString keptPassword(const Registry& registry, const QString& file) {
  const QFileInfo info(file);
  for (const QString& name : {info.fileName(), info.completeBaseName()}) {
    const QString key = kDatabasesKey + u'\\' + name;
    const QString folder = QDir::fromNativeSeparators(registry.read(key, QStringLiteral("Folder")));
    if (!folder.isEmpty() && QFileInfo(folder) == QFileInfo(info.absolutePath()))
      return openSecret(registry.read(key, QStringLiteral("Haslo")));
  }
  return {};
}

bool upgrade(const Registry& registry, const QString& file) {
  try {
    const auto result =
        structure::upgradeDatabase(tandeko::toPath(file), toU16(keptPassword(registry, file)));
    for (const auto& line : result.report) print(jet::toUtf8(line) + "\n");
    return result.outcome != structure::UpgradeResult::Outcome::Newer;
  } catch (const jet::Error& error) {
    print(jet::toUtf8(structure::explain(error)) + "\n", stderr);
  } catch (const std::exception& failure) {
    print(failure.what() + std::string("\n"), stderr);
  }
  return false;
}

}  // namespace

int upgradeForProgram(Registry& registry, const QString& file) {
  registry.write(kStructureToolKey, kStatus, QStringLiteral("?"));
  const bool done = upgrade(registry, file);
  const bool told =
      registry.write(kStructureToolKey, kStatus, done ? QStringLiteral("Ok") : QStringLiteral("Error"));
  return done && told ? 0 : 1;
}
