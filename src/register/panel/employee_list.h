#pragma once

#include <QAbstractTableModel>
#include <QListView>
#include <QPersistentModelIndex>
#include <QStackedWidget>
#include <QTreeView>
#include <vector>

#include "jet/dao/dao.h"

namespace tandeko {

struct EmployeeEntry {
  int id = 0;
  bool active = true;
  QString name;  // surname, blank, first name
  QString room, phone;
};

// The employees that have a group and a department, by surname and first name.
std::vector<EmployeeEntry> loadEmployees(jet::Database& database);

class EmployeeModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  using QAbstractTableModel::QAbstractTableModel;

  void setEntries(std::vector<EmployeeEntry> entries);
  const std::vector<EmployeeEntry>& entries() const { return entries_; }
  int rowOf(int id) const;  // -1 for none

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
  void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

 private:
  std::vector<EmployeeEntry> entries_;
};

// lstPracownik: one list shown as icons, as a list or with details.
class EmployeeList : public QStackedWidget {
  Q_OBJECT

 public:
  enum class Mode { LargeIcons = 0, SmallIcons = 1, List = 2, Details = 3 };  // as stored

  explicit EmployeeList(QWidget* parent = nullptr);

  Mode mode() const { return mode_; }
  void setMode(Mode mode);
  QTreeView& details() { return *details_; }
  // The view that is shown.
  QAbstractItemView& view();

  const EmployeeModel& model() const { return model_; }
  // Shows other entries; the employee that was selected stays so, or else the first becomes it.
  void setEntries(std::vector<EmployeeEntry> entries);
  // 0 for none.
  int selectedEmployee() const;
  QString selectedName() const;
  void select(int employee);
  bool isEmpty() const { return model_.entries().empty(); }

  // The entry under a point of the screen; invalid beside the entries and outside of the list.
  QModelIndex indexAtGlobal(const QPoint& globalPosition) const;
  int employeeAt(const QModelIndex& index) const;
  void showDropTarget(const QModelIndex& index);
  void hideDropTarget() { showDropTarget({}); }

 Q_SIGNALS:
  void employeeSelected(int employee);
  void newKey();
  void deleteKey();
  void editRequested();
  void menuRequested(const QPoint& globalPosition);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void prepare(QAbstractItemView& view);
  bool handleKey(const QKeyEvent& key);
  void sizeCells();

  EmployeeModel model_;
  QTreeView* details_;
  QListView* icons_;
  Mode mode_ = Mode::LargeIcons;
  QPersistentModelIndex dropIndex_;
  int selected_ = 0;
  bool filling_ = false;
};

}  // namespace tandeko
