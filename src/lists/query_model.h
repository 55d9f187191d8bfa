#pragma once

#include <QAbstractTableModel>
#include <memory>

#include "jet/dao/dao.h"
#include "lists/sort_text.h"

namespace tandeko {

// How a grid shows the values of a column.
enum class CellFormat {
  General,        // as they are
  ShortDate,      // "Short Date": the day without the time
  GeneralNumber,  // "General Number": a number with as many decimals as it has
  Money,          // a sum with at least two decimals
  YesNo,          // "Yes/No": "Tak" or "Nie"
};

QString formatCell(const jet::Value& value, CellFormat format);

// A column of a list.
struct ListColumn {
  QString caption;
  int field = 0;  // the column of the query, from 0
  CellFormat format = CellFormat::General;
  int width = 12;       // standard width in characters
  QString sort;         // what it is sorted by; empty: the query's column by number
  bool hidden = false;  // in the standard layout

  QString sortColumn() const { return sort.isEmpty() ? QString::number(field + 1) : sort; }
};

// The rows of a query. Nothing is decoded before it is asked for, so that a hundred thousand rows cost
// what the visible ones cost.
class QueryModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  // `keyField`: the query's column that holds the key of a row.
  explicit QueryModel(QList<ListColumn> columns, int keyField = 0, QObject* parent = nullptr);

  const QList<ListColumn>& columns() const { return columns_; }

  // Takes a snapshot; null empties the list.
  void setRows(std::unique_ptr<jet::Recordset> rows);
  int rows() const { return rowCount_; }

  // 0 for a row or field that there is not.
  int key(int row) const;
  // -1 when no row has this key.
  int rowOf(int key) const;
  // Null for a row or field that there is not.
  jet::Value fieldValue(int row, int field) const;
  jet::Type fieldType(int field) const;
  int fieldCount() const { return fieldCount_; }
  // Of all rows; Null counts as 0.
  double sum(int field) const;
  // What the cell shows, in full.
  QString cellText(int row, int column) const;

  // The order that the header shows.
  void setSort(const QList<SortKey>& keys);
  // The column's place in the order from 0, -1 when it has none; with its direction.
  int sortPlace(int column, bool* descending = nullptr) const;
  bool sortedByMany() const { return sort_.size() > 1; }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  bool isNumeric(int column) const;

  QList<ListColumn> columns_;
  int keyField_;
  std::unique_ptr<jet::Recordset> source_;
  int rowCount_ = 0;
  int fieldCount_ = 0;
  QList<SortKey> sort_;
};

}  // namespace tandeko
