#include <gmock/gmock.h>

#include "catalog_fixture.h"
#include "jet/catalog/table.h"
#include "jet/catalog/tdef_io.h"
#include "jet/format/text.h"
#include "jet/storage/data_page.h"
#include "jet/storage/long_value.h"

namespace jet {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> faultsOf(Catalog& catalog, bool leaks = true) {
  std::vector<std::string> found;
  checkDatabase(
      catalog, [&](const std::u16string& fault) { found.push_back(toUtf8(fault)); }, leaks);
  return found;
}

// Two related tables with some of everything: long values of each kind, moved and deleted rows.
class CheckTest : public testing::Test {
 protected:
  void SetUp() override {
    db_ = createDatabase(folder_ / "test.mdb", 0x0415);
    db_.pager->begin();
    NewTable parent{u"parent", {}, {}, {}, {}};
    parent.columns = {column(u"id", Type::Long), column(u"name", Type::Text)};
    parent.indexes = {{u"PrimaryKey", {{u"id", false}}, true}};
    catalog().createTable(parent);
    NewTable child{u"child", {}, {}, {}, {}};
    child.columns = {column(u"id", Type::Long), column(u"parent", Type::Long), column(u"text", Type::Memo)};
    child.indexes = {{u"PrimaryKey", {{u"id", false}}, true},
                     {u"unique", {{u"parent", false}, {u"id", false}}, false, true}};
    catalog().createTable(child);
    catalog().createRelation({u"rel", u"parent", u"child", {{u"id", u"parent"}}});
    Table parents(catalog(), catalog().table(u"parent")), children(catalog(), catalog().table(u"child"));
    for (int i = 0; i < 40; ++i) parents.insert({Value(i), Value(std::u16string(60, u'a'))});
    std::vector<RowId> rows;
    for (int i = 0; i < 120; ++i) {
      const size_t length = i % 3 == 0 ? 10 : i % 3 == 1 ? 500 : 9000;
      rows.push_back(children.insert({Value(i), Value(i % 40), Value(std::u16string(length, u'x'))}));
    }
    for (int i = 0; i < 20; ++i) children.remove(rows[static_cast<size_t>(3 * i)]);
    const Table::Change longer{1, Value(std::u16string(250, u'b'))};
    std::vector<RowId> all;
    for (Heap::Scan scan = parents.scan(); scan.next();) all.push_back(scan.id());
    for (const RowId row : all) parents.update(row, {&longer, 1});
    parent_ = catalog().table(u"parent"), child_ = catalog().table(u"child");
  }

  static NewColumn column(const char16_t* name, Type type) {
    NewColumn c;
    c.name = name, c.type = type;
    return c;
  }
  Catalog& catalog() { return *db_.catalog; }
  PageEdit edit(PageNumber page) { return db_.pager->write(page); }
  PageNumber dataPage(const TableDefPtr& def) { return UsageMap(*db_.pager, def->ownedMap).next(1); }
  const RealIndex& index(const TableDefPtr& def, const char16_t* name) {
    return def->realIndexes[static_cast<size_t>(def->index(name)->real)];
  }
  BTree tree(const TableDefPtr& def, const char16_t* name) {
    return indexTree(*db_.pager, *def, def->index(name)->real);
  }
  RowId rowWith(const TableDefPtr& def, int id) {
    Table table(catalog(), def);
    for (Heap::Scan scan = table.scan(); scan.next();) {
      if (table.reader(scan.bytes(), scan.where()).value(0) == Value(id)) return scan.id();
    }
    return {};
  }
  // The first slot of the table's first pages whose flags are these.
  RowId slotWith(const TableDefPtr& def, uint16_t flags) {
    for (const PageNumber page : UsageMap(*db_.pager, def->ownedMap).pages()) {
      const PageView view = db_.pager->read(page);
      for (int slot = 0; slot < data_page::slotCount(view.bytes(), layout(), page); ++slot) {
        if ((data_page::slotWord(view.bytes(), layout(), page, slot) & ~kSlotOffsetMask) == flags)
          return {page, static_cast<uint8_t>(slot)};
      }
    }
    return {};
  }
  const FileLayout& layout() { return db_.pager->layout(); }
  const ColumnDef& memo() { return child_->columns[2]; }

