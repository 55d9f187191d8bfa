#pragma once

// The tables of the equipment register as the structure tool makes them, with a few rows.
namespace jet::sql::test {

inline constexpr const char* kProgramSchema = R"(
  CREATE TABLE dbfir (Nazwa TEXT(100), Skrot TEXT(40));
  CREATE TABLE dbprg (Indprg TEXT(2) CONSTRAINT PrimaryKey PRIMARY KEY, Nazwa TEXT(50), VerMajor LONG, VerMinor LONG);
  CREATE TABLE dbpar (Indpar TEXT(50) CONSTRAINT PrimaryKey PRIMARY KEY, Wartosc TEXT(255));
  CREATE TABLE dboso (Indoso TEXT(5) CONSTRAINT PrimaryKey PRIMARY KEY, Imie TEXT(30), Nazwisko TEXT(40), Haslo TEXT(50),
                      Aktywny YESNO, Admin YESNO, Email TEXT(50), Telefon TEXT(30), Indkom LONG);
  CREATE TABLE dbupr (Indoso TEXT(5), Indprg TEXT(2), Poziom TEXT(20), CONSTRAINT PrimaryKey PRIMARY KEY (Indoso, Indprg));
  CREATE TABLE dblnk (Tablica TEXT(10), Rejestr LONG, Numer TEXT(20), Pozycja LONG, Nazwa TEXT(100), Plik TEXT(255), serial LONG,
                      CONSTRAINT PrimaryKey PRIMARY KEY (Tablica, Rejestr, Numer, Pozycja, Nazwa));
  CREATE TABLE swgpc (Indgpc COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, Nazwa TEXT(50));
  CREATE TABLE swkom (Indkom COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, Nazwa TEXT(50));
  CREATE TABLE swjed (Indjed TEXT(10) CONSTRAINT PrimaryKey PRIMARY KEY, Nazwa TEXT(50));
  CREATE TABLE swgew (Indgew COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, Nazwa TEXT(50));
  CREATE TABLE swsew (Indsew COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, Nazwa TEXT(50));
  CREATE TABLE swvat (Indvat TEXT(5) CONSTRAINT PrimaryKey PRIMARY KEY, Nazwa TEXT(50));
  CREATE TABLE swrew (Indrew COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, Nazwa TEXT(50), Rodzaj TEXT(1), NumAuto YESNO, NumSzablon TEXT(50));
  CREATE TABLE swpra (Indpra COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, Nazwisko TEXT(40), Imie TEXT(30), Aktywny YESNO, Indgpc LONG,
                      Indkom LONG, Numpok TEXT(10), Telefon TEXT(30), Email TEXT(50), Wzrost TEXT(10), Kolnierz TEXT(10), Obuwie TEXT(10),
                      Uwagi MEMO);
  CREATE TABLE ewkar (indewi COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, indrew LONG, indpra LONG, parent LONG, Numewi TEXT(30),
                      Numkat TEXT(30), Numser TEXT(30), Nazwa TEXT(100), Ilosc DOUBLE, Indjed TEXT(10), Cenazak CURRENCY, Datazak DATETIME,
                      Data DATETIME, miesiac SHORT, rok SHORT, Indgew LONG, Indsew LONG, Srodek YESNO, Uwagi MEMO, Indoso TEXT(5),
                      ikona SHORT, Strord LONG, Strpoz LONG);
  CREATE INDEX indrew ON ewkar (indrew, indpra);
  CREATE INDEX parent ON ewkar (parent);

  INSERT INTO dbprg VALUES ('EW', 'Ewidencja', 1, 5);
  INSERT INTO dboso (Indoso, Imie, Nazwisko, Aktywny, Admin) VALUES ('AD', 'Programu', 'Administrator', True, True);
  INSERT INTO dboso (Indoso, Imie, Nazwisko, Aktywny) VALUES ('JK', 'Jan', 'Kowalski', True);
  INSERT INTO dboso (Indoso, Imie, Nazwisko, Aktywny) VALUES ('XX', 'Bez', 'Prawa', True);
  INSERT INTO dboso (Indoso, Imie, Nazwisko) VALUES ('ZZ', 'Nie', 'Aktywny');
  INSERT INTO dbupr VALUES ('JK', 'EW', 'E+W');
  INSERT INTO dbupr VALUES ('ZZ', 'EW', 'E+W');
  INSERT INTO swgpc (Nazwa) VALUES ('Biuro');
  INSERT INTO swkom (Nazwa) VALUES ('Kadry');
  INSERT INTO swjed VALUES ('szt', 'sztuka');
  INSERT INTO swvat VALUES ('23', 'stawka podstawowa');
  INSERT INTO swgew (Nazwa) VALUES ('Komputery');
  INSERT INTO swgew (Nazwa) VALUES ('Meble');
  INSERT INTO swsew (Nazwa) VALUES ('nowy');
  INSERT INTO swrew (Nazwa, Rodzaj, NumAuto) VALUES ('Sprzęt', 'S', True);
  INSERT INTO swpra (Nazwisko, Imie, Aktywny, Indgpc, Indkom) VALUES ('Żak', 'Ewa', True, 1, 1);
  INSERT INTO swpra (Nazwisko, Imie, Aktywny, Indgpc, Indkom) VALUES ('Ćwik', 'Adam', True, 1, 1);
  INSERT INTO swpra (Nazwisko, Imie, Indgpc, Indkom) VALUES ('Bez', 'Działu', 1, 99);
  INSERT INTO ewkar (indrew, indpra, Numewi, Nazwa, Ilosc, Indjed, Cenazak, Datazak, Indgew, Indsew, rok, miesiac)
    VALUES (1, 1, 'K/1', 'Komputer', 1, 'szt', 2500, #5/1/2020#, 1, 1, 2020, 5);
  INSERT INTO ewkar (indrew, indpra, parent, Numewi, Nazwa, Ilosc, Indjed, Cenazak, Datazak, Indgew, Indsew, Uwagi)
    VALUES (1, 1, 1, 'K/2', 'Monitor', 2, 'szt', 800.5, #6/1/2020#, 1, 1, 'uwaga');
  INSERT INTO ewkar (indrew, indpra, Numewi, Nazwa, Ilosc, Cenazak, Indgew, Indsew) VALUES (1, 0, 'K/10', 'Biurko', 3, 100, 2, 1);
  INSERT INTO ewkar (indrew, indpra, Nazwa, Ilosc, Cenazak, Indgew, Indsew) VALUES (1, -1, 'Krzesło', 4, 10, 2, 1);
  INSERT INTO ewkar (indrew, indpra, parent, Nazwa, Indgew, Indsew) VALUES (1, 2, 6, 'Pętla A', 2, 1);
  INSERT INTO ewkar (indrew, indpra, parent, Nazwa, Indgew, Indsew) VALUES (1, 2, 5, 'Pętla B', 2, 1);
)";

}  // namespace jet::sql::test
