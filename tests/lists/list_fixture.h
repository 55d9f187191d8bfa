#pragma once

#include <QLineEdit>
#include <QStringList>

#include "lists/kar_form.h"
#include "lists/sql_text.h"
#include "platform/statements.h"
#include "platform/text.h"
#include "support/test_session.h"

namespace tandeko {

// A list of things with one quick filter: number, name, price, day, flag, notes.
class ThingList : public KarForm {
 public:
  explicit ThingList(Session& session)
      : KarForm(session, QStringLiteral("karTHING"), columnList(), QStringLiteral("1 ASC")) {
    setWindowTitle(QStringLiteral("Rzeczy"));
    txtNazwa = new QLineEdit(this);
    addQuickText(txtNazwa);
    page().addWidget(txtNazwa);
    open();
  }

  static QList<ListColumn> columnList() {
    return {{QStringLiteral("Numer"), 0, CellFormat::General, 8, {}},
            {QStringLiteral("Nazwa"), 1, CellFormat::General, 20, {}},
            {QStringLiteral("Cena"), 2, CellFormat::Money, 10, {}},
            {QStringLiteral("Dzień"), 3, CellFormat::ShortDate, 10, {}},
            {QStringLiteral("Jest"), 4, CellFormat::YesNo, 6, {}},
            {QStringLiteral("Uwagi"), 5, CellFormat::General, 20, {}}};
  }
  QString columnsQuery() const override {
    return QStringLiteral("SELECT id, thing.name, price, day, there, notes, id * 2 FROM thing");
  }

  QLineEdit* txtNazwa;
  int edited = 0;

 protected:
  Conditions quickConditions() const override {
    Conditions conditions;
    if (!txtNazwa->text().isEmpty())
      conditions.add(QStringLiteral(" AND name LIKE '") + likeText(txtNazwa->text()) + QStringLiteral("*' "),
                     QStringLiteral("Nazwa = ") + txtNazwa->text());
    return conditions;
  }
  QString buildStatement(const QString& quick, const QString& filter) const override {
    return columnsQuery() + QStringLiteral(" WHERE id > 0") + quick + filter;
  }
  void clearQuickFilters() override { txtNazwa->clear(); }
  void editRecord() override { edited = currentKey(); }
};

// A session whose database holds `things` of them; the list shown.
struct ListFixture : TestSession {
  explicit ListFixture(const QStringList& things) {
    const QString path = file(QStringLiteral("lista.mdb"));
    {
      jet::Workspace workspace;
      const auto database = workspace.createDatabase(toPath(path), jet::kPolishLocale);
      workspace.beginTrans();
      database->execute(
          u"CREATE TABLE thing (id COUNTER CONSTRAINT pk PRIMARY KEY, name TEXT(50), price CURRENCY, day "
          u"DATETIME, there "
          u"YESNO, notes MEMO)");
      for (const QString& name : things)
        database->execute(
            toU16(QStringLiteral("INSERT INTO thing (name, price, day, there) VALUES ('%1', 12.5, "
                                 "#2/3/2026#, True)")
                      .arg(name)));
      workspace.commitTrans();
    }
    EXPECT_TRUE(session.BaseConnect(path, {}));
    list = std::make_unique<ThingList>(session);
    list->resize(700, 400);
    list->show();
    list->activateWindow();
  }

  int64_t sql(const QString& statement) { return execute(session.database(), statement); }
  // The names from the top.
  QStringList names() const {
    QStringList all;
    for (int row = 0; row < list->DataSource().rows(); ++row) all << list->DataSource().cellText(row, 1);
    return all;
  }

  std::unique_ptr<ThingList> list;
};

}  // namespace tandeko
