#pragma once

#include <gtest/gtest.h>

#include "platform/text.h"
#include "support/test_session.h"

namespace tandeko {

// A new database with the tables that the login and the structure check read: users, rights, parameters,
// programs and registers. It has no user and no register.
inline void makeDatabase(const QString& path, int major = programVersion().major,
                         int minor = programVersion().minor, const QString& password = {}) {
  jet::Workspace workspace;
  const auto database = workspace.createDatabase(toPath(path), jet::kPolishLocale, toU16(password));
  for (const char16_t* statement : {
           u"CREATE TABLE dboso (Indoso TEXT(10) CONSTRAINT pk PRIMARY KEY, Nazwisko TEXT(50), Imie "
           u"TEXT(50), "
           u"Haslo TEXT(50), Aktywny YESNO, Admin YESNO, Email TEXT(50), Telefon TEXT(50), Indkom LONG)",
           u"CREATE TABLE dbupr (Indoso TEXT(10), Indprg TEXT(10), Poziom TEXT(20))",
           u"CREATE TABLE dbprg (Indprg TEXT(10), Nazwa TEXT(50), VerMajor SHORT, VerMinor SHORT)",
           u"CREATE TABLE dbpar (Indpar TEXT(50) CONSTRAINT pk PRIMARY KEY, Wartosc TEXT(255))",
           u"CREATE TABLE swrew (Indrew COUNTER CONSTRAINT pk PRIMARY KEY, Nazwa TEXT(50))",
       })
    database->execute(statement);
  database->execute(
      toU16(QStringLiteral("INSERT INTO dbprg (Indprg, VerMajor, VerMinor) VALUES ('EW', %1, %2)")
                .arg(major)
                .arg(minor)));
}

// Runs a statement on a database file that is not the session's.
inline void runOn(const QString& path, const QString& sql, const QString& password = {}) {
  jet::Workspace workspace;
  jet::Workspace::OpenOptions options;
  options.connect = u";pwd=" + toU16(password) + u";";
  workspace.openDatabase(toPath(path), options)->execute(toU16(sql));
}

// A session with such a database open.
struct DatabaseSession : TestSession {
  DatabaseSession() {
    makeDatabase(path);
    EXPECT_TRUE(session.BaseConnect(path, {}));
  }

  void execute(const QString& sql) { session.database().execute(toU16(sql)); }
  void addUser(const QString& id, bool admin, const QString& password = QStringLiteral("Null"),
               const QString& level = {}) {
    execute(QStringLiteral("INSERT INTO dboso (Indoso, Nazwisko, Imie, Haslo, Aktywny, Admin) VALUES ('%1', "
                           "'Nowak', 'Jan', %2, True, %3)")
                .arg(id, password, admin ? QStringLiteral("True") : QStringLiteral("False")));
    if (!level.isEmpty())
      execute(QStringLiteral("INSERT INTO dbupr (Indoso, Indprg, Poziom) VALUES ('%1', 'EW', '%2')")
                  .arg(id, level));
  }
  // The first field of the first row of a query.
  QString value(const QString& sql) {
    const auto rows = session.database().openRecordset(toU16(sql));
    return rows->eof() ? QStringLiteral("(brak)") : toText(rows->field(size_t{0}).value());
  }

  QString path = file(QStringLiteral("firma.mdb"));
};

}  // namespace tandeko
