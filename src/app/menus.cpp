#include "app/menus.h"

#include <QIcon>
#include <QMenuBar>
#include <QStack>
#include <array>

namespace tandeko {

namespace {

constexpr MenuLine kMainMenu[] = {
    {0, u"mnuBaza", u"&Baza"},
    {1, u"mnuBazaOtworz", u"&Otwórz...", Need::Nothing, {}, "Ctrl+O", "open"},
    {1, u"mnuNarzOdtworz", u"&Otwórz kopię...", Need::Database},
    {1, u"mnuSep11", u"-"},
    {1, u"mnuNarzArchiw", u"&Utwórz kopię...", Need::Database},
    {1, u"mnuNarzZapisz", u"Zapisz &jako...", Need::Database},
    {1, u"mnuSep410", u"-"},
    {1, u"mnuNarzDefrag", u"&Defragmentuj...", Need::Database},
    {1, u"mnuNarzNapraw", u"&Napraw..."},
    {1, u"mnuSep411", u"-"},
    {1, u"mnuNarzImport", u"&Importuj...", Need::Later},
    {1, u"mnuNarzFundamo", u"&Fundamo bazy..."},
    {1, u"mnuSep412", u"-"},
    {1, u"mnuBazaLista", u"Podręczna &lista baz", Need::Nothing, {}, nullptr, "database"},
    {1, u"mnuSep15", u"-"},
    {1, u"mnuBazaDrukuj", u"&Drukuj...", Need::Active, Command::Drukuj, "Ctrl+P", "print"},
    {1, u"mnuBazaUstaw", u"&Ustaw"},
    {2, u"mnuBazaUstawDruk", u"&Drukarkę...", Need::Later},
    {2, u"mnuBazaUstawMarg", u"&Marginesy...", Need::Later},
    {2, u"mnuBazaUstawStyl", u"&Styl raportu...", Need::Later},
    {1, u"mnuSep16", u"-"},
    {1, u"mnuBazaZab", u"&Właściwości", Need::Database},
    {1, u"mnuBazaNazwa", u"Dane &firmy", Need::Later},
    {1, u"mnuSep17", u"-"},
    {1, u"mnuBazaUzyt", u"&Użytkownicy", Need::Later},
    {1, u"mnuNarzZmienUzyt", u"Zmień &użytkownika", Need::Database, {}, nullptr, "key"},
    {1, u"mnuSep14", u"-"},
    {1, u"mnuZakoncz", u"&Zakończ", Need::Nothing, {}, "Ctrl+Q"},

    {0, u"mnuEdycja", u"&Edycja"},
    {1, u"mnuEdycjaWytnij", u"Wyt&nij", Need::TextField, {}, "Ctrl+X", "cut"},
    {1, u"mnuEdycjaKopiuj", u"&Kopiuj", Need::TextField, {}, "Ctrl+C", "copy"},
    {1, u"mnuEdycjaWklej", u"Wkl&ej", Need::TextField, {}, "Ctrl+V", "paste"},
    {1, u"mnuSep21", u"-"},
    {1, u"mnuKarZnajdz", u"&Znajdź", Need::Active, Command::Znajdz, "Ctrl+F", "find"},
    {1, u"mnuKarFiltr", u"&Filtr", Need::Active, Command::Filtr, "Ctrl+Shift+F", "filter"},
    {1, u"mnuSep22", u"-"},
    {1, u"mnuEdycjaZaznaczWiersze", u"&Zaznacz wiersze", Need::Active, Command::ZaznaczWiersze,
     "Ctrl+Shift+A"},
    {1, u"mnuEdycjaKopiujWiersze", u"Kopiuj &wiersze", Need::Active, Command::KopiujWiersze, "Ctrl+Shift+C"},

    {0, u"mnuKartoteka", u"&Kartoteka"},
    {1, u"mnuKarTandeko", u"Panel operacyjny", Need::Form, {}, "Ctrl+1", "panel"},
    {1, u"mnuKarPrzedmioty", u"Przedmioty", Need::Form, {}, "Ctrl+2", "items"},
    {1, u"mnuSep31", u"-"},
    {1, u"mnuKarSumuj", u"&Sumuj", Need::Active, Command::Sumuj, "Ctrl+Shift+S", "sum"},

    {0, u"mnuSlownik", u"&Słownik"},
    {1, u"mnuSloPracownicy", u"&Pracownicy", Need::Form, {}, "Ctrl+3", "people"},
    {1, u"mnuSep41", u"-"},
    {1, u"mnuSloGrupyPra", u"&Grupy pracowników", Need::Form},
    {1, u"mnuSloGrupyPrzed", u"Gr&upy przedmiotów", Need::Form},
    {1, u"mnuSloStanyPrzed", u"&Stany przedmiotów", Need::Form},
    {1, u"mnuSep43", u"-"},
    {1, u"mnuSloDzialy", u"Działy firmy", Need::Form},
    {1, u"mnuSloJednostki", u"&Jednostki miary", Need::Form},

    {0, u"mnuParametry", u"&Narzędzia"},
    {1, u"mnuParPakiet", u"&Parametry programu...", Need::Nothing, {}, nullptr, "settings"},
    {1, u"mnuParRejestr", u"Parametry &rejestru...", Need::Form},
    {1, u"mnuSep52", u"-"},
    {1, u"mnuNarzKreRejestr", u"&Kreator rejestrów...", Need::Database},
    {1, u"mnuSep53", u"-"},
    {1, u"mnuNarzWersja", u"Aktualizuj program..."},

    {0, u"mnuRaport", u"&Raport"},
    {1, u"mnuRapKartoteka", u"&Kartoteka wyposażenia", Need::Later},
    {1, u"mnuRapPracownicy", u"&Pracownicy", Need::Later},
    {1, u"mnuSep61", u"-"},
    {1, u"mnuRapSumZest", u"&Statystyka kartoteki", Need::Later},

    {0, u"mnuOkno", u"&Okno"},
    {1, u"mnuOknoKaskada", u"&Kaskada", Need::Window},
    {1, u"mnuOknoPoziomo", u"&Podziel poziomo", Need::Window},
    {1, u"mnuOknoPionowo", u"Podziel pio&nowo", Need::Window},
    {1, u"mnuOknoUporzadkuj", u"&Uporządkuj ikony", Need::Window},

    {0, u"mnuPomoc", u"&Pomoc"},
    {1, u"mnuPomocSpis", u"&Spis treści", Need::Nothing, {}, "F1", "help"},
    {1, u"mnuPomocIndeks", u"&Indeks"},
    {1, u"mnuSep81", u"-"},
    {1, u"mnuPomocPodrecznik", u"&Podręcznik użytkownika (pdf)"},
    {1, u"mnuSep82", u"-"},
    {1, u"mnuPomocInternet", u"S&trona internetowa programu"},
    {1, u"mnuPomocPytanie", u"Mam pytanie... (E-Mail)", Need::Nothing, {}, nullptr, "mail"},
    {1, u"mnuSep83", u"-"},
    {1, u"mnuPomocOprog", u"&O programie"},
};

constexpr MenuLine kRegisterList[] = {
    {1, u"mnuRSNowy", u"&Nowy", Need::Change, Command::Nowy, nullptr, "add"},
    {1, u"mnuRSPopraw", u"&Popraw", Need::Active, Command::Popraw, nullptr, "edit"},
    {1, u"mnuRSUsun", u"&Usuń", Need::Change, Command::Usun, nullptr, "delete"},
    {1, u"mnuRSDrukuj", u"&Drukuj...", Need::Active, Command::Drukuj, nullptr, "print"},
    {1, u"mnuRSZnajdz", u"&Znajdź...", Need::Active, Command::Znajdz, nullptr, "find"},
    {1, u"mnuRSFiltr", u"&Filtr...", Need::Active, Command::Filtr, nullptr, "filter"},
    {1, u"mnuRSSumuj", u"&Sumuj", Need::Active, Command::Sumuj, nullptr, "sum"},
    {1, u"mnuRSRozlicz", u"Rozlicz...", Need::Change, Command::Rozlicz},
    {1, u"mnuRSWszystkie", u"Wszystkie &rejestry", Need::Active, Command::WszystkieRejestry},
    {1, u"mnuRSZaznacz", u"Zaznacz &wiersze", Need::Active, Command::ZaznaczWiersze},
    {1, u"mnuRSKopiuj", u"&Kopiuj wiersze", Need::Active, Command::KopiujWiersze, nullptr, "copy"},
    {1, u"mnuRSZapisz", u"Zapamiętaj wygląd okna", Need::Layout},
};

constexpr MenuLine kPanelEmployees[] = {
    {1, u"mnuRPraNowy", u"Nowy", Need::Change, Command::PraNowy, nullptr, "add"},
    {1, u"mnuRPraWlas", u"Popraw", Need::Active, Command::PraWlas, nullptr, "edit"},
    {1, u"mnuRPraUsun", u"Usuń", Need::Change, Command::PraUsun, nullptr, "delete"},
    {1, u"mnuSepR1", u"-"},
    {1, u"mnuRPraDrukuj", u"Drukuj...", Need::Active, Command::Drukuj, nullptr, "print"},
    {1, u"mnuSepR2", u"-"},
    {1, u"mnuRPraWidok", u"Widok listy pracowników"},
    {2, u"mnuRPraWidokDuze", u"Duże ikony", Need::Active, Command::PraWidokDuze},
    {2, u"mnuRPraWidokMale", u"Małe ikony", Need::Active, Command::PraWidokMale},
    {2, u"mnuRPraWidokSzczeg", u"Szczegóły", Need::Active, Command::PraWidokSzczeg},
    {2, u"mnuRPraWidokLista", u"Lista", Need::Active, Command::PraWidokLista},
    {1, u"mnuRPraPanel", u"Wyświetl panel"},
    {2, u"mnuRPraPanelMagazyn", u"Magazyn", Need::Active, Command::PanelMagazyn},
    {2, u"mnuRPraPanelKosz", u"Kosz", Need::Active, Command::PanelKosz},
    {1, u"mnuSepR7", u"-"},
    {1, u"mnuRPraZapisz", u"Zapamiętaj wygląd okna", Need::Layout},
};

constexpr MenuLine kPanelItems[] = {
    {1, u"mnuRSprzNowy", u"Nowy", Need::Change, Command::SprzNowy, nullptr, "add"},
    {1, u"mnuRSprzWlas", u"Popraw", Need::Active, Command::SprzWlas, nullptr, "edit"},
    {1, u"mnuRSprzUsun", u"Usuń", Need::Change, Command::SprzUsun, nullptr, "delete"},
    {1, u"mnuSepR3", u"-"},
    {1, u"mnuRSprzPodziel", u"Podziel...", Need::Change, Command::SprzPodziel},
    {1, u"mnuSepR4", u"-"},
    {1, u"mnuRSprzDrukuj", u"Drukuj...", Need::Active, Command::Drukuj, nullptr, "print"},
    {1, u"mnuSepR5", u"-"},
    {1, u"mnuRSprzKopiuj", u"Kopiuj", Need::Active, Command::SprzKopiuj, nullptr, "copy"},
    {1, u"mnuRSprzWklej", u"Wklej", Need::Change, Command::SprzWklej, nullptr, "paste"},
    {1, u"mnuSepR6", u"-"},
    {1, u"mnuRSprzPanel", u"Wyświetl panel"},
    {2, u"mnuRSprzPanelMagazyn", u"Magazyn", Need::Active, Command::PanelMagazyn},
    {2, u"mnuRSprzPanelKosz", u"Kosz", Need::Active, Command::PanelKosz},
    {1, u"mnuSepR8", u"-"},
    {1, u"mnuRSprzZapisz", u"Zapamiętaj wygląd okna", Need::Layout},
};

constexpr MenuLine kDocumentLinks[] = {
    {1, u"mnuZrodloNowy", u"Dodaj...", Need::Change, Command::ZrodloNowy, nullptr, "add"},
    {1, u"mnuZrodloUsun", u"Usuń", Need::Change, Command::ZrodloUsun, nullptr, "delete"},
    {1, u"mnuZrodloWklej", u"Wklej ze schowka", Need::Change, Command::ZrodloWklej, nullptr, "paste"},
    {1, u"mnuZrodloNazwa", u"Zmień nazwę", Need::Change, Command::ZrodloNazwa, nullptr, "edit"},
    {1, u"mnuZrodloPlik", u"Zmień łącze", Need::Change, Command::ZrodloPlik},
};

constexpr char kLineProperty[] = "menuLine";

QAction* makeAction(const MenuLine& line, QObject* parent) {
  auto* action = new QAction(QString::fromUtf16(line.caption), parent);
  if (line.shortcut) action->setShortcut(QKeySequence(QLatin1String(line.shortcut)));
  // Text fields handle these keys themselves; elsewhere they belong to the form.
  if (line.need == Need::TextField) action->setShortcutContext(Qt::WidgetShortcut);
  if (line.icon)
    action->setIcon(QIcon(QStringLiteral(":/icons/") + QLatin1String(line.icon) + QStringLiteral("-16.png")));
  if (line.need == Need::Later)
    action->setStatusTip(QStringLiteral("Polecenie nie jest dostępne w tej wersji programu"));
  return action;
}

// Adds the lines to a menu bar (level 0) or a menu (level 1) through `addMenu` and `addAction`.
template <typename Bar>
void build(Bar& bar, std::span<const MenuLine> lines, int top) {
  QStack<QMenu*> open;  // one for each level below `top`
  for (size_t i = 0; i < lines.size(); ++i) {
    const MenuLine& line = lines[i];
    while (open.size() > line.level - top) open.pop();
    const bool opens = i + 1 < lines.size() && lines[i + 1].level > line.level;
    const QString caption = QString::fromUtf16(line.caption);
    QAction* action = nullptr;
    if (opens) {
      QMenu* menu = open.isEmpty() ? bar.addMenu(caption) : open.top()->addMenu(caption);
      menu->setObjectName(QString::fromUtf16(line.name));
      menu->setToolTipsVisible(false);
      action = menu->menuAction();
      open.push(menu);
    } else {
      action = makeAction(line, &bar);
      if (caption == u"-") {
        action->setText({});
        action->setSeparator(true);
      }
      if (open.isEmpty())
        bar.addAction(action);
      else
        open.top()->addAction(action);
    }
    action->setObjectName(QString::fromUtf16(line.name));
    action->setProperty(kLineProperty, QVariant::fromValue(static_cast<const void*>(&line)));
  }
}

}  // namespace

std::span<const MenuLine> mainMenu() { return kMainMenu; }

std::span<const MenuLine> contextMenu(ContextMenu menu) {
  switch (menu) {
    case ContextMenu::RegisterList:
      return kRegisterList;
    case ContextMenu::PanelEmployees:
      return kPanelEmployees;
    case ContextMenu::PanelItems:
      return kPanelItems;
    case ContextMenu::DocumentLinks:
      return kDocumentLinks;
  }
  return {};
}

const MenuLine* lineOf(const QAction* action) {
  return static_cast<const MenuLine*>(action->property(kLineProperty).value<const void*>());
}

void buildMenuBar(QMenuBar& bar, std::span<const MenuLine> lines) { build(bar, lines, 0); }

void buildMenu(QMenu& menu, std::span<const MenuLine> lines) { build(menu, lines, 1); }

QString formOfMenu(const QString& menuName) {
  static const QMap<QString, QString> forms = {
      {QStringLiteral("mnuKarTandeko"), QStringLiteral("karEWPAN")},
      {QStringLiteral("mnuKarPrzedmioty"), QStringLiteral("karEWKAR")},
      {QStringLiteral("mnuSloPracownicy"), QStringLiteral("karSWPRA")},
      {QStringLiteral("mnuSloGrupyPra"), QStringLiteral("sloSWGPC")},
      {QStringLiteral("mnuSloGrupyPrzed"), QStringLiteral("sloSWGEW")},
      {QStringLiteral("mnuSloStanyPrzed"), QStringLiteral("sloSWSEW")},
      {QStringLiteral("mnuSloDzialy"), QStringLiteral("sloSWKOM")},
      {QStringLiteral("mnuSloJednostki"), QStringLiteral("sloSWJED")},
      {QStringLiteral("mnuParRejestr"), QStringLiteral("dlgParRejEwi")},
  };
  return forms.value(menuName);
}

}  // namespace tandeko
