#include "jet/format/text.h"
#include "structure/upgrade.h"

namespace structure {

namespace {

struct Explanation {
  int number;
  std::u16string_view text;
};

constexpr Explanation kExplanations[] = {
    {3022, u"wartości się powtarzają"},
    {3024, u"nie ma takiego pliku"},
    {3026, u"nie można zapisać kopii bazy; sprawdź wolne miejsce na dysku i prawa do folderu"},
    {3031, u"hasło bazy jest nieprawidłowe"},
    {3045, u"baza jest używana przez innego użytkownika lub program; zamknij ją i spróbuj ponownie"},
    {3051, u"brak praw do zapisu pliku"},
    {3058, u"w części rekordów pole klucza jest puste"},
    {3056, u"w pliku nie ma nic, co dałoby się uratować; nie jest to baza danych albo zniszczono ją w całości"},
    {3078, u"plik nie jest bazą programów pakietu Lorvel: nie zawiera żadnej z ich tablic"},
    {3204, u"taki plik już istnieje"},
    {3251, u"plik ma starszy format, którego nie można zmieniać"},
    {3283, u"tablica ma już inny klucz podstawowy"},
    {3343, u"plik nie jest bazą danych MS Access"},
    {3356, u"baza jest używana przez innego użytkownika lub program; zamknij ją i spróbuj ponownie"},
    {3368, u"pola mają różne typy"},
    {3379, u"część rekordów nie ma odpowiednika w słowniku"},
    {3609, u"pole słownika nie ma indeksu bez powtórzeń"},
};

}  // namespace

std::u16string explain(const jet::Error& error) {
  const std::u16string number = jet::fromUtf8(std::to_string(error.number()));
  for (const Explanation& known : kExplanations)
    if (known.number == error.number()) return std::u16string(known.text) + u" (błąd " + number + u")";
  return u"błąd " + number + u": " + error.description();
}

}  // namespace structure
