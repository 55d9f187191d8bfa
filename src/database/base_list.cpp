#include "database/base_list.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <optional>
#include <vector>

#include "database/base_check.h"
#include "database/handy_list.h"
#include "errors/error_reporter.h"
#include "platform/file_probe.h"
#include "session/names.h"

namespace tandeko {

namespace {

class ListReader {
 public:
  ListReader(Session& session, Catalogue& catalogue, QComboBox& combo,
             const std::function<void(const CatalogueEntry&)>& maintain)
      : session_(session), catalogue_(catalogue), combo_(combo), maintain_(maintain) {}

  bool run() {
    session_.setStatusText(QStringLiteral("Odczyt danych z podręcznej listy baz..."));
    std::vector<Listed> listed;
    for (const HandyEntry& entry : handyList(session_))
      if (entry.active) listed.emplace_back(entry);
    for (Listed& entry : listed) read(entry);
    selectLast();
    session_.setStatusText({});
    while (QApplication::overrideCursor()) QApplication::restoreOverrideCursor();
    return combo_.currentIndex() >= 0;
  }

 private:
  // An active entry and its files. All are asked for at once, so that several databases on a drive that does
  // not answer cost the time of one.
  struct Listed {
    explicit Listed(const HandyEntry& listed) : entry(listed), file(listed.path()) {
      if (listed.replica && listed.replicaOpen) replica.emplace(listed.replicaPath());
    }
    HandyEntry entry;
    FileProbe file;
    std::optional<FileProbe> replica;
  };

  void read(Listed& listed) {
    const HandyEntry& entry = listed.entry;
    if (listed.file.answer() == FileAnswer::Present) {
      session_.setStatusText(QStringLiteral("Sprawdzanie bazy ") + entry.subkey + QStringLiteral("..."));
      check(entry, entry.subkey, entry.path(), true);
    } else if (listed.replica && listed.replica->answer() == FileAnswer::Present) {
      session_.setStatusText(QStringLiteral("Sprawdzanie repliki bazy ") + entry.subkey +
                             QStringLiteral("..."));
      check(entry, QStringLiteral("Replika ") + entry.subkey, entry.replicaPath(), false);
    } else {
      offerRemoval(entry);
    }
  }

  void check(const HandyEntry& entry, const QString& shownName, const QString& path, bool scheduled) {
    const BaseCheckResult result = BaseCheck(session_, path, handyPassword(session_, entry.subkey),
                                             {.askToUpdate = true, .reportNames = false, .quiet = true});
    if (!result.ok) return;
    if (result.keepPassword) handyKeepPassword(session_, entry.subkey, result.password);
    catalogue_ << CatalogueEntry{shownName,          path, result.password, false, result.readOnly,
                                 result.keepPassword};
    combo_.addItem(shownName);
    if (scheduled && maintain_) maintain_(catalogue_.last());
  }

  void offerRemoval(const HandyEntry& entry) {
    const bool remove = session_.messages().ask(
        QStringLiteral("Brak dostępu do pliku bazy: ") + entry.path() +
        QStringLiteral(". Sprawdź plik, dysk lub połączenie sieciowe. Usunąć wskazanie do bazy?"));
    if (remove && !handyRemove(session_, entry.subkey))
      session_.messages().show(
          {QStringLiteral("Błąd usuwania klucza bazy z rejestru."), {}, Icon::None, Buttons::Ok, Answer::Ok});
  }

  // The last session's database, or the first when none was stored. A stored one that is not listed selects
  // nothing: nobody should find himself in another firm's data without noticing.
  void selectLast() {
    const QString last = session_.settings().SettingGet(QStringLiteral("Baza"));
    combo_.setCurrentIndex(last.isEmpty() ? (combo_.count() > 0 ? 0 : -1)
                                          : combo_.findText(last, Qt::MatchFixedString));
  }

  Session& session_;
  Catalogue& catalogue_;
  QComboBox& combo_;
  const std::function<void(const CatalogueEntry&)>& maintain_;
};

}  // namespace

bool BaseListRead(Session& session, Catalogue& catalogue, QComboBox& cmbBaza,
                  const std::function<void(const CatalogueEntry&)>& maintain) {
  return guarded(session, "BaseListRead",
                 [&] { return ListReader(session, catalogue, cmbBaza, maintain).run(); });
}

CatalogueEntry checkedEntry(Session& session, const QString& path) {
  const auto listed = handyEntryOf(session, path);
  const BaseCheckResult result =
      BaseCheck(session, path, listed ? handyPassword(session, listed->subkey) : QString(),
                {.askToUpdate = true, .reportNames = true, .quiet = true});
  if (!result.ok) return {};
  if (result.keepPassword && listed) handyKeepPassword(session, listed->subkey, result.password);
  const QFileInfo file(path);
  return {listed ? listed->subkey : file.fileName(),
          QDir::toNativeSeparators(file.absoluteFilePath()),
          result.password,
          false,
          result.readOnly,
          result.keepPassword};
}

CatalogueEntry chooseDatabase(Session& session) {
  FileChoice choice;
  choice.title = QStringLiteral("Wskaż bazę danych programu ") + kProgramName;
  choice.folder = session.settings().program().folderDatabases;
  choice.filter = QStringLiteral("Baza danych MS Access (*.mdb)");
  choice.extension = QStringLiteral("mdb");
  const QString path = session.messages().openFile(choice);
  if (path.isEmpty()) return {};
  const CatalogueEntry entry = checkedEntry(session, path);
  const bool replica = entry.name.startsWith(u"Replika ");
  if (entry.path.isEmpty() || replica || handyEntryOf(session, path)) return entry;
  const QString question =
      QStringLiteral("Dodać bazę: ") + entry.name + QStringLiteral(" do podręcznej listy baz?");
  if (session.messages().ask(question, {}, Answer::Yes)) {
    handyAdd(session, path);
    const auto listed = handyEntryOf(session, path);
    if (entry.keepPassword && listed) handyKeepPassword(session, listed->subkey, entry.password);
  }
  return entry;
}

}  // namespace tandeko
