#include <algorithm>

#include "jet/sql/index_bound.h"
#include "jet/sql/scan.h"

// Which conditions an index of a table can answer.
namespace jet::sql {

using ast::Op;

namespace {

bool isColumn(const Expression& e, const Slot& slot, int ordinal) {
  const auto* column = dynamic_cast<const ColumnExpression*>(&e);
  return column && column->slot == &slot && column->ordinal == ordinal;
}

class Chooser {
 public:
  Chooser(const Slot& slot, const std::vector<Expression*>& conditions,
          const std::vector<const Slot*>& unavailable, const Collation& collation)
      : slot_(slot),
        def_(slot.table()->def()),
        conditions_(conditions),
        unavailable_(unavailable),
        collation_(collation),
        mentioned_(def_.columns.size()) {
    for (const Expression* condition : conditions)
      if (const auto* operation = dynamic_cast<const Operation*>(condition))
        for (const auto& operand : operation->operands)
          if (const auto* column = dynamic_cast<const ColumnExpression*>(operand.get());
              column && column->slot == &slot && column->ordinal >= 0)
            mentioned_[static_cast<size_t>(column->ordinal)] = true;
  }

  std::optional<IndexAccess> best() {
    std::optional<IndexAccess> found;
    for (size_t i = 0; i < def_.realIndexes.size(); ++i) {
      IndexAccess access;
      access.index = static_cast<int>(i);
      if (!mentioned_[static_cast<size_t>(def_.realIndexes[i].columns.front().ordinal)] || !match(access)) continue;
      if (!found || access.estimate < found->estimate) found = std::move(access);
    }
    return found;
  }

 private:
  // The operand has its value before a row of the slot is read.
  bool isReady(const Expression& e) const {
    if (!e.isStable()) return false;
    for (const Slot* slot : slotsOf(e))
      if (std::find(unavailable_.begin(), unavailable_.end(), slot) != unavailable_.end()) return false;
    return true;
  }

  bool canSearch(const ColumnDef& column) const {
    if (!isSearchable(column.type())) return false;
    if (!isText(column.type())) return true;
    const Collation& own = Collation::get(column.lcid, def_.rowLayout.file->version == Version::Jet3);
    return own.isExact() && own.lcid() == collation_.lcid() && own.isJet3() == collation_.isJet3();
  }

  bool isUsable(const Expression& e, Type column) const {
    if (cannotCompare(e.type, column)) return false;
    if (column == Type::Guid && e.type != Type::Guid) return false;
    return isReady(e);
  }

  // Equality of the column with an operand; `operand` stays nullptr for Is Null.
  bool findEqual(int ordinal, Type type, bool nullsMissing, Expression*& operand) const {
    for (Expression* e : conditions_) {
      if (auto* comparison = dynamic_cast<Comparison*>(e); comparison && comparison->op == Op::Equal) {
        for (size_t side = 0; side < 2; ++side) {
          Expression& other = *comparison->operands[1 - side];
          if (!isColumn(*comparison->operands[side], slot_, ordinal) || !isUsable(other, type)) continue;
          operand = &other;
          return true;
        }
      }
      if (auto* null = dynamic_cast<IsNullExpression*>(e); null && !null->negated && !nullsMissing &&
                                                           type != Type::Boolean &&
                                                           isColumn(*null->operands[0], slot_, ordinal)) {
        operand = nullptr;
        return true;
      }
    }
    return false;
  }

  bool findRange(int ordinal, Type type, IndexAccess& access) const {
    for (Expression* e : conditions_) {
      auto* operation = dynamic_cast<Operation*>(e);
      if (!operation || operation->operands.size() < 2) continue;
      if (auto* list = dynamic_cast<InListExpression*>(e);
          list && !list->negated && isColumn(*list->operands[0], slot_, ordinal)) {
        const bool all = std::all_of(list->operands.begin() + 1, list->operands.end(),
                                     [&](const auto& operand) { return isUsable(*operand, type); });
        if (!all) continue;
        access.list = list;
        access.low = access.high = nullptr;
        return true;
      }
      if (auto* like = dynamic_cast<LikeExpression*>(e); like && !like->negated && isText(type) &&
                                                         isColumn(*like->operands[0], slot_, ordinal) &&
                                                         isReady(*like->operands[1])) {
        access.like = like;
        access.low = access.high = nullptr;
        return true;
      }
      if (type == Type::Boolean || type == Type::Guid) continue;
      if (auto* between = dynamic_cast<BetweenExpression*>(e);
          between && !between->negated && isColumn(*between->operands[0], slot_, ordinal) &&
          isUsable(*between->operands[1], type) && isUsable(*between->operands[2], type)) {
        access.low = between->operands[1].get();
        access.high = between->operands[2].get();
        access.symmetric = true;
        return true;
      }
      if (auto* comparison = dynamic_cast<Comparison*>(e)) addBound(*comparison, ordinal, type, access);
    }
    return access.low || access.high;
  }

  void addBound(Comparison& comparison, int ordinal, Type type, IndexAccess& access) const {
    for (size_t side = 0; side < 2; ++side) {
      Expression& other = *comparison.operands[1 - side];
      if (!isColumn(*comparison.operands[side], slot_, ordinal) || !isUsable(other, type)) continue;
      const bool less = comparison.op == Op::Less || comparison.op == Op::LessEqual;
      const bool greater = comparison.op == Op::Greater || comparison.op == Op::GreaterEqual;
      if (!less && !greater) return;
      // column < x bounds from above, x < column from below
      (less == (side == 0) ? access.high : access.low) = &other;
      return;
    }
  }

  bool match(IndexAccess& access) const {
    const RealIndex& index = def_.realIndexes[static_cast<size_t>(access.index)];
    double rows = slot_.tableRows();
    for (const IndexColumn& part : index.columns) {
      const ColumnDef& column = def_.columns[static_cast<size_t>(part.ordinal)];
      if (!canSearch(column)) break;
      Expression* operand = nullptr;
      if (findEqual(part.ordinal, column.type(), index.ignoreNulls, operand)) {
        access.equal.push_back(operand);
        continue;
      }
      if (findRange(part.ordinal, column.type(), access)) {
        rows /= access.list   ? std::max(1.0, 20.0 / static_cast<double>(access.list->operands.size()))
                : access.like ? 20
                              : 4;
      }
      break;
    }
    if (access.equal.empty() && access.isPoint()) return false;
    if (access.equal.size() == index.columns.size()) {
      const double keys = slot_.keyCount(index) > 0 ? slot_.keyCount(index) : 10;
      access.estimate = rows / std::max(1.0, keys);
      // Most of the table behind one key: reading it from end to end is cheaper.
      return index.unique || rows < 200 || access.estimate < rows * 0.7;
    }
    for (size_t i = 0; i < access.equal.size(); ++i) rows /= 10;
    access.estimate = std::max(1.0, rows);
    return true;
  }

  const Slot& slot_;
  const TableDef& def_;
  const std::vector<Expression*>& conditions_;
  const std::vector<const Slot*>& unavailable_;
  const Collation& collation_;
  std::vector<bool> mentioned_;  // columns that stand alone in a condition
};

}  // namespace

std::optional<IndexAccess> chooseIndex(const Slot& slot, const std::vector<Expression*>& conditions,
                                       const std::vector<const Slot*>& unavailable,
                                       const Collation& collation) {
  if (!slot.table() || conditions.empty()) return std::nullopt;
  return Chooser(slot, conditions, unavailable, collation).best();
}

}  // namespace jet::sql
