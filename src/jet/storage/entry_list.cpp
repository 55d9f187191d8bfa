#include "jet/storage/entry_list.h"

#include <algorithm>
#include <limits>

#include "jet/format/bytes.h"
#include "jet/format/error.h"

namespace jet {

EntryList::EntryList(const FileLayout& layout, const IndexPage& page)
    : layout_(layout), leaf_(page.isLeaf()) {
  const std::vector<uint16_t> ends = page.entryEnds();
  ends_.reserve(ends.size() + 1);
  bytes_.reserve(page.used() + (ends.size() + 2) * page.prefix());
  uint32_t start = 0;
  for (const uint16_t end : ends) {
    page.entry(start, end).appendTo(bytes_);
    ends_.push_back(static_cast<uint32_t>(bytes_.size()));
    start = end;
  }
}

std::string_view EntryList::at(size_t i) const {
  const size_t start = i == 0 ? 0 : ends_[i - 1];
  return std::string_view(bytes_).substr(start, ends_[i] - start);
}

std::string_view EntryList::bound(size_t i) const {
  std::string_view entry = at(i);
  if (!leaf_) entry.remove_suffix(kEntryChildBytes);
  return entry;
}

PageNumber EntryList::child(size_t i) const {
  const Bytes entry = asBytes(at(i));
  return get32be(entry.data() + entry.size() - kEntryChildBytes);
}

void EntryList::insert(size_t i, std::string_view entry) {
  const size_t start = i == 0 ? 0 : ends_[i - 1];
  bytes_.insert(start, entry);
  ends_.insert(ends_.begin() + static_cast<std::ptrdiff_t>(i), static_cast<uint32_t>(start));
  for (; i < ends_.size(); ++i) ends_[i] += static_cast<uint32_t>(entry.size());
}

void EntryList::removeLast() {
  ends_.pop_back();
  bytes_.resize(ends_.empty() ? 0 : ends_.back());
}

// What the first and the last of sorted entries share all share - as far as it is part of their keys, or
// their keys are the same.
size_t EntryList::commonPrefix(size_t from, size_t to) const {
  std::string_view first = at(from), last = at(to - 1);
  const std::string_view firstKey = first.substr(0, first.size() - kEntryRowBytes);
  const std::string_view lastKey = last.substr(0, last.size() - kEntryRowBytes);
  if (firstKey != lastKey) first = firstKey, last = lastKey;
  const size_t limit =
      std::min({first.size(), last.size(), size_t{layout_.version == Version::Jet3 ? 0xFFu : 0xFFFFu}});
  return static_cast<size_t>(
      std::mismatch(first.begin(), first.begin() + static_cast<std::ptrdiff_t>(limit), last.begin()).first -
      first.begin());
}

size_t EntryList::packedSize(size_t from, size_t to, size_t prefix) const {
  return ends_[to - 1] - (from == 0 ? 0 : ends_[from - 1]) - (to - from - 1) * prefix;
}

size_t EntryList::bestSize(size_t from, size_t to) const {
  if (from == to) return 0;
  const size_t whole = packedSize(from, to, 0);
  if (!leaf_ || whole <= IndexPage::capacity(layout_)) return whole;
  return packedSize(from, to, commonPrefix(from, to));
}

bool EntryList::fits(size_t from, size_t to) const {
  return bestSize(from, to) <= IndexPage::capacity(layout_);
}

void EntryList::store(MutableBytes page, size_t from, size_t to) const {
  std::vector<Bytes> entries;
  entries.reserve(to - from);
  for (size_t i = from; i < to; ++i) entries.push_back(asBytes(at(i)));
  const bool whole = from == to || packedSize(from, to, 0) <= IndexPage::capacity(layout_);
  index_page::storeEntries(page, layout_, entries, whole ? 0 : static_cast<uint32_t>(commonPrefix(from, to)));
}

size_t EntryList::cut(size_t added, bool firstPage, bool lastPage) const {
  const size_t n = size(), goesUp = leaf_ ? 0 : 1;
  const auto cutFits = [&](size_t at) { return fits(0, at) && fits(at + goesUp, n); };
  if (lastPage && added == n - 1 && n > 2 && cutFits(n - 1 - goesUp)) return n - 1 - goesUp;
  if (firstPage && added == 0 && n > 2 && cutFits(1)) return 1;
  size_t best = 0, bestLarger = std::numeric_limits<size_t>::max();
  for (size_t at = 1; at + goesUp <= n - (leaf_ ? 1 : 0); ++at) {
    const size_t larger = std::max(bestSize(0, at), bestSize(at + goesUp, n));
    if (larger < bestLarger) best = at, bestLarger = larger;
  }
  if (bestLarger > IndexPage::capacity(layout_)) throw Error(3393);
  return best;
}

}  // namespace jet
