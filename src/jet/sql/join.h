#pragma once

#include <unordered_map>

#include "jet/sql/plan.h"

// Joins of two steps. An outer join keeps every left row: one without a partner gets a row of Nulls.
namespace jet::sql {

// Join keys of the rows of a buffer, by number or by bytes. Rows of one key are found in the order of their
// entry.
class KeyTable {
 public:
  static constexpr uint32_t kNone = UINT32_MAX;
  void clear(bool integers);
  void insert(int64_t key, uint32_t row);
  void insert(const std::string& key, uint32_t row);
  uint32_t find(int64_t key) const;
  uint32_t find(const std::string& key) const;
  uint32_t nextOf(uint32_t row) const { return next_[row]; }

 private:
  struct Place {
    int64_t key = 0;
    uint32_t first = kNone, last = kNone;
  };
  void link(Place& place, uint32_t row);
  void grow();
  size_t bucket(int64_t key) const;

  std::vector<Place> places_;  // open addressing, integer keys
  size_t used_ = 0;
  std::unordered_map<std::string, Place> bytes_;
  std::vector<uint32_t> next_;
};

// For each row of the left step the rows of the right one that satisfy the conditions.
class Join : public PlanNode {
 public:
  void open(EvalContext& c) override;
  void explain(PlanText& text, int depth) const override;

  std::vector<ExpressionPtr> conditions;  // of an outer join part of the match

 protected:
  Join(PlanNodePtr left, PlanNodePtr right, bool outer);
  bool advance(EvalContext& c) override;
  virtual std::u16string_view name() const = 0;
  // Begins the candidates for the left row that was read.
  virtual void startCandidates(EvalContext& c) = 0;
  // Puts the next candidate into the right step's slots; false after the last.
  virtual bool nextCandidate(EvalContext& c) = 0;

  PlanNodePtr left_, right_;
  const bool outer_;

 private:
  bool haveLeft_ = false, matched_ = false;
};

// Looks up the partners of each left row in a table of the right rows. The sides of `keys` are left, right.
class HashJoin : public Join {
 public:
  struct Key {
    Expression* left;
    Expression* right;
    Type type;  // that both are compared as
  };
  HashJoin(PlanNodePtr left, PlanNodePtr right, std::vector<Key> keys, bool outer);
  void open(EvalContext& c) override;

  std::vector<ExpressionPtr> keyConditions;  // own the key expressions, are not evaluated

 protected:
  bool advance(EvalContext& c) override;
  std::u16string_view name() const override { return u"hash join"; }
  void startCandidates(EvalContext& c) override;
  bool nextCandidate(EvalContext& c) override;

 private:
  void build(EvalContext& c);
  uint32_t probe(EvalContext& c);
  bool appendKey(bool leftSide, EvalContext& c);

  std::vector<Key> keys_;
  bool integers_ = false, built_ = false;
  SlotBuffer buffer_;
  KeyTable table_;
  std::string key_;
  uint32_t match_ = KeyTable::kNone;
};

// Opens the right side again for each left row. The right side reads what it needs of the left row itself (an
// index seek) or is kept in memory.
class NestedLoop : public Join {
 public:
  NestedLoop(PlanNodePtr left, PlanNodePtr right, bool outer)
      : Join(std::move(left), std::move(right), outer) {}

 protected:
  std::u16string_view name() const override { return u"nested loop"; }
  void startCandidates(EvalContext& c) override { right_->open(c); }
  bool nextCandidate(EvalContext& c) override { return right_->next(c); }
};

// Keeps the rows of a static step, to be read many times.
class Kept : public PlanNode {
 public:
  explicit Kept(PlanNodePtr input);
  void open(EvalContext& c) override;
  void explain(PlanText& text, int depth) const override;

 protected:
  bool advance(EvalContext& c) override;

 private:
  PlanNodePtr input_;
  SlotBuffer buffer_;
  bool filled_ = false;
  size_t row_ = 0;
};

}  // namespace jet::sql
