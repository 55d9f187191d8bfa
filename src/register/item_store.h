#pragma once

#include <QString>
#include <optional>
#include <vector>

#include "jet/dao/dao.h"
#include "register/holder.h"

// Changes of a register's items: every transfer moves an item with all its components, since a component
// always has the holder of its set. A parent of 0 stands for the top level. All throw jet::Error, and what
// throws leaves the file as it was.
namespace tandeko {

// The register whose items are changed.
struct ItemStore {
  jet::Workspace& workspace;
  jet::Database& database;
  int registerKey;
};

// Where an item is.
struct Placement {
  int item = 0;
  int holder = 0;
  int parent = 0;
  bool operator==(const Placement&) const = default;
};

// nullopt when the register has no such item.
std::optional<Placement> placementOf(const ItemStore& store, int item);
QString itemName(const ItemStore& store, int item);

enum class MoveResult {
  Moved,
  Unchanged,       // it is there already
  WrongStructure,  // the new parent is the item itself, one of its components, or of another holder
  Gone,            // deleted meanwhile by another copy of the program
  Elsewhere,       // moved meanwhile by another copy
};

// What a move changed: the item first, then its components.
struct MoveRecord {
  std::vector<Placement> before, after;
};

struct MoveOutcome {
  MoveResult result = MoveResult::Unchanged;
  MoveRecord record;  // of a move that was made
};

// Moves an item with its components to an employee. The source is where the file says the item is now,
// so that a move made meanwhile by another copy does not part a set from its components. `seen`: where the
// user saw it; when the item is no longer there, nothing is moved.
MoveOutcome PanelMoveItem(const ItemStore& store, int item, int holder, int newParent,
                          const std::optional<Placement>& seen = std::nullopt);
MoveOutcome PanelMoveToWarehouse(const ItemStore& store, int item, int newParent);
MoveOutcome PanelMoveToBin(const ItemStore& store, int item, int newParent);

// Gives all components of an item, at every depth, from one holder to another; returns their keys.
// Part of a move: to be called inside of a transaction.
std::vector<int> PanelMoveComponents(const ItemStore& store, int item, int from, int to);

// Whether the item may become a component of `newParent`, held by `holder`.
bool StructCheck(const ItemStore& store, int item, int holder, int newParent);

// Takes a move back. The name of the item that stands in the way when one of the items, or the set it
// came from, has been changed or deleted since; nothing is written then. An empty text: done.
QString undoMove(const ItemStore& store, const MoveRecord& record);

bool hasComponents(const ItemStore& store, int item);
enum class DeleteResult {
  Deleted,
  HasComponents,
  NotInBin,  // deleted or taken out of the bin meanwhile by another copy of the program
};
// Deletes an item from the bin, or writes nothing.
DeleteResult deleteFromBin(const ItemStore& store, int item);

// Copies an item with its components, from whichever register, to a holder and into a set (0: top level). A
// plain list gets copies without structure. Returns the key of the copied item's copy; 0, and nothing is
// written, when the item is gone or the holder does not have that set.
int PanelPaste(const ItemStore& store, int item, int holder, int newParent, bool plainList);

}  // namespace tandeko
