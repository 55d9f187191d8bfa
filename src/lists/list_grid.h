#pragma once

#include <QHeaderView>
#include <QTableView>

#include "lists/column_layout.h"
#include "lists/query_model.h"

namespace tandeko {

// The header of a list: the arrow of each column that it is sorted by, with its place when there are
// several; a click sorts, the right button chooses the columns.
class SortHeader : public QHeaderView {
  Q_OBJECT

 public:
  explicit SortHeader(QueryModel& model, QWidget* parent = nullptr);

 Q_SIGNALS:
  // `add`: Ctrl was held.
  void sortRequested(int column, bool add);

 protected:
  void initStyleOptionForIndex(QStyleOptionHeader* option, int section) const override;
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  QueryModel& model_;
  Qt::KeyboardModifiers modifiers_;
};

// The grid of a list: whole rows, several may be selected; columns can be moved, sized, hidden and shown.
class ListGrid : public QTableView {
  Q_OBJECT

 public:
  explicit ListGrid(QueryModel& model, QWidget* parent = nullptr);

  QueryModel& rows() const { return model_; }

  // Points; row height and the standard widths follow.
  void setFontSize(int points);
  ColumnLayout columnLayout() const;
  void setColumnLayout(const ColumnLayout& layout);
  // Columns that are shown, from the left.
  QList<int> shownColumns() const;

  // In the order of the list.
  QList<int> selectedRows() const;
  int currentRow() const { return currentIndex().row(); }
  // Makes the row the current and only selected one and shows it.
  // A column brings that cell into view.
  void goToRow(int row, int column = -1);
  void selectRows(const QList<int>& ascending);

 Q_SIGNALS:
  void openRequested();     // Enter or a double click on a row
  void newRequested();      // Insert
  void deleteRequested();   // Delete
  void copyRequested();     // Ctrl+C
  void markAllRequested();  // Ctrl+A
  void menuRequested(const QPoint& globalPosition);
  void selectionMoved();

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

 private:
  void chooseColumns(const QPoint& at);
  void standardWidths();
  void fitColumns();
  int standardWidth(int column) const;

  QueryModel& model_;
  SortHeader* header_;
};

}  // namespace tandeko
