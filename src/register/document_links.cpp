#include "register/document_links.h"

#include <QDir>
#include <QFileInfo>

#include "platform/statements.h"
#include "platform/text.h"
#include "session/session.h"

namespace tandeko {

namespace {

const QString kMarker = QStringLiteral("<Dokumenty>");

QString condition(const LinkAddress& address) {
  return QStringLiteral("dblnk WHERE tablica = '") + address.table + QStringLiteral("' And rejestr = ") +
         str(address.registerKey) + QStringLiteral(" And Numer = '") + address.number +
         QStringLiteral("' And Pozycja = ") + str(address.position);
}

bool sameContent(const QString& left, const QString& right) {
  QFile one(left), other(right);
  if (one.size() != other.size() || !one.open(QIODevice::ReadOnly) || !other.open(QIODevice::ReadOnly))
    return false;
  constexpr qint64 kPiece = 1 << 20;
  while (!one.atEnd())
    if (one.read(kPiece) != other.read(kPiece)) return false;
  return true;
}

QString freeFileName(const QDir& folder, const QFileInfo& file) {
  const QString suffix = file.suffix().isEmpty() ? QString() : u'.' + file.suffix();
  for (int number = 2;; ++number) {
    const QString name = QStringLiteral("%1 (%2)%3").arg(file.completeBaseName()).arg(number).arg(suffix);
    if (!folder.exists(name)) return name;
  }
}

// Copies a file into the documents folder; the copy's path, empty when the user gives up or the copying
// fails.
QString copyIntoFolder(Session& session, const QString& file, const QDir& folder) {
  const QFileInfo source(file);
  QString target = folder.filePath(source.fileName());
  bool replace = false;
  if (QFile::exists(target)) {
    if (sameContent(file, target)) return target;
    const QString other = freeFileName(folder, source);
    switch (session.messages().show(
        {QStringLiteral("W folderze dokumentów istnieje już inny plik: ") + source.fileName() +
             QStringLiteral(". Chcesz go zastąpić? (Nie: kopia otrzyma nazwę ") + other + u')',
         {},
         Icon::Question,
         Buttons::YesNoCancel,
         Answer::No})) {
      case Answer::Yes:
        replace = true;
        break;
      case Answer::No:
        target = folder.filePath(other);
        break;
      default:
        return {};
    }
  }
  // The file that is to be replaced goes only after the copy is whole.
  const QString copied = replace ? folder.filePath(freeFileName(folder, source)) : target;
  const bool done = QDir().mkpath(folder.path()) && QFile::copy(file, copied) &&
                    (!replace || (QFile::remove(target) && QFile::rename(copied, target)));
  if (done) return target;
  session.messages().fail(QStringLiteral("Błąd kopiowania pliku: ") + source.fileName());
  return {};
}

QString slashes(const QString& path) { return QDir::fromNativeSeparators(path).replace(u'\\', u'/'); }

// The part of a file's path below the folder; empty when it does not lie in it.
QString below(const QString& file, const QString& folder) {
  if (folder.isEmpty()) return {};
  QString root = QDir::cleanPath(slashes(folder));
  if (!root.endsWith(u'/')) root += u'/';
  const QString whole = QDir::cleanPath(slashes(file));
#ifdef Q_OS_WIN
  const auto sensitivity = Qt::CaseInsensitive;
#else
  const auto sensitivity = Qt::CaseSensitive;
#endif
  return whole.startsWith(root, sensitivity) ? whole.mid(root.size()) : QString();
}

}  // namespace

QList<DocLink> DocLinksLoad(jet::Database& database, const LinkAddress& address) {
  const auto rows = openRows(
      database, QStringLiteral("SELECT * FROM ") + condition(address) + QStringLiteral(" ORDER BY nazwa "));
  QList<DocLink> links;
  for (; !rows->eof(); rows->moveNext())
    links.append({toText(rows->value(u"nazwa")), toText(rows->value(u"plik")), rows->value(u"serial")});
  return links;
}

int linkNameSize(jet::Database& database) {
  return openRows(database, QStringLiteral("SELECT nazwa FROM dblnk WHERE pozycja < 0"))
      ->field(size_t{0})
      .size();
}

void DocLinksSave(jet::Database& database, const LinkAddress& address, const QList<DocLink>& links) {
  execute(database, QStringLiteral("DELETE FROM ") + condition(address));
  if (links.isEmpty()) return;
  const auto rows = openRows(database, QStringLiteral("SELECT * FROM ") + condition(address));
  for (const DocLink& link : links) {
    rows->addNew();
    rows->field(u"Tablica").setValue(fromText(address.table));
    rows->field(u"Rejestr").setValue(jet::Value(int32_t{address.registerKey}));
    rows->field(u"numer").setValue(fromText(address.number));
    rows->field(u"pozycja").setValue(jet::Value(int32_t{address.position}));
    rows->field(u"nazwa").setValue(fromText(link.name));
    rows->field(u"plik").setValue(textOrNull(link.path));
    rows->field(u"serial").setValue(link.serial);
    rows->update();
  }
}

QString storedLinkPath(const QString& file, const QString& documentsFolder) {
  const QString inside = below(file, documentsFolder);
  return inside.isEmpty() ? QDir::toNativeSeparators(file)
                          : kMarker + u'\\' + QString(inside).replace(u'/', u'\\');
}

QString realLinkPath(const QString& stored, const QString& documentsFolder) {
  if (!stored.startsWith(kMarker, Qt::CaseInsensitive) || documentsFolder.isEmpty()) return stored;
  return QDir::toNativeSeparators(
      QDir::cleanPath(slashes(documentsFolder) + u'/' + slashes(stored.mid(kMarker.size()))));
}

std::optional<DocLink> DocLinkAdd(Session& session) {
  FileChoice choice;
  choice.title = QStringLiteral("Dołącz wskazanie do dokumentu ");
  choice.folder = session.settings().program().folderDocuments;
  choice.filter = QStringLiteral("Wszystkie pliki (*.*)");
  choice.fileName = QStringLiteral("*.*");
  const QString file = session.messages().openFile(choice);
  return file.isEmpty() ? std::nullopt : linkTo(session, file);
}

std::optional<DocLink> linkTo(Session& session, const QString& file) {
  const QString folder = session.settings().program().folderDocuments;
  QString linked = file;
  if (!folder.isEmpty() && below(file, folder).isEmpty()) {
    const bool copy = session.messages().ask(
        QStringLiteral("Załączony plik nie znajduje się w folderze dokumentów programu: ") +
            QDir::toNativeSeparators(folder) +
        QStringLiteral(
            ". Chcesz przekopiować plik do wspólnego folderu i ustawić ścieżkę na przekopiowany plik?"));
    if (copy) {
      linked = copyIntoFolder(session, file, QDir(folder));
      if (linked.isEmpty()) return std::nullopt;
    }
  }
  return DocLink{QFileInfo(linked).fileName(), storedLinkPath(linked, folder), {}};
}

void DocLinkOpen(Session& session, const QString& path) {
  const QString real = realLinkPath(path, session.settings().program().folderDocuments);
  switch (session.shell().openDocument(real)) {
    case ShellResult::Done:
      return;
    case ShellResult::NoProgram:
      session.messages().refuse(
          QStringLiteral("System Windows nie znalazł aplikacji skojarzonej z tym rodzajem pliku. Zainstaluj "
                         "program otwierający pliki "
                         "tego rodzaju i spróbuj ponownie."));
      return;
    case ShellResult::NotFound:
    case ShellResult::NoAccess:
    case ShellResult::Failed:
      session.messages().refuse(
          QStringLiteral("Brak dostępu do pliku: ") + real +
          QStringLiteral(" - sprawdź czy plik istnieje w podanej lokalizacji i czy masz wymagane "
                         "uprawnienia dostępu."));
  }
}

}  // namespace tandeko
