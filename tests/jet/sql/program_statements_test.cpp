#include <gtest/gtest.h>

#include <random>
#include <sstream>

#include "program_schema.h"
#include "sql_fixture.h"

// The statements that the program runs, letter by letter.
namespace jet::sql::test {

namespace {

std::string itemList(const std::string& where) {
  return "SELECT ewkar.indewi, ewkar.Datazak, ewkar.Data, ewkar.Indgew, swgew.nazwa, ewkar.Indpra, "
         "swpra.nazwisko & ' ' & "
         "swpra.imie As [Nazpra], ewkar.Numewi, ewkar.Numkat, ewkar.Numser, ewkar.Indsew, swsew.nazwa, "
         "ewkar.Nazwa, ewkar.Ilosc, "
         "ewkar.Indjed, ewkar.Cenazak, ewkar.Ilosc * ewkar.Cenazak As [Wartosc], ewkar.Srodek, ewkar.Uwagi, "
         "ewkar.Indoso FROM ewkar, "
         "swpra, swgew, swsew WHERE ewkar.indpra = swpra.indpra And ewkar.indgew = swgew.Indgew And "
         "ewkar.indsew = swsew.indsew " +
         where +
         "UNION SELECT ewkar.indewi, ewkar.Datazak, ewkar.Data, ewkar.Indgew, swgew.nazwa, ewkar.Indpra, "
         "'[Magazyn]', ewkar.Numewi, "
         "ewkar.Numkat, ewkar.Numser, ewkar.Indsew, swsew.nazwa, ewkar.Nazwa, ewkar.Ilosc, ewkar.Indjed,  "
         "ewkar.Cenazak, ewkar.Ilosc * "
         "ewkar.Cenazak, ewkar.Srodek, ewkar.Uwagi, ewkar.Indoso FROM ewkar, swgew, swsew WHERE ewkar.indpra "
         "= 0 And ewkar.indgew = "
         "swgew.Indgew And ewkar.indsew = swsew.indsew " +
         where +
         "UNION SELECT ewkar.indewi, ewkar.Datazak, ewkar.Data, ewkar.Indgew, swgew.nazwa, ewkar.Indpra, "
         "'[Kosz]', ewkar.Numewi, "
         "ewkar.Numkat, ewkar.Numser, ewkar.Indsew, swsew.nazwa, ewkar.Nazwa, ewkar.Ilosc, ewkar.Indjed,  "
         "ewkar.Cenazak, ewkar.Ilosc * "
         "ewkar.Cenazak, ewkar.Srodek, ewkar.Uwagi, ewkar.Indoso FROM ewkar, swgew, swsew WHERE ewkar.indpra "
         "< 0 And ewkar.indgew = "
         "swgew.Indgew And ewkar.indsew = swsew.indsew " +
         where;
}

const char* const kSummary =
    "SELECT '1. Wg rejestrów' As [Rodzaj], swrew.nazwa as [Nazwa], count(*) As [Liczba], count(parent) As "
    "[Elementy], "
    "sum(ewkar.ilosc) As [Ilosc], sum(ewkar.ilosc*ewkar.cenazak) As [Wartosc] FROM swrew, ewkar WHERE "
    "swrew.indrew = ewkar.indrew GROUP BY "
    "swrew.nazwa "
    "UNION SELECT '2. Wg grup przedmiotów', swgew.nazwa, count(*), count(parent), sum(ewkar.ilosc) , "
    "sum(ewkar.ilosc*ewkar.cenazak) FROM "
    "swgew, ewkar WHERE swgew.indgew = ewkar.indgew GROUP BY swgew.nazwa "
    "UNION SELECT '3. Wg użytkowników', '[Magazyn]', count(*), count(parent), sum(ewkar.ilosc), "
    "sum(ewkar.ilosc*ewkar.cenazak) FROM ewkar "
    "WHERE ewkar.indpra = 0 "
    "UNION SELECT '3. Wg użytkowników', '[Kosz]', count(*), count(parent), sum(ewkar.ilosc), "
    "sum(ewkar.ilosc*ewkar.cenazak) FROM ewkar WHERE "
    "ewkar.indpra = -1 "
    "UNION SELECT '3. Wg użytkowników', swpra.nazwisko & ' ' & swpra.imie, count(*), count(parent), "
    "sum(ewkar.ilosc) , "
    "sum(ewkar.ilosc*ewkar.cenazak) FROM swpra, ewkar WHERE swpra.indpra = ewkar.indpra GROUP BY "
    "swpra.nazwisko & ' ' & swpra.imie "
    "UNION SELECT '4. Wg grup pracowników', swgpc.nazwa, count(*), count(parent), sum(ewkar.ilosc) , "
    "sum(ewkar.ilosc*ewkar.cenazak) FROM "
    "swgpc, swpra, ewkar WHERE swgpc.indgpc = swpra.indgpc And swpra.indpra = ewkar.indpra GROUP BY "
    "swgpc.nazwa "
    "UNION SELECT '5. Wg działów firmy', swkom.nazwa, count(*), count(parent), sum(ewkar.ilosc) , "
    "sum(ewkar.ilosc*ewkar.cenazak) FROM swkom, "
    "swpra, ewkar WHERE swkom.indkom = swpra.indkom And swpra.indpra = ewkar.indpra GROUP BY swkom.nazwa ";

const char* const kEmployees =
    "SELECT swpra.indpra, swpra.Aktywny, swgpc.nazwa, swkom.Nazwa, swpra.Nazwisko & ' ' & swpra.Imie As "
    "[NazwiskoImie], swpra.Numpok, "
    "swpra.Telefon, swpra.email, swpra.wzrost, swpra.kolnierz, swpra.obuwie, swpra.Uwagi FROM swpra, swgpc, "
    "swkom WHERE swpra.indgpc = "
    "swgpc.indgpc And swpra.indkom = swkom.Indkom ORDER BY swpra.nazwisko, swpra.imie ";

class ProgramStatements : public testing::Test {
 protected:
  ProgramStatements() { db_.script(kProgramSchema); }
  SqlDatabase db_;
};

}  // namespace

TEST_F(ProgramStatements, Queries) {
  const std::pair<std::string, const char*> cases[] = {
      {"SELECT -1, '[Kosz]' FROM dbfir UNION SELECT 0, '[Magazyn]' FROM dbfir UNION SELECT indpra, nazwisko "
       "& ' ' & imie FROM swpra ORDER BY 2",
       "3|Bez Działu; 2|Ćwik Adam; 1|Żak Ewa"},
      {"SELECT Indvat, Indvat & ' - ' & Nazwa FROM swvat ORDER BY Nazwa", "23|23 - stawka podstawowa"},
      {"SELECT Indjed, Nazwa FROM swjed ORDER BY Nazwa", "szt|sztuka"},
      {"SELECT sum(ewkar.Ilosc), count(*), sum(ewkar.Ilosc * ewkar.cenazak)  FROM ewkar, swpra WHERE "
       "ewkar.indpra = swpra.indpra",
       "3|4|4101"},
      {kSummary,
       "1. Wg rejestrów|Sprzęt|6|3|10|4441; 2. Wg grup przedmiotów|Komputery|2|1|3|4101; 2. Wg grup "
       "przedmiotów|Meble|4|2|7|340; "
       "3. Wg użytkowników|[Magazyn]|1|0|3|300; 3. Wg użytkowników|[Kosz]|1|0|4|40; 3. Wg użytkowników|Ćwik "
       "Adam|2|2|-|-; "
       "3. Wg użytkowników|Żak Ewa|2|1|3|4101; 4. Wg grup pracowników|Biuro|4|3|3|4101; 5. Wg działów "
       "firmy|Kadry|4|3|3|4101"},
      {kEmployees, "2|-1|Biuro|Kadry|Ćwik Adam|-|-|-|-|-|-|-; 1|-1|Biuro|Kadry|Żak Ewa|-|-|-|-|-|-|-"},
      {"SELECT dboso.indoso, dboso.indoso & '\t' & dboso.nazwisko & ' ' & dboso.imie FROM dbupr RIGHT JOIN "
       "dboso ON dbupr.indoso = dboso.indoso "
       "WHERE dboso.Aktywny = True AND ( dboso.Admin = True Or dbupr.indprg = 'EW' ) ORDER BY "
       "dboso.Nazwisko, dboso.Imie ",
       "AD|AD\tAdministrator Programu; JK|JK\tKowalski Jan"},
      {"SELECT dboso.imie, dboso.nazwisko, dbupr.Poziom, dboso.Haslo FROM dbupr RIGHT JOIN dboso ON "
       "dbupr.indoso = dboso.indoso WHERE "
       "dboso.Aktywny = True AND dboso.Indoso = 'JK' AND ( dboso.Admin = True Or dbupr.indprg = 'EW' ) ",
       "Jan|Kowalski|E+W|-"},
      {"SELECT * FROM dboso WHERE Admin = True ", "AD|Programu|Administrator|-|-1|-1|-|-|-"},
      {"SELECT * FROM dbupr WHERE indprg = 'EW' And indoso = 'jk'", "JK|EW|E+W"},
      {"SELECT * FROM dbpar WHERE indpar = 'BaseReadOnly'", ""},
      {"SELECT * FROM dblnk WHERE tablica = 'EWKAR' And rejestr = 1 And Numer = 'K/1' And Pozycja = 1 ORDER "
       "BY nazwa ",
       ""},
      {"SELECT parent, indewi, nazwa, ilosc, indjed, ikona, numewi, numkat, numser, cenazak FROM ewkar WHERE "
       "indrew = 1 And indpra = 1 And parent "
       "is null ORDER BY nazwa ",
       "-|1|Komputer|1|szt|-|K/1|-|-|2500"},
      {"SELECT parent, indewi, nazwa, ilosc, indjed, ikona, numewi, numkat, numser, cenazak  FROM ewkar "
       "WHERE indrew = 1 And indpra = 1 And "
       "parent = 1 ORDER BY nazwa ",
       "1|2|Monitor|2|szt|-|K/2|-|-|800.5"},
      {"SELECT parent, indewi, nazwa, ilosc, indjed, ikona FROM ewkar WHERE indrew = 1 And indpra = 2 And  "
       "Str(indewi) & '_' & Str(parent)  IN ( "
       "SELECT Str(parent) & '_' & Str(indewi) FROM ewkar WHERE indrew = 1 ) ORDER BY nazwa ",
       "6|5|Pętla A|-|-|-; 5|6|Pętla B|-|-|-"},
      {"SELECT parent, indewi FROM ewkar WHERE indrew = 1 And indpra = 1 And indewi <> 1", "1|2"},
      {"SELECT numewi AS [ost_numer], datazak As [ost_data], iif(isnull(numewi),0,val(numewi)) FROM ewkar "
       "WHERE indrew = 1 ORDER BY 3 DESC ",
       "K/1|2020-05-01|0; K/2|2020-06-01|0; K/10|-|0; -|-|0; -|-|0; -|-|0"},
      {"SELECT * FROM ewkar WHERE indewi = 0", ""},
  };
  for (const auto& [sql, expected] : cases) EXPECT_EQ(db_.rows(sql), expected) << sql;
}

TEST_F(ProgramStatements, TheItemListShowsEveryItemOnceWithItsHolder) {
  EXPECT_EQ(db_.names(itemList("")),
            "indewi,Datazak,Data,Indgew,swgew.nazwa,Indpra,Nazpra,Numewi,Numkat,Numser,Indsew,swsew.nazwa,"
            "ewkar.Nazwa,Ilosc,Indjed,"
            "Cenazak,Wartosc,Srodek,Uwagi,Indoso");
  const auto shown = [&](const std::string& where, const std::string& tail = "") {
    const auto result = db_.engine().query(fromUtf8(itemList(where) + tail));
    std::string text;
    for (size_t row = 0; row < result->rowCount(); ++row)
      text +=
          toUtf8(result->value(row, 12).get<Text>()) + "=" + toUtf8(result->value(row, 6).get<Text>()) + " ";
    return text;
  };
  EXPECT_EQ(shown("", "ORDER BY ewkar.nazwa"),
            "Biurko=[Magazyn] Komputer=Żak Ewa Krzesło=[Kosz] Monitor=Żak Ewa Pętla A=Ćwik Adam Pętla B=Ćwik "
            "Adam ");
  EXPECT_EQ(shown(" AND ewkar.indrew = 1  AND ewkar.nazwa LIKE 'k*' ", " ORDER BY 1 DESC"),
            "Krzesło=[Kosz] Komputer=Żak Ewa ");
  EXPECT_EQ(shown(" AND ewkar.indgew = 2 AND ewkar.indpra = 0 "), "Biurko=[Magazyn] ");
}

TEST_F(ProgramStatements, Changes) {
  const QueryCase steps[] = {
      {"INSERT INTO dbfir (Nazwa) VALUES ('Nazwa firmy...') ", "1"},
      {"UPDATE ewkar SET indpra = 0, parent = 3 WHERE indrew = 1 And indewi = 2", "1"},
      {"UPDATE ewkar SET indpra = -1, parent = Null WHERE indrew = 1 And indewi = 1", "1"},
      {"UPDATE ewkar SET Strord = 5, Strpoz = 2 WHERE indewi = 4", "1"},
      {"DELETE FROM swpra WHERE indpra = 2", "1"},
      {"UPDATE ewkar SET indpra = 0 WHERE indpra > 0 And indpra NOT in (SELECT indpra FROM swpra)", "2"},
      {"DELETE FROM ewkar WHERE indrew = 1 And indewi = 4", "1"},
      {"DELETE FROM dblnk WHERE tablica = 'EWKAR' And rejestr = 1 And Numer = 'K/1' And Pozycja = 1", "0"},
  };
  for (const auto& [sql, expected] : steps) EXPECT_EQ(db_.run(sql), expected) << sql;
  EXPECT_EQ(db_.rows("SELECT indewi, indpra, parent FROM ewkar"), "1|-1|-; 2|0|3; 3|0|-; 5|0|6; 6|0|5");
  EXPECT_EQ(db_.rows("SELECT -1, '[Kosz]' FROM dbfir UNION SELECT 0, '[Magazyn]' FROM dbfir UNION SELECT "
                     "indpra, nazwisko & ' ' & imie FROM "
                     "swpra ORDER BY 2"),
            "-1|[Kosz]; 0|[Magazyn]; 3|Bez Działu; 1|Żak Ewa");
  // A quotation mark in a spliced name breaks the statement and nothing else.
  EXPECT_EQ(db_.rows("SELECT * FROM swrew WHERE nazwa = 'O'Hara'"), "error 3075");
}

// Statements with words left out, doubled or exchanged run or are refused, and a refusal leaves no change
// behind.
TEST_F(ProgramStatements, MangledStatementsAreRunOrRefused) {
  const std::string originals[] = {
      itemList(" AND ewkar.nazwa LIKE 'k*' "),
      kSummary,
      kEmployees,
      "UPDATE ewkar SET indpra = 0 WHERE indpra > 0 And indpra NOT in ( SELECT indpra FROM swpra )",
      "TRANSFORM sum ( ilosc ) SELECT indpra FROM ewkar GROUP BY indpra PIVOT indgew IN ( 1 , 2 )",
      "INSERT INTO swgew ( Nazwa ) SELECT TOP 3 Nazwa FROM ( SELECT * FROM ewkar ) AS x ORDER BY 1",
      "SELECT iif ( a.parent Is Null , 'x' , b.nazwa & 'y' ) FROM ewkar AS a LEFT JOIN ewkar AS b ON "
      "a.parent = b.indewi",
      "CREATE TABLE nowa ( a LONG CONSTRAINT k PRIMARY KEY , b TEXT ( 5 ) NOT NULL DEFAULT 'x' )"};
  std::mt19937 random(7);
  int run = 0, refused = 0;
  for (const std::string& original : originals) {
    std::vector<std::string> words;
    std::istringstream split(original);
    for (std::string word; split >> word;) words.push_back(word);
    for (int round = 0; round < 60; ++round) {
      std::vector<std::string> mangled = words;
      for (unsigned changes = 1 + random() % 3; changes > 0; --changes) {
        const size_t at = random() % mangled.size(), other = random() % mangled.size();
        if (random() % 3 == 0)
          mangled.erase(mangled.begin() + static_cast<std::ptrdiff_t>(at));
        else if (random() % 2 == 0)
          mangled.insert(mangled.begin() + static_cast<std::ptrdiff_t>(at), mangled[other]);
        else
          std::swap(mangled[at], mangled[other]);
      }
      std::string sql;
      for (const auto& word : mangled) sql += word + " ";
      SCOPED_TRACE(sql);
      const Transaction undone(db_.pager());
      std::string result = db_.rows(sql);
      if (result == "error 3064") result = db_.run(sql);
      ++(result.compare(0, 6, "error ") == 0 ? refused : run);
      EXPECT_EQ(db_.pager().level(), 1);
    }
  }
  EXPECT_GT(run, 5);
  EXPECT_GT(refused, 50);
  EXPECT_EQ(db_.rows("SELECT count(*), sum(indpra) FROM ewkar"), "6|5");
}

}  // namespace jet::sql::test
