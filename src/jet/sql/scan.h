#pragma once

#include "jet/sql/plan.h"

// Reading one source: a table from end to end or through an index, or the rows of a query.
namespace jet::sql {

class TableScan : public PlanNode {
 public:
  explicit TableScan(Slot& slot) : slot_(slot) { slots.push_back(&slot); }
  void open(EvalContext&) override { scan_.emplace(slot_.table()->scan()); }
  void explain(PlanText& text, int depth) const override;

 protected:
  bool advance(EvalContext& c) override;

 private:
  Slot& slot_;
  std::optional<Heap::Scan> scan_;
};

// How conditions on a table map to one of its indexes: equality on leading columns, and perhaps one
// more condition on the column behind them. The operands belong to the conditions, which stay filters: an
// index only has to find a superset of the rows.
struct IndexAccess {
  int index = -1;                  // into TableDef::realIndexes
  std::vector<Expression*> equal;  // nullptr: Is Null
  Expression* low = nullptr;       // of the next column, bounds included
  Expression* high = nullptr;
  bool symmetric = false;  // Between: the bounds may be exchanged
  LikeExpression* like = nullptr;
  InListExpression* list = nullptr;
  double estimate = 0;  // rows expected

  // Nothing but equality.
  bool isPoint() const { return !low && !high && !like && !list; }
};

class IndexSeek : public PlanNode {
 public:
  IndexSeek(Slot& slot, IndexAccess access) : slot_(slot), access_(std::move(access)) {
    slots.push_back(&slot);
  }
  void open(EvalContext& c) override;
  void explain(PlanText& text, int depth) const override;

 protected:
  bool advance(EvalContext& c) override;

 private:
  bool addRanges(EvalContext& c);
  void collectRows();
  std::u16string describe() const;

  Slot& slot_;
  IndexAccess access_;
  std::vector<Table::KeyRange> ranges_;
  size_t range_ = 0;
  std::optional<Table::IndexScan> scan_;
  // Ranges of different keys: the rows in the order of the pages, or a whole scan when there are too many.
  bool collected_ = false;
  std::vector<RowId> rows_;
  size_t row_ = 0;
  std::optional<Heap::Scan> whole_;
};

class QueryScan : public PlanNode {
 public:
  explicit QueryScan(Slot& slot) : slot_(slot) { slots.push_back(&slot); }
  void open(EvalContext& c) override { slot_.rows()->open(c); }
  void explain(PlanText& text, int depth) const override;

 protected:
  bool advance(EvalContext& c) override;

 private:
  Slot& slot_;
};

// The best index for `conditions` (all of them must hold); the operands may use `available` slots and those
// of outer queries, that is everything but `unavailable`. nullopt when no index helps.
std::optional<IndexAccess> chooseIndex(const Slot& slot, const std::vector<Expression*>& conditions,
                                       const std::vector<const Slot*>& unavailable,
                                       const Collation& collation);

}  // namespace jet::sql
