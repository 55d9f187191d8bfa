#include "firm.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>

#include "random.h"
#include "structure/description.h"
#include "words.h"

using jet::Value;
using words::Good;
using words::Word;

namespace {

constexpr double kToday = 46327;        // 2026-11-01
constexpr int kFirstYear = 2019, kLastYear = 2026;
constexpr int kMaxNumber = 32'767;      // running numbers are 16-bit
constexpr int kWarehouse = 0, kBin = -1;

// A day as a date value, from the civil calendar.
struct Day {
  int year, month, day;

  jet::Date date() const {
    const int y = month <= 2 ? year - 1 : year;
    const int m = month <= 2 ? month + 9 : month - 3;
    return {static_cast<double>(365 * y + y / 4 - y / 100 + y / 400 + (153 * m + 2) / 5 + day - 1 - 693'899)};
  }
};

std::u16string decimal(int64_t number) { return jet::fromUtf8(std::to_string(number)); }

void replaceAll(std::u16string& text, Word token, const std::u16string& by) {
  for (size_t at = text.find(token); at != std::u16string::npos; at = text.find(token, at + by.size()))
    text.replace(at, token.size(), by);
}

std::u16string lastTwo(int number) { return decimal(100 + number % 100).substr(1); }

// An inventory number of the register's pattern; a number in front stands unpadded.
std::u16string inventoryNumber(Word pattern, int number, Day bought, int registerKey, int group) {
  std::u16string text(pattern);
  const std::u16string digits = decimal(number);
  const bool leading = pattern.starts_with(u"Numer");
  replaceAll(text, u"Numer", leading || digits.size() > 4 ? digits : std::u16string(4 - digits.size(), u'0') + digits);
  replaceAll(text, u"Miesiąc", lastTwo(bought.month));
  replaceAll(text, u"Rok[4]", decimal(bought.year));
  replaceAll(text, u"Rok[2]", lastTwo(bought.year));
  replaceAll(text, u"Rejestr", decimal(registerKey));
  replaceAll(text, u"Grupa", lastTwo(group));
  return text;
}

int64_t count(jet::Database& database, const std::u16string& table) {
  const auto rows = database.openRecordset(u"SELECT Count(*) FROM " + table, jet::RecordsetType::Snapshot);
  return rows->field(size_t{0}).value().get<int32_t>();
}

void requireEmptyCurrentStructure(jet::Database& database) {
  const auto tables = database.tableNames();
  const auto has = [&](Word name) {
    return std::any_of(tables.begin(), tables.end(), [&](const auto& table) { return jet::sameName(table, name); });
  };
  for (const auto& description : structure::tables())
    if (!has(description.table.name)) throw std::runtime_error("the database has not got the current structure");
  const auto program = database.openRecordset(u"SELECT * FROM dbprg WHERE indprg = 'EW'", jet::RecordsetType::Snapshot);
  if (program->eof() || program->value(u"VerMajor") != Value(int16_t{structure::kVersionMajor}) ||
      program->value(u"VerMinor") != Value(int16_t{structure::kVersionMinor}))
    throw std::runtime_error("the database has not got the current structure");
  for (const char16_t* table : {u"ewkar", u"swpra", u"swrew"})
    if (count(database, table) != 0) throw std::runtime_error("the database already holds a firm");
}

class Builder {
 public:
  Builder(jet::Database& database, const FirmSize& size) : database_(database), size_(size), random_(size.seed) {}

  void build() {
    nameFirm();
    fillDictionaries();
    addEmployees();
    items_ = database_.openRecordset(u"SELECT * FROM ewkar WHERE indewi = 0");
    for (int i = 0; i < size_.registers; ++i) addRegister(i);
  }

 private:
  // Adds a row and returns the key the engine gave it.
  int32_t add(jet::Recordset& rows, const std::vector<std::pair<const char16_t*, Value>>& fields) {
    rows.addNew();
    for (const auto& [name, value] : fields) rows.field(name).setValue(value);
    rows.update();
    return database_.lastAutoNumber();
  }

  void nameFirm() {
    database_.execute(
        u"UPDATE dbfir SET Nazwa = 'Zakłady Sprzętu „Łączność” Sp. z o.o.', Skrot = 'ZSŁ', "
        u"Naglowek1 = 'Zakłady Sprzętu „Łączność” Sp. z o.o.', Naglowek2 = 'ul. Świętojańska 17, 80-840 Gdańsk', "
        u"Kraj = 'Polska', Wojewodztwo = 'pomorskie', Miejscowosc = 'Gdańsk', Kod = '80-840', Poczta = 'Gdańsk', "
        u"Ulica = 'Świętojańska', Nrdomu = '17'");
  }

  std::vector<int32_t> fillDictionary(const std::u16string& table, std::span<const Word> names) {
    std::vector<int32_t> keys;
    const auto rows = database_.openRecordset(u"SELECT * FROM " + table);
    for (const Word name : names) keys.push_back(add(*rows, {{u"Nazwa", Value(name)}}));
    return keys;
  }

  void fillDictionaries() {
    departments_ = fillDictionary(u"swkom", words::kDepartments);
    employeeGroups_ = fillDictionary(u"swgpc", words::kEmployeeGroups);
    states_ = fillDictionary(u"swsew", words::kStates);
    itemGroups_ = fillDictionary(u"swgew", words::kItemGroups);
    const auto units = database_.openRecordset(u"SELECT * FROM swjed");
    for (const words::Unit& unit : words::kUnits)
      add(*units, {{u"Indjed", Value(unit.symbol)}, {u"Nazwa", Value(unit.name)}});
  }

  void addEmployees() {
    const auto rows = database_.openRecordset(u"SELECT * FROM swpra WHERE indpra = 0");
    for (int i = 0; i < size_.employees; ++i) {
      const bool woman = random_.chance(45);
      std::u16string surname(random_.pick(random_.chance(50) ? words::kSurnames : words::kChangingSurnames));
      if (surname.ends_with(u"sk") || surname.ends_with(u"ck") || surname.ends_with(u"zk")) surname += woman ? u'a' : u'i';
      const std::u16string name(random_.pick(woman ? words::kFemaleNames : words::kMaleNames));
      employees_.push_back(add(
          *rows, {{u"Nazwisko", Value(surname)},
                  {u"Imie", Value(name)},
                  {u"Aktywny", Value(random_.chance(95))},
                  {u"Indgpc", Value(random_.pick(std::span<const int32_t>(employeeGroups_)))},
                  {u"Indkom", Value(random_.pick(std::span<const int32_t>(departments_)))},
                  {u"Numpok", Value(decimal(random_.between(1, 4) * 100 + random_.between(1, 32)))},
                  {u"Telefon", Value(u"58 300 " + lastTwo(random_.between(0, 99)) + u' ' + lastTwo(random_.between(0, 99)))},
                  {u"Email", Value(u"pracownik" + decimal(i + 1) + u"@firma.example")},
                  {u"Wzrost", Value(static_cast<double>(random_.between(152, woman ? 182 : 198)))},
                  {u"Kolnierz", Value(random_.between(70, 92) / 2.0)},
                  {u"Obuwie", Value(static_cast<double>(random_.between(woman ? 35 : 39, woman ? 42 : 48)))},
                  {u"Uwagi", random_.chance(10) ? Value(note()) : Value()}}));
    }
  }

  std::u16string note() {
    if (!random_.chance(4)) return std::u16string(random_.pick(words::kNotes));
    std::u16string text;
    const size_t length = static_cast<size_t>(random_.between(2'100, 5'000));
    while (text.size() < length) text += random_.pick(words::kSentences);
    return text;
  }

  void addRegister(int number) {
    const size_t kinds = words::kRegisters.size();
    kind_ = &words::kRegisters[static_cast<size_t>(number) % kinds];
    std::u16string name(kind_->name);
    const int round = number / static_cast<int>(kinds);
    if (round > 0) name += u" – oddział " + decimal(round + 1);
    const auto rows = database_.openRecordset(u"SELECT * FROM swrew WHERE indrew = 0");
    register_ = add(*rows, {{u"Nazwa", Value(name)},
                            {u"Rodzaj", Value(std::u16string(1, kind_->kind))},
                            {u"WysNumewi", Value(true)},
                            {u"WysNumser", Value(kind_->kind == u'S')},
                            {u"WysIlosc", Value(true)},
                            {u"WysCena", Value(kind_->showPrice)},
                            {u"NumAuto", Value(true)},
                            {u"NumEdycja", Value(number % 2 == 0)},
                            {u"NumSzablon", Value(kind_->pattern)},
                            {u"NumMiesieczna", Value(kind_->monthly)},
                            {u"NumGrupa", Value(kind_->perGroup)},
                            {u"Startgew", Value(itemGroups_[static_cast<size_t>(kind_->goods.front().group)])},
                            {u"Startsew", Value(states_.front())},
                            {u"Startilosc", Value(1.0)},
                            {u"Startjed", Value(u"szt")}});
    numbers_.clear();
    left_ = size_.items / size_.registers + (number < size_.items % size_.registers ? 1 : 0);
    while (left_ > 0) addItem(random_.pick(kind_->goods), std::nullopt, holder(), buyingDay());
  }

  int32_t holder() {
    const int draw = random_.between(1, 100);
    if (draw <= 20 || employees_.empty()) return kWarehouse;
    if (draw <= 25) return kBin;
    return random_.pick(std::span<const int32_t>(employees_));
  }

  Day buyingDay() {
    const int year = random_.between(kFirstYear, kLastYear);
    return {year, random_.between(1, year == kLastYear ? 10 : 12), random_.between(1, 28)};
  }

  // The next running number of the item's period.
  int nextNumber(Day bought, int group) {
    int& last = numbers_[{kind_->perGroup ? 0 : bought.year, kind_->monthly ? bought.month : 0, kind_->perGroup ? group : 0}];
    last = std::min(last + 1, kMaxNumber);
    return last;
  }

  void addItem(const Good& good, std::optional<int32_t> parent, int32_t holderKey, Day bought) {
    --left_;
    const int32_t group = itemGroups_[static_cast<size_t>(good.group)];
    const int cents = good.priceTo == 0 ? 0 : random_.between(good.priceFrom * 100, good.priceTo * 100);
    const bool single = kind_->kind == u'S' || random_.chance(80);
    const double boughtDays = bought.date().days;
    const double issued = std::min(boughtDays + random_.between(0, 400), kToday);
    const int32_t key = add(
        *items_,
        {{u"indrew", Value(register_)},
         {u"indpra", Value(holderKey)},
         {u"parent", parent ? Value(*parent) : Value()},
         {u"Numewi", Value(inventoryNumber(kind_->pattern, nextNumber(bought, group), bought, register_, group))},
         {u"Numkat", Value(u"K" + decimal(random_.between(1'000, 9'999)))},
         {u"Numser", good.priceTo >= 300 ? Value(serialNumber()) : Value()},
         {u"Nazwa", Value(good.name)},
         {u"Ilosc", Value(single ? 1.0 : static_cast<double>(random_.between(2, 12)))},
         {u"Indjed", Value(good.unit)},
         {u"Cenazak", Value(jet::Currency{cents * int64_t{100}})},
         {u"Datazak", Value(bought.date())},
         {u"Data", holderKey > 0 ? Value(jet::Date{issued}) : Value()},
         {u"miesiac", Value(static_cast<int16_t>(bought.month))},
         {u"rok", Value(static_cast<int16_t>(bought.year))},
         {u"Indgew", Value(group)},
         {u"Indsew", Value(states_[random_.chance(70) ? 1 : static_cast<size_t>(random_.between(0, static_cast<int>(states_.size()) - 1))])},
         {u"Srodek", Value(cents > 1'000'000)},
         {u"Uwagi", random_.chance(12) ? Value(note()) : Value()},
         {u"Indoso", Value(u"AD")},
         {u"ikona", Value(static_cast<int16_t>(good.icon))}});
    if (kind_->kind != u'S') return;
    for (const Good& part : good.parts)
      if (left_ > 0 && random_.chance(85)) addItem(part, key, holderKey, bought);
  }

  std::u16string serialNumber() {
    static constexpr char16_t kLetters[] = u"ABCDEFGHJKLMNPRSTUWXYZ";
    std::u16string text;
    for (int i = 0; i < 3; ++i) text += kLetters[random_.between(0, 21)];
    return text + u'-' + decimal(random_.between(100'000, 999'999));
  }

  jet::Database& database_;
  FirmSize size_;
  Random random_;
  std::vector<int32_t> departments_, employeeGroups_, states_, itemGroups_, employees_;
  std::unique_ptr<jet::Recordset> items_;
  const words::RegisterKind* kind_ = nullptr;
  int32_t register_ = 0;
  int left_ = 0;
  std::map<std::tuple<int, int, int>, int> numbers_;
};

}  // namespace

void fillFirm(jet::Workspace& workspace, jet::Database& database, const FirmSize& size) {
  requireEmptyCurrentStructure(database);
  workspace.beginTrans();
  try {
    Builder(database, size).build();
  } catch (...) {
    workspace.rollback();
    throw;
  }
  workspace.commitTrans();
}
