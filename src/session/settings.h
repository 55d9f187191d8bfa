#pragma once

#include <QColor>
#include <QObject>
#include <QString>
#include <QStringList>

#include "platform/registry.h"

namespace tandeko {

// The program settings read at start and after the settings dialog.
struct ProgramSettings {
  QString folderDatabases;
  QString folderCopies;
  QString folderWork;
  QString folderHelp;
  QString folderDocuments;
  QString folderReports;
  QString folderPrograms;
  bool openOnDoubleClick = true;  // "Popraw2Click"
  bool keepNewFormOpen = false;   // "Nie zamykaj"
  bool withoutMapi = false;       // "Bez MAPI"
  int autoRefreshMinutes = 0;     // 0 or less: off
  int listFontSize = 8;           // points
  int dictionaryFontSize = 8;     // points
  QString windowSize;             // "Rozmiar MDI"
  QString startForm;              // "Okno start"
  QString defaultUser;            // "Uzytkownik"
  QColor readOnlyColor;           // "Kolor tla": background of fields that cannot be edited
};

// The folder of the program's own file, and the built-in folder of each kind, named as its setting
// ("Folder baza", ...).
QString programFolder();
QString builtInFolder(const QString& setting);

// The values of the program key, and the cache of those that are written only at the end of a session.
class Settings : public QObject {
  Q_OBJECT

 public:
  explicit Settings(Registry& registry);

  // The cached value of a listed name; any other is read from the program key and listed.
  QString SettingGet(const QString& name, const QString& fallback = {});
  // Changes the cache only.
  void SettingSet(const QString& name, const QString& value);
  // Writes the whole cache when "Zapisz przy wyjsciu" is "1" in it, else nothing.
  void SettingsSaveAtExit();

  // The registry's value, past the cache.
  QString stored(const QString& name, const QString& fallback = {}) const;
  // Writes a value at once and keeps the cache in step.
  bool store(const QString& name, const QString& value);
  bool remove(const QString& name);

  // Creates the keys of the program family that are missing.
  void createKeys();
  // Reads the program settings anew, tells changed().
  void load();
  const ProgramSettings& program() const { return program_; }
  // The folder of the program's own file; tests choose another.
  QString ownFolder() const { return ownFolder_.isEmpty() ? programFolder() : ownFolder_; }
  void setOwnFolder(const QString& folder) { ownFolder_ = folder; }
  QString helpFile() const { return helpFile_; }
  void setHelpFile(const QString& path) { helpFile_ = path; }

 Q_SIGNALS:
  // Colours, fonts or other settings that open forms show have changed.
  void changed();

 private:
  Registry& registry_;
  QStringList names_;
  QStringList values_;
  ProgramSettings program_;
  QString helpFile_;
  QString ownFolder_;
};

}  // namespace tandeko
