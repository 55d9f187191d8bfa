#pragma once

#include <array>
#include <vector>

#include "register/current_register.h"
#include "register/dokEWKAR.h"
#include "register/item_store.h"
#include "register/panel/employee_list.h"
#include "register/panel/item_drag.h"
#include "register/panel/item_tree_view.h"
#include "register/panel/pane_container.h"
#include "session/session.h"

namespace tandeko {

// "Panel operacyjny": the items of the current register by holder. Items are handed out, taken back, thrown
// away, copied, split and deleted here; every change is written at once.
class karEWPAN : public ChildForm {
  Q_OBJECT

 public:
  explicit karEWPAN(Session& session, QWidget* parent = nullptr);

  bool supports(Command command) const override;
  void run(Command command) override;
  bool isOn(Command command) const override;
  void KarRefresh() override;
  void KarSaveParam(bool save) override;
  bool hasLayout() const override { return true; }

  bool PanelFillEmployees();
  // Selects `item`, or keeps the selection with 0.
  bool PanelFillTree(ItemTreeView& tree, int holder, int item = 0);
  void PanelNewItem();
  void PanelEditItem();
  void PanelSplit();
  void PanelDeleteItem();
  void PanelCopy();
  void PanelCut();
  void PanelPaste();
  // 0: a new employee.
  void PanelEditEmployee(int employee);
  void PanelDeleteEmployee();
  // Takes the last move back; says so when it cannot.
  void PanelUndo();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void build();
  void connectTree(ItemTreeView& tree);
  void readLayout();
  QString layoutQualifier() const;
  void refill();
  void fillTrees();
  void showHolderInfo(ItemTreeView& tree);
  Pane& paneOf(const ItemTreeView& tree);

  // The holder of a tree; nullopt for the employee's tree when no employee is selected.
  std::optional<int> holderOf(const ItemTreeView& tree) const;
  ItemTreeView* treeOf(int holder);
  QString holderName(int holder) const;
  ItemStore store() const;
  bool mayChange() const;
  void setPaneShown(Command command, bool shown);

  void drop(ItemTreeView& source, int item, const ItemDrag::Target& target);
  // Moves an item, tells about a refusal, refills the trees that show it.
  void moveItem(ItemTreeView& source, int item, int holder, int newParent);
  void moved(const MoveRecord& record, const QString& itemText);
  // Another copy of the program was faster.
  void tellChanged(int item, const QString& name);
  void refillAfterMove(int from, int to, int item);
  void refreshLists();
  void openItemForm(const ItemFormRequest& request);
  // Selects the item in the tree that shows it.
  void selectItem(int item);

  struct Undo {
    int registerKey;
    MoveRecord record;
    QString itemText;
  };
  struct Copied {
    int item = 0;
    bool cut = false;  // pasting moves instead of copying
    QString text;
  };

  Session& session_;
  CurrentRegister register_;
  PaneContainer* coolOkno_ = nullptr;
  EmployeeList* lstPracownik_ = nullptr;
  ItemTreeView* treeSprzet_ = nullptr;
  ItemTreeView* treeMagazyn_ = nullptr;
  ItemTreeView* treeKosz_ = nullptr;
  Pane *pbxPracownik_ = nullptr, *pbxSprzet_ = nullptr, *pbxMagazyn_ = nullptr, *pbxKosz_ = nullptr;
  ItemTreeView* last_ = nullptr;  // the tree last used
  ItemDrag* drag_ = nullptr;
  Copied copied_;
  std::vector<Undo> undo_;
  bool refreshPending_ = false;  // asked for during a drag
};

}  // namespace tandeko
