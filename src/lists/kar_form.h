#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include "lists/band_container.h"
#include "lists/list_grid.h"
#include "session/session.h"

class QComboBox;

namespace tandeko {

// What narrows a list: text for the statement, each condition beginning with " AND ", and the same in words,
// parts separated by "; ".
struct Conditions {
  QString text;
  QString description;
  bool removable = false;  // something that "Usuń filtr" takes away

  // Adds a condition and what it says in words; each may be empty. One that has both is removable.
  void add(const QString& condition, const QString& words);
};

// A named filter as the filter dialog hands it to a list. The condition begins with " And ( ".
struct AppliedFilter {
  QString name;
  QString condition;
  QString sums;  // for the columns that are sums
  QString description;
};

// The base of list views: a grid over one query with its sorting, layout, quick filters, the named filter,
// marking and copying of rows, find.
class KarForm : public ChildForm {
  Q_OBJECT

 public:
  // `standardSort`: the sort text of a list whose user never chose another one.
  KarForm(Session& session, const QString& formName, QList<ListColumn> columns, const QString& standardSort);

  ListGrid& grid() const { return *grid_; }
  QueryModel& DataSource() const { return *model_; }
  // The name of the list's section among the stored filters.
  QString RegSection() const { return formName(); }
  // The SELECT that the columns of conditions are taken from.
  virtual QString columnsQuery() const = 0;
  // The statement of the rows shown, without its order.
  QString statement() const { return statement_; }
  QString sort() const { return sort_; }
  // What the list shows in words; empty: everything.
  QString description() const { return description_; }
  const AppliedFilter& filter() const { return filter_; }

  int currentKey() const;
  // False when no row has the key.
  bool goToKey(int key);

  // While one lives the list must not change under the work that is going on: a refresh is put off.
  class Busy {
   public:
    explicit Busy(KarForm& form);
    ~Busy();
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

   private:
    KarForm& form_;
  };

  void KarRefresh() override;
  // Applies a named filter, or takes it away with `apply` false.
  void KarRefresh(const QString& filterName, const QString& condition, const QString& sums,
                  const QString& description, bool apply);
  void KarSaveParam(bool save) override;
  bool hasLayout() const override { return true; }
  bool supports(Command command) const override;
  void run(Command command) override;

  void markRows();
  // The marked rows, or all rows when none is marked. The current row alone is no mark, unless
  // `currentToo` says so.
  void copyMarkedRows(bool currentToo);

 protected:
  Session& session() const { return session_; }
  QVBoxLayout& page() const { return *page_; }  // quick filters first, the grid last

  // The quick filters, and the named filter's part of the statement.
  virtual Conditions quickConditions() const = 0;
  // The whole statement without its order.
  virtual QString buildStatement(const QString& quickCondition, const QString& filterCondition) const = 0;
  virtual void clearQuickFilters() = 0;
  // Fills the combos of the quick filters anew; what was chosen stays.
  virtual void reloadChoices() {}
  // After new rows are shown.
  virtual void rowsChanged() {}
  virtual bool mayChange() const;
  virtual void newRecord() {}
  virtual void editRecord() {}
  virtual void deleteRecords() {}

  class Loading {
   public:
    explicit Loading(KarForm& form) : form_(form) { ++form_.loading_; }
    ~Loading() { --form_.loading_; }
    Loading(const Loading&) = delete;
    Loading& operator=(const Loading&) = delete;

   private:
    KarForm& form_;
  };

  // Registry group of the form's own layout values.
  QString layoutGroup() const;
  // The list follows what is typed after a short pause; Enter does so at once, Esc clears, Down goes to
  // the rows. A combo counts when its choice changes, except while `Loading` lives.
  void addQuickText(QLineEdit* field);
  void addQuickCombo(QComboBox* combo);

  // The bands above the grid, with the names of their parts; the order and the widths that the user gave them
  // belong to the layout.
  struct QuickBand {
    const char16_t *band, *label, *caption, *field;
    int width;  // in characters
  };
  void makeBands(const QString& name);
  QLineEdit* addTextBand(const QuickBand& band);
  // One that is searched by typing; `placeholder` is shown while nothing is chosen.
  QComboBox* addComboBand(const QuickBand& band, const QString& placeholder);
  // "Nowy", "Popraw", "Usuń", "Wybierz", "Zamknij"; the first three follow supports().
  void addButtonBand();

  // To be called by the constructor of the form when all is built.
  void open();
  bool query();
  // query(), put off while the form is busy.
  void requery();
  // Closes the form together with the window of the frame around it.
  void closeWindow();

  bool eventFilter(QObject* watched, QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void buildDescriptionBar();
  void addBand(const QuickBand& band, QWidget* field);
  void readLayout();
  void readBands();
  void storeBands(bool save);
  void showDescription();
  void sortBy(int column, bool add);
  QString qualifier() const;

  Session& session_;
  QueryModel* model_;
  ListGrid* grid_;
  QVBoxLayout* page_;
  BandContainer* bands_ = nullptr;  // null in a list without bands
  QFrame* pboxOpis_ = nullptr;
  QLabel* labOpis_ = nullptr;
  QToolButton* cmdBezFiltru_ = nullptr;
  QTimer quickDelay_;
  qint64 lastQuery_ = 0;  // milliseconds
  QString standardSort_;
  QString sort_;
  QString statement_;
  QString description_;
  bool removable_ = false;
  AppliedFilter filter_;
  int busy_ = 0;
  int loading_ = 0;
  bool refreshPending_ = false;
};

}  // namespace tandeko
