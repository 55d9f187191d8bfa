#include "jet/sql/slot.h"

#include <algorithm>
#include <numeric>

#include "jet/format/text.h"
#include "jet/sql/types.h"

namespace jet::sql {
namespace {

const Value kNull;

ResultColumn describe(const TableDef& table, const ColumnDef& column) {
  ResultColumn r;
  r.name = column.name;
  r.type = column.type();
  const Version version = table.rowLayout.file ? table.rowLayout.file->version : Version::Jet4;
  r.size = column.type() == Type::Text || column.type() == Type::Binary ? column.size(version) : 0;
  r.sourceTable = table.name;
  r.sourceColumn = column.name;
  r.required = column.required;
  r.allowZeroLength = column.allowZeroLength;
  r.autoNumber = column.autoNumber || column.guidAutoNumber;
  return r;
}

}  // namespace

Slot::Slot(std::u16string name, std::unique_ptr<Table> table)
    : name_(std::move(name)), table_(std::move(table)) {
  const TableDef& def = table_->def();
  columns_.reserve(def.columns.size());
  for (const ColumnDef& column : def.columns) columns_.push_back(describe(def, column));
  uses_.resize(columns_.size());
  cache_.resize(columns_.size());
  stamps_.resize(columns_.size());
  tableRows_ = table_->catalog().counts(def.page).rows;
}

Slot::Slot(std::u16string name, std::unique_ptr<Rows> rows)
    : name_(std::move(name)), columns_(rows->columns()), rows_(std::move(rows)), uses_(columns_.size()) {}

Slot::Slot(std::u16string name, std::vector<ResultColumn> columns)
    : name_(std::move(name)), columns_(std::move(columns)), uses_(columns_.size()) {}

double Slot::keyCount(const RealIndex& index) const {
  if (index.unique) return tableRows_;
  const double known = table_->def().rowCount;
  return known > 0 ? std::min(tableRows_, index.uniqueEntries * std::max(1.0, tableRows_ / known)) : 0;
}

int Slot::addColumn(ResultColumn column) {
  columns_.push_back(std::move(column));
  uses_.push_back(0);
  return static_cast<int>(columns_.size()) - 1;
}

int Slot::find(std::u16string_view column) const {
  for (size_t i = 0; i < columns_.size(); ++i)
    if (sameName(columns_[i].name, column)) return static_cast<int>(i);
  return -1;
}

int Slot::find(std::u16string_view table, std::u16string_view column) const {
  const int named = find(std::u16string(table) + u"." + std::u16string(column));
  if (named >= 0) return named;
  for (size_t i = 0; i < columns_.size(); ++i)
    if (sameName(columns_[i].sourceTable, table) && sameName(columns_[i].sourceColumn, column))
      return static_cast<int>(i);
  return -1;
}

std::vector<int> Slot::displayOrder() const {
  if (table_) return table_->def().displayOrder();
  std::vector<int> order(columns_.size());
  std::iota(order.begin(), order.end(), 0);
  return order;
}

void Slot::move(State state) {
  state_ = state;
  if (++epoch_ == 0) {  // wrapped: no old stamp may look current
    std::fill(stamps_.begin(), stamps_.end(), 0);
    epoch_ = 1;
  }
}

void Slot::setRow(RowId id, Bytes bytes, PageNumber where) {
  reader_.emplace(table_->reader(bytes, where));
  id_ = id;
  move(State::TableRow);
}

void Slot::setRow(RowId id, Heap::Row row) {
  pinned_ = std::move(row);
  setRow(id, pinned_.bytes, pinned_.where);
}

void Slot::setValues(const Value* values, const int* place, RowId id) {
  values_ = values;
  place_ = place;
  id_ = id;
  move(State::Values);
}

void Slot::setNull() {
  id_ = {};
  move(State::NullRow);
}

void Slot::release() {
  reader_.reset();
  pinned_ = {};
  move(State::None);
}

void Slot::setQueryRow() { move(State::QueryRow); }

const Value& Slot::column(int i, EvalContext& c) {
  const auto at = static_cast<size_t>(i);
  switch (state_) {
    case State::TableRow:
      if (!isCached(i)) {
        cache_[at] = table_->column(*reader_, i);
        stamps_[at] = epoch_;
      }
      return cache_[at];
    case State::Values:
      return values_[place_ ? place_[at] : i];
    case State::QueryRow:
      return rows_->value(at, c);
    case State::NullRow:
    case State::None:
      break;
  }
  return kNull;
}

Value Slot::take(int i, EvalContext& c) {
  if (state_ == State::TableRow && !isCached(i)) return table_->column(*reader_, i);
  if (state_ == State::QueryRow && uses(i) <= 1) return rows_->take(static_cast<size_t>(i), c);
  return column(i, c);
}

bool Slot::isNull(int i, EvalContext& c) {
  if (state_ == State::TableRow && columns_[static_cast<size_t>(i)].type != Type::Boolean)
    return reader_->isNull(i);
  return column(i, c).isNull();
}

void Slot::pack(int i, RowStore& store, EvalContext& c) {
  if (state_ != State::TableRow || isCached(i)) return store.add(column(i, c));
  const Type type = columns_[static_cast<size_t>(i)].type;
  switch (type) {
    case Type::Byte:
    case Type::Integer:
    case Type::Long:
    case Type::Currency:
    case Type::Single:
    case Type::Double:
    case Type::Date: {
      static constexpr size_t kWidths[] = {0, 0, 1, 2, 4, 8, 4, 8, 8};
      const Bytes stored = reader_->stored(i);
      if (stored.size() == kWidths[static_cast<size_t>(type)])
        return store.addCell(static_cast<uint8_t>(type), stored);
      break;  // Null or damaged
    }
    case Type::Text:
      if (table_->def().rowLayout.file->version != Version::Jet4) break;
      if (reader_->isNull(i)) return store.addNull();
      return store.addCell(RowStore::kStoredText, reader_->stored(i));
    default:
      break;
  }
  store.add(column(i, c));
}

}  // namespace jet::sql
