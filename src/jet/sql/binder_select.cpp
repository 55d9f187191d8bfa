#include <algorithm>

#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/sql/binder.h"
#include "jet/sql/crosstab.h"

namespace jet::sql {

using Kind = ast::Expr::Kind;

namespace {

std::u16string number(size_t n) {
  const std::string digits = std::to_string(n);
  return {digits.begin(), digits.end()};
}

// The place in the select list that a whole number in ORDER BY means.
std::optional<int> ordinalOf(const ast::Expr& e) {
  if (e.kind != Kind::Literal) return std::nullopt;
  const auto* n = e.value.getIf<int32_t>();
  return n ? std::optional<int>(*n) : std::nullopt;
}

std::u16string writtenName(const ast::Expr& e) {
  return e.qualifier.empty() ? e.name : e.qualifier + u"." + e.name;
}

}  // namespace

// For TRANSFORM: outputs behind (or instead of) the select list, and a last grouping expression.
struct ExtraOutputs {
  std::vector<const ast::Expr*> items;
  bool isInstead = false;
  const ast::Expr* key = nullptr;
};

// One SELECT: the outputs with their names, groups, ORDER BY.
class SelectBinder {
 public:
  SelectBinder(Binder& binder, const ast::Select& select, const std::vector<ast::OrderItem>& orderBy,
               Scope* outer, ExtraOutputs extra = {})
      : binder_(binder), select_(select), orderBy_(orderBy), extra_(std::move(extra)) {
    scope_.outer = outer;
  }

  std::unique_ptr<Rows> bind() {
    JoinTree tree = binder_.joinTree(select_.from, select_.where.get(), scope_);
    addItems();
    scope_.aliases = &select_.items;
    scope_.aggregateError = 3095;
    if (isGrouped()) beginGroups();
    for (Item& item : items_)
      if (item.ast) item.expression = binder_.expression(*item.ast, scope_);
    std::vector<ExpressionPtr> having;
    if (select_.having) binder_.conditions(*select_.having, scope_, 3095, having);
    nameColumns();
    bindOrder();

    PlanNodePtr node = plan(std::move(tree), *binder_.context_.collation);
    if (scope_.group) {
      scope_.group = nullptr;
      node = std::make_unique<Grouping>(std::move(node), *groups_.slot, std::move(groups_.keyExpressions),
                                        std::move(groups_.aggregates));
      node->filters = std::move(having);
    }
    return assemble(std::move(node));
  }

 private:
  // One output column.
  struct Item {
    const ast::Expr* ast = nullptr;  // nullptr: of a star
    ExpressionPtr expression;
    std::u16string alias, name, qualifier;  // name and qualifier of a column
    const Slot* slot = nullptr;             // and where it comes from
    int ordinal = -1;
  };

  void addItems() {
    for (const ast::SelectItem& written : select_.items) {
      if (extra_.isInstead) break;
      if (written.star) {
        addStar(written.qualifier);
        continue;
      }
      addItem(*written.expr, written.alias);
    }
    for (const ast::Expr* e : extra_.items) {
      addItem(*e, {});
      items_.back().slot = nullptr;  // takes no part in the naming
    }
  }

  void addItem(const ast::Expr& e, const std::u16string& alias) {
    Item item;
    item.ast = &e;
    item.alias = alias;
    if (item.ast->kind == Kind::Name) {
      const Binder::Column column = binder_.find(item.ast->qualifier, item.ast->name, scope_);
      item.slot = column.slot;
      item.ordinal = column.ordinal;
      if (column.slot) {
        item.name = item.ast->name;
        item.qualifier = item.ast->qualifier.empty() ? column.slot->name() : item.ast->qualifier;
      }
    }
    items_.push_back(std::move(item));
  }

  void addStar(const std::u16string& qualifier) {
    if (scope_.slots.empty()) throw Error(3067, {}, "DAO.Database");
    bool found = false;
    for (Slot* slot : scope_.slots) {
      if (!qualifier.empty() && !sameName(slot->name(), qualifier)) continue;
      found = true;
      for (const int ordinal : slot->displayOrder()) {
        Item item;
        item.slot = slot;
        item.ordinal = ordinal;
        item.name = slot->columns()[static_cast<size_t>(ordinal)].name;
        item.qualifier = slot->name();
        item.expression = std::make_unique<ColumnExpression>(*slot, ordinal);
        items_.push_back(std::move(item));
      }
    }
    if (!found) throw Error(3078, {qualifier}, "DAO.Database");
  }

