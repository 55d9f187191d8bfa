#include "database/base_facts.h"

#include <QDir>
#include <QFileInfo>

#include "database/upkeep_names.h"
#include "jet/format/error.h"
#include "jet/pager/lock_users.h"
#include "platform/statements.h"
#include "platform/text.h"

namespace tandeko {

namespace {

constexpr uint16_t kPolish = 0x0415, kGeneral = 0x0409;

// The tables that mean something to a user; the rest are the family's shared ones.
constexpr struct {
  const char16_t* table;
  const char16_t* caption;
} kTables[] = {
    {u"ewkar", u"Przedmioty"},        {u"swpra", u"Pracownicy"},        {u"swrew", u"Rejestry"},
    {u"swgew", u"Grupy przedmiotów"}, {u"swsew", u"Stany przedmiotów"}, {u"swgpc", u"Grupy pracowników"},
    {u"swkom", u"Działy firmy"},      {u"swjed", u"Jednostki miary"},   {u"dblnk", u"Łącza do dokumentów"},
    {u"dboso", u"Użytkownicy"},
};

QString sortOrderText(uint16_t lcid) {
  if (lcid == kPolish) return QStringLiteral("polski");
  if (lcid == kGeneral) return QStringLiteral("ogólny (zachodnioeuropejski)");
  return QStringLiteral("inny (%1)").arg(lcid, 4, 16, QLatin1Char('0'));
}

// That of the oldest object: the one in the file's head is no real date in every file.
QDateTime creationDate(jet::Database& database) {
  const auto row = openRows(database, QStringLiteral("SELECT Min(DateCreate) FROM MSysObjects"));
  return toDateTime(row->field(size_t{0}).value());
}

QString structureVersion(jet::Database& database) {
  const auto row =
      openRows(database, QStringLiteral("SELECT * FROM dbprg WHERE indprg = '") + kProgramCode + u'\'');
  if (row->eof()) return QStringLiteral("?");
  return toText(row->value(u"VerMajor")) + u'.' + toText(row->value(u"VerMinor"));
}

}  // namespace

DatabaseFacts databaseFacts(Session& session) {
  jet::Database& database = session.database();
  const jet::FileHeader& header = database.catalog().header();
  DatabaseFacts facts;
  facts.name = baseName(session.databasePath());
  facts.path = QDir::toNativeSeparators(session.databasePath());
  facts.size = QFileInfo(session.databasePath()).size();
  facts.structureVersion = structureVersion(database);
  facts.format = header.version == jet::Version::Jet4 ? QStringLiteral("Access 2000–2003 (Jet 4)")
                                                      : QStringLiteral("Access 97 (Jet 3, tylko odczyt)");
  facts.created = creationDate(database);
  facts.sortOrder = sortOrderText(header.lcid);
  const std::vector<std::u16string> present = database.tableNames();
  for (const auto& [table, caption] : kTables) {
    const auto same = [name = QString::fromUtf16(table)](const std::u16string& other) {
      return toQString(other).compare(name, Qt::CaseInsensitive) == 0;
    };
    if (std::none_of(present.begin(), present.end(), same)) continue;
    const auto count =
        openRows(database, QStringLiteral("SELECT Count(*) FROM [") + QString::fromUtf16(table) + u']');
    facts.rows.append({QString::fromUtf16(caption), toInt(count->field(size_t{0}).value())});
  }
  return facts;
}

QStringList databaseUsers(const QString& path) {
  QStringList users;
  for (const std::u16string& machine : jet::lockUsers(jet::Environment::system(), toPath(path)))
    users << toQString(machine);
  return users;
}

}  // namespace tandeko
