#include <filesystem>

#include "jet/catalog/check_impl.h"
#include "jet/catalog/objects.h"
#include "jet/catalog/table.h"
#include "jet/format/error.h"
#include "jet/format/header_mask.h"
#include "jet/format/text.h"
#include "jet/storage/data_page.h"

namespace jet {

namespace check {

namespace {
constexpr uint32_t kNobody = 0, kUsageMaps = 1;
}

std::u16string number(uint64_t n) { return fromUtf8(std::to_string(n)); }

std::u16string describe(RowId row) { return u"row " + number(row.page) + u"." + number(row.slot); }

void attempt(const Fault& fault, const std::u16string& where, const std::function<void()>& part) {
  try {
    part();
  } catch (const Error& error) {
    fault(where + u": " + error.description());
  }
}

PageOwners::PageOwners(Pager& pager, const Fault& fault)
    : pager_(pager), fault_(fault), names_{u"nobody", u"usage maps"}, owner_(pager.pageCount()) {}

bool PageOwners::claim(PageNumber page, const std::u16string& owner) {
  if (page >= owner_.size()) {
    fault_(owner + u": page " + number(page) + u" lies outside the file");
    return false;
  }
  if (owner_[page] != kNobody) {
    fault_(u"page " + number(page) + u" belongs to " + names_[owner_[page]] + u" and to " + owner);
    return false;
  }
  if (names_.back() != owner) names_.push_back(owner);
  owner_[page] = static_cast<uint32_t>(names_.size() - 1);
  return true;
}

void PageOwners::claimMap(RowId row, const std::u16string& owner) {
  if (row.page >= owner_.size()) {
    fault_(owner + u": its usage map lies outside the file");
    return;
  }
  if (owner_[row.page] == kNobody) owner_[row.page] = kUsageMaps;
  if (owner_[row.page] != kUsageMaps)
    fault_(owner + u": its usage map lies on a page of " + names_[owner_[row.page]]);
  if (!mapRows_.insert(row).second)
    fault_(owner + u": its usage map, " + describe(row) + u", has another owner too");
  attempt(fault_, owner, [&] {
    for (const PageNumber page : UsageMap(pager_, row).bitmapPages()) claim(page, u"bitmaps of " + owner);
  });
}

void PageOwners::compareWithFreeMap(bool leaks) {
  attempt(fault_, u"map of free pages", [&] {
    const PageAllocator allocator(pager_);
    for (PageNumber page = 0; page < owner_.size(); ++page) {
      const bool isFree = allocator.isFree(page);
      if (owner_[page] != kNobody && isFree)
        fault_(u"page " + number(page) + u" of " + names_[owner_[page]] + u" is marked as free");
      if (owner_[page] == kNobody && !isFree && leaks)
        fault_(u"page " + number(page) + u" is not free, but belongs to nobody");
    }
  });
}

namespace {

void checkHeader(Pager& pager, PageOwners& owners, const Fault& fault) {
  owners.claim(0, u"the file header");
  const PageView header = pager.read(0);
  // Page 1 has the map of free pages and another one as its rows 0 and 1.
  for (const auto& [field, row] :
       {std::pair{kHeaderGlobalMap, RowId{1, 0}}, {kHeaderSecondMap, RowId{1, 1}}}) {
    if (RowId::fromStored(headerField32(header.bytes(), field)) != row)
      fault(u"header: map row at another place than usual");
    else
      owners.claimMap(row, row.slot == 0 ? u"free pages" : u"the second map");
  }
  const PageView maps = pager.read(1);
  if (data_page::slotCount(maps.bytes(), pager.layout(), 1) != 2) fault(u"page 1: other than two rows");
  std::error_code error;
  const uintmax_t size = std::filesystem::file_size(pager.path(), error);
  if (!error && size % pager.pageSize() != 0) fault(u"the file's size is not a whole number of pages");
}

}  // namespace
}  // namespace check

void checkDatabase(Catalog& catalog, const std::function<void(const std::u16string&)>& fault, bool leaks) {
  using namespace check;
  Pager& pager = catalog.pager();
  attempt(fault, u"file", [&] {
    const ReadScope scope(pager);
    PageOwners owners(pager, fault);
    attempt(fault, u"header", [&] { checkHeader(pager, owners, fault); });
    std::vector<TableDefPtr> tables;
    for (const CatalogObject& object : catalog.objects()) {
      if (object.type != kObjectTable) continue;
      attempt(fault, u"table " + object.name, [&] {
        tables.push_back(catalog.tableAt(static_cast<PageNumber>(object.id)));
        TableCheck(catalog, tables.back(), owners, fault).run();
      });
    }
    owners.compareWithFreeMap(leaks);
    attempt(fault, u"catalogue", [&] { checkCatalogue(catalog, tables, fault); });
  });
}

}  // namespace jet