  ScratchFolder folder_;
  OpenDatabase db_;
  TableDefPtr parent_, child_;
};

TEST_F(CheckTest, FindsEachKindOfDamage) {
  ASSERT_THAT(faultsOf(catalog()), IsEmpty());
  ASSERT_FALSE(slotWith(parent_, kSlotMoved).isNull());
  struct Case {
    const char* name;
    std::function<void()> plant;
    const char* report;
  };
  const std::vector<Case> cases{
      {"free bytes", [&] { edit(dataPage(child_)).data()[2] ^= 1; }, "free bytes wrong"},
      {"owner", [&] { put32(edit(dataPage(child_)).data() + 4, parent_->page); }, "another kind or owner"},
      {"slot", [&] { put16(edit(dataPage(child_)).data() + 16, 10); }, "row outside its place"},
      {"column count",
       [&] {
         const RowId row = rowWith(parent_, 3);
         Table table(catalog(), parent_);
         const auto at = table.fetch(row);
         const size_t offset = static_cast<size_t>(at->bytes.data() - at->page.data());
         edit(at->where).data()[offset] = 9;
       },
       "more columns than the table"},
      {"row count", [&] { catalog().storeCounts(child_->page, 1, {}); }, "counts 101 rows, has 100"},
      {"moved row",
       [&] {
         const RowId row = slotWith(parent_, kSlotMoved);
         PageEdit page = edit(row.page);
         const Bytes bytes = data_page::slotBytes(page.bytes(), layout(), row.page, row.slot);
         page.data()[bytes.data() - page.data()] = 0;
         put24(page.data() + (bytes.data() - page.data()) + 1, row.page);
       },
       "does not expect it"},
      {"lost target",
       [&] {
         const RowId row = slotWith(parent_, kSlotMoved);
         PageEdit page = edit(row.page);
         data_page::setFlags(page.bytes(), layout(), row.slot, kSlotDeleted);
       },
       "nothing points to it"},
      {"page in two maps", [&] { UsageMap(*db_.pager, parent_->ownedMap).insert(dataPage(child_)); },
       "and to data of table child"},
      {"free map", [&] { UsageMap(*db_.pager, parent_->freeMap).insert(parent_->page); },
       "has room, but is not owned"},
      {"used page marked free", [&] { PageAllocator(*db_.pager).free(dataPage(child_)); },
       "is marked as free"},
      {"leak",
       [&] { UsageMap(*db_.pager, memo().ownedMap).erase(UsageMap(*db_.pager, memo().ownedMap).next(1)); },
       "belongs to nobody"},
      {"long value lost",
       [&] {
         RowStore rows(*db_.pager, child_);
         const auto row = rows.heap().fetch(rowWith(child_, 1));
         const RowReader reader = rows.reader(row->bytes, row->where);
         LongValueStore(*db_.pager, memo().ownedMap, memo().freeMap).remove(*reader.longValue(2));
       },
       "long value deleted"},
      {"long value unused",
       [&] {
         LongValueStore(*db_.pager, memo().ownedMap, memo().freeMap).write(asBytes(std::string(500, 'x')));
       },
       "is used by no row"},
      {"long value length",
       [&] {
         RowStore rows(*db_.pager, child_);
         const auto row = rows.heap().fetch(rowWith(child_, 2));
         const RowReader reader = rows.reader(row->bytes, row->where);
         const size_t offset = static_cast<size_t>(reader.stored(2).data() - row->page.data());
         ++edit(row->where).data()[offset];
       },
       "length of a long value"},
      {"chain stamp",
       [&] {
         RowStore rows(*db_.pager, child_);
         const auto row = rows.heap().fetch(rowWith(child_, 2));
         const RowReader reader = rows.reader(row->bytes, row->where);
         ++edit(reader.longValue(2)->row.page).data()[8];
       },
       "stamp of a long value"},
      {"entry missing",
       [&] {
         const RowId row = rowWith(child_, 4);
         const Value id(4);
         tree(child_, u"PrimaryKey")
             .remove(asBytes(encodeKey(child_->keyColumns(index(child_, u"PrimaryKey"), false), {&id, 1})),
                     row);
       },
       "no entry for row"},
      {"entry of no row",
       [&] {
         tree(child_, u"PrimaryKey")
             .insert(asBytes(std::string("\x7F\xFF\0\0\0", 5)), {dataPage(child_), 250});
       },
       "there is no such row"},
      {"entry twice",
       [&] {
         tree(child_, u"PrimaryKey").insert(asBytes(std::string("\x7F\xFF\0\0\0", 5)), rowWith(child_, 4));
       },
       "has two entries"},
      {"duplicate key",
       [&] {
         // Another row gets the key bytes of row 4.
         const RowId row = rowWith(child_, 5);
         const Value four(4), five(5);
         const auto columns = child_->keyColumns(index(child_, u"PrimaryKey"), false);
         tree(child_, u"PrimaryKey").remove(asBytes(encodeKey(columns, {&five, 1})), row);
         tree(child_, u"PrimaryKey").insert(asBytes(encodeKey(columns, {&four, 1})), row);
       },
       "key is there twice"},
      {"index page", [&] { edit(index(child_, u"unique").root).data()[26] = 3; }, "level of an index page"},
      {"orphan",
       [&] {
         RowStore rows(*db_.pager, child_);
         const RowStore::Change change{1, Value(77)};
         rows.update(rowWith(child_, 7), {&change, 1});
       },
       "has no related row in parent"},
      {"relationship without partner",
       [&] {
         NewTable other{
             u"other", {column(u"id", Type::Long)}, {{u"PrimaryKey", {{u"id", false}}, true}}, {}, {}};
         catalog().createTable(other);
         // The foreign side now names a table that knows nothing of it.
         TdefBytes stored = readTdefBytes(*db_.pager, child_->page);
         const size_t at = stored.bytes.find(std::string("\x02", 1) + std::string(1, '\1') +
                                             std::string(3, '\0') + static_cast<char>(parent_->page));
         ASSERT_NE(at, std::string::npos);
         edit(child_->page).data()[at + 5] = static_cast<uint8_t>(catalog().table(u"other")->page);
       },
       "does not lead back"},
      {"definition", [&] { edit(child_->page).data()[0] = 1; }, "not a table definition page"},
      {"map row",
       [&] {
         PageEdit page = edit(child_->ownedMap.page);
         data_page::setFlags(page.bytes(), layout(), child_->ownedMap.slot, kSlotDeleted);
       },
       "usage map deleted"},
      {"header", [&] { edit(0).data()[0x18] ^= 1; }, "header"},
      {"permissions",
       [&] {
         const TableDefPtr aces = catalog().table(u"MSysACEs");
         RowStore rows(*db_.pager, aces);
         std::vector<RowId> doomed;
         for (Heap::Scan scan = rows.scan(); scan.next();)
           if (rows.reader(scan.bytes(), scan.where()).value(aces->columnOrdinal(u"ObjectId")) ==
               Value(static_cast<int32_t>(child_->page)))
             doomed.push_back(scan.id());
         for (const RowId row : doomed) rows.remove(row);
       },
       "child has no permissions"},
  };
  for (const Case& c : cases) {
    db_.pager->begin();
    c.plant();
    EXPECT_THAT(faultsOf(catalog()), Contains(HasSubstr(c.report))) << c.name;
    db_.pager->rollback();
    ASSERT_THAT(faultsOf(catalog()), IsEmpty()) << c.name;
  }
}

// Whatever a page says, the check comes to an end.
TEST_F(CheckTest, SurvivesRandomDamage) {
  std::mt19937 random(4);
  const PageNumber pages = db_.pager->pageCount();
  int found = 0;
  for (int round = 0; round < 150; ++round) {
    db_.pager->begin();
    for (int i = 0; i < 3; ++i) {
      PageEdit page = edit(1 + static_cast<PageNumber>(random()) % (pages - 1));
      const size_t offset = random() % (round % 2 ? 100 : 4096);
      page.data()[offset] = static_cast<uint8_t>(random());
    }
    found += !faultsOf(catalog()).empty();
    db_.pager->rollback();
  }
  EXPECT_GT(found, 50);
  EXPECT_THAT(faultsOf(catalog()), IsEmpty());
}

TEST(CheckSamples, RealFilesAreSound) {
  if (sampleFiles().empty()) GTEST_SKIP();
  for (const auto& path : sampleFiles()) {
    const ScratchFolder folder;
    std::filesystem::copy_file(path, folder / "copy.mdb");
    std::filesystem::permissions(folder / "copy.mdb", std::filesystem::perms::owner_all);
    const OpenDatabase db = openDatabase(folder / "copy.mdb");
    EXPECT_THAT(faultsOf(*db.catalog, false), IsEmpty()) << path.filename();
  }
}

// Rows of real files are taken out, put back and changed; refusals are fine, faults are not.
TEST(CheckSamples, RealFilesStaySoundThroughChanges) {
  if (sampleFiles().empty()) GTEST_SKIP();
  int done = 0, refused = 0;
  for (const auto& path : sampleFiles()) {
    const ScratchFolder folder;
    std::filesystem::copy_file(path, folder / "copy.mdb");
    std::filesystem::permissions(folder / "copy.mdb", std::filesystem::perms::owner_all);
    const OpenDatabase db = openDatabase(folder / "copy.mdb");
    db.pager->begin();
    const auto attempt = [&](const std::function<void()>& change) {
      const int error = errorOf(change);
      EXPECT_THAT(error, testing::AnyOf(0, 3022, 3027, 3058, 3200, 3201, 3314, 3396, 3397))
          << path.filename();
      ++(error == 0 ? done : refused);
    };
    for (const std::u16string& name : db.catalog->userTables()) {
      Table table(*db.catalog, db.catalog->table(name));
      std::vector<RowId> rows;
      for (Heap::Scan scan = table.scan(); scan.next() && rows.size() < 300;) rows.push_back(scan.id());
      for (size_t i = 0; i < rows.size(); ++i) {
        const auto values = table.read(rows[i]);
        if (!values) continue;  // gone with a cascade
        std::vector<Table::Change> changes;
        for (size_t k = 0; k < values->size(); ++k) {
          if (const Text* text = values->at(k).getIf<Text>(); text && i % 3 == 0)
            changes.push_back({static_cast<int>(k), Value(text->substr(0, text->size() / 2) + u"e")});
        }
        if (i % 3 == 0) attempt([&] { table.update(rows[i], changes); });
        if (i % 3 != 1) continue;
        attempt([&] { table.remove(rows[i]); });
        if (!table.fetch(rows[i])) attempt([&] { table.insert({values->begin(), values->end()}); });
      }
    }
    EXPECT_THAT(faultsOf(*db.catalog, false), IsEmpty()) << path.filename();
    db.pager->rollback();
  }
  EXPECT_GT(done, 500) << refused;
}

}  // namespace
}  // namespace jet
