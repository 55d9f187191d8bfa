#pragma once

#include <QDate>
#include <QString>
#include <functional>
#include <optional>

#include "register/document_links.h"
#include "register/item_store.h"

// One item as the item form edits it.
namespace tandeko {

struct ItemData {
  int id = 0;  // 0: not stored yet
  QString name;
  int holder = kWarehouse;
  int parent = 0;  // the set, 0 for none
  int group = 0, state = 0;
  QString unit;
  std::optional<double> quantity, price;
  QString number, serialNumber, catalogNumber;
  QDate issued, purchased;
  QString notes;
  bool fixedAsset = false;
};

// nullopt when the item has been deleted.
std::optional<ItemData> loadItem(jet::Database& database, int id);
// Told when another copy of the program has deleted an item that is to be changed.
inline constexpr char16_t kItemGoneText[] = u"Przedmiot został w międzyczasie usunięty.";
// What the register proposes for a new item; its number is NumNext's.
ItemData proposeItem(jet::Database& database, int registerKey, const QDate& today);

enum class ItemFault { None, NoName, NameWithBackslash, NoGroup, NoState, NoUnit };
// The first thing that keeps an item from being stored.
ItemFault checkItem(const ItemData& item);
// The name of another item with the same inventory number.
std::optional<QString> itemWithNumber(jet::Database& database, int id, const QString& number);

enum class SaveResult { Saved, Incomplete, WrongSet, Gone };
// Whether the row that is being written has everything it needs.
using RowCheck = std::function<bool(const jet::Recordset&)>;
// Stores the item with its links; a new item gets its key. A stored item that changes its holder takes its
// components along. Nothing is written unless the answer is Saved; Incomplete is what `complete` refused.
SaveResult saveItem(const ItemStore& store, ItemData& item, const QString& user, const QList<DocLink>& links,
                    const RowCheck& complete);
LinkAddress linkAddress(int registerKey, int item);

// Splits `quantity` off an item into a new one that is otherwise a copy with the given numbers. Returns
// the new item's key, 0 (nothing written) when the item is gone or does not have that much.
int splitItem(const ItemStore& store, int item, double quantity, const QString& number,
              const QString& serialNumber);

}  // namespace tandeko