  bool isGrouped() const {
    if (!select_.groupBy.empty() || select_.having || !extra_.items.empty()) return true;
    for (const auto& item : select_.items)
      if (item.expr && hasAggregate(*item.expr)) return true;
    return std::any_of(orderBy_.begin(), orderBy_.end(), [](const auto& o) { return hasAggregate(*o.expr); });
  }

  void beginGroups() {
    const auto* aliases = std::exchange(scope_.aliases, nullptr);
    scope_.aggregateError = 3098;
    std::vector<ResultColumn> columns;
    std::vector<const ast::Expr*> keys;
    for (const auto& key : select_.groupBy) keys.push_back(key.get());
    if (extra_.key) keys.push_back(extra_.key);
    for (const ast::Expr* key : keys) {
      groups_.keys.push_back(key);
      groups_.keyExpressions.push_back(binder_.expression(*key, scope_));
      columns.push_back(describe(*groups_.keyExpressions.back()));
    }
    scope_.aliases = aliases;
    groups_.slot = &binder_.addSlot(std::make_unique<Slot>(u"", std::move(columns)));
    for (const Item& item : items_)
      if (!item.ast) throw Error(3121, {}, "DAO.Database");
    scope_.group = &groups_;
  }

  static ResultColumn describe(const Expression& e) {
    ResultColumn column;
    if (const auto* source = dynamic_cast<const ColumnExpression*>(&e))
      column = source->slot->columns()[static_cast<size_t>(source->ordinal)];
    column.type = e.type;
    column.size = e.type == Type::Text || e.type == Type::Binary ? e.size : 0;
    return column;
  }

  // --- names

  static std::u16string qualified(const Item& item) {
    return item.qualifier.empty() ? item.name : item.qualifier + u"." + item.name;
  }

  // A column has its own name, with its source's when another source's column or an alias has the same; of
  // equal names only the last one stays.
  std::u16string columnName(size_t i) const {
    const Item& item = items_[i];
    if (!item.alias.empty()) return item.alias;
    bool clashes = false, isRepeated = !item.slot;
    for (size_t j = 0; j < items_.size() && item.slot; ++j) {
      const Item& other = items_[j];
      if (!other.alias.empty()) {
        clashes = clashes || sameName(other.alias, item.name);
      } else if (j != i && other.slot && sameName(other.name, item.name)) {
        clashes = clashes || other.slot != item.slot;
        isRepeated = isRepeated || j > i;
      }
    }
    if (clashes)
      isRepeated = std::any_of(items_.begin() + static_cast<std::ptrdiff_t>(i) + 1, items_.end(),
                               [&](const Item& later) { return sameName(qualified(later), qualified(item)); });
    return isRepeated ? u"Expr" + number(1000 + i) : clashes ? qualified(item) : item.name;
  }

  void nameColumns() {
    for (size_t i = 0; i < items_.size(); ++i)
      for (size_t j = 0; j < i && !items_[i].alias.empty(); ++j)
        if (sameName(items_[j].alias, items_[i].alias)) throw Error(3062, {items_[i].alias}, "DAO.Database");
    columns_.reserve(items_.size());
    for (size_t i = 0; i < items_.size(); ++i) {
      columns_.push_back(describe(*items_[i].expression));
      columns_.back().name = columnName(i);
    }
  }

  // --- ORDER BY

