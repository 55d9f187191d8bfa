#include "jet/sql/crosstab.h"

#include <algorithm>
#include <map>

#include "jet/format/error.h"

namespace jet::sql {

namespace {

constexpr size_t kMaxColumns = 255;

std::u16string headingOf(const Value& v, const EvalContext& c) {
  if (v.isNull()) return u"<>";
  std::u16string text = toText(v, c);
  std::replace(text.begin(), text.end(), u'.', u'_');  // no place in a field name
  return text;
}

std::string keyOf(Rows& rows, size_t first, size_t count, EvalContext& c) {
  std::string key;
  for (size_t i = first; i < first + count; ++i)
    appendSortKey(rows.value(i, c), rows.columns()[i].type, *c.collation, false, key);
  return key;
}

}  // namespace

CrosstabRows::CrosstabRows(std::unique_ptr<Rows> headings, std::unique_ptr<Rows> cells, size_t keys,
                           const std::vector<Value>& wanted, EvalContext& c)
    : headings_(std::move(headings)), cells_(std::move(cells)) {
  const size_t shown = headings_->columns().size() - keys;
  columns_.assign(headings_->columns().begin(),
                  headings_->columns().begin() + static_cast<std::ptrdiff_t>(shown));

  std::map<std::string, size_t> rowOf;
  for (headings_->open(c); headings_->next(c);) {
    rowOf.emplace(keyOf(*headings_, shown, keys, c), rows_.size());
    std::vector<Value>& row = rows_.emplace_back();
    for (size_t i = 0; i < shown; ++i) row.push_back(headings_->value(i, c));
  }

  struct Cell {
    size_t row;
    Value value;
  };
  struct Column {
    Value heading;
    std::vector<Cell> cells;
  };
  const ResultColumn pivot = cells_->columns()[keys], value = cells_->columns()[keys + 1];
  std::map<std::string, Column> pivots;  // by sort key
  std::vector<const Column*> order;
  const auto pivotKey = [&](const Value& v) {
    std::string key;
    appendSortKey(v, pivot.type, *c.collation, false, key);
    return key;
  };
  for (const Value& v : wanted) {
    Column& column = pivots[pivotKey(v)];
    column.heading = v;
    order.push_back(&column);
  }
  for (cells_->open(c); cells_->next(c);) {
    const auto row = rowOf.find(keyOf(*cells_, 0, keys, c));
    const Value& v = cells_->value(keys, c);
    const auto [place, isNew] = pivots.try_emplace(pivotKey(v));
    if (isNew) place->second.heading = v;
    if (row != rowOf.end()) place->second.cells.push_back({row->second, cells_->value(keys + 1, c)});
  }
  if (wanted.empty())
    for (const auto& [key, column] : pivots) order.push_back(&column);
  if (shown + order.size() > kMaxColumns) throw Error(3190, {}, "DAO.Database");

  for (const Column* source : order) {
    ResultColumn column;
    column.name = headingOf(source->heading, c);
    column.type = value.type;
    columns_.push_back(std::move(column));
    for (auto& row : rows_) row.resize(columns_.size());
    for (const Cell& cell : source->cells) rows_[cell.row].back() = cell.value;
  }
}

bool CrosstabRows::next(EvalContext&) {
  if (at_ == rows_.size()) return false;
  ++at_;
  return true;
}

void CrosstabRows::explain(PlanText& text, int depth) const {
  text.line(depth, u"crosstab");
  cells_->explain(text, depth + 1);
}

}  // namespace jet::sql
