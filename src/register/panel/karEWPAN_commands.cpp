// What the panel's menus, keys and drops do.

#include "errors/error_reporter.h"
#include "people/dokSWPRA.h"
#include "people/employee_store.h"
#include "platform/statements.h"
#include "platform/text.h"
#include "register/dokEWKAR.h"
#include "register/frmPodziel.h"
#include "register/panel/karEWPAN.h"
#include "register/require_register.h"

namespace tandeko {

namespace {

constexpr size_t kMostUndo = 50;

QString inQuotes(const QString& text) { return QStringLiteral("„") + text + QStringLiteral("”"); }

}  // namespace

bool karEWPAN::supports(Command command) const {
  switch (command) {
    case Command::PraWidokDuze:
    case Command::PraWidokMale:
    case Command::PraWidokSzczeg:
    case Command::PraWidokLista:
    case Command::PanelMagazyn:
    case Command::PanelKosz:
      return true;
    case Command::PraNowy:
      return session_.databaseOpen() && mayChange();
    case Command::PraWlas:
      return lstPracownik_->selectedEmployee() > 0;
    case Command::PraUsun:
      return lstPracownik_->selectedEmployee() > 0 && mayChange();
    case Command::SprzNowy:
      // Without a register the command offers to make one.
      return holderOf(*last_) &&
             (register_.key < 1 ? session_.databaseOpen() && session_.UserCanWrite() : mayChange());
    case Command::SprzWlas:
      return last_->selectedItem() > 0;
    case Command::SprzPodziel:
    case Command::SprzUsun:
      return last_->selectedItem() > 0 && mayChange();
    case Command::SprzKopiuj:
      return last_->selectedItem() > 0;
    case Command::SprzWklej:
      return copied_.item > 0 && holderOf(*last_) && mayChange();
    default:
      return false;
  }
}

void karEWPAN::run(Command command) {
  if (!supports(command)) return;
  using Mode = EmployeeList::Mode;
  switch (command) {
    case Command::PraWidokDuze:
      return lstPracownik_->setMode(Mode::LargeIcons);
    case Command::PraWidokMale:
      return lstPracownik_->setMode(Mode::SmallIcons);
    case Command::PraWidokSzczeg:
      return lstPracownik_->setMode(Mode::Details);
    case Command::PraWidokLista:
      return lstPracownik_->setMode(Mode::List);
    case Command::PanelMagazyn:
    case Command::PanelKosz:
      return setPaneShown(command, !isOn(command));
    case Command::PraNowy:
      return PanelEditEmployee(0);
    case Command::PraWlas:
      return PanelEditEmployee(lstPracownik_->selectedEmployee());
    case Command::PraUsun:
      return PanelDeleteEmployee();
    case Command::SprzNowy:
      return PanelNewItem();
    case Command::SprzWlas:
      return PanelEditItem();
    case Command::SprzPodziel:
      return PanelSplit();
    case Command::SprzUsun:
      return PanelDeleteItem();
    case Command::SprzKopiuj:
      return PanelCopy();
    case Command::SprzWklej:
      return PanelPaste();
    default:
      return;
  }
}

bool karEWPAN::isOn(Command command) const {
  using Mode = EmployeeList::Mode;
  switch (command) {
    case Command::PraWidokDuze:
      return lstPracownik_->mode() == Mode::LargeIcons;
    case Command::PraWidokMale:
      return lstPracownik_->mode() == Mode::SmallIcons;
    case Command::PraWidokSzczeg:
      return lstPracownik_->mode() == Mode::Details;
    case Command::PraWidokLista:
      return lstPracownik_->mode() == Mode::List;
    case Command::PanelMagazyn:
      return !pbxMagazyn_->isHidden();
    case Command::PanelKosz:
      return !pbxKosz_->isHidden();
    default:
      return false;
  }
}

void karEWPAN::drop(ItemTreeView& source, int item, const ItemDrag::Target& target) {
  last_ = &source;
  if (!target.tree) {
    if (&source != treeSprzet_ || target.employee != lstPracownik_->selectedEmployee())
      moveItem(source, item, target.employee, 0);
    return;
  }
  const auto holder = holderOf(*target.tree);
  if (!holder || (target.tree == &source && target.item == item)) return;
  last_ = target.tree;
  moveItem(source, item, *holder, register_.isList() ? 0 : target.item);
}

void karEWPAN::moveItem(ItemTreeView& source, int item, int holder, int newParent) {
  guarded(session_, "PanelMoveItem", [&] {
    const int from = holderOf(source).value_or(holder);
    const ItemRow* row = source.items().rowAt(source.items().indexOf(item));
    const QString name = row ? toQString(row->name) : itemName(store(), item);
    std::optional<Placement> seen;
    if (row) seen = Placement{item, from, row->parent.value_or(0)};
    const MoveOutcome outcome = tandeko::PanelMoveItem(store(), item, holder, newParent, seen);
    switch (outcome.result) {
      case MoveResult::WrongStructure:
        session_.messages().refuse(
            QStringLiteral("Próba utworzenia błędnej struktury. Element nie zostanie przesunięty."));
        return;
      case MoveResult::Moved:
        refillAfterMove(from, holder, item);
        return moved(outcome.record, name);
      case MoveResult::Unchanged:
        return;
      case MoveResult::Gone:
      case MoveResult::Elsewhere:
        refill();
        return tellChanged(item, name);
    }
  });
}

void karEWPAN::tellChanged(int item, const QString& name) {
  const auto now = placementOf(store(), item);
  session_.messages().refuse(
      QStringLiteral("Przedmiot ") + inQuotes(name) + QStringLiteral(" został w międzyczasie ") +
      (now ? QStringLiteral("przeniesiony przez innego użytkownika: ") + holderName(now->holder)
           : QStringLiteral("usunięty przez innego użytkownika")) +
      QStringLiteral(". Panel pokazuje teraz aktualny stan."));
}

void karEWPAN::refillAfterMove(int from, int to, int item) {
  ItemTreeView* source = treeOf(from);
  ItemTreeView* target = treeOf(to);
  if (source && source != target) PanelFillTree(*source, from);
  if (target) PanelFillTree(*target, to, item);
}

void karEWPAN::moved(const MoveRecord& record, const QString& itemText) {
  if (undo_.size() == kMostUndo) undo_.erase(undo_.begin());
  undo_.push_back({register_.key, record, itemText});
  QString note = QStringLiteral("Przeniesiono: ") + itemText + QStringLiteral(" - ") +
                 holderName(record.after.front().holder);
  if (record.after.size() > 1)
    note += QStringLiteral(", wraz z elementami: ") + QString::number(record.after.size() - 1);
  session_.setStatusText(note + QStringLiteral("  (Cofnij: Ctrl+Z)"));
  refreshLists();
}

void karEWPAN::PanelUndo() {
  if (undo_.empty() || !mayChange()) return;
  guarded(session_, "PanelUndo", [this] {
    const Undo last = undo_.back();
    const QString obstacle =
        undoMove({session_.workspace(), session_.database(), last.registerKey}, last.record);
    undo_.pop_back();
    refillAfterMove(last.record.after.front().holder, last.record.before.front().holder,
                    last.record.before.front().item);
    if (obstacle.isEmpty()) {
      session_.setStatusText(QStringLiteral("Cofnięto: ") + last.itemText + QStringLiteral(" - ") +
                             holderName(last.record.before.front().holder));
      refreshLists();
    } else {
      session_.messages().refuse(QStringLiteral("Nie można cofnąć przeniesienia przedmiotu ") +
                                 inQuotes(last.itemText) + QStringLiteral(", ponieważ przedmiot ") +
                                 inQuotes(obstacle) + QStringLiteral(" został w międzyczasie zmieniony."));
    }
  });
}

void karEWPAN::PanelNewItem() {
  const auto holder = holderOf(*last_);
  if (holder && requireRegister(session_)) openItemForm({0, *holder, last_->selectedItem(), formName()});
}

void karEWPAN::PanelEditItem() {
  ItemFormRequest request;
  request.item = last_->selectedItem();
  request.karParent = formName();
  openItemForm(request);
}

void karEWPAN::openItemForm(const ItemFormRequest& request) {
  if (auto* form = dokEWKAR::open(session_, request))
    connect(form, &dokEWKAR::saved, this, &karEWPAN::selectItem, Qt::UniqueConnection);
}

void karEWPAN::selectItem(int item) {
  for (ItemTreeView* tree : {treeSprzet_, treeMagazyn_, treeKosz_}) {
    const QModelIndex index = tree->items().indexOf(item);
    if (!index.isValid()) continue;
    tree->setCurrentIndex(index);
    tree->scrollTo(index);
  }
}

void karEWPAN::PanelSplit() {
  guarded(session_, "PanelSplit", [this] {
    const int item = last_->selectedItem();
    if (!openRows(session_.database(), QStringLiteral("SELECT * FROM ewkar WHERE parent = ") + str(item))
             ->eof()) {
      session_.messages().refuse(QStringLiteral(
          "Nie można podzielić przedmiotu, który ma przypisane elementy. Usuń lub przesuń elementy "
          "przypisane do przedmiotu i spróbuj ponownie."));
      return;
    }
    const auto source = loadItem(session_.database(), item);
    if (!source) return KarRefresh();
    frmPodziel dialog(session_, *source, register_.key, window());
    if (dialog.exec() != QDialog::Accepted) return;
    KarRefresh();
    selectItem(dialog.newItem());
    refreshLists();
  });
}

void karEWPAN::PanelEditEmployee(int employee) { dokSWPRA::open(session_, employee, kPanelCaller); }

void karEWPAN::PanelDeleteItem() {
  const int item = last_->selectedItem();
  const auto holder = holderOf(*last_);
  if (item < 1 || !holder) return;
  const QString text = last_->selectedText();
  const QString question =
      last_->selectedIsSet()
          ? QStringLiteral("Usuwany przedmiot: ") + text +
                QStringLiteral(" posiada elementy składowe. Usunąć przedmiot wraz z elementami?")
          : QStringLiteral("Usunąć przedmiot: ") + text + u'?';
  if (!session_.messages().ask(question)) return;
  if (*holder != kBin) {
    moveItem(*last_, item, kBin, 0);
    return;
  }
  guarded(session_, "PanelDeleteItem", [&] {
    const QString name = itemName(store(), item);
    switch (deleteFromBin(store(), item)) {
      case DeleteResult::HasComponents:
        session_.messages().refuse(
            QStringLiteral("Próba utworzenia błędnej struktury. Element nie zostanie usunięty."));
        return;
      case DeleteResult::NotInBin:
        refill();
        return tellChanged(item, name.isEmpty() ? text : name);
      case DeleteResult::Deleted:
        break;
    }
    PanelFillTree(*treeKosz_, kBin);
    session_.setStatusText(QStringLiteral("Usunięto: ") + text);
    refreshLists();
  });
}

void karEWPAN::PanelCopy() {
  copied_ = {last_->selectedItem(), false, last_->selectedText()};
  if (copied_.item > 0) session_.setStatusText(QStringLiteral("Skopiowano: ") + copied_.text);
  Q_EMIT commandsChanged();
}

void karEWPAN::PanelCut() {
  if (last_->selectedItem() < 1 || !mayChange()) return;
  copied_ = {last_->selectedItem(), true, last_->selectedText()};
  session_.setStatusText(QStringLiteral("Wycięto: ") + copied_.text +
                         QStringLiteral("  (wklejenie przeniesie przedmiot)"));
  Q_EMIT commandsChanged();
}

void karEWPAN::PanelPaste() {
  const auto holder = holderOf(*last_);
  if (!holder || copied_.item < 1) return;
  ItemTreeView& target = *last_;
  const int parent = register_.isList() ? 0 : target.selectedItem();
  if (copied_.cut) {
    guarded(session_, "PanelPaste", [&] {
      const auto place = placementOf(store(), copied_.item);
      ItemTreeView* source = place ? treeOf(place->holder) : nullptr;
      if (parent != copied_.item) moveItem(source ? *source : target, copied_.item, *holder, parent);
    });
    copied_ = {};
    Q_EMIT commandsChanged();
    return;
  }
  guarded(session_, "PanelPaste", [&] {
    const int copy = tandeko::PanelPaste(store(), copied_.item, *holder, parent, register_.isList());
    PanelFillTree(target, *holder, copy);
    if (copy < 1) {
      session_.messages().refuse(QStringLiteral("Nie można wkleić przedmiotu ") + inQuotes(copied_.text) +
                                 QStringLiteral(", ponieważ on sam lub wskazane miejsce zostało w "
                                                "międzyczasie usunięte albo przeniesione."));
      return;
    }
    session_.setStatusText(QStringLiteral("Wklejono: ") + copied_.text);
    refreshLists();
  });
}

void karEWPAN::PanelDeleteEmployee() {
  const int employee = lstPracownik_->selectedEmployee();
  if (employee < 1) return;
  const QString name = lstPracownik_->selectedName();
  if (!session_.messages().ask(employeeDeleteQuestion(name), QStringLiteral("Komunikat"))) return;
  guarded(session_, "PanelDeleteEmployee", [&] {
    const int64_t returned = deleteEmployee(session_.workspace(), session_.database(), employee);
    PanelFillEmployees();
    PanelFillTree(*treeMagazyn_, kWarehouse);
    session_.setStatusText(employeeDeletedNote(name, returned));
    refreshLists();
    session_.KarRefresh(QStringLiteral("karSWPRA"));
  });
}

}  // namespace tandeko
