#include "jet/storage/long_value.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "storage_fixture.h"

using namespace jet;

namespace {

class LongValueFile : public StorageFile {
 public:
  explicit LongValueFile(Version version, bool withFreeMap = true)
      : StorageFile(version),
        owned_(newMap()),
        free_(withFreeMap ? newMap() : RowId{}),
        store_(pager(), owned_, free_) {}
  LongValueStore& store() { return store_; }
  UsageMap owned() { return {pager(), owned_}; }
  UsageMap freeMap() { return {pager(), free_}; }
  std::string read(const LongValueField& field) {
    return store_.read(LongValueRef::parse(asBytes(field), 9));
  }
  void remove(const LongValueField& field) { store_.remove(LongValueRef::parse(asBytes(field), 9)); }

 private:
  RowId owned_, free_;
  LongValueStore store_;
};

}  // namespace

TEST(LongValue, KindsByLength) {
  struct Case {
    Version version;
    size_t length;
    LongValueRef::Kind kind;
    size_t pages;
  };
  using Kind = LongValueRef::Kind;
  const Case cases[] = {
      {Version::Jet4, 0, Kind::Inline, 0},       {Version::Jet4, 1, Kind::Inline, 0},
      {Version::Jet4, 64, Kind::Inline, 0},      {Version::Jet4, 65, Kind::SingleRow, 1},
      {Version::Jet4, 4072, Kind::SingleRow, 1}, {Version::Jet4, 4073, Kind::Chain, 2},
      {Version::Jet4, 8144, Kind::Chain, 2},     {Version::Jet4, 100000, Kind::Chain, 25},
      {Version::Jet3, 32, Kind::Inline, 0},      {Version::Jet3, 33, Kind::SingleRow, 1},
      {Version::Jet3, 2032, Kind::SingleRow, 1}, {Version::Jet3, 2033, Kind::Chain, 2},
      {Version::Jet3, 100000, Kind::Chain, 50},
  };
  std::mt19937 random(1);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.length);
    LongValueFile file(c.version);
    const size_t before = file.usedPages().size();
    const std::string value = randomBytes(random, c.length);
    const LongValueField field = file.store().write(asBytes(value));
    const LongValueRef ref = LongValueRef::parse(asBytes(field), 9);
    EXPECT_EQ(ref.kind, c.kind);
    EXPECT_EQ(ref.length, c.length);
    EXPECT_EQ(field.size(), c.kind == Kind::Inline ? 12 + c.length : 12);
    EXPECT_EQ(file.read(field), value);
    const std::vector<PageNumber> pages = file.owned().pages();
    EXPECT_EQ(pages.size(), c.pages);
    for (const PageNumber number : pages) {
      const PageView page = file.pager().read(number);
      EXPECT_TRUE(isSoundDataPage(page.bytes(), file.layout(), kLvalOwner));
      if (c.version == Version::Jet4) {
        EXPECT_EQ(get32(page.data() + 8), number == ref.row.page ? ref.stamp : 0);
      }
    }
    EXPECT_EQ(ref.stamp != 0, c.kind == Kind::Chain && c.version == Version::Jet4);
    file.remove(field);
    EXPECT_TRUE(file.owned().pages().empty());
    EXPECT_TRUE(file.freeMap().pages().empty());
    EXPECT_EQ(file.usedPages().size(), before);
  }
}

TEST(LongValue, MovesOutOnDemandAndStopsReadingOnDemand) {
  LongValueFile file(Version::Jet4);
  const LongValueField field = file.store().write(asBytes("short"), true);
  EXPECT_EQ(LongValueRef::parse(asBytes(field), 9).kind, LongValueRef::Kind::SingleRow);
  EXPECT_EQ(file.read(field), "short");
  const LongValueField chain = file.store().write(asBytes(std::string(50000, 'c')));
  int parts = 0;
  file.store().visit(LongValueRef::parse(asBytes(chain), 9), [&](Bytes part) {
    EXPECT_EQ(part.size(), 4072u);
    return ++parts < 3;
  });
  EXPECT_EQ(parts, 3);
}

// Values come and go; single rows share pages, and everything is given back in the end.
TEST(LongValue, MatchesAMap) {
  for (const bool withFreeMap : {true, false}) {
    LongValueFile file(Version::Jet4, withFreeMap);
    const size_t before = file.usedPages().size();
    std::mt19937 random(2);
    std::map<LongValueField, std::string> model;
    size_t singles = 0;
    for (int step = 0; step < 3000; ++step) {
      if (model.empty() || random() % 5 < 3) {
        std::string value = randomBytes(random, 70 + random() % (random() % 8 ? 500 : 12000));
        singles += value.size() <= 4072;
        model[file.store().write(asBytes(value))] = std::move(value);
      } else {
        const auto it = std::next(model.begin(), static_cast<long>(random() % model.size()));
        EXPECT_EQ(file.read(it->first), it->second);
        file.remove(it->first);
        model.erase(it);
      }
    }
    for (const auto& [field, value] : model) ASSERT_EQ(file.read(field), value);
    if (withFreeMap) {
      EXPECT_LT(file.owned().pages().size(), model.size()) << "single rows share pages";
    }
    for (const auto& [field, value] : model) file.remove(field);
    EXPECT_TRUE(file.owned().pages().empty());
    EXPECT_EQ(file.usedPages().size(), before);
  }
}

TEST(LongValue, BrokenChainsThrow) {
  LongValueFile file(Version::Jet4);
  const LongValueField field = file.store().write(asBytes(std::string(20000, 'x')));
  LongValueRef ref = LongValueRef::parse(asBytes(field), 9);
  const auto read = [&] { return errorOf([&] { file.store().read(ref); }); };
  EXPECT_EQ(read(), 0);
  const auto changed = [&](uint32_t length, RowId row) {
    const LongValueRef sound = ref;
    ref.length = length, ref.row = row;
    const int error = read();
    ref = sound;
    return error;
  };
  EXPECT_EQ(changed(19999, ref.row), 3049);
  EXPECT_EQ(changed(20001, ref.row), 3049);
  EXPECT_EQ(changed(0x3FFFFFFF, ref.row), 3049);
  EXPECT_EQ(changed(0, ref.row), 3049);
  EXPECT_EQ(changed(20000, {ref.row.page, 1}), 3049);
  EXPECT_EQ(changed(20000, {1, 0}), 3049);
  EXPECT_EQ(changed(20000, {99999, 0}), 3049);

  PageEdit first = file.pager().write(ref.row.page);
  put32(first.data() + 4096 - 4076, ref.row.stored());  // leads to itself
  EXPECT_EQ(read(), 3049);
  EXPECT_EQ(changed(4072 * 8, ref.row), 3049);
  EXPECT_EQ(errorOf([&] { file.store().remove(ref); }), 3049);
}
