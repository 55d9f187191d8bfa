#pragma once

#include <QString>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "jet/dao/dao.h"
#include "register/current_register.h"

// The items of one holder as a tree of sets and components, without any window.
namespace tandeko {

// What a node shows of an item's row.
struct ItemRow {
  int id = 0;
  std::optional<int> parent;
  jet::Text name, unit, number, catalogNumber, serialNumber;
  std::optional<double> quantity;
  std::optional<jet::Currency> price;
  std::optional<int> icon;
};

// The name and, in brackets, what the register's switches ask for: "Drabina [L/0007, 2szt, 12,5 zł]". A
// list that begins with the quantity keeps one leading blank.
QString PanelNodeText(const ItemRow& row, const CurrentRegister& shown);

class ItemTree {
 public:
  struct Node {
    ItemRow item;
    int parent = -1;  // position of the set's node, -1 at the top level
    int row = 0;      // place among its siblings
    int firstChild = 0, childCount = 0;
  };

  // The items of `holder` in a register, ordered by name at every level, read by one query. Damage hides
  // nothing: items that are each other's parent, and components whose set is gone or with another holder,
  // stand behind the others at the top level, where they can be moved or deleted.
  static ItemTree load(jet::Database& database, int registerKey, int holder);
  // The same from rows that are ordered by name already.
  static ItemTree build(std::vector<ItemRow> rows);

  // The nodes; siblings stand side by side.
  const std::vector<Node>& nodes() const { return nodes_; }
  int topLevelCount() const { return topLevel_; }
  // The node of an item, -1 when the tree has none.
  int find(int item) const;

 private:
  std::vector<Node> nodes_;
  int topLevel_ = 0;
  std::unordered_map<int, int> places_;
};

}  // namespace tandeko
