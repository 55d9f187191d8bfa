#include <algorithm>
#include <set>

#include "jet/catalog/tdef_io.h"
#include "jet/format/error.h"
#include "jet/format/text.h"

namespace jet {

namespace {

// 255 columns, 128 indexes and the longest names take less.
constexpr uint32_t kMaxTdefBytes = 128 * 1024;
constexpr uint32_t kMaxStoredIndexes = 128;
constexpr size_t kPageHead = 8;

Type columnType(uint8_t code, PageNumber page) {
  if (code == 0x0D || code == 0x0E) return Type::Binary;  // unused codes, seen as bytes
  if (code == 0x12 || code == 0x13) throw Error(3259);    // of a later format
  if (code < 0x01 || code > 0x11) throwDamaged(u"a column has an unknown type", page);
  return static_cast<Type>(code);
}

class TdefReader {
 public:
  TdefReader(const TdefBytes& stored, const FileHeader& header)
      : bytes_(asBytes(stored.bytes)),
        page_(stored.pages.front()),
        header_(header),
        layout_(FileLayout::of(header.version)),
        jet3_(header.version == Version::Jet3) {}

  TableDef read() {
    readHead();
    for (uint32_t i = 0; i < realCount_; ++i) {
      const uint8_t* statistics = take(layout_.indexStatSize);
      RealIndex index;
      index.uniqueEntries = get32(statistics + 4);
      table_.realIndexes.push_back(index);
    }
    for (uint32_t i = 0; i < columnCount_; ++i) readColumn();
    for (ColumnDef& column : table_.columns) column.name = name();
    for (RealIndex& index : table_.realIndexes) readRealIndex(index);
    for (uint32_t i = 0; i < logicalCount_; ++i) readLogicalIndex();
    for (IndexDef& index : table_.indexes) index.name = name();
    readLongValueMaps();
    checkNames();
    for (const ColumnDef& column : table_.columns) table_.rowLayout.columns.push_back(column.layout);
    return std::move(table_);
  }

 private:
  [[noreturn]] void fail(std::u16string_view what) const { throwDamaged(what, page_); }

  const uint8_t* take(size_t count) {
    if (bytes_.size() - at_ < count) fail(u"a table definition ends too early");
    const uint8_t* taken = bytes_.data() + at_;
    at_ += count;
    return taken;
  }

  std::u16string name() {
    const size_t length = jet3_ ? *take(1) : get16(take(2));
    if (length == 0 || length > 4 * size_t{kMaxNameLength}) fail(u"a name in a table definition is damaged");
    const Bytes stored(take(length), length);
    return jet3_ ? decodeAnsi(stored, header_.codePage) : decodeText(stored);
  }

  RowId rowPointer(const uint8_t* p) const { return RowId::fromStored(get32(p)); }

  void readHead() {
    const uint8_t* p = take(layout_.tdefBlocks);
    table_.page = page_;
    table_.rowCount = get32(p + layout_.tdefRowCount);
    table_.lastAutoNumber = static_cast<int32_t>(get32(p + layout_.tdefAutoNumber));
    if (!jet3_) table_.autoNumberIncrement = static_cast<int32_t>(get32(p + layout_.tdefAutoNumber + 4));
    table_.storedType = p[layout_.tdefType];
    table_.rowLayout.file = &layout_;
    table_.rowLayout.codePage = header_.codePage;
    table_.rowLayout.nextColumn = get16(p + layout_.tdefNextColumn);
    table_.rowLayout.variableColumns = get16(p + layout_.tdefVarColumns);
    columnCount_ = get16(p + layout_.tdefColumns);
    logicalCount_ = get32(p + layout_.tdefLogicalIndexes);
    realCount_ = get32(p + layout_.tdefRealIndexes);
    table_.ownedMap = rowPointer(p + layout_.tdefOwnedMap);
    table_.freeMap = rowPointer(p + layout_.tdefFreeMap);
    if (table_.rowLayout.nextColumn > kMaxColumns || columnCount_ > table_.rowLayout.nextColumn ||
        table_.rowLayout.variableColumns > table_.rowLayout.nextColumn || logicalCount_ > kMaxStoredIndexes ||
        realCount_ > logicalCount_) {
      fail(u"the counts of a table definition are impossible");
    }
  }

  void readColumn() {
    const uint8_t* p = take(layout_.columnSize);
    ColumnDef column;
    ColumnLayout& c = column.layout;
    c.type = columnType(p[0], page_);
    const uint8_t* numbers = p + (jet3_ ? 1 : 5);
    c.number = get16(numbers);
    c.variableIndex = get16(numbers + 2);
    column.position = get16(numbers + 4);
    column.lcid = header_.lcid;
    if (jet3_) {
      column.lcid = get16(p + 9);
      column.codePage = get16(p + 11);
      column.flags = p[13];
    } else {
      if (c.type == Type::Decimal) {
        c.precision = p[11], c.scale = p[12];
      } else {
        column.lcid = get16(p + 11);
      }
      column.flags = p[15];
      column.extendedFlags = p[16];
    }
    c.fixedOffset = get16(p + layout_.columnSize - 4);
    c.length = get16(p + layout_.columnSize - 2);
    c.fixed = (column.flags & 0x01) != 0;
    c.compressed =
        !jet3_ && (column.extendedFlags & 0x01) != 0 && (c.type == Type::Text || c.type == Type::Memo);
    column.autoNumber = c.type == Type::Long && (column.flags & 0x04) != 0;
    column.guidAutoNumber = c.type == Type::Guid && (column.flags & 0x40) != 0;
    column.hyperlink = c.type == Type::Memo && (column.flags & 0x80) != 0;
    checkColumn(c);
    table_.columns.push_back(std::move(column));
  }

