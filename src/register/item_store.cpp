#include "register/item_store.h"

#include <unordered_map>
#include <unordered_set>

#include "platform/statements.h"
#include "platform/text.h"

namespace tandeko {

namespace {

QString inRegister(const ItemStore& store) {
  return QStringLiteral(" WHERE indrew = ") + str(store.registerKey);
}

// The items of a holder but one, with their parents (0: none).
std::vector<Placement> othersOf(const ItemStore& store, int holder, int item) {
  const auto rows = openRows(store.database, QStringLiteral("SELECT parent, indewi FROM ewkar") +
                                                 inRegister(store) + QStringLiteral(" And indpra = ") +
                                                 str(holder) + QStringLiteral(" And indewi <> ") + str(item));
  std::vector<Placement> others;
  for (; !rows->eof(); rows->moveNext())
    others.push_back({toInt(rows->value(u"indewi")), holder, toInt(rows->value(u"parent"))});
  return others;
}

void writePlacement(const ItemStore& store, const Placement& to) {
  const QString parent = to.parent < 1 ? QStringLiteral("Null") : str(to.parent);
  execute(store.database, QStringLiteral("UPDATE ewkar SET indpra = ") + str(to.holder) +
                              QStringLiteral(", parent = ") + parent + inRegister(store) +
                              QStringLiteral(" And indewi = ") + str(to.item));
}

}  // namespace

std::optional<Placement> placementOf(const ItemStore& store, int item) {
  const auto row =
      openRows(store.database, QStringLiteral("SELECT indpra, parent FROM ewkar") + inRegister(store) +
                                   QStringLiteral(" And indewi = ") + str(item));
  if (row->eof()) return std::nullopt;
  return Placement{item, toInt(row->value(u"indpra")), toInt(row->value(u"parent"))};
}

QString itemName(const ItemStore& store, int item) {
  const auto row =
      openRows(store.database, QStringLiteral("SELECT nazwa FROM ewkar WHERE indewi = ") + str(item));
  return row->eof() ? QString() : toText(row->value(u"nazwa"));
}

bool StructCheck(const ItemStore& store, int item, int holder, int newParent) {
  std::unordered_map<int, int> parents;
  for (const Placement& other : othersOf(store, holder, item)) parents.emplace(other.item, other.parent);
  int current = newParent;
  // More steps than items: the walk goes round items that are each other's parent.
  for (size_t steps = 0; current >= 1 && steps <= parents.size(); ++steps) {
    const auto found = parents.find(current);
    if (found == parents.end()) return false;
    current = found->second;
  }
  return current == 0;
}

std::vector<int> PanelMoveComponents(const ItemStore& store, int item, int from, int to) {
  std::unordered_map<int, std::vector<int>> components;
  for (const Placement& other : othersOf(store, from, item))
    if (other.parent > 0) components[other.parent].push_back(other.item);

  std::vector<int> moved{item};
  std::unordered_set<int> seen{item};
  for (size_t at = 0; at < moved.size(); ++at)
    if (const auto found = components.find(moved[at]); found != components.end())
      for (const int component : found->second)
        if (seen.insert(component).second) moved.push_back(component);
  moved.erase(moved.begin());
  for (const int component : moved)
    execute(store.database, QStringLiteral("UPDATE ewkar SET indpra = ") + str(to) + inRegister(store) +
                                QStringLiteral(" And indewi = ") + str(component));
  return moved;
}

MoveOutcome PanelMoveItem(const ItemStore& store, int item, int holder, int newParent,
                          const std::optional<Placement>& seen) {
  Transaction transaction(store.workspace);
  const auto now = placementOf(store, item);
  if (!now) return {MoveResult::Gone, {}};
  if (seen && *seen != *now) return {MoveResult::Elsewhere, {}};
  const Placement wanted{item, holder, newParent < 1 ? 0 : newParent};
  if (wanted == *now) return {MoveResult::Unchanged, {}};
  if (wanted.parent > 0 && !StructCheck(store, item, holder, wanted.parent))
    return {MoveResult::WrongStructure, {}};

  MoveOutcome outcome{MoveResult::Moved, {{*now}, {wanted}}};
  if (now->holder != holder) {
    for (const int component : PanelMoveComponents(store, item, now->holder, holder)) {
      const auto moved = placementOf(store, component);
      if (!moved) continue;
      outcome.record.before.push_back({component, now->holder, moved->parent});
      outcome.record.after.push_back(*moved);
    }
  }
  writePlacement(store, wanted);
  transaction.commit();
  return outcome;
}

MoveOutcome PanelMoveToWarehouse(const ItemStore& store, int item, int newParent) {
  return PanelMoveItem(store, item, kWarehouse, newParent);
}

MoveOutcome PanelMoveToBin(const ItemStore& store, int item, int newParent) {
  return PanelMoveItem(store, item, kBin, newParent);
}

QString undoMove(const ItemStore& store, const MoveRecord& record) {
  const auto nameFor = [&store](int item) {
    const QString name = itemName(store, item);
    return name.isEmpty() ? QStringLiteral("(usunięty)") : name;
  };
  Transaction transaction(store.workspace);
  for (const Placement& left : record.after)
    if (placementOf(store, left.item) != left) return nameFor(left.item);
  const Placement& home = record.before.front();
  if (home.parent > 0 && !StructCheck(store, home.item, home.holder, home.parent))
    return nameFor(home.parent);
  for (size_t at = record.before.size(); at-- > 0;) writePlacement(store, record.before[at]);
  transaction.commit();
  return {};
}

bool hasComponents(const ItemStore& store, int item) {
  return !openRows(store.database, QStringLiteral("SELECT * FROM ewkar") + inRegister(store) +
                                       QStringLiteral(" And parent = ") + str(item))
              ->eof();
}

DeleteResult deleteFromBin(const ItemStore& store, int item) {
  Transaction transaction(store.workspace);
  const auto now = placementOf(store, item);
  if (!now || now->holder >= kWarehouse) return DeleteResult::NotInBin;
  if (hasComponents(store, item)) return DeleteResult::HasComponents;
  execute(store.database, QStringLiteral("DELETE FROM ewkar") + inRegister(store) +
                              QStringLiteral(" And indewi = ") + str(item));
  transaction.commit();
  return DeleteResult::Deleted;
}

}  // namespace tandeko
