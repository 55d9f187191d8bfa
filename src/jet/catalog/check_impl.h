#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "jet/catalog/row_store.h"
#include "jet/catalog/tdef_io.h"

// The parts of checkDatabase.
namespace jet::check {

using Fault = std::function<void(const std::u16string&)>;

std::u16string number(uint64_t n);
std::u16string describe(RowId row);
// Runs `part`; an Error that it throws becomes a fault that begins with `where`.
void attempt(const Fault& fault, const std::u16string& where, const std::function<void()>& part);

// Who has which page: each has one owner, or is free.
class PageOwners {
 public:
  PageOwners(Pager& pager, const Fault& fault);

  // False (and a fault) when the page lies outside the file or is another's already.
  bool claim(PageNumber page, const std::u16string& owner);
  // A row of a usage map, whose page may hold those of several owners, and the map's bitmap pages.
  void claimMap(RowId row, const std::u16string& owner);
  // Compares with the map of free pages.
  void compareWithFreeMap(bool leaks);

 private:
  Pager& pager_;
  const Fault& fault_;
  std::vector<std::u16string> names_;  // of owners; 0 none, 1 usage maps
  std::vector<uint32_t> owner_;        // by page
  std::set<RowId> mapRows_;
};

// One table: definition, maps, data pages, rows, long values, indexes.
class TableCheck {
 public:
  TableCheck(Catalog& catalog, TableDefPtr def, PageOwners& owners, const Fault& fault);
  void run();

 private:
  void checkDefinition();
  void claimMaps();
  void checkDataPages();
  void checkSlots(PageNumber number, Bytes page);
  void checkRow(Bytes bytes, PageNumber where);
  void checkLongValue(size_t column, const LongValueRef& ref);
  Bytes longValueSlot(const PageView& page, RowId row, size_t column);
  void checkLongValuePages(size_t column);
  void checkIndex(size_t real);
  // Kind, owner, slots and free bytes of a data page; the number of its slots, 0 when it makes no sense.
  int checkDataPage(PageNumber number, Bytes page, uint32_t owner);
  void report(const std::u16string& what) const { fault_(name_ + u": " + what); }

  Catalog& catalog_;
  Pager& pager_;
  const FileLayout& layout_;
  TableDefPtr def_;
  PageOwners& owners_;
  const Fault& fault_;
  std::u16string name_;
  RowStore rows_;
  std::set<PageNumber> dataPages_;
  std::vector<RowId> liveRows_;  // ascending
  std::vector<RowId> targets_, pointed_;
  // By column: its long-value pages, and the rows there that fields lead to.
  std::vector<std::set<PageNumber>> longValuePages_;
  std::vector<std::vector<RowId>> longValueRows_;
};

// MSysObjects, MSysACEs, MSysRelationships and what the definitions say of relationships.
void checkCatalogue(Catalog& catalog, const std::vector<TableDefPtr>& tables, const Fault& fault);

}  // namespace jet::check