  void checkColumn(ColumnLayout& c) {
    if (c.number >= table_.rowLayout.nextColumn || !numbers_.insert(c.number).second) {
      fail(u"a column number is impossible");
    }
    if (c.type == Type::Boolean) {
      c.fixedOffset = 0;  // takes no place in the row, wherever the descriptor puts it
      return;
    }
    if (c.type == Type::Decimal && c.scale > 28) fail(u"a decimal column has an impossible scale");
    if (!c.fixed) {
      if (c.variableIndex >= table_.rowLayout.variableColumns || !variables_.insert(c.variableIndex).second) {
        fail(u"a variable column has an impossible index");
      }
      return;
    }
    if (c.type == Type::Memo || c.type == Type::Ole) fail(u"a long-value column is marked as fixed");
    if (const uint16_t size = fixedSize(c.type); size != 0 && size != c.length) {
      fail(u"a column has an impossible length");
    }
    if (c.fixedOffset + uint32_t{c.length} > layout_.pageSize)
      fail(u"a fixed column lies outside of the row");
  }

  int ordinalOf(uint16_t number) const {
    for (size_t i = 0; i < table_.columns.size(); ++i) {
      if (table_.columns[i].layout.number == number) return static_cast<int>(i);
    }
    fail(u"an index names a column that does not exist");
  }

  void readRealIndex(RealIndex& index) {
    const uint8_t* p = take(layout_.realIndexSize) + (jet3_ ? 0 : 4);
    for (int i = 0; i < kMaxIndexColumns; ++i) {
      const uint16_t number = get16(p + 3 * i);
      if (number == 0xFFFF) continue;
      index.columns.push_back({.ordinal = ordinalOf(number), .descending = p[3 * i + 2] != 1});
    }
    index.map = rowPointer(p + 30);
    index.root = get32(p + 34);
    index.flags = p[jet3_ ? 38 : 42];
    index.unique = (index.flags & 0x01) != 0;
    index.ignoreNulls = (index.flags & 0x02) != 0;
    index.required = (index.flags & 0x08) != 0;
    if (index.columns.empty() || index.root == 0) fail(u"an index definition is damaged");
  }

  void readLogicalIndex() {
    const uint8_t* p = take(layout_.logicalIndexSize) + (jet3_ ? 0 : 4);
    IndexDef index;
    index.number = get32(p);
    const uint32_t real = get32(p + 4);
    const uint8_t side = p[8], kind = p[19];
    if (real >= realCount_ || side > 2 || kind > 2) fail(u"an index definition is damaged");
    index.real = static_cast<int>(real);
    index.side = side == 1 ? RelationSide::Primary : side == 2 ? RelationSide::Foreign : RelationSide::None;
    index.partnerNumber = static_cast<int32_t>(get32(p + 9));
    index.partnerTable = get32(p + 13);
    index.cascadeUpdates = p[17];
    index.cascadeDeletes = p[18];
    index.primary = kind == 1;
    index.foreign = kind == 2;
    table_.indexes.push_back(std::move(index));
  }

  void readLongValueMaps() {
    while (bytes_.size() - at_ >= 2) {
      const uint16_t number = get16(take(2));
      if (number == 0xFFFF) return;
      const uint8_t* maps = take(8);
      for (ColumnDef& column : table_.columns) {
        if (column.layout.number != number || !column.isLongValue()) continue;
        column.ownedMap = rowPointer(maps);
        column.freeMap = rowPointer(maps + 4);
      }
    }
    fail(u"a table definition has no end mark");
  }

  void checkNames() const {
    std::set<std::u16string> names;
    for (const ColumnDef& column : table_.columns) {
      if (!names.insert(foldName(column.name)).second) fail(u"two columns have the same name");
    }
    for (const ColumnDef& column : table_.columns) {
      if (column.isLongValue() && column.ownedMap.isNull()) fail(u"a long-value column has no usage map");
    }
  }

  Bytes bytes_;
  size_t at_ = 0;
  PageNumber page_;
  const FileHeader& header_;
  const FileLayout& layout_;
  bool jet3_;
  uint32_t columnCount_ = 0, logicalCount_ = 0, realCount_ = 0;
  std::set<uint16_t> numbers_, variables_;
  TableDef table_;
};

}  // namespace

TdefBytes readTdefBytes(Pager& pager, PageNumber first) {
  TdefBytes stored;
  const size_t maxPages = kMaxTdefBytes / (pager.pageSize() - kPageHead) + 1;
  uint32_t length = 0;
  for (PageNumber page = first; page != 0;) {
    const PageView view = pager.read(page);
    const uint8_t* p = view.data();
    if (p[0] != static_cast<uint8_t>(PageKind::TableDef) || p[1] != 1) {
      throwDamaged(u"not a table definition page", page);
    }
    const bool seen = std::find(stored.pages.begin(), stored.pages.end(), page) != stored.pages.end();
    if (seen || stored.pages.size() >= maxPages) throwDamaged(u"a table definition does not end", page);
    if (stored.pages.empty()) {
      length = get32(p + 8);
      if (length > kMaxTdefBytes) throwDamaged(u"a table definition has an impossible length", page);
      stored.bytes.append(asChars(view.bytes()));
    } else {
      stored.bytes.append(asChars(view.bytes().subspan(kPageHead)));
    }
    stored.pages.push_back(page);
    page = get32(p + 4);
  }
  if (stored.bytes.size() < length) throwDamaged(u"a table definition ends too early", first);
  stored.bytes.resize(length);
  return stored;
}

TableDef parseTdef(const TdefBytes& stored, const FileHeader& header) {
  return TdefReader(stored, header).read();
}

}  // namespace jet
