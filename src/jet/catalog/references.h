#pragma once

#include <string>
#include <vector>

#include "jet/catalog/catalog.h"
#include "jet/storage/btree.h"

namespace jet {

// The enforced relationships of a table, from both sides, as its logical indexes tell them. The columns of
// the two real indexes correspond one by one. Throws 3049 when the other side is missing.
class References {
 public:
  References(Catalog& catalog, const TableDef& def);

  // This table's rows must find their key in another one (or in this one).
  struct Foreign {
    int real;  // own index
    TableDefPtr primary;
    int primaryReal;
    std::vector<KeyColumn> keyColumns;  // of the primary side's index
  };
  // Rows of another table (or of this one) refer to this table's rows.
  struct Primary {
    enum class OnDelete { Refuse, Cascade, SetNull };
    int real;  // own index
    TableDefPtr foreign;
    int foreignReal;
    bool cascadeUpdates;
    OnDelete onDelete;
  };
  const std::vector<Foreign>& foreign() const { return foreign_; }
  const std::vector<Primary>& primary() const { return primary_; }
  bool empty() const { return foreign_.empty() && primary_.empty(); }

 private:
  std::vector<Foreign> foreign_;
  std::vector<Primary> primary_;
};

// The values of `index`'s columns of a row given by ordinals, as a key of `otherIndex` of `other`; empty when
// one of them is Null, which no relationship follows.
std::string referenceKey(const RealIndex& index, std::span<const Value> values, const TableDef& other,
                         const RealIndex& otherIndex);
// The same where the other index's key columns are known.
std::string referenceKey(const RealIndex& index, std::span<const Value> values,
                         std::span<const KeyColumn> otherColumns);

BTree indexTree(Pager& pager, const TableDef& def, int real);

}  // namespace jet
