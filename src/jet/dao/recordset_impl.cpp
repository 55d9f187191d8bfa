#include "jet/dao/recordset_impl.h"

namespace jet {

namespace {

constexpr const char* kSource = "DAO.Recordset";

}  // namespace

Recordset::Impl::Impl(Database::Impl& db, std::u16string sourceText, std::optional<RecordsetType> wanted)
    : database(db), source(std::move(sourceText)), requested(wanted) {}

void Recordset::Impl::open() {
  ReadScope scope(*database.pager);
  discardEdit();
  result.reset();
  plan.reset();
  identities_.clear();
  const bool wantsRows = requested == RecordsetType::Snapshot || requested == RecordsetType::ForwardOnly;
  if (!wantsRows) plan = database.engine->dynaset(source);
  if (requested == RecordsetType::Table && (!plan || !database.catalog->table(source)))
    throw Error(3219, {}, kSource);
  if (!plan) result = database.engine->query(source);
  type = requested.value_or(plan ? RecordsetType::Dynaset : RecordsetType::Snapshot);
  position = rowCount() == 0 ? -1 : 0;
}

std::optional<std::vector<Value>> Recordset::Impl::readRow(size_t row) const {
  if (isDynaset()) {
    ReadScope scope(*database.pager);
    return database.engine->dynasetRow(*plan, plan->rows[row], identityOf(row));
  }
  std::vector<Value> values;
  values.reserve(columns().size());
  for (size_t column = 0; column < columns().size(); ++column) values.push_back(result->value(row, column));
  return values;
}

Value Recordset::Impl::fieldValue(size_t column) const {
  if (editMode != EditMode::None) {
    const int ordinal = plan->ordinals[column];
    if (ordinal >= 0 && buffer[static_cast<size_t>(ordinal)]) return *buffer[static_cast<size_t>(ordinal)];
    if (editMode == EditMode::AddNew) return {};
  }
  if (!hasCurrent()) throw Error(3021, {}, kSource);
  const auto row = static_cast<size_t>(position);
  if (!isDynaset()) return result->value(row, column);

  ReadScope scope(*database.pager);
  const uint64_t change = database.pager->changeCounter();
  const int level = database.pager->level();
  // Inside a transaction the counter does not tell one state from the next.
  if (cachedRow_ != plan->rows[row] || cachedChange_ != change || cachedLevel_ != level || level > 0) {
    auto values = database.engine->dynasetRow(*plan, plan->rows[row], identityOf(row));
    if (!values) throw Error(3167, {}, kSource);
    cached_ = std::move(*values);
    cachedRow_ = plan->rows[row];
    cachedChange_ = change;
    cachedLevel_ = level;
  }
  return cached_[column];
}

void Recordset::Impl::setFieldValue(size_t column, const Value& value) {
  if (editMode == EditMode::None) throw Error(3020, {}, "DAO.Field");
  const int ordinal = plan->ordinals[column];
  if (ordinal < 0) throw Error(3327, {plan->columns[column].name}, "DAO.Field");
  const ColumnDef& def = plan->table->columns[static_cast<size_t>(ordinal)];
  if (def.autoNumber && editMode == EditMode::Edit) throw Error(3164, {}, "DAO.Field");
  const int limit = def.type() == Type::Text ? def.size(plan->table->rowLayout.file->version) : 0;
  buffer[static_cast<size_t>(ordinal)] =
      sql::convertFor(def.type(), limit, value, database.engine->context(), def.layout.scale);
}

void Recordset::Impl::moveTo(int64_t newPosition) {
  discardEdit();
  cachedRow_ = {};
  const auto count = static_cast<int64_t>(rowCount());
  position = std::clamp<int64_t>(newPosition, -1, count);
}

void Recordset::Impl::find(std::u16string_view criterion, int64_t start, int step) {
  if (type == RecordsetType::ForwardOnly) throw Error(3251, {}, kSource);
  discardEdit();
  ReadScope scope(*database.pager);
  const auto matches = database.engine->criterion(criterion, columns());
  noMatch = true;
  const auto count = static_cast<int64_t>(rowCount());
  for (int64_t row = start; row >= 0 && row < count; row += step) {
    const auto values = readRow(static_cast<size_t>(row));
    if (!values || !matches(*values)) continue;
    position = row;
    noMatch = false;
    return;
  }
}

Table& Recordset::Impl::openTable() {
  TableDefPtr def = database.catalog->tableAt(plan->table->page);
  if (!def) throw Error(3078, {plan->table->name}, kSource);
  if (!table_ || &table_->def() != def.get())
    table_ = std::make_unique<Table>(*database.catalog, std::move(def), &database.engine->rules());
  return *table_;
}

uint64_t& Recordset::Impl::identityOf(size_t row) const {
  if (identities_.size() < plan->rows.size()) identities_.resize(plan->rows.size());
  return identities_[row];
}

// A page that was emptied gives its places to new records.
Heap::Row Recordset::Impl::fetchCurrent(const Table& table) const {
  auto found = table.fetch(currentRow());
  if (!found) throw Error(3167, {}, kSource);
  uint64_t& seen = identityOf(static_cast<size_t>(position));
  const uint64_t now = table.identity(table.reader(found->bytes, found->where));
  if (seen != 0 && seen != now) throw Error(3167, {}, kSource);
  seen = now;
  return std::move(*found);
}

RowId Recordset::Impl::currentRow() const {
  if (!isDynaset()) throw Error(3326, {}, kSource);
  if (!hasCurrent()) throw Error(3021, {}, kSource);
  return plan->rows[static_cast<size_t>(position)];
}

void Recordset::Impl::beginEdit() {
  const RowId row = currentRow();
  if (database.pager->readOnly()) throw Error(3027, {}, kSource);
  discardEdit();
  ReadScope scope(*database.pager);
  const Table& table = openTable();
  fetchCurrent(table);
  original = table.read(row);
  buffer.assign(plan->table->columns.size(), std::nullopt);
  editMode = EditMode::Edit;
}

void Recordset::Impl::beginAdd() {
  if (!isDynaset()) throw Error(3326, {}, kSource);
  if (database.pager->readOnly()) throw Error(3027, {}, kSource);
  discardEdit();
  buffer.assign(plan->table->columns.size(), std::nullopt);
  for (size_t i = 0; i < buffer.size(); ++i) {
    const ColumnDef& column = plan->table->columns[i];
    if (!column.autoNumber && !column.guidAutoNumber && !column.defaultValue.empty())
      buffer[i] = database.engine->rules().defaultValue(column);
  }
  editMode = EditMode::AddNew;
}

void Recordset::Impl::storeEdit() {
  const RowId row = currentRow();
  std::vector<Table::Change> changes;
  for (size_t i = 0; i < buffer.size(); ++i)
    if (buffer[i]) changes.push_back({static_cast<int>(i), *buffer[i]});
  Transaction transaction(*database.pager);
  Table& table = openTable();
  fetchCurrent(table);
  if (table.read(row) != original) throw Error(3197, {}, kSource);
  table.update(row, changes);
  transaction.commit();
  identityOf(static_cast<size_t>(position)) = 0;
  lastModified = bookmarkOf(position);
}

void Recordset::Impl::storeNew() {
  Transaction transaction(*database.pager);
  Table& table = openTable();
  const RowId row = table.insert(buffer);
  transaction.commit();
  if (table.lastAutoNumber() != 0) database.lastAutoNumber = table.lastAutoNumber();
  plan->rows.push_back(row);
  lastModified = bookmarkOf(static_cast<int64_t>(plan->rows.size()) - 1);
}

void Recordset::Impl::discardEdit() {
  editMode = EditMode::None;
  buffer.clear();
  original.reset();
}

void Recordset::Impl::remove() {
  const RowId row = currentRow();
  if (database.pager->readOnly()) throw Error(3027, {}, kSource);
  discardEdit();
  Transaction transaction(*database.pager);
  Table& table = openTable();
  fetchCurrent(table);
  refuseWhenChangedSinceRead();
  table.remove(row);
  transaction.commit();
}

// The values that were read may have been shown to someone, who decided by them.
void Recordset::Impl::refuseWhenChangedSinceRead() {
  const auto row = static_cast<size_t>(position);
  if (cachedRow_ != plan->rows[row]) return;
  auto now = readRow(row);
  if (!now || *now == cached_) return;
  cachedRow_ = {};
  throw Error(3197, {}, kSource);
}

std::string Recordset::Impl::bookmarkOf(int64_t row) const {
  uint8_t bytes[8];
  if (isDynaset()) {
    const RowId id = plan->rows[static_cast<size_t>(row)];
    put32(bytes, id.page);
    put32(bytes + 4, id.slot);
  } else {
    put64(bytes, static_cast<uint64_t>(row));
  }
  return std::string(asChars(bytes));
}

}  // namespace jet
