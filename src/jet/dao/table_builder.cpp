#include "jet/dao/table_builder.h"

#include <algorithm>

#include "jet/catalog/row_store.h"
#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/storage/btree.h"

namespace jet {

namespace {

constexpr size_t kSortMemory = size_t{64} << 20;  // of all indexes of the table together
constexpr int kEntriesPerTick = 4096;
constexpr uint32_t kKindMask = 0xC0000000, kInlineKind = 0x80000000;

bool isInline(const LongValueField& field) {
  return field.size() > LongValueRef::kFieldSize && (get32(asBytes(field).data()) & kKindMask) == kInlineKind;
}

}  // namespace

void TableBuilder::makeStorage(Pager& pager, TableDef& def) {
  PageNumber mapPage = 0;
  def.ownedMap = createUsageMap(pager, mapPage);
  def.freeMap = createUsageMap(pager, mapPage);
  for (ColumnDef& column : def.columns) {
    if (!column.isLongValue()) continue;
    column.ownedMap = createUsageMap(pager, mapPage);
    column.freeMap = createUsageMap(pager, mapPage);
  }
  for (RealIndex& index : def.realIndexes) {
    index.root = BTree::createRoot(pager, def.page);
    index.map = createUsageMap(pager, mapPage, index.root);
  }
}

TableBuilder::TableBuilder(Pager& pager, TableDef& def, const std::filesystem::path& scratch)
    : pager_(pager), def_(def), heap_(pager, def.page, def.ownedMap, def.freeMap) {
  std::vector<bool> indexed(def.columns.size());
  for (const ColumnDef& column : def.columns) {
    longValues_.push_back(column.isLongValue()
                              ? std::make_unique<LongValueStore>(pager, column.ownedMap, column.freeMap)
                              : nullptr);
  }
  for (const RealIndex& index : def.realIndexes) {
    for (const IndexColumn& part : index.columns) indexed[static_cast<size_t>(part.ordinal)] = true;
    keyColumns_.push_back(def.keyColumns(index, false));
    std::filesystem::path file = scratch;
    file += std::to_string(sorters_.size());
    sorters_.push_back(
        std::make_unique<KeySorter>(pager.environment(), file, kSortMemory / def.realIndexes.size()));
  }
  for (size_t i = 0; i < indexed.size(); ++i)
    if (indexed[i]) indexedColumns_.push_back(static_cast<int>(i));
  def.rowCount = 0;
}

void TableBuilder::add(Bytes row, std::span<const Value> keyValues) {
  const auto isNull = [&](const IndexColumn& part) {
    const auto i = static_cast<size_t>(part.ordinal);
    // A boolean is never Null; an absent one is False.
    return keyValues[i].isNull() && def_.columns[i].type() != Type::Boolean;
  };
  for (const RealIndex& index : def_.realIndexes)
    if (index.required && std::any_of(index.columns.begin(), index.columns.end(), isNull)) throw Error(3058);
  const RowId id = heap_.insert(row);
  ++def_.rowCount;
  for (size_t i = 0; i < sorters_.size(); ++i) {
    const RealIndex& index = def_.realIndexes[i];
    const auto nulls = std::count_if(index.columns.begin(), index.columns.end(), isNull);
    if (index.ignoreNulls && nulls == static_cast<std::ptrdiff_t>(index.columns.size())) continue;
    key_.clear();
    for (size_t part = 0; part < index.columns.size(); ++part)
      appendKeyColumn(keyColumns_[i][part], keyValues[static_cast<size_t>(index.columns[part].ordinal)],
                      key_);
    sorters_[i]->add(asBytes(key_), id, nulls > 0);
  }
}

void TableBuilder::encodeShrinking(std::vector<LongValueField>& fields, const std::function<void()>& encode) {
  for (;;) {
    try {
      return encode();
    } catch (const Error& error) {
      if (error.number() != 3047) throw;
      const auto longest = std::max_element(fields.begin(), fields.end(), [](const auto& a, const auto& b) {
        return (isInline(a) ? a.size() : 0) < (isInline(b) ? b.size() : 0);
      });
      if (longest == fields.end() || !isInline(*longest)) throw;
      const std::string value = longest->substr(LongValueRef::kFieldSize);
      *longest = longValues(static_cast<int>(longest - fields.begin())).write(asBytes(value), true);
    }
  }
}

void TableBuilder::addValues(std::span<const Value> values) {
  std::vector<LongValueField> fields(values.size());
  for (size_t i = 0; i < values.size(); ++i) {
    if (!longValues_[i] || values[i].isNull()) continue;
    std::string stored;
    encodeStored(def_.columns[i].layout, def_.rowLayout, values[i], stored);
    const Text* text = values[i].getIf<Text>();
    const bool moveOut = text && 2 * text->size() > pager_.layout().maxInlineBytes;  // before compression
    fields[i] = longValues_[i]->write(asBytes(stored), moveOut);
  }
  encodeShrinking(fields, [&] { row_ = encodeRow(def_.rowLayout, values, fields); });
  add(asBytes(row_), values);
}

void TableBuilder::finish(bool dropDuplicates, const std::function<void()>& tick) {
  for (const auto& sorter : sorters_) {
    sorter->startReading();
    tick();
  }
  if (dropDuplicates) findDuplicates(tick);
  for (const RowId row : doomed_) removeRow(row);
  def_.rowCount -= static_cast<uint32_t>(doomed_.size());
  duplicates_ = static_cast<uint32_t>(doomed_.size());
  for (size_t i = 0; i < sorters_.size(); ++i) {
    buildIndex(i, tick);
    sorters_[i].reset();
  }
}

// Of the rows with one key the first stays: the one that was added first.
void TableBuilder::findDuplicates(const std::function<void()>& tick) {
  for (size_t i = 0; i < sorters_.size(); ++i) {
    if (!def_.realIndexes[i].unique) continue;
    std::string kept;
    bool any = false;
    const auto before = static_cast<std::ptrdiff_t>(doomed_.size());  // sorted up to here
    KeySorter::Entry entry;
    for (int n = 1; sorters_[i]->next(entry); ++n) {
      if (n % kEntriesPerTick == 0) tick();
      if (entry.someNull || std::binary_search(doomed_.begin(), doomed_.begin() + before, entry.row))
        continue;
      if (any && entry.key == kept) {
        doomed_.push_back(entry.row);
      } else {
        kept = entry.key;
        any = true;
      }
    }
    std::sort(doomed_.begin(), doomed_.end());
    sorters_[i]->startReading();
  }
}

void TableBuilder::removeRow(RowId row) {
  {
    const auto present = heap_.fetch(row);
    if (!present) return;
    const std::string bytes(asChars(present->bytes));
    const RowReader reader(def_.rowLayout, asBytes(bytes), present->where);
    for (size_t i = 0; i < longValues_.size(); ++i) {
      if (!longValues_[i]) continue;
      if (const auto ref = reader.longValue(static_cast<int>(i))) longValues_[i]->remove(*ref);
    }
  }
  heap_.remove(row);
}

void TableBuilder::buildIndex(size_t real, const std::function<void()>& tick) {
  RealIndex& index = def_.realIndexes[real];
  KeySorter& sorter = *sorters_[real];
  KeySorter::Entry entry;
  std::string previous;
  uint32_t entries = 0;
  index.uniqueEntries = 0;
  BTree(pager_, def_.page, index.root, index.map).build([&](BTree::Entry& out) {
    do {
      if (!sorter.next(entry)) return false;
    } while (std::binary_search(doomed_.begin(), doomed_.end(), entry.row));
    if (++entries % kEntriesPerTick == 0) tick();
    if (entries == 1 || entry.key != previous) {
      ++index.uniqueEntries;
      previous = entry.key;
    } else if (index.unique && !entry.someNull) {
      throw Error(3022);
    }
    out.key = entry.key;
    out.row = entry.row;
    return true;
  });
}

}  // namespace jet
