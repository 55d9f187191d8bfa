#include "structure/mend.h"

#include <algorithm>

#include "jet/dao/dao.h"
#include "jet/format/error.h"
#include "jet/format/text.h"
#include "structure/backup.h"

namespace structure {

namespace {

using Text = std::u16string;

// What opening or reading a damaged file ends with.
bool isDamage(int error) {
  static constexpr int kDamages[] = {3000, 3011, 3049, 3340, 3343, 3428};
  return std::find(std::begin(kDamages), std::end(kDamages), error) != std::end(kDamages);
}

// Faults that a look through the whole file finds; one when it cannot even be opened.
int64_t countFaults(const std::filesystem::path& path, std::u16string_view password) {
  int64_t faults = 0;
  try {
    jet::Workspace workspace;
    jet::Workspace::OpenOptions options;
    options.exclusive = true;
    options.connect = u";pwd=" + Text(password) + u";";
    workspace.openDatabase(path, options)->check([&faults](const Text&) { ++faults; });
  } catch (const jet::Error& error) {
    if (!isDamage(error.number())) throw;
    ++faults;
  }
  return faults;
}

struct Phrase {
  std::u16string_view engine, polish;
};

constexpr Phrase kBeginnings[] = {
    {u"system table ", u"Tablica systemowa "},
    {u"table on page ", u"Tablica na stronie "},
    {u"table ", u"Tablica "},
    {u"relationship ", u"Powiązanie "},
    {u"properties of ", u"Właściwości obiektu "},
    {u"file header: creation date, sort order and password lost",
     u"Nagłówek pliku: utracono datę założenia, porządek sortowania i hasło"},
    {u"the file was one of an older format (Jet 3), and is one of Jet 4 now",
     u"Plik miał starszy format (Jet 3), teraz ma format Jet 4"},
};

// Longer ones before those that they contain.
constexpr Phrase kPhrases[] = {
    {u" rows left out, whose keys other rows have already",
     u" rekordów pominięto, bo ich klucze się powtarzają"},
    {u" memo or OLE values lost", u" długich tekstów lub obiektów utracono"},
    {u": a memo or OLE value lost", u": utracono długi tekst lub obiekt"},
    {u" rows lost", u" rekordów utracono"},
    {u": lost, its definition cannot be read", u": utracono, nie można odczytać jej opisu"},
    {u": lost, the catalogue tells only a part of it", u": utracono, jego opis jest niepełny"},
    {u": its name is lost, it is called ", u": utracono jej nazwę, nowa nazwa: "},
    {u": kept, but not enforced: ", u": zachowano, ale nie jest sprawdzane: "},
    {u": lost: ", u": utracono: "},
};

bool endsWith(const Text& text, std::u16string_view end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

Text lossInPolish(Text line) {
  for (const Phrase& phrase : kBeginnings) {
    if (!line.starts_with(phrase.engine)) continue;
    line.replace(0, phrase.engine.size(), phrase.polish);
    break;
  }
  for (const Phrase& phrase : kPhrases) {
    const size_t at = line.find(phrase.engine);
    if (at == Text::npos) continue;
    line.replace(at, phrase.engine.size(), phrase.polish);
    break;
  }
  for (const Phrase& end : {Phrase{u" now", u""}, Phrase{u" lost", u": utracono"}})
    if (endsWith(line, end.engine)) line.replace(line.size() - end.engine.size(), Text::npos, end.polish);
  return line;
}

MendResult mendDatabase(const std::filesystem::path& path, std::u16string_view password,
                        const std::function<void(double)>& progress) {
  MendResult result;
  const int64_t faults = countFaults(path, password);
  if (faults == 0) return result;
  result.report.push_back(u"Znaleziono usterek w pliku: " + jet::fromUtf8(std::to_string(faults)));
  result.copy = copyBeside(path);
  result.lossless = jet::Workspace().repairDatabase(
      path, [&result](const Text& line) { result.report.push_back(lossInPolish(line)); },
      [&progress](double done) { return progress ? progress(done) : void(), true; });
  result.mended = true;
  return result;
}

}  // namespace structure
