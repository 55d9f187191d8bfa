#include "register_fixture.h"

namespace tandeko {

namespace {

const char16_t* const kTables[] = {
    u"CREATE TABLE ewkar (indewi COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, indrew LONG, indpra LONG, parent "
    u"LONG, "
    u"Numewi TEXT(50), Numkat TEXT(50), Numser TEXT(50), Nazwa TEXT(150) NOT NULL, Ilosc DOUBLE, Indjed "
    u"TEXT(10), "
    u"Cenazak CURRENCY, Datazak DATETIME, Data DATETIME, miesiac SHORT, rok SHORT, Indgew LONG, Indsew LONG, "
    u"Srodek "
    u"YESNO, Uwagi MEMO, Indoso TEXT(10), ikona SHORT, Strord DOUBLE, Strpoz LONG)",
    u"CREATE INDEX indrew ON ewkar (indrew)",
    u"CREATE INDEX indpra ON ewkar (indpra)",
    u"CREATE TABLE swrew (Indrew COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, Nazwa TEXT(50), Rodzaj TEXT(1), "
    u"WysNumewi "
    u"YESNO, WysNumkat YESNO, WysNumser YESNO, WysIlosc YESNO, WysCena YESNO, NumAuto YESNO, NumEdycja "
    u"YESNO, NumSzablon "
    u"TEXT(50), NumMiesieczna YESNO, NumGrupa YESNO, Startgew LONG, Startsew LONG, Startilosc DOUBLE, "
    u"Startjed "
    u"TEXT(10))",
    u"CREATE TABLE swpra (Indpra COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, Nazwisko TEXT(50) NOT NULL, Imie "
    u"TEXT(50), "
    u"Aktywny YESNO, Indgpc LONG, Indkom LONG, Numpok TEXT(10), Telefon TEXT(20), Email TEXT(50), Wzrost "
    u"DOUBLE, Kolnierz "
    u"DOUBLE, Obuwie DOUBLE, Uwagi MEMO)",
    u"CREATE TABLE swgpc (Indgpc COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, Nazwa TEXT(50) NOT NULL)",
    u"CREATE TABLE swkom (Indkom COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, Nazwa TEXT(50) NOT NULL, Email "
    u"TEXT(50))",
    u"CREATE TABLE swjed (Indjed TEXT(10) CONSTRAINT PrimaryKey PRIMARY KEY, Nazwa TEXT(50))",
    u"CREATE TABLE swgew (Indgew COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, Nazwa TEXT(50) NOT NULL)",
    u"CREATE TABLE swsew (Indsew COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, Nazwa TEXT(50) NOT NULL)",
    u"CREATE TABLE dbpar (Indpar TEXT(50) CONSTRAINT PrimaryKey PRIMARY KEY, Wartosc TEXT(255))",
    u"CREATE TABLE dbfir (Nazwa TEXT(255))",
    u"CREATE TABLE dblnk (Tablica TEXT(10), Rejestr LONG, Numer TEXT(20), Pozycja LONG, Nazwa TEXT(255), "
    u"Plik MEMO, "
    u"serial LONG)",
};

const char16_t* const kRows[] = {
    u"INSERT INTO swgpc (Nazwa) VALUES ('Biuro')",
    u"INSERT INTO swkom (Nazwa) VALUES ('Dyrekcja')",
    u"INSERT INTO swjed (Indjed, Nazwa) VALUES ('szt', 'sztuka')",
    u"INSERT INTO swgew (Nazwa) VALUES ('Meble')",
    u"INSERT INTO swsew (Nazwa) VALUES ('Dobry')",
    u"INSERT INTO swrew (Nazwa, Rodzaj, WysIlosc, NumAuto, NumSzablon, Startgew, Startsew, Startilosc, "
    u"Startjed) VALUES "
    u"('Wyposażenie', 'S', True, True, 'Rejestr/Numer/Rok[4]', 1, 1, 1, 'szt')",
    u"INSERT INTO swrew (Nazwa, Rodzaj, NumSzablon) VALUES ('Odzież', 'L', 'Numer')",
    u"INSERT INTO swpra (Nazwisko, Imie, Aktywny, Indgpc, Indkom, Numpok) VALUES ('Nowak', 'Jan', True, 1, "
    u"1, '12')",
    u"INSERT INTO swpra (Nazwisko, Imie, Aktywny, Indgpc, Indkom, Numpok) VALUES ('Adamska', 'Ewa', True, 1, "
    u"1, '9')",
};

}  // namespace

RegisterFixture::RegisterFixture() : path(file(QStringLiteral("firma.mdb"))) {
  {
    jet::Workspace workspace;
    const auto database = workspace.createDatabase(toPath(path), jet::kPolishLocale);
    workspace.beginTrans();
    for (const char16_t* statement : kTables) database->execute(statement);
    for (const char16_t* statement : kRows) database->execute(statement);
    workspace.commitTrans();
  }
  EXPECT_TRUE(session.BaseConnect(path, {})) << session.connectFailure().description.toStdString();
  session.setCurrentRegister(1);
  session.setFrame(&frame);
}

QString RegisterFixture::ask(const QString& query) {
  const auto rows = openRows(db(), query);
  if (rows->eof()) return {};
  const jet::Value value = rows->field(size_t{0}).value();
  return value.isNull() ? QStringLiteral("-") : toText(value);
}

int RegisterFixture::item(const QString& name, int holder, int parent, int registerKey) {
  sql(QStringLiteral(
          "INSERT INTO ewkar (indrew, indpra, parent, Nazwa, Ilosc, Indjed, Indgew, Indsew) VALUES (%1, %2, "
          "%3, '%4', 1, 'szt', 1, 1)")
          .arg(registerKey)
          .arg(holder)
          .arg(parent > 0 ? QString::number(parent) : QStringLiteral("Null"), name));
  return db().lastAutoNumber();
}

QString RegisterFixture::place(int item) {
  const auto row =
      openRows(db(), QStringLiteral("SELECT indpra, parent FROM ewkar WHERE indewi = ") + str(item));
  if (row->eof()) return {};
  return QString::number(toInt(row->value(u"indpra"))) + u'/' + QString::number(toInt(row->value(u"parent")));
}

}  // namespace tandeko
