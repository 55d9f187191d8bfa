#include "lists/row_copy.h"

#include "lists/long_work.h"

namespace tandeko {

QString clipboardCell(QString text) {
  const QString blank(u' ');
  for (const QString& pair : {QStringLiteral("\r\n"), QStringLiteral("\n\r"), QStringLiteral(".\r")})
    text.replace(pair, blank);
  // A line end of any other kind would break the table just as well.
  for (QChar& sign : text)
    if (sign == u'\t' || sign == u'\r' || sign == u'\n') sign = u' ';
  return text;
}

QString clipboardRow(const QStringList& cells) { return cells.join(u'\t') + QStringLiteral("\r\n"); }

QString copyRows(Session& session, const QueryModel& model, const QList<int>& rows, const QList<int>& columns,
                 int& done) {
  LongWork work(session, QStringLiteral("Kopiowanie wierszy do schowka...."));
  QStringList cells;
  for (const int column : columns) cells << model.columns()[column].caption;
  QString text = clipboardRow(cells);
  done = 0;
  for (const int row : rows) {
    const bool escape = work.step([&] {
      return QStringLiteral("Kopiowanie wierszy do schowka %1% - naciśnij ESC aby przerwać")
          .arg(done * 100LL / rows.size());
    });
    if (escape && session.messages().ask(QStringLiteral("Przerwać kopiowanie wierszy?"))) break;
    for (qsizetype i = 0; i < columns.size(); ++i) cells[i] = clipboardCell(model.cellText(row, columns[i]));
    text += clipboardRow(cells);
    ++done;
  }
  return text;
}

}  // namespace tandeko
