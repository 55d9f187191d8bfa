#include <unordered_map>
#include <unordered_set>

#include "platform/statements.h"
#include "platform/text.h"
#include "register/item_store.h"

namespace tandeko {

namespace {

// An item and its components, each behind its set.
std::vector<Placement> collect(jet::Database& database, int item) {
  std::vector<Placement> found;
  const auto holderRow =
      openRows(database, QStringLiteral("SELECT indpra FROM ewkar WHERE indewi = ") + str(item));
  if (holderRow->eof()) return found;
  const int holder = toInt(holderRow->value(u"indpra"));
  std::unordered_set<int> seen;
  const auto append = [&](const QString& condition) {
    const auto rows =
        openRows(database, QStringLiteral("SELECT parent, indewi FROM ewkar WHERE ") + condition);
    for (; !rows->eof(); rows->moveNext()) {
      const int key = toInt(rows->value(u"indewi"));
      if (seen.insert(key).second) found.push_back({key, holder, toInt(rows->value(u"parent"))});
    }
  };
  append(QStringLiteral("indewi = ") + str(item) + QStringLiteral(" And indpra = ") + str(holder));
  for (size_t at = 0; at < found.size(); ++at)
    append(QStringLiteral("parent = ") + str(found[at].item) + QStringLiteral(" And indpra = ") +
           str(holder) + QStringLiteral(" ORDER BY nazwa "));
  return found;
}

// A copy of an item's row for another holder, at the top level; its key, 0 when the item is gone.
int copyRow(const ItemStore& store, int item, int holder) {
  const auto source =
      openRows(store.database, QStringLiteral("SELECT * FROM ewkar WHERE indewi = ") + str(item));
  if (source->eof()) return 0;
  const auto target = openRows(store.database, QStringLiteral("SELECT * FROM ewkar WHERE indewi = 0"));
  target->addNew();
  for (size_t at = 0; at < source->fieldCount(); ++at) {
    const jet::Field& field = source->field(at);
    if (!field.autoNumber()) target->field(at).setValue(field.value());
  }
  target->field(u"Indrew").setValue(jet::Value(int32_t{store.registerKey}));
  target->field(u"Indpra").setValue(jet::Value(int32_t{holder}));
  target->field(u"Parent").setValue({});
  target->update();
  target->setBookmark(target->lastModified());
  return toInt(target->value(u"indewi"));
}

}  // namespace

int PanelPaste(const ItemStore& store, int item, int holder, int newParent, bool plainList) {
  Transaction transaction(store.workspace);
  const auto originals = collect(store.database, item);
  if (originals.empty()) return 0;
  if (newParent > 0) {
    const auto set = placementOf(store, newParent);
    if (!set || set->holder != holder) return 0;
  }
  std::unordered_map<int, int> copies;  // by original
  for (const Placement& original : originals) copies[original.item] = copyRow(store, original.item, holder);
  if (!plainList) {
    for (const Placement& original : originals) {
      const int parent = original.item == item ? newParent : copies[original.parent];
      if (parent > 0)
        execute(store.database, QStringLiteral("UPDATE ewkar SET parent = ") + str(parent) +
                                    QStringLiteral(" WHERE indewi = ") + str(copies[original.item]));
    }
  }
  transaction.commit();
  return copies[item];
}

}  // namespace tandeko
