#pragma once

#include <QList>
#include <QString>

#include "lists/query_model.h"
#include "session/session.h"

namespace tandeko {

// A cell for a table on the clipboard: line ends and tabs inside of it become blanks.
QString clipboardCell(QString text);
// One line of such a table.
QString clipboardRow(const QStringList& cells);

// Rows of a list as text, `columns` in the order given, captions first. `done` receives the number of
// rows that were written when the user stopped it, or all of them.
QString copyRows(Session& session, const QueryModel& model, const QList<int>& rows, const QList<int>& columns,
                 int& done);

}  // namespace tandeko
