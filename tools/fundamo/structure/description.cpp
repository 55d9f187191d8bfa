#include "structure/description.h"

namespace structure {

namespace {

using jet::NewColumn;
using jet::NewIndex;
using jet::Relation;
using jet::Type;
using Name = std::u16string;

// A column, described by chained words: text(u"Nazwa", 80).required().
struct Column : NewColumn {
  Column(Name columnName, Type columnType, int columnSize = 0) {
    name = std::move(columnName);
    type = columnType;
    size = columnSize;
  }
  // Must have a value, and a text must not be empty.
  Column& mandatory() {
    required = true;
    if (type == Type::Text) allowZeroLength = false;
    return *this;
  }
  Column& standard(Name expression) {
    defaultValue = std::move(expression);
    return *this;
  }
  Column& about(Name words) {
    description = std::move(words);
    return *this;
  }
};

Column counter(Name name) {
  Column column(std::move(name), Type::Long);
  column.autoNumber = true;
  return column;
}
Column text(Name name, int size) {
  Column column(std::move(name), Type::Text, size);
  column.allowZeroLength = true;
  return column;
}
Column memo(Name name) {
  Column column(std::move(name), Type::Memo);
  column.allowZeroLength = true;
  return column;
}
Column whole(Name name) { return Column(std::move(name), Type::Long); }
Column small(Name name) { return Column(std::move(name), Type::Integer); }
Column real(Name name) { return Column(std::move(name), Type::Double); }
Column money(Name name) { return Column(std::move(name), Type::Currency); }
Column date(Name name) { return Column(std::move(name), Type::Date); }
Column yesNo(Name name) { return Column(std::move(name), Type::Boolean); }
Column picture(Name name) { return Column(std::move(name), Type::Ole); }

NewIndex key(std::vector<Name> columns) {
  NewIndex index;
  index.name = u"PrimaryKey";
  index.primary = index.unique = index.required = true;
  for (Name& column : columns) index.columns.emplace_back(std::move(column), false);
  return index;
}

NewIndex sorted(Name name, std::vector<Name> columns) {
  NewIndex index;
  index.name = std::move(name);
  for (Name& column : columns) index.columns.emplace_back(std::move(column), false);
  return index;
}

NewIndex unique(Name name, std::vector<Name> columns) {
  NewIndex index = sorted(std::move(name), std::move(columns));
  index.unique = true;
  return index;
}

// A rule "every value of `column` is a key of `dictionary`", named after both tables.
Relation refersTo(const Name& dictionary, const Name& column) {
  Relation relation;
  relation.table = dictionary;
  relation.columns = {{column, column}};
  return relation;
}

TableDescription table(const Name& name, std::vector<NewColumn> columns, std::vector<NewIndex> indexes,
                       std::vector<Relation> relations = {}) {
  TableDescription description;
  description.table.name = name;
  description.table.columns = std::move(columns);
  description.table.indexes = std::move(indexes);
  for (Relation& relation : relations) {
    relation.foreignTable = name;
    relation.name = relation.table + name;
  }
  description.relations = std::move(relations);
  return description;
}

TableDescription dictionary(const Name& name, const Name& keyName, std::vector<NewColumn> more = {}) {
  std::vector<NewColumn> columns{counter(keyName), text(u"Nazwa", 100).mandatory()};
  columns.insert(columns.end(), more.begin(), more.end());
  return table(name, std::move(columns), {key({keyName}), sorted(u"Nazwa", {u"Nazwa"})});
}

TableDescription textDictionary(const Name& name, const Name& keyName) {
  return table(name, {text(keyName, 10).mandatory(), text(u"Nazwa", 100).mandatory()},
               {key({keyName}), sorted(u"Nazwa", {u"Nazwa"})});
}

void addSystemTables(std::vector<TableDescription>& all) {
  all.push_back(table(u"dbprg",
                      {text(u"Indprg", 10).mandatory(), text(u"Nazwa", 100), small(u"VerMajor").standard(u"0"),
                       small(u"VerMinor").standard(u"0"), text(u"Projekty", 255), text(u"Replika", 255)},
                      {key({u"Indprg"})}));
  all.push_back(table(u"dbpar", {text(u"Indpar", 100).mandatory(), memo(u"Wartosc")}, {key({u"Indpar"})}));
  all.push_back(table(
      u"dbfir",
      {text(u"Nazwa", 255),     text(u"Skrot", 50),       text(u"Naglowek1", 255), text(u"Naglowek2", 255),
       text(u"Naglowek3", 255), text(u"NIP", 20),         text(u"NIPU", 20),       text(u"Regon", 20),
       text(u"PESEL", 20),      yesNo(u"OsobaFizyczna"),  text(u"Kraj", 50),       text(u"Wojewodztwo", 50),
       text(u"Powiat", 50),     text(u"Gmina", 50),       text(u"Miejscowosc", 60), text(u"Kod", 10),
       text(u"Poczta", 60),     text(u"Ulica", 80),       text(u"Nrdomu", 20),     text(u"Nrlokalu", 20),
       text(u"Telefon", 50),    text(u"Faks", 50),        text(u"Email", 100),     text(u"Www", 100),
       text(u"Indusk", 20),     text(u"DokRodzaj", 50),   text(u"DokNumer", 50),   date(u"Dataur"),
       text(u"Paszport", 50),   yesNo(u"Usuniety"),       picture(u"Logo")},
      {}));
  all.push_back(table(u"dblnk",
                      {text(u"Tablica", 20).mandatory(), whole(u"Rejestr").mandatory(), text(u"Numer", 50).mandatory(),
                       whole(u"Pozycja").mandatory(), text(u"Nazwa", 255).mandatory(), memo(u"Plik"), text(u"serial", 50)},
                      {key({u"Tablica", u"Rejestr", u"Numer", u"Pozycja", u"Nazwa"})}));
}

void addDictionaries(std::vector<TableDescription>& all) {
  all.push_back(dictionary(u"swgpc", u"Indgpc"));
  all.push_back(dictionary(u"swkom", u"Indkom", {text(u"Email", 100)}));
  all.push_back(textDictionary(u"swjed", u"Indjed"));
  all.push_back(dictionary(u"swgew", u"Indgew"));
  all.push_back(dictionary(u"swsew", u"Indsew"));
  all.push_back(textDictionary(u"swvat", u"Indvat"));
  all.push_back(dictionary(u"swfpl", u"Indfpl"));
  all.push_back(dictionary(u"swgko", u"Indgko"));
  all.push_back(dictionary(u"swgpr", u"Indgpr"));
}

void addUsers(std::vector<TableDescription>& all) {
  all.push_back(table(u"dboso",
                      {text(u"Indoso", 10).mandatory(), text(u"Imie", 50), text(u"Nazwisko", 80), text(u"Haslo", 50),
                       yesNo(u"Aktywny"), yesNo(u"Admin"), text(u"Email", 100), text(u"Telefon", 50), whole(u"Indkom")},
                      {key({u"Indoso"}), sorted(u"Nazwisko", {u"Nazwisko", u"Imie"})}, {refersTo(u"swkom", u"Indkom")}));
  all.push_back(table(u"dbupr", {text(u"Indoso", 10).mandatory(), text(u"Indprg", 10).mandatory(), text(u"Poziom", 50)},
                      {key({u"Indoso", u"Indprg"})}, {refersTo(u"dboso", u"Indoso"), refersTo(u"dbprg", u"Indprg")}));
}

void addRegister(std::vector<TableDescription>& all) {
  all.push_back(table(
      u"swrew",
      {counter(u"Indrew"), text(u"Nazwa", 100).mandatory(), text(u"Rodzaj", 1).mandatory().standard(u"\"L\""),
       yesNo(u"WysNumewi"), yesNo(u"WysNumkat"), yesNo(u"WysNumser"), yesNo(u"WysIlosc"), yesNo(u"WysCena"),
       yesNo(u"NumAuto"), yesNo(u"NumEdycja"), text(u"NumSzablon", 100).standard(u"\"Numer\""), yesNo(u"NumMiesieczna"),
       yesNo(u"NumGrupa"), whole(u"Startgew"), whole(u"Startsew"), real(u"Startilosc"), text(u"Startjed", 10)},
      {key({u"Indrew"}), unique(u"Nazwa", {u"Nazwa"})}));
  all.push_back(table(
      u"swpra",
      {counter(u"Indpra"), text(u"Nazwisko", 80).mandatory(), text(u"Imie", 50),
       yesNo(u"Aktywny").standard(u"True"), whole(u"Indgpc").mandatory(), whole(u"Indkom").mandatory(),
       text(u"Numpok", 20), text(u"Telefon", 50), text(u"Email", 100), real(u"Wzrost"), real(u"Kolnierz"),
       real(u"Obuwie"), memo(u"Uwagi")},
      {key({u"Indpra"}), sorted(u"Nazwisko", {u"Nazwisko", u"Imie"})},
      {refersTo(u"swgpc", u"Indgpc"), refersTo(u"swkom", u"Indkom")}));
  all.push_back(table(
      u"ewkar",
      {counter(u"indewi"), whole(u"indrew").mandatory(),
       whole(u"indpra").mandatory().standard(u"0").about(u"Pracownik; 0 magazyn, -1 kosz"),
       whole(u"parent").about(u"Zestaw, do którego należy przedmiot"), text(u"Numewi", 50), text(u"Numkat", 50),
       text(u"Numser", 50), text(u"Nazwa", 255).mandatory(), real(u"Ilosc").standard(u"1"), text(u"Indjed", 10),
       money(u"Cenazak").standard(u"0"), date(u"Datazak"), date(u"Data"), small(u"miesiac"), small(u"rok"),
       whole(u"Indgew").mandatory(), whole(u"Indsew").mandatory(), yesNo(u"Srodek"), memo(u"Uwagi"),
       text(u"Indoso", 10), small(u"ikona").standard(u"0"), whole(u"Strord"), whole(u"Strpoz")},
      {key({u"indewi"}), sorted(u"indpra", {u"indpra"}), sorted(u"parent", {u"parent"}), sorted(u"numewi", {u"Numewi"})},
      {refersTo(u"swrew", u"indrew"), refersTo(u"swgew", u"Indgew"), refersTo(u"swsew", u"Indsew"),
       refersTo(u"swjed", u"Indjed")}));
}

void addPackageTables(std::vector<TableDescription>& all) {
  all.push_back(table(
      u"swkon",
      {counter(u"Indkon"),    text(u"NumZew", 50),       text(u"Symbol", 50),   text(u"Nazwa", 255).mandatory(),
       text(u"Skrot", 100),   text(u"Kod", 10),          text(u"Miejscowosc", 60), text(u"Ulica", 80),
       text(u"Nrdomu", 20),   text(u"Telefon", 50),      text(u"Faks", 50),     text(u"Email", 100),
       text(u"Www", 100),     text(u"Bank", 100),        text(u"Rachunek", 60), text(u"Identyfikator", 50),
       text(u"NumIde", 50),   text(u"SymIde", 20),       whole(u"Indgko"),      whole(u"Indfpl"),
       text(u"TerPlat", 50),  small(u"TerDni"),          yesNo(u"Aktywny").standard(u"True"), memo(u"Uwagi"),
       text(u"Indoso", 10),   date(u"Datazap")},
      {key({u"Indkon"}), sorted(u"Nazwa", {u"Nazwa"}), sorted(u"Symbol", {u"Symbol"})},
      {refersTo(u"swgko", u"Indgko"), refersTo(u"swfpl", u"Indfpl")}));
  all.push_back(table(u"swpko", {whole(u"Indkon").mandatory(), text(u"Email", 100)}, {}, {refersTo(u"swkon", u"Indkon")}));
  all.push_back(table(
      u"swpro",
      {counter(u"Indpro"), text(u"Symbol", 50), text(u"Nazwa", 255).mandatory(), text(u"Numkat", 50), whole(u"Indgpr"),
       text(u"Indjed", 10), text(u"Indvat", 10), money(u"Cenazak").standard(u"0"), money(u"Cenanet").standard(u"0"),
       yesNo(u"Aktywny").standard(u"True"), memo(u"Uwagi"), text(u"Indoso", 10), date(u"Datazap")},
      {key({u"Indpro"}), sorted(u"Nazwa", {u"Nazwa"}), sorted(u"Symbol", {u"Symbol"})},
      {refersTo(u"swgpr", u"Indgpr"), refersTo(u"swjed", u"Indjed"), refersTo(u"swvat", u"Indvat")}));
  all.push_back(table(u"swrch",
                      {counter(u"indrch"), text(u"Bank", 100), text(u"RachLk", 20), text(u"RachBank", 20), text(u"Rachunek", 60)},
                      {key({u"indrch"})}));
  all.push_back(table(u"swrtr", {counter(u"indrtr"), memo(u"Naglowek4"), memo(u"Naglowek5")}, {key({u"indrtr"})}));
}

std::vector<TableDescription> describe() {
  std::vector<TableDescription> all;
  addSystemTables(all);
  addDictionaries(all);
  addUsers(all);
  addRegister(all);
  addPackageTables(all);
  return all;
}

}  // namespace

const std::vector<TableDescription>& tables() {
  static const std::vector<TableDescription> all = describe();
  return all;
}

}  // namespace structure
