#include "words.h"

namespace words {

namespace {

// Pictures by the numbers that items store; without one the program tells sets from single items.
struct Picture {
  enum : int { kPlain = 0, kComputer, kLaptop, kMonitor, kPrinter, kPhone, kCamera, kDesk, kFurniture, kTool,
               kHelmet, kClothing, kShoes, kVehicle, kBook };
};

constexpr Word kMale[] = {u"Adam", u"Andrzej", u"Bartłomiej", u"Błażej", u"Bogusław", u"Cezary", u"Dariusz", u"Eugeniusz",
                          u"Grzegorz", u"Henryk", u"Jacek", u"Jan", u"Jarosław", u"Jerzy", u"Józef", u"Kazimierz",
                          u"Krzysztof", u"Łukasz", u"Maciej", u"Marcin", u"Marek", u"Mariusz", u"Michał", u"Mikołaj",
                          u"Paweł", u"Piotr", u"Radosław", u"Rafał", u"Ryszard", u"Sławomir", u"Stanisław", u"Szymon",
                          u"Tadeusz", u"Tomasz", u"Waldemar", u"Wiesław", u"Władysław", u"Wojciech", u"Zbigniew", u"Zdzisław"};
constexpr Word kFemale[] = {u"Agnieszka", u"Aleksandra", u"Alicja", u"Anna", u"Barbara", u"Beata", u"Bożena", u"Danuta",
                            u"Dorota", u"Elżbieta", u"Ewa", u"Grażyna", u"Halina", u"Hanna", u"Irena", u"Iwona", u"Jadwiga",
                            u"Joanna", u"Jolanta", u"Justyna", u"Katarzyna", u"Krystyna", u"Łucja", u"Magdalena", u"Małgorzata",
                            u"Maria", u"Marta", u"Monika", u"Natalia", u"Renata", u"Róża", u"Stanisława", u"Teresa",
                            u"Urszula", u"Wanda", u"Zofia", u"Żaneta"};
constexpr Word kSame[] = {u"Nowak", u"Wójcik", u"Woźniak", u"Kaczmarek", u"Mazur", u"Krawczyk", u"Kowalczyk", u"Zając",
                          u"Król", u"Wieczorek", u"Wróbel", u"Stępień", u"Pawlak", u"Gołąb", u"Dudek", u"Górka",
                          u"Sikora", u"Baran", u"Rutka", u"Szulc", u"Pietrzak", u"Włodarczyk", u"Walczak", u"Bąk",
                          u"Żak", u"Ćwik", u"Łoś", u"Ślusarz", u"Źrebiec", u"Kuśnierz", u"Gwóźdź", u"Olejnik",
                          u"Kołodziej", u"Sroka", u"Jeż", u"Kubiak", u"Świder", u"Mróz", u"Piątek", u"Gaj"};
constexpr Word kChanging[] = {u"Kowalsk", u"Wiśniewsk", u"Lewandowsk", u"Kamińsk", u"Zielińsk", u"Szymańsk", u"Dąbrowsk",
                              u"Kozłowsk", u"Jankowsk", u"Wojciechowsk", u"Kwiatkowsk", u"Piotrowsk", u"Grabowsk", u"Pawłowsk",
                              u"Michalsk", u"Nowick", u"Adamsk", u"Jabłońsk", u"Wysock", u"Górsk", u"Sokołowsk", u"Ostrowsk",
                              u"Zawadzk", u"Jaworsk", u"Malinowsk", u"Głowack", u"Brzezińsk", u"Łukowsk", u"Ćwiklińsk",
                              u"Żuchowsk", u"Śliwińsk", u"Źrebińsk"};
constexpr Word kDepartmentNames[] = {u"Zarząd", u"Księgowość", u"Kadry i płace", u"Sprzedaż", u"Zaopatrzenie", u"Magazyn główny",
                                     u"Produkcja", u"Utrzymanie ruchu", u"Kontrola jakości", u"Informatyka", u"Transport",
                                     u"Administracja", u"Laboratorium", u"Obsługa klienta", u"Dział techniczny",
                                     u"BHP i ochrona środowiska"};
constexpr Word kGroupNames[] = {u"Kierownictwo", u"Pracownicy biurowi", u"Pracownicy produkcyjni", u"Kierowcy", u"Magazynierzy",
                                u"Serwisanci", u"Stażyści"};
constexpr Word kStateNames[] = {u"Nowy", u"Używany", u"W naprawie", u"Uszkodzony", u"Do likwidacji", u"Wypożyczony"};
constexpr Word kItemGroupNames[] = {u"Komputery", u"Monitory", u"Drukarki i skanery", u"Akcesoria komputerowe", u"Podzespoły",
                                    u"Biurka i stoły", u"Krzesła i fotele", u"Szafy i regały", u"Odzież robocza",
                                    u"Obuwie robocze", u"Ochrony osobiste", u"Narzędzia ręczne", u"Elektronarzędzia",
                                    u"Przyrządy pomiarowe", u"Telefony", u"Łączność", u"Pojazdy", u"Wyposażenie pojazdów",
                                    u"Sprzęt gospodarczy", u"Oprogramowanie"};
constexpr Unit kUnitList[] = {{u"szt", u"sztuka"}, {u"kpl", u"komplet"}, {u"para", u"para"}, {u"m", u"metr"},
                              {u"kg", u"kilogram"}, {u"opak", u"opakowanie"}, {u"lic", u"licencja"}};
constexpr Word kShortNotes[] = {u"Wydano za pokwitowaniem.", u"Zarysowana obudowa.", u"Gwarancja do końca przyszłego roku.",
                                u"Wymaga przeglądu technicznego.", u"Zakupiono z dotacji – nie zbywać.",
                                u"Brak instrukcji obsługi.", u"Przekazano z oddziału w Łodzi.", u"Część zapasowa, półka Ż-12.",
                                u"Sprzęt współdzielony przez dwie zmiany.", u"Po naprawie: wymieniono zasilacz."};
constexpr Word kLongSentences[] = {
    u"Przedmiot przyjęto na stan na podstawie protokołu zdawczo-odbiorczego podpisanego przez komisję. ",
    u"W trakcie oględzin stwierdzono ślady użytkowania: zarysowania, przetarcia oraz niewielkie wgniecenie. ",
    u"Użytkownik został pouczony o zasadach bezpiecznej obsługi i potwierdził to własnoręcznym podpisem. ",
    u"Najbliższy przegląd należy przeprowadzić w ciągu sześciu miesięcy, zgodnie z zaleceniem producenta. ",
    u"Część elementów wymieniono na nowe; stare przekazano do utylizacji („złom elektroniczny”). ",
    u"Żądanie zwrotu sprzętu można złożyć w każdej chwili u kierownika działu lub w magazynie głównym. ",
    u"Świadectwo wzorcowania znajduje się w szafie nr 7, półka środkowa, segregator „Źródła i wzorce”. ",
    u"W razie zgubienia należy niezwłocznie zawiadomić dział administracji oraz sporządzić notatkę. "};

constexpr Good kComputerParts[] = {{u"Pamięć operacyjna 16 GB", 4, u"szt", 180, 420, Picture::kPlain, {}},
                                   {u"Dysk półprzewodnikowy 512 GB", 4, u"szt", 190, 450, Picture::kPlain, {}},
                                   {u"Karta graficzna", 4, u"szt", 600, 2400, Picture::kPlain, {}},
                                   {u"Zasilacz 500 W", 4, u"szt", 150, 380, Picture::kPlain, {}}};
constexpr Good kWorkstationParts[] = {{u"Jednostka centralna", 0, u"szt", 1800, 5200, Picture::kComputer, kComputerParts},
                                      {u"Monitor 24 cale", 1, u"szt", 600, 1500, Picture::kMonitor, {}},
                                      {u"Klawiatura", 3, u"szt", 50, 250, Picture::kPlain, {}},
                                      {u"Mysz optyczna", 3, u"szt", 30, 180, Picture::kPlain, {}},
                                      {u"Licencja systemu operacyjnego", 19, u"lic", 400, 900, Picture::kBook, {}}};
constexpr Good kNotebookParts[] = {{u"Zasilacz do notebooka", 3, u"szt", 120, 300, Picture::kPlain, {}},
                                   {u"Torba na notebooka", 3, u"szt", 80, 220, Picture::kPlain, {}},
                                   {u"Stacja dokująca", 3, u"szt", 450, 980, Picture::kPlain, {}}};
constexpr Good kComputers[] = {{u"Zestaw komputerowy", 0, u"kpl", 0, 0, Picture::kPlain, kWorkstationParts},
                               {u"Notebook 15 cali", 0, u"szt", 2600, 6900, Picture::kLaptop, kNotebookParts},
                               {u"Monitor 27 cali", 1, u"szt", 900, 2200, Picture::kMonitor, {}},
                               {u"Drukarka laserowa", 2, u"szt", 700, 2600, Picture::kPrinter, {}},
                               {u"Skaner dokumentów", 2, u"szt", 500, 1900, Picture::kPrinter, {}},
                               {u"Przełącznik sieciowy 24 porty", 15, u"szt", 400, 1600, Picture::kPlain, {}},
                               {u"Przedłużacz listwowy 5 gniazd", 3, u"szt", 30, 90, Picture::kPlain, {}}};
constexpr Good kFurniture[] = {{u"Biurko narożne", 5, u"szt", 450, 1400, Picture::kDesk, {}},
                               {u"Stół konferencyjny", 5, u"szt", 1200, 4800, Picture::kDesk, {}},
                               {u"Fotel obrotowy", 6, u"szt", 350, 1600, Picture::kFurniture, {}},
                               {u"Krzesło tapicerowane", 6, u"szt", 120, 380, Picture::kFurniture, {}},
                               {u"Szafa na dokumenty", 7, u"szt", 600, 1900, Picture::kFurniture, {}},
                               {u"Regał magazynowy", 7, u"szt", 300, 1100, Picture::kFurniture, {}},
                               {u"Kontener podbiurkowy", 7, u"szt", 260, 620, Picture::kFurniture, {}},
                               {u"Wieszak stojący", 18, u"szt", 60, 190, Picture::kFurniture, {}}};
constexpr Good kClothes[] = {{u"Kurtka ocieplana", 8, u"szt", 140, 420, Picture::kClothing, {}},
                             {u"Spodnie ogrodniczki", 8, u"szt", 80, 190, Picture::kClothing, {}},
                             {u"Koszula flanelowa", 8, u"szt", 40, 90, Picture::kClothing, {}},
                             {u"Kamizelka ostrzegawcza", 10, u"szt", 15, 45, Picture::kClothing, {}},
                             {u"Trzewiki robocze", 9, u"para", 120, 380, Picture::kShoes, {}},
                             {u"Kalosze", 9, u"para", 45, 120, Picture::kShoes, {}},
                             {u"Rękawice ochronne", 10, u"para", 8, 60, Picture::kClothing, {}},
                             {u"Hełm ochronny", 10, u"szt", 35, 140, Picture::kHelmet, {}},
                             {u"Okulary ochronne", 10, u"szt", 12, 70, Picture::kClothing, {}}};
constexpr Good kWrenches[] = {{u"Klucz płaski 10/12", 11, u"szt", 15, 40, Picture::kTool, {}},
                              {u"Klucz płaski 13/17", 11, u"szt", 18, 45, Picture::kTool, {}},
                              {u"Klucz oczkowy 19", 11, u"szt", 20, 50, Picture::kTool, {}}};
constexpr Good kBits[] = {{u"Wiertło do metalu 6 mm", 11, u"szt", 8, 25, Picture::kTool, {}}, {u"Bit krzyżowy PH2", 11, u"opak", 10, 30, Picture::kTool, {}}};
constexpr Good kToolboxParts[] = {{u"Zestaw kluczy", 11, u"kpl", 0, 0, Picture::kPlain, kWrenches},
                                  {u"Młotek ślusarski 500 g", 11, u"szt", 25, 70, Picture::kTool, {}},
                                  {u"Wkrętarka akumulatorowa", 12, u"szt", 280, 980, Picture::kTool, kBits},
                                  {u"Suwmiarka elektroniczna", 13, u"szt", 60, 320, Picture::kTool, {}}};
constexpr Good kTools[] = {{u"Skrzynka narzędziowa", 11, u"kpl", 90, 240, Picture::kPlain, kToolboxParts},
                           {u"Wiertarka udarowa", 12, u"szt", 220, 860, Picture::kTool, kBits},
                           {u"Szlifierka kątowa", 12, u"szt", 180, 740, Picture::kTool, {}},
                           {u"Miernik uniwersalny", 13, u"szt", 90, 680, Picture::kTool, {}},
                           {u"Dalmierz laserowy", 13, u"szt", 150, 720, Picture::kTool, {}},
                           {u"Drabina aluminiowa", 18, u"szt", 200, 690, Picture::kTool, {}}};
constexpr Good kPhones[] = {{u"Telefon komórkowy", 14, u"szt", 400, 3600, Picture::kPhone, {}},
                            {u"Aparat telefoniczny", 14, u"szt", 80, 260, Picture::kPhone, {}},
                            {u"Radiotelefon przenośny", 15, u"szt", 350, 1400, Picture::kPhone, {}},
                            {u"Zestaw słuchawkowy", 15, u"szt", 90, 520, Picture::kPhone, {}},
                            {u"Modem LTE", 15, u"szt", 150, 480, Picture::kPhone, {}}};
constexpr Good kFirstAid[] = {{u"Bandaż elastyczny", 10, u"szt", 5, 15, Picture::kClothing, {}}, {u"Koc ratunkowy", 10, u"szt", 6, 18, Picture::kClothing, {}}};
constexpr Good kCarParts[] = {{u"Apteczka samochodowa", 17, u"kpl", 40, 120, Picture::kPlain, kFirstAid},
                              {u"Gaśnica proszkowa 2 kg", 17, u"szt", 60, 140, Picture::kTool, {}},
                              {u"Trójkąt ostrzegawczy", 17, u"szt", 15, 40, Picture::kTool, {}},
                              {u"Komplet opon zimowych", 17, u"kpl", 900, 2600, Picture::kVehicle, {}}};
constexpr Good kVehicles[] = {{u"Samochód dostawczy", 16, u"szt", 65000, 168000, Picture::kVehicle, kCarParts},
                              {u"Samochód osobowy", 16, u"szt", 48000, 145000, Picture::kVehicle, kCarParts},
                              {u"Wózek widłowy", 16, u"szt", 38000, 120000, Picture::kVehicle, {}},
                              {u"Wózek paletowy", 18, u"szt", 900, 2400, Picture::kVehicle, {}},
                              {u"Rower towarowy", 16, u"szt", 2500, 9000, Picture::kVehicle, {}}};

constexpr RegisterKind kRegisterList[] = {
    {u"Sprzęt komputerowy", u'S', u"Numer/Rok[4]", false, false, false, kComputers},
    {u"Meble i wyposażenie biur", u'L', u"Grupa/Numer/Rok[2]", false, true, true, kFurniture},
    {u"Odzież i obuwie robocze", u'L', u"Numer/Miesiąc/Rok[4]", true, false, false, kClothes},
    {u"Narzędzia i przyrządy", u'S', u"Rejestr-Numer-Rok[4]-N", false, false, true, kTools},
    {u"Telefony i łączność", u'L', u"Rok[2]:Numer", false, false, false, kPhones},
    {u"Środki transportu", u'S', u"Rok[4]\\Numer\\ST", false, false, true, kVehicles}};

}  // namespace

const std::span<const Word> kMaleNames = kMale, kFemaleNames = kFemale;
const std::span<const Word> kSurnames = kSame, kChangingSurnames = kChanging;
const std::span<const Word> kDepartments = kDepartmentNames, kEmployeeGroups = kGroupNames, kStates = kStateNames,
                            kItemGroups = kItemGroupNames;
const std::span<const Unit> kUnits = kUnitList;
const std::span<const Word> kNotes = kShortNotes, kSentences = kLongSentences;
const std::span<const RegisterKind> kRegisters = kRegisterList;

}  // namespace words
