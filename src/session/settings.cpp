#include "session/settings.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

#include "session/names.h"

namespace tandeko {

namespace {

const QString kSaveAtExit = QStringLiteral("Zapisz przy wyjsciu");
const QString kOne = QStringLiteral("1");

// Light enough for black text, and told apart from the white of editable fields.
const QColor kBuiltInColor(0xEC, 0xEC, 0xE4);

QColor colorOf(const QString& text) {
  const QColor color(text);
  return color.isValid() ? color : kBuiltInColor;
}

}  // namespace

QString programFolder() { return QDir::toNativeSeparators(QCoreApplication::applicationDirPath()); }

QString builtInFolder(const QString& setting) {
  const QString documents =
      QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + QStringLiteral("/Tandeko");
  const QString own = QCoreApplication::applicationDirPath();
  QString folder = own;
  if (setting == u"Folder baza") folder = documents + QStringLiteral("/Bazy");
  if (setting == u"Folder archiwum") folder = documents + QStringLiteral("/Archiwum");
  if (setting == u"Folder dokumenty") folder = documents + QStringLiteral("/Dokumenty");
  if (setting == u"Folder roboczy") folder = QDir::tempPath();
  if (setting == u"Folder raport") folder = own + QStringLiteral("/Raporty");
  const QString help = own + QStringLiteral("/Help");
  if (setting == u"Folder pomoc" && QDir(help).exists()) folder = help;
  return QDir::toNativeSeparators(folder);
}

Settings::Settings(Registry& registry) : registry_(registry) {
  names_ << kSaveAtExit;
  values_ << stored(kSaveAtExit, QStringLiteral("0"));
}

QString Settings::SettingGet(const QString& name, const QString& fallback) {
  const auto at = names_.indexOf(name);
  if (at >= 0) return values_[at];
  names_ << name;
  values_ << stored(name, fallback);
  return values_.last();
}

void Settings::SettingSet(const QString& name, const QString& value) {
  const auto at = names_.indexOf(name);
  if (at >= 0) {
    values_[at] = value;
  } else {
    names_ << name;
    values_ << value;
  }
}

void Settings::SettingsSaveAtExit() {
  if (SettingGet(kSaveAtExit, QStringLiteral("0")) != kOne) return;
  for (qsizetype i = 0; i < names_.size(); ++i) registry_.write(kProgramKey, names_[i], values_[i]);
}

QString Settings::stored(const QString& name, const QString& fallback) const {
  return registry_.read(kProgramKey, name, fallback);
}

bool Settings::store(const QString& name, const QString& value) {
  const auto at = names_.indexOf(name);
  if (at >= 0) values_[at] = value;
  return registry_.write(kProgramKey, name, value);
}

bool Settings::remove(const QString& name) {
  const auto at = names_.indexOf(name);
  if (at >= 0) {
    names_.removeAt(at);
    values_.removeAt(at);
  }
  return registry_.removeValue(kProgramKey, name);
}

void Settings::createKeys() {
  for (const QString& key : {kFamilyKey, kDatabasesKey, kFiltersKey, kProgramKey, kReportsKey})
    registry_.createKey(key);
}

void Settings::load() {
  const auto folder = [this](const QString& setting) { return stored(setting, builtInFolder(setting)); };
  const auto number = [this](const QString& setting, int fallback) {
    bool ok = false;
    const int value = stored(setting, QString::number(fallback)).toInt(&ok);
    return ok ? value : fallback;
  };
  const auto flag = [this](const QString& setting, const QString& fallback) {
    return stored(setting, fallback) == kOne;
  };
  program_.folderDatabases = folder(QStringLiteral("Folder baza"));
  program_.folderCopies = folder(QStringLiteral("Folder archiwum"));
  program_.folderWork = folder(QStringLiteral("Folder roboczy"));
  program_.folderHelp = folder(QStringLiteral("Folder pomoc"));
  program_.folderDocuments = folder(QStringLiteral("Folder dokumenty"));
  program_.folderReports = folder(QStringLiteral("Folder raport"));
  program_.folderPrograms = folder(QStringLiteral("Folder pakiet"));
  program_.openOnDoubleClick = flag(QStringLiteral("Popraw2Click"), kOne);
  program_.keepNewFormOpen = flag(QStringLiteral("Nie zamykaj"), QStringLiteral("0"));
  program_.withoutMapi = flag(QStringLiteral("Bez MAPI"), QStringLiteral("0"));
  program_.autoRefreshMinutes = number(QStringLiteral("Auto Refresh"), 0);
  program_.listFontSize = qBound(5, number(QStringLiteral("Rozmiar czcionki kartoteki"), 8), 72);
  program_.dictionaryFontSize = qBound(5, number(QStringLiteral("Rozmiar czcionki slownika"), 8), 72);
  program_.windowSize = stored(QStringLiteral("Rozmiar MDI"));
  program_.startForm = stored(QStringLiteral("Okno start"));
  program_.defaultUser = stored(QStringLiteral("Uzytkownik"));
  program_.readOnlyColor = colorOf(stored(QStringLiteral("Kolor tla")));
  Q_EMIT changed();
}

}  // namespace tandeko
