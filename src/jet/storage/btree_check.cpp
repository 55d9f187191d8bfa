#include <algorithm>
#include <optional>

#include "jet/format/bytes.h"
#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/storage/btree.h"

namespace jet {

namespace {

std::u16string number(uint64_t n) { return fromUtf8(std::to_string(n)); }

// An entry as it is ordered: key bytes, then row.
struct Bound {
  std::string key;
  uint32_t row = 0;
  auto operator<=>(const Bound&) const = default;
};

// A page that a node leads to; its entries lie behind `above` (of its left neighbour) and up to `upTo`.
struct Reached {
  PageNumber page;
  std::optional<Bound> above, upTo;
};

Bound boundOf(const EntryView& entry) {
  Bound bound;
  entry.copy(entry.keyLength(), bound.key);
  bound.row = entry.row();
  return bound;
}

}  // namespace

void BTree::check(const std::function<void(const std::u16string&)>& fault,
                  const std::function<void(Bytes key, RowId row)>& entryFound) const {
  std::vector<bool> seen(pager_.pageCount());
  std::vector<Reached> pages{{root_, {}, {}}};
  std::optional<int> level;  // of the pages in the list
  const auto report = [&](PageNumber page, std::u16string_view what) {
    fault(u"index page " + number(page) + u": " + std::u16string(what));
  };
  while (!pages.empty()) {
    std::vector<Reached> below;
    std::optional<Bound> last;  // entry of this level
    for (size_t i = 0; i < pages.size(); ++i) {
      const Reached& reached = pages[i];
      const PageNumber page = reached.page;
      if (page >= seen.size() || seen[page]) {
        report(page, page < seen.size() ? u"reached twice" : u"outside the file");
        continue;
      }
      seen[page] = true;
      try {
        const PageView pinned = pager_.read(page);
        const IndexPage at = view(pinned);
        if (level && at.level() != *level) {
          report(page, u"wrong level");
          continue;
        }
        level = at.level();
        if (at.previous() != (i == 0 ? 0 : pages[i - 1].page) ||
            at.next() != (i + 1 == pages.size() ? 0 : pages[i + 1].page))
          report(page, u"links to its neighbours disagree with the nodes above");
        // Mask bits behind the entries, which nothing else would notice.
        const FileLayout& layout = pager_.layout();
        for (uint32_t bit = at.used() + 1; bit < 8 * (layout.indexEntries - layout.indexMask); ++bit)
          if (pinned.data()[layout.indexMask + bit / 8] >> bit % 8 & 1) {
            report(page, u"entry mask reaches behind the entries");
            break;
          }
        if (at.isLeaf() && at.tail() != 0) report(page, u"leaf with a tail");
        std::optional<Bound> lower = reached.above;
        for (uint32_t start = 0; start < at.used(); start = at.entryEnd(start)) {
          const EntryView entry = at.entry(start);
          const Bound bound = boundOf(entry);
          if (last && !(*last < bound)) report(page, u"entries not ascending");
          if (reached.above && !(*reached.above < bound))
            report(page, u"entry not above its left neighbour's bound");
          if (reached.upTo && *reached.upTo < bound) report(page, u"entry above the bound of its node");
          if (at.isLeaf())
            entryFound(asBytes(bound.key), RowId::fromStored(bound.row));
          else
            below.push_back({entry.child(), lower, bound});
          lower = bound;
          last = bound;
        }
        if (!at.isLeaf()) below.push_back({at.tail(), lower, reached.upTo});
      } catch (const Error& error) {
        report(page, error.description());
      }
    }
    if (level && *level > 0) --*level;
    pages = std::move(below);
  }
  checkMap(seen, report);
}

// The map lists the pages of the tree and no others.
void BTree::checkMap(const std::vector<bool>& tree,
                     const std::function<void(PageNumber, std::u16string_view)>& report) const {
  std::vector<bool> listed(tree.size());
  try {
    for (const PageNumber page : UsageMap(pager_, map_).pages())
      if (page < listed.size()) listed[page] = true;
  } catch (const Error& error) {
    report(map_.page, error.description());
    return;
  }
  for (PageNumber page = 0; page < tree.size(); ++page)
    if (tree[page] != listed[page])
      report(page, tree[page] ? u"missing in the map of the index" : u"in the map, but not in the tree");
}

std::vector<PageNumber> BTree::pages() const {
  std::vector<bool> seen(pager_.pageCount());
  std::vector<PageNumber> found{root_};
  for (size_t i = 0; i < found.size(); ++i) try {
      const PageView pinned = pager_.read(found[i]);
      const IndexPage page = view(pinned);
      if (page.isLeaf()) continue;
      for (uint32_t start = 0;; start = page.entryEnd(start)) {
        const PageNumber child = page.child(start);
        if (child < seen.size() && !seen[child]) found.push_back(child), seen[child] = true;
        if (start == page.used()) break;
      }
    } catch (const Error&) {
      // check() reports the page.
    }
  return found;
}

}  // namespace jet
