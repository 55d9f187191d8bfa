#pragma once

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>

#include "people/dictionary_forms.h"
#include "people/dokSWPRA.h"
#include "people/karSWPRA.h"
#include "platform/statements.h"
#include "platform/text.h"
#include "structure/create.h"
#include "support/dialogs.h"
#include "support/recorded_frame.h"
#include "support/test_session.h"

namespace tandeko {

// A view that counts how often it was told to read its data again.
struct ToldView : ChildForm {
  explicit ToldView(const QString& name) { setObjectName(name); }
  void KarRefresh() override { ++refreshed; }
  int refreshed = 0;
};

// A new firm with the structure that every firm has, its rules included: groups "Biuro" and "Produkcja",
// departments "Dyrekcja" and "Hala", the employees Kowal Jan, Kowalska Janina and Nowak Kow, one unit, item
// group, state and register. Kowal holds a set with a component, Nowak a cable.
struct PeopleFixture : TestSession {
  PeopleFixture() {
    const QString path = file(QStringLiteral("firma.mdb"));
    structure::createDatabase(toPath(path));
    EXPECT_TRUE(session.BaseConnect(path, {})) << session.connectFailure().description.toStdString();
    session.setFrame(&frame);
    for (const char16_t* statement : {
             u"INSERT INTO swgpc (Nazwa) VALUES ('Biuro')",
             u"INSERT INTO swgpc (Nazwa) VALUES ('Produkcja')",
             u"INSERT INTO swkom (Nazwa) VALUES ('Dyrekcja')",
             u"INSERT INTO swkom (Nazwa) VALUES ('Hala')",
             u"INSERT INTO swjed (Indjed, Nazwa) VALUES ('szt', 'sztuka')",
             u"INSERT INTO swgew (Nazwa) VALUES ('Meble')",
             u"INSERT INTO swsew (Nazwa) VALUES ('Dobry')",
             u"INSERT INTO swrew (Nazwa, Rodzaj) VALUES ('Wyposażenie', 'S')",
             u"INSERT INTO swpra (Nazwisko, Imie, Aktywny, Indgpc, Indkom, Numpok, Telefon, Wzrost, "
             u"Kolnierz) VALUES ('Kowal', 'Jan', True, 1, 1, '12', '555', 182.5, 41)",
             u"INSERT INTO swpra (Nazwisko, Imie, Aktywny, Indgpc, Indkom, Numpok) VALUES ('Kowalska', "
             u"'Janina', False, 2, 1, '120')",
             u"INSERT INTO swpra (Nazwisko, Imie, Aktywny, Indgpc, Indkom, Numpok) VALUES ('Nowak', 'Kow', "
             u"True, 1, 2, '9')",
             u"INSERT INTO ewkar (indrew, indpra, Nazwa, Indgew, Indsew, Indjed) VALUES (1, 1, 'Komputer', "
             u"1, 1, 'szt')",
             u"INSERT INTO ewkar (indrew, indpra, parent, Nazwa, Indgew, Indsew, Indjed) VALUES (1, 1, 1, "
             u"'Monitor', 1, 1, 'szt')",
             u"INSERT INTO ewkar (indrew, indpra, Nazwa, Indgew, Indsew, Indjed) VALUES (1, 3, 'Kabel', 1, "
             u"1, 'szt')",
         })
      session.database().execute(statement);
  }
  ~PeopleFixture() { closeForms(); }

  void closeForms() {
    qDeleteAll(frame.opened);
    frame.opened.clear();
  }
  int64_t sql(const QString& statement) { return execute(session.database(), statement); }
  // The first column, rows joined by "|"; "-" for Null.
  QString ask(const QString& query) {
    QStringList values;
    for (const auto rows = openRows(session.database(), query); !rows->eof(); rows->moveNext()) {
      const jet::Value value = rows->field(size_t{0}).value();
      values << (value.isNull() ? QStringLiteral("-") : toText(value));
    }
    return values.join(u'|');
  }
  void user(const QString& level) {
    UserState state = session.user();
    state.level = level;
    session.setUser(state);
  }
  ToldView& toldView(const QString& name) {
    auto* view = new ToldView(name);
    frame.opened.push_back(view);
    return *view;
  }

  RecordedFrame frame;
  static constexpr int kKowal = 1, kKowalska = 2, kNowak = 3;
};

}  // namespace tandeko