  std::optional<int> outputOf(const ast::Expr& e) {
    if (e.kind == Kind::Name && e.qualifier.empty())
      for (size_t i = 0; i < items_.size(); ++i)
        if (!items_[i].alias.empty() && sameName(items_[i].alias, e.name)) return static_cast<int>(i);
    if (e.kind == Kind::Name) {
      // A name that is a column of several sources may still be the name of one output.
      Binder::Column column;
      try {
        column = binder_.find(e.qualifier, e.name, scope_);
      } catch (const Error&) {
        if (const auto i = columnNamed(writtenName(e))) return i;
        throw;
      }
      if (!column.slot) return columnNamed(writtenName(e));
      for (size_t i = 0; i < items_.size(); ++i)
        if (items_[i].slot == column.slot && items_[i].ordinal == column.ordinal) return static_cast<int>(i);
      return std::nullopt;
    }
    for (size_t i = 0; i < items_.size(); ++i)
      if (items_[i].ast && binder_.same(*items_[i].ast, e, scope_)) return static_cast<int>(i);
    return std::nullopt;
  }

  std::optional<int> columnNamed(const std::u16string& name) const {
    for (size_t i = 0; i < columns_.size(); ++i)
      if (sameName(columns_[i].name, name)) return static_cast<int>(i);
    return std::nullopt;
  }

  void bindOrder() {
    scope_.aggregateError = 3097;
    for (const ast::OrderItem& order : orderBy_) {
      CollectedRows::SortItem item;
      item.descending = order.descending;
      if (const auto ordinal = ordinalOf(*order.expr)) {
        if (*ordinal < 1 || *ordinal > static_cast<int>(items_.size()))
          throw Error(3070, {order.expr->text}, "DAO.Database");
        item.column = *ordinal - 1;
      } else if (const auto output = outputOf(*order.expr)) {
        item.column = *output;
      } else {
        if (select_.distinct) throw Error(3093, {order.expr->text}, "DAO.Database");
        item.expression = static_cast<int>(sortExpressions_.size());
        sortExpressions_.push_back(binder_.expression(*order.expr, scope_));
      }
      const auto& source =
          item.column >= 0 ? items_[static_cast<size_t>(item.column)].expression : sortExpressions_.back();
      item.type = source->type;
      sort_.push_back(item);
    }
  }

  // --- the whole

  std::unique_ptr<Rows> assemble(PlanNodePtr node) {
    std::vector<ExpressionPtr> outputs;
    for (Item& item : items_) outputs.push_back(std::move(item.expression));
    auto rows = std::make_unique<SelectRows>(std::move(node), std::move(outputs), columns_);
    rows->sortExpressions = std::move(sortExpressions_);
    rows->isStrict = binder_.isStrict;
    rows->outerSlots = scope_.outerSlots;
    if (select_.distinctRow && groups_.slot == nullptr) rows->distinctTables = distinctTables();
    const bool counted = select_.top && !select_.top->percent;
    if (sort_.empty() && !select_.distinct && (!select_.top || counted)) {
      if (counted) rows->limit = select_.top->count;
      return rows;
    }
    auto collected = std::make_unique<CollectedRows>(columns_);
    collected->outerSlots = scope_.outerSlots;
    collected->onlySelect = rows.get();
    collected->sort = std::move(sort_);
    collected->top = select_.top;
    if (select_.distinct) collected->distinctParts = 1;
    collected->addPart(std::move(rows));
    return collected;
  }

  // DISTINCTROW matters when some of the tables give no output column.
  std::vector<const Slot*> distinctTables() const {
    std::vector<const Slot*> shown;
    for (const Item& item : items_) {
      if (item.slot && std::find(shown.begin(), shown.end(), item.slot) == shown.end())
        shown.push_back(item.slot);
      if (!item.slot) return {};  // an expression: all tables count
    }
    const bool allTables =
        std::all_of(scope_.slots.begin(), scope_.slots.end(), [](const Slot* s) { return s->table(); });
    if (!allTables || shown.size() == scope_.slots.size()) return {};
    return shown;
  }

