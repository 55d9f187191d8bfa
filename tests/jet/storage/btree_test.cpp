#include "jet/storage/btree_inserter.h"

#include <gmock/gmock.h>

#include <random>
#include <set>

#include "jet/format/text.h"
#include "storage_fixture.h"

namespace jet {
namespace {

constexpr PageNumber kDefinition = 2;

using Entries = std::vector<std::pair<std::string, RowId>>;

// A tree in a file of its own.
class Tree {
 public:
  explicit Tree(Version version) : file_(version) {
    root_ = BTree::createRoot(file_.pager(), kDefinition);
    map_ = file_.newMap();
    UsageMap(file_.pager(), map_).insert(root_);
  }
  Pager& pager() { return file_.pager(); }
  void reopen() { file_.reopen(); }
  BTree tree() { return BTree(file_.pager(), kDefinition, root_, map_); }
  PageNumber root() const { return root_; }
  RowId map() const { return map_; }

  std::vector<std::string> faults(Entries* entries = nullptr) {
    std::vector<std::string> found;
    tree().check([&](const std::u16string& fault) { found.push_back(toUtf8(fault)); },
                 [&](Bytes key, RowId row) {
                   if (entries) entries->emplace_back(asChars(key), row);
                 });
    return found;
  }

 private:
  StorageFile file_;
  PageNumber root_;
  RowId map_;
};

std::string longKey(uint32_t v) {
  std::string key = "\x7F";
  for (int shift = 24; shift >= 0; shift -= 8) key += static_cast<char>(v >> shift);
  return key;
}

// Lengths from 1 to the limit, most of them short; long common beginnings and equal keys are frequent.
std::string randomKey(std::mt19937& random, size_t limit) {
  static const std::string stems[] = {"", "\x7F", std::string(300, 'x'), "\x7FKowalski",
                                      std::string(800, '\0')};
  std::string key = stems[random() % std::size(stems)];
  const size_t kind = random() % 20;
  const size_t length = kind == 0 ? limit : kind < 3 ? random() % limit : random() % 12;
  while (key.size() < length) key += static_cast<char>(random() % 3 ? 'a' + random() % 2 : random());
  key.resize(std::min(key.size(), limit));
  return key.empty() ? "a" : key;
}

void expectSame(BTree tree, const Entries& model) {
  BTree::Cursor cursor(tree);
  for (const auto& [key, row] : model) {
    ASSERT_TRUE(cursor.next());
    ASSERT_EQ(asChars(cursor.key()), key);
    ASSERT_EQ(cursor.row(), row);
  }
  ASSERT_FALSE(cursor.next());
  for (auto it = model.rbegin(); it != model.rend(); ++it) {
    ASSERT_TRUE(cursor.previous());
    ASSERT_EQ(asChars(cursor.key()), it->first);
    ASSERT_EQ(cursor.row(), it->second);
  }
  ASSERT_FALSE(cursor.previous());
}

class BTreeVersions : public testing::TestWithParam<Version> {};
INSTANTIATE_TEST_SUITE_P(All, BTreeVersions, testing::Values(Version::Jet3, Version::Jet4),
                         [](const auto& version) {
                           return version.param == Version::Jet3 ? "Jet3" : "Jet4";
                         });

TEST_P(BTreeVersions, AgreesWithASet) {
  std::mt19937 random(11);
  const size_t limit = GetParam() == Version::Jet3 ? 850 : 1700;
  Tree file(GetParam());
  std::set<std::pair<std::string, RowId>> model;
  const auto insertOne = [&](BTree& tree) {
    std::string key = randomKey(random, limit);
    if (!model.empty() && random() % 4 == 0) {  // another row with a key that is there
      auto near = model.lower_bound({key, {}});
      if (near != model.end()) key = near->first;
    }
    const RowId row{static_cast<PageNumber>(1 + random() % 70000), static_cast<uint8_t>(random())};
    tree.insert(asBytes(key), row);
    model.emplace(key, row);
  };
  const auto removeOne = [&](BTree& tree) {
    if (model.empty()) return;
    auto it = model.lower_bound({randomKey(random, limit), {}});
    if (it == model.end()) it = model.begin();
    ASSERT_TRUE(tree.remove(asBytes(it->first), it->second));
    ASSERT_FALSE(tree.remove(asBytes(it->first), it->second));
    model.erase(it);
  };
  // Grows, shrinks to nothing, and grows again.
  for (const int growing : {90, 70, 50, 20, 10, 0, 80, 40, 0}) {
    {
      BTree tree = file.tree();
      for (int i = 0; i < 1500; ++i)
        static_cast<int>(random() % 100) < growing ? insertOne(tree) : removeOne(tree);
      if (growing == 0)
        while (!model.empty()) removeOne(tree);
    }
    if (random() % 2) file.reopen();
    Entries entries;
    ASSERT_THAT(file.faults(&entries), testing::IsEmpty()) << growing;
    ASSERT_EQ(entries, Entries(model.begin(), model.end()));
    ASSERT_NO_FATAL_FAILURE(expectSame(file.tree(), entries));
    if (model.empty()) {
      EXPECT_EQ(UsageMap(file.pager(), file.map()).pages(), std::vector{file.root()});
    }
    const BTree tree = file.tree();
    for (int i = 0; i < 300; ++i) {
      const std::string key = randomKey(random, limit);
      BTree::Cursor cursor(tree);
      const bool after = random() % 2;
      cursor.seek(asBytes(key), after);
      auto expected = model.lower_bound({key, {}});
      if (after)
        while (expected != model.end() && expected->first.starts_with(key)) ++expected;
      EXPECT_EQ(tree.containsKey(asBytes(key)),
                model.lower_bound({key, {}}) != model.end() && model.lower_bound({key, {}})->first == key);
      if (i % 2) {
        ASSERT_EQ(cursor.next(), expected != model.end());
        if (expected != model.end()) {
          ASSERT_EQ(asChars(cursor.key()), expected->first);
        }
      } else {
        ASSERT_EQ(cursor.previous(), expected != model.begin());
        if (expected != model.begin()) {
          ASSERT_EQ(asChars(cursor.key()), std::prev(expected)->first);
        }
      }
    }
  }
}

TEST_P(BTreeVersions, KeysInOrderFillTheirPages) {
  for (const bool rising : {true, false}) {
    Tree file(GetParam());
    BTree tree = file.tree();
    constexpr uint32_t kCount = 30000;
    for (uint32_t i = 0; i < kCount; ++i)
      tree.insert(asBytes(longKey(rising ? i : kCount - i)), {300 + i / 100, static_cast<uint8_t>(i % 100)});
    EXPECT_THAT(file.faults(), testing::IsEmpty());
    // A compressed entry takes 6 bytes or less.
    const size_t ideal = kCount * 6 / IndexPage::capacity(file.pager().layout());
    EXPECT_LE(tree.pages().size(), ideal * 11 / 10 + 4) << rising;
  }
}

// Runs of ascending keys between random ones, and keys that come again.
TEST_P(BTreeVersions, InserterAgreesWithASet) {
  std::mt19937 random(23);
  const size_t limit = GetParam() == Version::Jet3 ? 850 : 1700;
  Tree file(GetParam());
  std::set<std::pair<std::string, RowId>> model;
  BTreeInserter inserter(file.tree());
  const auto contains = [&](const std::string& key) {
    const auto found = model.lower_bound({key, {}});
    return found != model.end() && found->first == key;
  };
  for (int run = 0; run < 60; ++run) {
    std::vector<std::pair<std::string, RowId>> entries;
    const bool longKeys = random() % 3 != 0;
    for (size_t count = random() % 400; entries.size() < count;) {
      std::string key = longKeys ? longKey(static_cast<uint32_t>(run * 500 + random() % 300))
                                 : randomKey(random, limit);
      entries.push_back({std::move(key), {1 + static_cast<PageNumber>(random() % 3), static_cast<uint8_t>(random())}});
    }
    if (run % 4 != 0) std::sort(entries.begin(), entries.end());
    for (const auto& [key, row] : entries) {
      ASSERT_EQ(inserter.containsKey(asBytes(key)), contains(key));
      const bool isNew = inserter.insert(asBytes(key), row);
      // One leaf alone tells whether a key is new.
      if (contains(key) == isNew) {
        ASSERT_TRUE(isNew);
        ASSERT_GT(file.tree().pages().size(), 1u);
      }
      model.emplace(key, row);
    }
  }
  Entries entries;
  ASSERT_THAT(file.faults(&entries), testing::IsEmpty());
  EXPECT_EQ(entries, Entries(model.begin(), model.end()));
}

TEST_P(BTreeVersions, BuildEqualsInserting) {
  std::mt19937 random(5);
  for (const size_t count : {0u, 1u, 2u, 150u, 400u, 5000u, 40000u}) {
    Tree file(GetParam());
    std::set<std::pair<std::string, RowId>> sorted;
    while (sorted.size() < count)
      sorted.emplace(count > 5000 ? longKey(static_cast<uint32_t>(random())) : randomKey(random, 850),
                     RowId{1 + static_cast<PageNumber>(random() % 9999), 7});
    auto from = sorted.begin();
    file.tree().build([&](BTree::Entry& entry) {
      if (from == sorted.end()) return false;
      entry = {from->first, from->second};
      ++from;
      return true;
    });
    Entries entries;
    ASSERT_THAT(file.faults(&entries), testing::IsEmpty()) << count;
    ASSERT_EQ(entries, Entries(sorted.begin(), sorted.end()));
    // The tree can be worked with.
    BTree tree = file.tree();
    for (int i = 0; i < 500; ++i) {
      const std::pair<std::string, RowId> entry{randomKey(random, 850), {1, static_cast<uint8_t>(i)}};
      tree.insert(asBytes(entry.first), entry.second);
      sorted.insert(entry);
    }
    ASSERT_THAT(file.faults(), testing::IsEmpty());
    ASSERT_NO_FATAL_FAILURE(expectSame(tree, Entries(sorted.begin(), sorted.end())));
    tree.removeAll();
    EXPECT_THAT(UsageMap(file.pager(), file.map()).pages(), testing::IsEmpty());
    EXPECT_TRUE(PageAllocator(file.pager()).isFree(file.root()));
  }
}

TEST(BTree, LaysPagesOutAsOthersReadThem) {
  Tree file(Version::Jet4);
  BTree tree = file.tree();
  for (uint32_t i = 0; i < 830; ++i)
    tree.insert(asBytes(longKey(0x80002808 + i)), {0x12F + i / 28, static_cast<uint8_t>(i % 28)});
  const PageView root = file.pager().read(file.root());
  const uint8_t* node = root.data();
  EXPECT_EQ(node[0], 3);
  EXPECT_EQ(get16(node + 2), 4096 - 480 - 13);
  EXPECT_EQ(node[26], 1);
  EXPECT_EQ(get16(node + 24), 0);
  // A full page: the first entry whole, 601 more without their three common bytes.
  EXPECT_EQ(std::string(node + 480, node + 489), longKey(0x80002A61) + std::string("\0\1\x44\x0D", 4));
  const PageView left = file.pager().read(get32be(node + 489));
  const uint8_t* leaf = left.data();
  EXPECT_EQ(std::string(leaf, leaf + 4), std::string("\4\1\1\0", 4));
  EXPECT_EQ(get16(leaf + 24), 3);
  EXPECT_EQ(std::string(leaf + 27, leaf + 34), std::string("\x00\x82\x20\x08\x82\x20\x08", 7));
  EXPECT_EQ(std::string(leaf + 480, leaf + 495),
            longKey(0x80002808) + std::string("\0\1\x2F\0\x28\x09\0\1\x2F\1", 10));
  const PageView right = file.pager().read(get32(node + 20));
  EXPECT_EQ(get16(right.data() + 2), 4096 - 480 - 228 * 9);
  EXPECT_EQ(get32(right.data() + 12), left.number());
  EXPECT_EQ(get32(leaf + 16), right.number());
}

TEST_P(BTreeVersions, RefusesKeysThatAreTooLong) {
  Tree file(GetParam());
  const size_t limit = GetParam() == Version::Jet3 ? 850 : 1700;
  BTree tree = file.tree();
  for (uint8_t i = 0; i < 40; ++i) tree.insert(asBytes(std::string(limit, static_cast<char>(i))), {1, i});
  EXPECT_THAT(file.faults(), testing::IsEmpty());
  EXPECT_EQ(errorOf([&] { tree.insert(asBytes(std::string(limit + 1, 'x')), {1, 1}); }), 3393);
}

// A tree of three levels, and the first page of each with entries.
struct Damaged {
  Tree file{Version::Jet4};
  PageNumber root, node, leaf;
  Damaged() {
    BTree tree = file.tree();
    for (uint32_t i = 0; i < 3000; ++i) {
      std::string key = longKey(i * 2654435761u);
      key.resize(40 + i % 60, 'x');
      tree.insert(asBytes(key), {300 + i, 1});
    }
    root = file.root();
    const auto firstChild = [&](PageNumber page) {
      const PageView view = file.pager().read(page);
      return IndexPage(file.pager().layout(), view.data(), page, kDefinition).child(0);
    };
    node = firstChild(root);
    leaf = firstChild(node);
  }
};

TEST(BTree, CheckFindsDamage) {
  struct Case {
    const char* name;
    std::function<void(Damaged&)> plant;
    const char* report;
  };
  const auto poke = [](Damaged& d, PageNumber page, int offset, uint32_t value) {
    put32(d.file.pager().write(page).data() + offset, value);
  };
  const Case cases[] = {
      {"kind", [&](Damaged& d) { d.file.pager().write(d.leaf).data()[0] = 1; }, "not an index page"},
      {"definition", [&](Damaged& d) { poke(d, d.leaf, 4, 3); }, "another table"},
      {"free", [&](Damaged& d) { d.file.pager().write(d.leaf).data()[2] ^= 1; }, "entry mask"},
      {"free too large", [&](Damaged& d) { d.file.pager().write(d.leaf).data()[3] = 0xFF; }, "free space"},
      {"next", [&](Damaged& d) { poke(d, d.leaf, 16, d.root); }, "neighbours"},
      {"previous", [&](Damaged& d) { poke(d, d.node, 12, d.leaf); }, "neighbours"},
      {"child", [&](Damaged& d) { poke(d, d.node, 20, d.leaf); }, "reached twice"},
      {"child outside", [&](Damaged& d) { poke(d, d.node, 20, 99999); }, "outside the file"},
      {"level", [&](Damaged& d) { d.file.pager().write(d.node).data()[26] = 5; }, "level"},
      {"mask", [&](Damaged& d) { d.file.pager().write(d.leaf).data()[27 + 452] = 0x80; },
       "behind the entries"},
      {"prefix", [&](Damaged& d) { d.file.pager().write(d.leaf).data()[24] = 200; }, "prefix"},
      {"order", [&](Damaged& d) { d.file.pager().write(d.leaf).data()[480 + 1] = 0xFF; }, "not ascending"},
      {"bound", [&](Damaged& d) { d.file.pager().write(d.node).data()[480 + 1] = 0; }, "above the bound"},
      {"leaf tail", [&](Damaged& d) { poke(d, d.leaf, 20, d.leaf); }, "leaf with a tail"},
      {"map", [](Damaged& d) { UsageMap(d.file.pager(), d.file.map()).erase(d.leaf); }, "missing in the map"},
      {"map too full", [](Damaged& d) { UsageMap(d.file.pager(), d.file.map()).insert(3); },
       "not in the tree"},
  };
  for (const Case& c : cases) {
    Damaged d;
    ASSERT_THAT(d.file.faults(), testing::IsEmpty());
    c.plant(d);
    EXPECT_THAT(d.file.faults(), testing::Contains(testing::HasSubstr(c.report))) << c.name;
  }
}

// Whatever the pages say, every operation ends: well, or with an Error.
TEST(BTree, SurvivesDamage) {
  std::mt19937 random(3);
  Damaged d;
  Pager& pager = d.file.pager();
  const std::vector<PageNumber> pages = d.file.tree().pages();
  int refused = 0;
  for (int round = 0; round < 400; ++round) {
    pager.begin();
    for (int i = 0; i < 1 + round % 4; ++i) {
      const PageNumber page = round % 3 ? pages[random() % 3] : pages[random() % pages.size()];
      const size_t offset = round % 2 ? random() % 500 : random() % 4096;
      pager.write(page).data()[offset] = static_cast<uint8_t>(random());
    }
    const auto attempt = [&](const std::function<void(BTree&)>& work) {
      BTree tree = d.file.tree();
      try {
        work(tree);
      } catch (const Error& error) {
        EXPECT_TRUE(error.number() == 3049 || error.number() == 3393) << error.what();
        ++refused;
      }
    };
    d.file.faults();
    attempt([](BTree& tree) {
      for (BTree::Cursor cursor(tree); cursor.next();) continue;
    });
    attempt([](BTree& tree) {
      BTree::Cursor cursor(tree);
      cursor.seek({}, true);
      while (cursor.previous()) continue;
    });
    for (uint32_t i = 0; i < 60; ++i) {
      const std::string key = longKey(static_cast<uint32_t>(random()));
      attempt([&](BTree& tree) { tree.insert(asBytes(key), {1, 1}); });
      attempt([&](BTree& tree) { tree.containsKey(asBytes(key)); });
      std::string old = longKey(i * 2654435761u);
      old.resize(40 + i % 60, 'x');
      attempt([&](BTree& tree) { tree.remove(asBytes(old), {300 + i, 1}); });
    }
    pager.rollback();
  }
  EXPECT_GT(refused, 100);
  EXPECT_THAT(d.file.faults(), testing::IsEmpty());
}

}  // namespace
}  // namespace jet
