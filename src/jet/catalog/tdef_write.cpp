#include <algorithm>

#include "jet/catalog/tdef_io.h"
#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/storage/usage_map.h"

namespace jet {

namespace {

constexpr size_t kPageHead = 8;

class TdefWriter {
 public:
  TdefWriter(const TableDef& table, Version version)
      : table_(table), layout_(FileLayout::of(version)), jet3_(version == Version::Jet3) {}

  std::string write() {
    putHead();
    for (const RealIndex& index : table_.realIndexes) {
      uint8_t* p = grow(layout_.indexStatSize);
      put32(p + 4, index.uniqueEntries);
    }
    for (const ColumnDef& column : table_.columns) putColumn(column);
    for (const ColumnDef& column : table_.columns) putName(column.name, column.codePage);
    for (const RealIndex& index : table_.realIndexes) putRealIndex(index);
    for (const IndexDef& index : table_.indexes) putLogicalIndex(index);
    for (const IndexDef& index : table_.indexes) putName(index.name, table_.rowLayout.codePage);
    for (const ColumnDef& column : table_.columns) {
      if (!column.isLongValue()) continue;
      uint8_t* p = grow(10);
      put16(p, column.layout.number);
      put32(p + 2, column.ownedMap.stored());
      put32(p + 6, column.freeMap.stored());
    }
    put16(grow(2), 0xFFFF);
    put32(at(8), static_cast<uint32_t>(out_.size()));
    return std::move(out_);
  }

 private:
  uint8_t* at(size_t offset) { return reinterpret_cast<uint8_t*>(out_.data()) + offset; }

  // Appends zero bytes; the address holds until the next call.
  uint8_t* grow(size_t count) {
    out_.resize(out_.size() + count);
    return at(out_.size() - count);
  }

  void putHead() {
    uint8_t* p = grow(layout_.tdefBlocks);
    p[0] = static_cast<uint8_t>(PageKind::TableDef);
    p[1] = 1;
    if (!jet3_) {
      put32(p + 0x0C, kDefinitionMark);
      put32(p + layout_.tdefAutoNumber + 4, static_cast<uint32_t>(table_.autoNumberIncrement));
    }
    put32(p + layout_.tdefRowCount, table_.rowCount);
    put32(p + layout_.tdefAutoNumber, static_cast<uint32_t>(table_.lastAutoNumber));
    p[layout_.tdefType] = table_.storedType;
    put16(p + layout_.tdefNextColumn, table_.rowLayout.nextColumn);
    put16(p + layout_.tdefVarColumns, table_.rowLayout.variableColumns);
    put16(p + layout_.tdefColumns, static_cast<uint32_t>(table_.columns.size()));
    put32(p + layout_.tdefLogicalIndexes, static_cast<uint32_t>(table_.indexes.size()));
    put32(p + layout_.tdefRealIndexes, static_cast<uint32_t>(table_.realIndexes.size()));
    put32(p + layout_.tdefOwnedMap, table_.ownedMap.stored());
    put32(p + layout_.tdefFreeMap, table_.freeMap.stored());
  }

  void putColumn(const ColumnDef& column) {
    const ColumnLayout& c = column.layout;
    uint8_t* p = grow(layout_.columnSize);
    p[0] = static_cast<uint8_t>(c.type);
    uint8_t* numbers = p + (jet3_ ? 1 : 5);
    put16(numbers, c.number);
    put16(numbers + 2, c.variableIndex);
    put16(numbers + 4, column.position);
    if (jet3_) {
      put16(p + 9, column.lcid);
      put16(p + 11, column.codePage);
      p[13] = column.flags;
    } else {
      put32(p + 1, kDefinitionMark);
      if (c.type == Type::Decimal) {
        p[11] = c.precision, p[12] = c.scale;
      } else {
        put16(p + 11, column.lcid);
      }
      p[15] = column.flags;
      p[16] = column.extendedFlags;
    }
    put16(p + layout_.columnSize - 4, c.fixed ? c.fixedOffset : 0u);
    put16(p + layout_.columnSize - 2, c.length);
  }

  void putName(std::u16string_view name, int codePage) {
    std::string stored;
    if (jet3_) {
      encodeAnsi(name, codePage, stored);
      out_ += static_cast<char>(stored.size());
    } else {
      encodeText(name, false, stored);
      put16(grow(2), static_cast<uint32_t>(stored.size()));
    }
    out_ += stored;
  }

  void putRealIndex(const RealIndex& index) {
    uint8_t* start = grow(layout_.realIndexSize);
    if (!jet3_) put32(start, kIndexMark);
    uint8_t* p = start + (jet3_ ? 0 : 4);
    for (size_t i = 0; i < kMaxIndexColumns; ++i) {
      const bool used = i < index.columns.size();
      put16(p + 3 * i, used ? table_.columns[index.columns[i].ordinal].layout.number : 0xFFFFu);
      p[3 * i + 2] = used && !index.columns[i].descending ? 1 : 0;
    }
    put32(p + 30, index.map.stored());
    put32(p + 34, index.root);
    p[jet3_ ? 38 : 42] = index.flags;
  }

  void putLogicalIndex(const IndexDef& index) {
    uint8_t* start = grow(layout_.logicalIndexSize);
    if (!jet3_) put32(start, kDefinitionMark);
    uint8_t* p = start + (jet3_ ? 0 : 4);
    put32(p, index.number);
    put32(p + 4, static_cast<uint32_t>(index.real));
    p[8] = static_cast<uint8_t>(index.side);
    put32(p + 9, static_cast<uint32_t>(index.partnerNumber));
    put32(p + 13, index.partnerTable);
    p[17] = index.cascadeUpdates;
    p[18] = index.cascadeDeletes;
    p[19] = index.primary ? 1 : index.foreign ? 2 : 0;
  }

  const TableDef& table_;
  const FileLayout& layout_;
  bool jet3_;
  std::string out_;
};

}  // namespace

std::string encodeTdef(const TableDef& table, Version version) { return TdefWriter(table, version).write(); }

void writeTdef(Pager& pager, const TableDef& table, const std::vector<PageNumber>& present) {
  const FileLayout& layout = pager.layout();
  const std::string bytes = encodeTdef(table, layout.version);
  const size_t perPage = layout.pageSize - kPageHead;
  const size_t needed =
      bytes.size() <= layout.pageSize ? 1 : 1 + (bytes.size() - layout.pageSize + perPage - 1) / perPage;

  std::vector<PageNumber> pages = present;
  PageAllocator allocator(pager);
  while (pages.size() > needed) {
    allocator.free(pages.back());
    pages.pop_back();
  }
  while (pages.size() < needed) pages.push_back(allocator.allocate().number());

  size_t done = 0;
  for (size_t i = 0; i < needed; ++i) {
    PageEdit page = pager.write(pages[i]);
    uint8_t* p = page.data();
    const size_t from = i == 0 ? 0 : kPageHead;
    const size_t count = std::min(bytes.size() - done, layout.pageSize - from);
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(done), count, p + from);
    std::fill(p + from + count, p + layout.pageSize, uint8_t{0});
    done += count;
    p[0] = static_cast<uint8_t>(PageKind::TableDef);
    p[1] = 1;
    if (layout.version == Version::Jet3) {
      p[2] = 0x56, p[3] = 0x43;
    } else {
      const size_t room = layout.pageSize - from - count;
      put16(p + 2, static_cast<uint32_t>(room > kPageHead ? room - kPageHead : 0));
    }
    put32(p + 4, i + 1 < needed ? pages[i + 1] : 0);
  }
}

}  // namespace jet