  Binder& binder_;
  const ast::Select& select_;
  const std::vector<ast::OrderItem>& orderBy_;
  const ExtraOutputs extra_;
  Scope scope_;
  GroupScope groups_;
  std::vector<Item> items_;
  std::vector<ResultColumn> columns_;
  std::vector<CollectedRows::SortItem> sort_;
  std::vector<ExpressionPtr> sortExpressions_;
};

std::unique_ptr<Rows> Binder::query(const ast::Query& q, Scope* outer) {
  if (q.crosstab) return crosstab(q, outer);
  if (q.parts.size() == 1 && q.parts[0].select)
    return SelectBinder(*this, *q.parts[0].select, q.orderBy, outer).bind();
  if (q.parts.size() == 1 && q.orderBy.empty()) return query(*q.parts[0].nested, outer);
  return unionQuery(q, outer);
}

std::unique_ptr<Rows> Binder::unionQuery(const ast::Query& q, Scope* outer) {
  static const std::vector<ast::OrderItem> kNoOrder;
  std::vector<std::unique_ptr<Rows>> parts;
  for (const auto& part : q.parts)
    parts.push_back(part.select ? SelectBinder(*this, *part.select, kNoOrder, outer).bind()
                                : query(*part.nested, outer));

  std::vector<ResultColumn> columns = parts[0]->columns();
  for (size_t p = 1; p < parts.size(); ++p) {
    const auto& further = parts[p]->columns();
    if (further.size() != columns.size()) throw Error(3307, {}, "DAO.Database");
    for (size_t i = 0; i < columns.size(); ++i) {
      columns[i].type = unifiedType(columns[i].type, further[i].type);
      columns[i].size = columns[i].type == Type::Text ? std::max(columns[i].size, further[i].size) : 0;
      columns[i].required = columns[i].autoNumber = false;
    }
  }
  auto rows = std::make_unique<CollectedRows>(std::move(columns));
  for (size_t p = 0; p < parts.size(); ++p) {
    if (p > 0 && !q.parts[p].all) rows->distinctParts = p + 1;
    for (const Slot* slot : parts[p]->outerSlots)
      if (std::find(rows->outerSlots.begin(), rows->outerSlots.end(), slot) == rows->outerSlots.end())
        rows->outerSlots.push_back(slot);
    rows->addPart(std::move(parts[p]));
  }
  bindUnionOrder(q, *rows);
  return rows;
}

void Binder::bindUnionOrder(const ast::Query& q, CollectedRows& rows) const {
  for (const auto& order : q.orderBy) {
    CollectedRows::SortItem item;
    item.descending = order.descending;
    const auto& shown = rows.columns();
    if (const auto ordinal = ordinalOf(*order.expr)) {
      item.column = *ordinal <= static_cast<int>(shown.size()) ? *ordinal - 1 : -1;
    } else if (order.expr->kind == Kind::Name) {
      // By the output's name; a qualified name also finds the column that it is in the first SELECT.
      for (size_t i = 0; i < shown.size() && item.column < 0; ++i)
        if (sameName(shown[i].name, writtenName(*order.expr))) item.column = static_cast<int>(i);
      for (size_t i = 0; i < shown.size() && item.column < 0; ++i)
        if (!order.expr->qualifier.empty() && sameName(shown[i].name, order.expr->name))
          item.column = static_cast<int>(i);
    }
    if (item.column < 0) throw Error(3351, {order.expr->text}, "DAO.Database");
    item.type = shown[static_cast<size_t>(item.column)].type;
    rows.sort.push_back(item);
  }
}

// Two grouped queries over the same sources: one row for each row heading, and one for each cell.
std::unique_ptr<Rows> Binder::crosstab(const ast::Query& q, Scope* outer) {
  static const std::vector<ast::OrderItem> kNoOrder;
  const ast::Select& select = *q.parts[0].select;
  ExtraOutputs headings, cells;
  for (const auto& key : select.groupBy) {
    headings.items.push_back(key.get());
    cells.items.push_back(key.get());
  }
  cells.items.push_back(q.crosstab->pivot.get());
  cells.items.push_back(q.crosstab->value.get());
  cells.isInstead = true;
  cells.key = q.crosstab->pivot.get();
  auto rowPart = SelectBinder(*this, select, q.orderBy, outer, std::move(headings)).bind();
  auto cellPart = SelectBinder(*this, select, kNoOrder, outer, std::move(cells)).bind();
  finish();  // the columns depend on the rows: the query runs now
  return std::make_unique<CrosstabRows>(std::move(rowPart), std::move(cellPart), select.groupBy.size(),
                                        q.crosstab->headings, context_);
}

}  // namespace jet::sql
