#include "jet/catalog/row_store.h"

#include <algorithm>

#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/storage/btree.h"
#include "jet/storage/long_value.h"

namespace jet {

namespace {

constexpr size_t kLongValueHead = 12;
constexpr uint32_t kInlineKind = 0x80000000;

bool isJet3(const TableDef& def) { return def.rowLayout.file->version == Version::Jet3; }

BTree treeOf(Pager& pager, const TableDef& def, const RealIndex& index) {
  return BTree(pager, def.page, index.root, index.map);
}

LongValueStore longValuesOf(Pager& pager, const ColumnDef& column) {
  return LongValueStore(pager, column.ownedMap, column.freeMap);
}

// A field in the row with its value behind it.
bool isInline(const std::string& field) {
  return field.size() > kLongValueHead && (get32(asBytes(field).data()) & 0xC0000000) == kInlineKind;
}

uint8_t* countsIn(PageEdit& definition) {
  if (definition.data()[0] != static_cast<uint8_t>(PageKind::TableDef))
    throwDamaged(u"not a table definition page", definition.number());
  return definition.data();
}

// The statistics of the first kCountedIndexes indexes are on the definition's first page.
void addUnique(uint8_t* definition, const FileLayout& layout, size_t index, uint32_t count) {
  uint8_t* entries = definition + layout.tdefBlocks + index * layout.indexStatSize + 4;
  put32(entries, get32(entries) + count);
}

}  // namespace

bool isOrderKnown(const TableDef& def, const RealIndex& index) {
  return std::all_of(index.columns.begin(), index.columns.end(), [&](const IndexColumn& part) {
    const ColumnDef& column = def.columns[part.ordinal];
    const bool text = column.type() == Type::Text || column.type() == Type::Memo;
    return !text || Collation::get(column.lcid, isJet3(def)).isExact();
  });
}

void addToCounts(Pager& pager, PageNumber definition, int64_t rowDelta, std::optional<int32_t> lastAutoNumber,
                 uint64_t newKeys) {
  const FileLayout& layout = pager.layout();
  PageEdit page = pager.write(definition);
  uint8_t* p = countsIn(page);
  const int64_t rows = std::clamp<int64_t>(int64_t{get32(p + layout.tdefRowCount)} + rowDelta, 0, 0xFFFFFFFF);
  put32(p + layout.tdefRowCount, static_cast<uint32_t>(rows));
  if (lastAutoNumber) put32(p + layout.tdefAutoNumber, static_cast<uint32_t>(*lastAutoNumber));
  for (size_t i = 0; newKeys != 0; ++i, newKeys >>= 1)
    if (newKeys & 1) addUnique(p, layout, i, 1);
}

void addToUniqueEntries(Pager& pager, PageNumber definition, size_t index, uint32_t count) {
  if (count == 0 || index >= kCountedIndexes) return;
  PageEdit page = pager.write(definition);
  addUnique(countsIn(page), pager.layout(), index, count);
}

RowStore::RowStore(Pager& pager, TableDefPtr def)
    : pager_(pager), def_(std::move(def)), heap_(pager, def_->page, def_->ownedMap, def_->freeMap) {}

Value RowStore::value(const RowReader& row, int ordinal) const {
  const ColumnDef& column = def_->columns[ordinal];
  if (!column.isLongValue()) return row.value(ordinal);
  const std::optional<LongValueRef> ref = row.longValue(ordinal);
  if (!ref) return {};
  const std::string stored = longValuesOf(pager_, column).read(*ref);
  const Bytes bytes = asBytes(stored);
  if (column.type() == Type::Ole) return Binary(bytes.begin(), bytes.end());
  return isJet3(*def_) ? decodeAnsi(bytes, def_->rowLayout.codePage) : decodeText(bytes);
}

const RowStore::KeyPlan& RowStore::keyPlan(size_t index) const {
  if (keyPlans_.empty()) {
    const bool jet3 = isJet3(*def_);
    std::vector<KeyPlan> plans;  // all or none, should memory run out
    for (const RealIndex& real : def_->realIndexes) {
      plans.push_back({def_->keyColumns(real, jet3), isOrderKnown(*def_, real)});
    }
    keyPlans_ = std::move(plans);
  }
  return keyPlans_[index];
}

// False when the index has no entry for the row.
bool RowStore::appendKey(size_t index, std::span<const Value> values, std::string& key) const {
  const RealIndex& real = def_->realIndexes[index];
  const KeyPlan& plan = keyPlan(index);
  bool allNull = true;
  for (size_t i = 0; i < plan.columns.size(); ++i) {
    const Value& value = values[real.columns[i].ordinal];
    allNull = allNull && value.isNull();
    appendKeyColumn(plan.columns[i], value, key);
  }
  return !allNull || !real.ignoreNulls;
}

std::optional<std::string> RowStore::key(size_t index, std::span<const Value> values) const {
  std::string key;
  if (!appendKey(index, values, key)) return std::nullopt;
  return key;
}

// Values of the columns that some index has; Null for the others.
std::vector<Value> RowStore::indexedValues(const RowReader& row) const {
  std::vector<Value> values(def_->columns.size());
  for (const RealIndex& index : def_->realIndexes) {
    for (const IndexColumn& part : index.columns) {
      if (values[part.ordinal].isNull()) values[part.ordinal] = value(row, part.ordinal);
    }
  }
  return values;
}

// Keys in an order that is not known byte for byte are neither made nor found.
void RowStore::requireKnownOrder(size_t index) const {
  if (!keyPlan(index).isKnownOrder) throw Error(3027, {}, "DAO.Recordset");
}

// A boolean is never Null; an absent one is False.
bool RowStore::hasNull(const RealIndex& index, std::span<const Value> values) const {
  return std::any_of(index.columns.begin(), index.columns.end(), [&](const IndexColumn& part) {
    return values[part.ordinal].isNull() && def_->columns[part.ordinal].type() != Type::Boolean;
  });
}

// `keys` by index; those of `unchanged` indexes are good as they are.
void RowStore::checkKeys(std::span<const Value> values, std::span<const std::optional<std::string>> keys,
                         std::span<const std::optional<std::string>> unchanged, RowId self,
                         const Batch* batch) const {
  const auto each = [&](const auto& check) {
    for (size_t i = 0; i < keys.size(); ++i) {
      if (unchanged.empty() || keys[i] != unchanged[i]) check(def_->realIndexes[i], i);
    }
  };
  each([&](const RealIndex& index, size_t) {
    if (index.required && hasNull(index, values)) throw Error(3058, {}, "DAO.Recordset");
  });
  each([&](const RealIndex& index, size_t i) {
    if (!index.unique || !keys[i] || hasNull(index, values)) return;
    const bool isThere = batch ? batch->containsKey(i, *keys[i])
                               : treeOf(pager_, *def_, index).containsKey(asBytes(*keys[i]), self);
    if (isThere) throw Error(3022, {}, "DAO.Recordset");
  });
}

std::string RowStore::writeLongValue(int ordinal, const Value& value) const {
  if (value.isNull()) return {};
  const ColumnDef& column = def_->columns[ordinal];
  std::string stored;
  bool mustMoveOut = false;
  if (const Text* text = value.getIf<Text>()) {
    if (isJet3(*def_)) {
      encodeAnsi(*text, def_->rowLayout.codePage, stored);
    } else {
      encodeText(*text, column.layout.compressed, stored);
      mustMoveOut = 2 * text->size() > pager_.layout().maxInlineBytes;  // counts before compression
    }
  } else if (const Binary* binary = value.getIf<Binary>()) {
    stored.assign(binary->begin(), binary->end());
  } else {
    throw Error(3421);
  }
  return longValuesOf(pager_, column).write(asBytes(stored), mustMoveOut);
}

void RowStore::removeLongValue(const RowReader& row, int ordinal) const {
  if (!def_->columns[ordinal].isLongValue()) return;
  if (const auto ref = row.longValue(ordinal)) longValuesOf(pager_, def_->columns[ordinal]).remove(*ref);
}

// Values that stand in the row move out, longest first, until the row is short enough.
std::string RowStore::encode(std::span<const Value> values, std::vector<std::string>& longValues) const {
  for (;;) {
    try {
      return encodeRow(def_->rowLayout, values, longValues);
    } catch (const Error& error) {
      if (error.number() != 3047) throw;
      const auto longest = std::max_element(
          longValues.begin(), longValues.end(), [](const std::string& a, const std::string& b) {
            return (isInline(a) ? a.size() : 0) < (isInline(b) ? b.size() : 0);
          });
      if (longest == longValues.end() || !isInline(*longest)) throw;
      const ColumnDef& column = def_->columns[longest - longValues.begin()];
      const std::string stored = longest->substr(kLongValueHead);
      *longest = longValuesOf(pager_, column).write(asBytes(stored), true);
    }
  }
}

// The index's bit when the key is new in it.
uint64_t RowStore::insertKey(size_t index, const std::string& key, RowId row) const {
  const bool isNew = treeOf(pager_, *def_, def_->realIndexes[index]).insert(asBytes(key), row);
  return isNew && index < kCountedIndexes ? uint64_t{1} << index : 0;
}

// Files exist in which characters such as Æ or ß carry other weights: an entry that is not under its row's
// key is looked for by the row.
void RowStore::removeKey(size_t index, const std::string& key, RowId row) const {
  BTree tree = treeOf(pager_, *def_, def_->realIndexes[index]);
  if (tree.remove(asBytes(key), row)) return;
  for (BTree::Cursor cursor(tree); cursor.next();) {
    if (cursor.row() != row) continue;
    const std::string stored(asChars(cursor.key()));
    tree.remove(asBytes(stored), row);
    return;
  }
}

RowId RowStore::insert(std::span<const Value> values, std::optional<int32_t> lastAutoNumber) {
  return insert(values, lastAutoNumber, nullptr);
}

RowId RowStore::insert(std::span<const Value> values, std::optional<int32_t> lastAutoNumber, Batch* batch) {
  keys_.resize(def_->realIndexes.size());
  for (size_t i = 0; i < keys_.size(); ++i) {
    requireKnownOrder(i);
    if (keys_[i])
      keys_[i]->clear();
    else
      keys_[i].emplace();
    if (!appendKey(i, values, *keys_[i])) keys_[i].reset();
  }
  checkKeys(values, keys_, {}, {}, batch);
  longValues_.assign(values.size(), {});
  for (size_t i = 0; i < values.size(); ++i) {
    if (def_->columns[i].isLongValue()) longValues_[i] = writeLongValue(static_cast<int>(i), values[i]);
  }
  const std::string bytes = encode(values, longValues_);
  const RowId id = heap_.insert(asBytes(bytes));
  uint64_t newKeys = 0;
  for (size_t i = 0; i < keys_.size(); ++i) {
    if (keys_[i]) newKeys |= batch ? batch->add(i, *keys_[i], id) : insertKey(i, *keys_[i], id);
  }
  addToCounts(pager_, def_->page, 1, lastAutoNumber, newKeys);
  return id;
}

void RowStore::update(RowId row, std::span<const Change> changes) {
  const std::optional<Heap::Row> present = heap_.fetch(row);
  if (!present) throw Error(3167, {}, "DAO.Recordset");
  const std::string old(asChars(present->bytes));  // the page changes below
  const RowReader reader(def_->rowLayout, asBytes(old), present->where);

  const std::vector<Value> before = indexedValues(reader);
  std::vector<Value> after = before, values(def_->columns.size());
  std::vector<std::string> longValues(def_->columns.size());
  std::vector<bool> changed(def_->columns.size());
  for (const Change& change : changes) {
    changed[change.ordinal] = true;
    after[change.ordinal] = change.value;
    values[change.ordinal] = change.value;
  }

  std::vector<std::optional<std::string>> oldKeys, newKeys;
  for (size_t i = 0; i < def_->realIndexes.size(); ++i) {
    const RealIndex& index = def_->realIndexes[i];
    oldKeys.push_back(key(i, before));
    newKeys.push_back(key(i, after));
    const bool touched =
        std::any_of(index.columns.begin(), index.columns.end(),
                    [&](const IndexColumn& part) { return before[part.ordinal] != after[part.ordinal]; });
    if (touched) requireKnownOrder(i);
  }
  checkKeys(after, newKeys, oldKeys, row);

  for (size_t i = 0; i < values.size(); ++i) {
    const int ordinal = static_cast<int>(i);
    const bool isLong = def_->columns[i].isLongValue();
    if (changed[i]) {
      if (isLong) longValues[i] = writeLongValue(ordinal, values[i]);
    } else if (!isLong) {
      values[i] = reader.value(ordinal);
    } else if (!reader.isNull(ordinal)) {
      values[i] = Binary();  // any value that is not Null: the field is taken as it stands
      longValues[i] = asChars(reader.stored(ordinal));
    }
  }
  heap_.update(row, asBytes(encode(values, longValues)));
  for (size_t i = 0; i < changed.size(); ++i) {
    if (changed[i]) removeLongValue(reader, static_cast<int>(i));
  }
  uint64_t freshKeys = 0;
  for (size_t i = 0; i < oldKeys.size(); ++i) {
    if (oldKeys[i] == newKeys[i]) continue;
    if (oldKeys[i]) removeKey(i, *oldKeys[i], row);
    if (newKeys[i]) freshKeys |= insertKey(i, *newKeys[i], row);
  }
  if (freshKeys != 0) addToCounts(pager_, def_->page, 0, {}, freshKeys);
}

void RowStore::remove(RowId row) {
  const std::optional<Heap::Row> present = heap_.fetch(row);
  if (!present) throw Error(3167, {}, "DAO.Recordset");
  const std::string old(asChars(present->bytes));
  const RowReader reader(def_->rowLayout, asBytes(old), present->where);
  const std::vector<Value> values = indexedValues(reader);
  for (size_t i = 0; i < def_->realIndexes.size(); ++i) {
    if (const auto k = key(i, values)) removeKey(i, *k, row);
  }
  for (size_t i = 0; i < def_->columns.size(); ++i) removeLongValue(reader, static_cast<int>(i));
  heap_.remove(row);
  addToCounts(pager_, def_->page, -1);
}

}  // namespace jet
