#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

#include "jet/format/error.h"
#include "jet/pager/pager.h"
#include "support/error_of.h"

namespace jet::test {

// A database as the tests see it: one number a page, with which the whole page is filled (page 0: the part
// between its head and the commit table).
using PageValues = std::vector<uint32_t>;

inline void fillPage(PageEdit& page, const FileLayout& layout, uint32_t value) {
  const uint32_t begin = page.number() == 0 ? 0x100 : 0;
  const uint32_t end = page.number() == 0 ? layout.commitTable : layout.pageSize;
  for (uint32_t i = begin; i < end; i += 4) put32(page.data() + i, value);
}

// The page's number; a failure when it is not the same all over.
inline uint32_t valueOf(const PageView& page, const FileLayout& layout) {
  const uint32_t begin = page.number() == 0 ? 0x100 : 0;
  const uint32_t end = page.number() == 0 ? layout.commitTable : layout.pageSize;
  const uint32_t value = get32(page.data() + begin);
  for (uint32_t i = begin; i < end; i += 4) {
    if (get32(page.data() + i) == value) continue;
    ADD_FAILURE() << "page " << page.number() << " is torn at " << i;
    break;
  }
  return value;
}

inline PageValues valuesOf(Pager& pager) {
  ReadScope scope(pager);
  PageValues values(pager.pageCount());
  for (PageNumber page = 0; page < values.size(); ++page)
    values[page] = valueOf(pager.read(page), pager.layout());
  return values;
}

inline void setValue(Pager& pager, PageNumber page, uint32_t value) {
  PageEdit edit = pager.write(page);
  fillPage(edit, pager.layout(), value);
}

// A change of its own.
inline void commitValue(Pager& pager, PageNumber page, uint32_t value) {
  Transaction transaction(pager);
  setValue(pager, page, value);
  transaction.commit();
}

// Makes a database of `pages` pages whose values are their numbers.
inline void createDatabase(Environment& env, const std::filesystem::path& path, PageNumber pages,
                           Version version = Version::Jet4) {
  const auto pager = Pager::create(env, path, version, pages);
  for (PageNumber page = 0; page < pages; ++page) setValue(*pager, page, page);
  PageEdit head = pager->write(0);
  std::memcpy(head.data(), "\0\1\0\0Standard Jet DB", 19);
  head.data()[0x14] = static_cast<uint8_t>(version);
  for (int slot = 0; slot < 256; ++slot) put16(head.data() + pager->layout().commitTable + 2 * slot, 0x0100);
  pager->commit();
}

inline bool longRun() { return std::getenv("TANDEKO_LONG") != nullptr; }

}  // namespace jet::test
