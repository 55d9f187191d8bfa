#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "jet/sql/expression.h"

// The steps of a running query. A step moves its slots from row to row.
namespace jet::sql {

class PlanNode {
 public:
  virtual ~PlanNode() = default;

  // Back before the first row. Rows of outer queries, and of the left sides of enclosing nested loops, are
  // read afresh.
  virtual void open(EvalContext& c) = 0;
  // Moves the slots to the next row that passes the filters; false at the end.
  bool next(EvalContext& c) {
    while (advance(c))
      if (passes(filters, c)) return true;
    return false;
  }
  virtual void explain(PlanText& text, int depth) const = 0;

  std::vector<Slot*> slots;            // those that this step and the ones below it move
  std::vector<ExpressionPtr> filters;  // of WHERE and ON: a row is kept when all are True
  bool isStatic = true;                // the rows depend on no row from outside

  static bool passes(const std::vector<ExpressionPtr>& conditions, EvalContext& c) {
    for (const auto& condition : conditions)
      if (!isTrue(condition->test(c))) return false;
    return true;
  }

 protected:
  virtual bool advance(EvalContext& c) = 0;
  std::u16string filterNote() const { return filters.empty() ? u"" : u", filter"; }
};

using PlanNodePtr = std::unique_ptr<PlanNode>;

// One row without columns: a SELECT without FROM, and the place of the outer row in a correlated query.
class OneRow : public PlanNode {
 public:
  void open(EvalContext&) override { done_ = false; }
  void explain(PlanText& text, int depth) const override { text.line(depth, u"one row" + filterNote()); }

 protected:
  bool advance(EvalContext&) override { return !std::exchange(done_, true); }

 private:
  bool done_ = false;
};

// Conditions that concern no row below: checked once, when the step is opened.
class Gate : public PlanNode {
 public:
  Gate(PlanNodePtr input, std::vector<ExpressionPtr> tests)
      : conditions(std::move(tests)), input_(std::move(input)) {
    slots = input_->slots;
  }
  void open(EvalContext& c) override {
    isOpen_ = passes(conditions, c);
    if (isOpen_) input_->open(c);
  }
  void explain(PlanText& text, int depth) const override {
    text.line(depth, u"gate");
    input_->explain(text, depth + 1);
  }

  std::vector<ExpressionPtr> conditions;

 protected:
  bool advance(EvalContext& c) override { return isOpen_ && input_->next(c); }

 private:
  PlanNodePtr input_;
  bool isOpen_ = false;
};

// Rows of used columns, kept so that slots can be put back on them.
class SlotBuffer {
 public:
  explicit SlotBuffer(std::vector<Slot*> slots) : slots_(std::move(slots)) {}
  void clear();
  void append(EvalContext& c);
  void restore(size_t row) const;
  size_t size() const { return rows_; }

 private:
  struct Part {
    Slot* slot;
    std::vector<int> columns;  // used ones
    std::vector<int> place;    // by column: position within the part
    size_t first;              // position of the part within a row
  };
  std::vector<Slot*> slots_;
  std::vector<Part> parts_;  // found out when first used: all names are resolved then
  size_t width_ = 0, rows_ = 0;
  std::vector<Value> values_;
  std::vector<RowId> ids_;
  std::vector<bool> nullRows_;
};

}  // namespace jet::sql
