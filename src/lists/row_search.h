#pragma once

#include <QStringMatcher>

#include "lists/query_model.h"

namespace tandeko {

// Looks for a text anywhere in the cells of a list, without regard to case.
class RowSearch {
 public:
  // `columns` of the grid, in the order in which they are looked through.
  RowSearch(const QueryModel& model, const QString& text, QList<int> columns);

  // The first column of the row that holds the text, -1 when none does.
  int columnIn(int row) const;

 private:
  const QueryModel& model_;
  QStringMatcher matcher_;
  QList<int> columns_;
};

}  // namespace tandeko
