#include "database/repair_report.h"

#include <QRegularExpression>

namespace tandeko {

namespace {

constexpr qsizetype kMostLines = 12;

struct Phrase {
  const char16_t* pattern;
  const char16_t* text;
};

// The engine's lines in the user's language; \1, \2 are what the pattern's brackets found.
constexpr Phrase kPhrases[] = {
    {u"^table (.*): (\\d+) rows lost$", u"Tabela \\1: liczba utraconych wierszy: \\2"},
    {u"^table (.*): (\\d+) memo or OLE values lost$", u"Tabela \\1: liczba utraconych długich tekstów: \\2"},
    {u"^table (.*): (\\d+) rows left out, whose keys other rows have already$",
     u"Tabela \\1: liczba pominiętych wierszy o powtórzonym kluczu: \\2"},
    {u"^table (.*): lost.*$", u"Tabela \\1: nie do odczytania"},
    {u"^system table (.*): a memo or OLE value lost$", u"Tabela systemowa \\1: utracona wartość"},
    {u"^system table (.*): (\\d+) rows lost$", u"Tabela systemowa \\1: liczba utraconych wierszy: \\2"},
    {u"^relationship (.*): kept, but not enforced.*$",
     u"Relacja \\1: zachowana, ale nie jest już pilnowana, bo dane są z nią niezgodne"},
    {u"^relationship (.*): lost.*$", u"Relacja \\1: utracona"},
    {u"^table on page (\\d+): its name is lost, it is called (.*) now$",
     u"Tabela, której nazwa jest utracona, nazywa się teraz \\2"},
    {u"^file header: .*$", u"Utracone: data utworzenia, porządek sortowania i hasło bazy"},
    {u"^properties of (.*) lost$", u"Utracone właściwości: \\1"},
    {u"^the sort order of the file is not known.*$",
     u"Porządek sortowania pliku jest nieznany: odtąd jest w nim porządek ogólny"},
    {u"^the file was one of an older format.*$", u"Plik starszego formatu został zapisany w nowszym"},
};

QString translated(const QString& line) {
  for (const Phrase& phrase : kPhrases) {
    const QRegularExpression pattern(QString::fromUtf16(phrase.pattern));
    if (pattern.match(line).hasMatch())
      return QString(line).replace(pattern, QString::fromUtf16(phrase.text));
  }
  return line;
}

}  // namespace

QString lossesText(const QStringList& lines) {
  QStringList shown;
  for (const QString& line : lines.mid(0, kMostLines)) shown << translated(line);
  if (lines.size() > kMostLines) shown << QStringLiteral("... i jeszcze: %1").arg(lines.size() - kMostLines);
  return shown.join(u'\n');
}

}  // namespace tandeko
