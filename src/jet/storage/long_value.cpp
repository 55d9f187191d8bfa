#include "jet/storage/long_value.h"

#include <algorithm>

#include "jet/format/error.h"
#include "jet/storage/data_page.h"

namespace jet {

namespace {

constexpr uint32_t kInlineFlag = 0x80000000;
constexpr uint32_t kSingleFlag = 0x40000000;
constexpr uint32_t kMaxLength = 0x3FFFFFFF;
constexpr size_t kNextSize = 4;       // pointer before the data of a chain's row
constexpr uint32_t kStampOffset = 8;  // in the page header, Jet 4
constexpr int kMaxTries = 8;

LongValueField makeField(uint32_t head, RowId row, uint32_t stamp) {
  LongValueField field(LongValueRef::kFieldSize, '\0');
  auto* p = reinterpret_cast<uint8_t*>(field.data());
  put32(p, head);
  put32(p + 4, row.isNull() ? 0 : row.stored());
  put32(p + 8, stamp);
  return field;
}

// Any number that an older chain on the same page is unlikely to have had.
uint32_t makeStamp(Pager& pager, size_t length) {
  const uint64_t ticks = pager.environment().monotonicMilliseconds();
  const auto mixed = static_cast<uint32_t>((ticks + length) * 0x9E3779B97F4A7C15u >> 32);
  return mixed == 0 ? 1 : mixed;
}

}  // namespace

struct LongValueStore::Part {
  RowId row;
  Bytes data;
};

// The length and the number of pages bound the walk: every part must bring bytes from a page of its own, and
// none may follow the last.
void LongValueStore::walk(const LongValueRef& ref, const std::function<bool(const Part&)>& each) const {
  if (ref.length == 0 && ref.row.isNull()) return;
  if (ref.length > uint64_t{pager_.pageCount()} * pager_.pageSize())
    throwDamaged(u"long value longer than the file", ref.row.page);
  const bool chain = ref.kind == LongValueRef::Kind::Chain;
  RowId at = ref.row;
  PageNumber parts = 0;
  for (size_t left = ref.length;;) {
    if (++parts > pager_.pageCount()) throwDamaged(u"long value goes in circles", at.page);
    const PageView view = pager_.read(at.page);
    const Bytes page = view.bytes();
    const FileLayout& layout = pager_.layout();
    if (!data_page::isOwnedBy(page, layout, kLvalOwner))
      throwDamaged(u"long value on a page of another kind", at.page);
    if (data_page::slotWord(page, layout, at.page, at.slot) & ~kSlotOffsetMask)
      throwDamaged(u"long value deleted", at.page);
    Part part{at, data_page::slotBytes(page, layout, at.page, at.slot)};
    RowId next;
    if (chain) {
      if (part.data.size() <= kNextSize) throwDamaged(u"long value part cut short", at.page);
      next = RowId::fromStored(get32(part.data.data()));
      part.data = part.data.subspan(kNextSize);
    }
    if (part.data.size() > left) throwDamaged(u"long value too long", at.page);
    left -= part.data.size();
    if (next.isNull() != (left == 0)) throwDamaged(u"long value of another length", at.page);
    if (!each(part) || next.isNull()) return;
    at = next;
  }
}

void LongValueStore::visit(const LongValueRef& ref, const std::function<bool(Bytes)>& part) const {
  if (ref.kind == LongValueRef::Kind::Inline)
    part(ref.inlineBytes);
  else
    walk(ref, [&](const Part& p) { return part(p.data); });
}

void LongValueStore::visitRows(const LongValueRef& ref, const std::function<bool(RowId, Bytes)>& part) const {
  if (ref.kind == LongValueRef::Kind::Inline)
    part({}, ref.inlineBytes);
  else
    walk(ref, [&](const Part& p) { return part(p.row, p.data); });
}

std::string LongValueStore::read(const LongValueRef& ref) const {
  std::string value;
  visit(ref, [&](Bytes part) {
    if (value.empty()) value.reserve(ref.length);
    value.append(asChars(part));
    return true;
  });
  return value;
}

LongValueField LongValueStore::write(Bytes value, bool mustMoveOut) {
  if (value.size() > kMaxLength) throw Error(3163, {}, "DAO.Field");
  const FileLayout& layout = pager_.layout();
  const auto length = static_cast<uint32_t>(value.size());
  if (length == 0 || (length <= layout.maxInlineBytes && !mustMoveOut)) {
    LongValueField field = makeField(length | kInlineFlag, {}, 0);
    return field.append(asChars(value));
  }
  if (length <= layout.maxLongValuePart) return makeField(length | kSingleFlag, writeSingle(value), 0);
  Writer chain(*this, length);
  chain.append(value);
  return chain.finish();
}

RowId LongValueStore::writeSingle(Bytes value) {
  PageEdit page = pageWithRoom(value.size());
  const int slot = data_page::insert(page.bytes(), pager_.layout(), value);
  if (hasFreeMap_) {
    if (data_page::isUseful(page.bytes(), pager_.layout()))
      free_.insert(page.number());
    else
      free_.erase(page.number());
  }
  return {page.number(), static_cast<uint8_t>(slot)};
}

LongValueStore::Writer::Writer(LongValueStore& store, uint32_t length)
    : store_(store),
      length_(length),
      stamp_(store.pager_.layout().version == Version::Jet3 ? 0 : makeStamp(store.pager_, length)),
      row_(kNextSize, '\0') {}

void LongValueStore::Writer::append(Bytes piece) {
  const size_t full = kNextSize + store_.pager_.layout().maxLongValuePart;
  while (!piece.empty()) {
    if (row_.size() == full) flush();
    const size_t count = std::min(piece.size(), full - row_.size());
    row_.append(asChars(piece.first(count)));
    piece = piece.subspan(count);
  }
}

// The part goes to a page of its own, and the part before it gets its pointer.
void LongValueStore::Writer::flush() {
  const FileLayout& layout = store_.pager_.layout();
  PageEdit page = store_.freshPage();
  data_page::insert(page.bytes(), layout, asBytes(row_));
  const RowId row{page.number(), 0};
  if (first_.isNull()) {
    first_ = row;
    if (stamp_ != 0) put32(page.data() + kStampOffset, stamp_);
  } else {
    const size_t start =
        last_.bytes().size() - kNextSize - layout.maxLongValuePart;  // a full part is before it
    put32(last_.data() + start, row.stored());
  }
  last_ = std::move(page);
  row_.assign(kNextSize, '\0');
}

LongValueField LongValueStore::Writer::finish() {
  flush();
  last_ = {};
  return makeField(length_, first_, stamp_);
}

// The last page of the free map is the one that was filled last; a few others may have been left with room.
PageEdit LongValueStore::pageWithRoom(size_t length) {
  const FileLayout& layout = pager_.layout();
  PageNumber candidate = hasFreeMap_ ? free_.last() : 0;
  for (int tries = 0; tries < kMaxTries && candidate != 0; ++tries) {
    const PageView page = pager_.read(candidate);
    const bool ours = data_page::isOwnedBy(page.bytes(), layout, kLvalOwner);
    if (ours && data_page::hasRoom(page.bytes(), layout, length)) return pager_.write(candidate);
    if (!ours || !data_page::isWorthKeeping(page.bytes(), layout)) free_.erase(candidate);
    candidate = free_.next(tries == 0 ? 1 : candidate + 1);
  }
  return freshPage();
}

PageEdit LongValueStore::freshPage() {
  PageEdit page = PageAllocator(pager_).allocate();
  data_page::initialise(page.bytes(), pager_.layout(), kLvalOwner);
  owned_.insert(page.number());
  return page;
}

void LongValueStore::remove(const LongValueRef& ref) {
  if (ref.kind == LongValueRef::Kind::Inline) return;
  // Nothing is erased before the whole chain was found sound.
  std::vector<RowId> rows;
  walk(ref, [&](const Part& part) {
    rows.push_back(part.row);
    return true;
  });
  for (const RowId row : rows) erase(row);
}

void LongValueStore::erase(RowId row) {
  PageEdit page = pager_.write(row.page);
  data_page::erase(page.bytes(), pager_.layout(), row.page, row.slot);
  if (!owned_.contains(row.page)) return;
  if (data_page::isEmpty(page.bytes(), pager_.layout())) {
    owned_.erase(row.page);
    if (hasFreeMap_) free_.erase(row.page);
    PageAllocator(pager_).free(row.page);
  } else if (hasFreeMap_ && data_page::isUseful(page.bytes(), pager_.layout())) {
    free_.insert(row.page);
  }
}

}  // namespace jet
