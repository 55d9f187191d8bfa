#pragma once

#include <functional>
#include <vector>

#include "jet/catalog/table_def.h"
#include "jet/dao/row_marks.h"
#include "jet/format/error.h"
#include "jet/pager/pager.h"

namespace jet {

// The rows of a table to be copied: first in the order of the primary key, as far as its index can be read,
// then all others by page. The index is only trusted with the order: every slot of the table's pages is seen
// exactly once.
class TableSource {
 public:
  // `pages`: the table's data pages. `marks` collects the slots that were taken, of all tables of the file.
  // `tolerant`: what cannot be read is counted and left out, and rows that have lost the pointer to them
  // are found; else it throws 3049.
  TableSource(Pager& pager, const TableDef& def, std::vector<PageNumber> pages, RowMarks& marks,
              bool tolerant);

  using Visitor = std::function<void(Bytes row, PageNumber where)>;
  void forEach(const Visitor& visit);

  // After forEach: slots that promised a row, and pages that are not what they should be.
  uint64_t slots() const { return slots_; }
  uint32_t badPages() const { return badPages_; }

 private:
  void visitByKey(const Visitor& visit);
  void visitPage(PageNumber page, const Visitor& visit);
  void visitOrphans(PageNumber page, const Visitor& visit);
  bool take(RowId id);
  void follow(Bytes pointer);
  bool isOwn(Bytes page) const;
  template <typename Part>
  bool readable(const Part& part) const;

  Pager& pager_;
  const FileLayout& layout_;
  const TableDef& def_;
  std::vector<PageNumber> pages_;
  RowMarks& marks_;
  bool tolerant_;
  uint64_t slots_ = 0;
  uint32_t badPages_ = 0;
  // The row that take() found.
  PageView home_, target_;
  Bytes row_;
  PageNumber where_ = 0;
};

// Whether the error tells of damage in the file, not of a failing disk, a cancelled operation and the like.
bool isDamage(const Error& error);

}  // namespace jet
