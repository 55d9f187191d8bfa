#include "jet/dao/definition_copy.h"

#include <algorithm>
#include <set>

#include "jet/format/text.h"

namespace jet {

namespace {

constexpr uint8_t kGuidAutoNumberFlag = 0x40, kJet4IndexFlag = 0x80;

// In Jet 3 texts have one byte a character, and some flags another meaning.
void convertColumn(ColumnDef& column, bool systemTable) {
  ColumnLayout& layout = column.layout;
  const bool text = layout.type == Type::Text || layout.type == Type::Memo;
  if (layout.type == Type::Text) layout.length = static_cast<uint16_t>(std::min(2 * layout.length, 510));
  if (layout.type != Type::Guid) column.flags &= static_cast<uint8_t>(~kGuidAutoNumberFlag);
  layout.compressed = text && !systemTable && !layout.fixed;
  column.extendedFlags = layout.compressed ? 1 : 0;
}

// Numbers, variable indexes and offsets in the order of the old numbers.
void renumber(TableDef& def) {
  std::vector<ColumnDef*> order;
  for (ColumnDef& column : def.columns) order.push_back(&column);
  std::sort(order.begin(), order.end(),
            [](const ColumnDef* a, const ColumnDef* b) { return a->layout.number < b->layout.number; });
  uint16_t number = 0, variable = 0, offset = 0;
  for (ColumnDef* column : order) {
    ColumnLayout& layout = column->layout;
    layout.number = number++;
    layout.variableIndex = variable;
    layout.fixedOffset = 0;
    if (!layout.fixed) {
      ++variable;
    } else if (layout.type != Type::Boolean) {
      layout.fixedOffset = offset;
      offset = static_cast<uint16_t>(std::min(offset + layout.length, 0xF000));  // beyond any row: 3047
    }
  }
  def.rowLayout.nextColumn = number;
  def.rowLayout.variableColumns = variable;
}

// Real indexes that have no name are nobody's.
void dropNamelessIndexes(TableDef& def) {
  std::vector<int> newPlace(def.realIndexes.size(), -1);
  std::vector<RealIndex> kept;
  for (size_t i = 0; i < newPlace.size(); ++i) {
    const bool named = std::any_of(def.indexes.begin(), def.indexes.end(),
                                   [&](const IndexDef& index) { return index.real == static_cast<int>(i); });
    if (!named) continue;
    newPlace[i] = static_cast<int>(kept.size());
    kept.push_back(def.realIndexes[i]);
  }
  for (IndexDef& index : def.indexes) index.real = newPlace[static_cast<size_t>(index.real)];
  def.realIndexes = std::move(kept);
}

// Of indexes with one number, which damage has made, the later ones get others.
void separateIndexNumbers(TableDef& def) {
  std::set<uint32_t> taken;
  for (const IndexDef& index : def.indexes) taken.insert(index.number);
  std::set<uint32_t> seen;
  for (IndexDef& index : def.indexes) {
    if (seen.insert(index.number).second) continue;
    for (index.number = 0; !taken.insert(index.number).second;) ++index.number;
  }
}

}  // namespace

TableDef startedAnew(const TableDef& from, std::optional<uint16_t> lcid) {
  TableDef def = from;
  const bool jet3 = from.rowLayout.file->version == Version::Jet3;
  def.page = 0;
  def.rowCount = 0;
  def.ownedMap = def.freeMap = {};
  def.stamp.clear();
  for (ColumnDef& column : def.columns) {
    if (jet3) convertColumn(column, from.storedType != 0x4E);
    if (lcid) column.lcid = *lcid;
    column.ownedMap = column.freeMap = {};
  }
  renumber(def);
  dropNamelessIndexes(def);
  separateIndexNumbers(def);
  for (RealIndex& index : def.realIndexes) {
    index.flags |= kJet4IndexFlag;
    index.root = 0;
    index.map = {};
    index.uniqueEntries = 0;
  }
  std::stable_sort(def.indexes.begin(), def.indexes.end(),
                   [](const IndexDef& a, const IndexDef& b) { return foldName(a.name) < foldName(b.name); });
  def.rowLayout.file = &FileLayout::of(Version::Jet4);
  def.rowLayout.columns.clear();
  for (const ColumnDef& column : def.columns) def.rowLayout.columns.push_back(column.layout);
  return def;
}

}  // namespace jet
