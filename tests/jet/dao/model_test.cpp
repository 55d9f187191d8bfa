// Random operations through the public classes against a model in memory: rows, keys, relationships,
// transactions with nested levels, reopening and compacting. TANDEKO_LONG=1 makes it twenty times as long;
// TANDEKO_SEED chooses other operations.

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "jet/dao/dao.h"
#include "support/memory_env.h"
#include "support/other_reader.h"

namespace jet {
namespace {

struct Person {
  std::optional<int32_t> code;  // unique where not Null
  std::optional<std::u16string> name;
  std::optional<std::u16string> note;
  double weight = 0;
  bool operator==(const Person&) const = default;
};
struct Thing {
  std::optional<int32_t> owner;  // refers to a person; goes with him, follows his number
  std::u16string name;
  bool operator==(const Thing&) const = default;
};
struct Model {
  std::map<int32_t, Person> people;
  std::map<int32_t, Thing> things;
  bool operator==(const Model&) const = default;
};

template <typename T>
Value valueOf(const std::optional<T>& held) {
  return held ? Value(*held) : Value();
}
template <typename T>
std::optional<T> optionalOf(const Value& value) {
  return value.isNull() ? std::nullopt : std::optional<T>(value.get<T>());
}

class ModelRun {
 public:
  explicit ModelRun(unsigned seed) : random_(seed) {
    database_ = workspace_->createDatabase("model0.mdb", kPolishLocale);
    database_->execute(
        u"CREATE TABLE osoby (nr LONG PRIMARY KEY, kod LONG, nazwa TEXT(80), uwagi MEMO, waga DOUBLE)");
    database_->execute(u"CREATE TABLE rzeczy (nr COUNTER PRIMARY KEY, osoba LONG, nazwa TEXT(40) NOT NULL)");
    database_->execute(u"CREATE UNIQUE INDEX wgKodu ON osoby (kod)");
    database_->execute(u"CREATE INDEX wgNazwy ON osoby (nazwa, waga DESC)");
    database_->execute(u"CREATE INDEX wgNazwyRzeczy ON rzeczy (nazwa) WITH IGNORE NULL");
    database_->define([](Catalog& catalog) {
      catalog.createRelation({.name = u"ma",
                              .table = u"osoby",
                              .foreignTable = u"rzeczy",
                              .columns = {{u"nr", u"osoba"}},
                              .cascadeUpdates = true,
                              .cascadeDeletes = true});
    });
  }

  void run(int operations) {
    for (int i = 1; i <= operations && !::testing::Test::HasFailure(); ++i) {
      operation_ = i;
      step();
      if (i % 500 == 0) verify();
    }
    while (!saved_.empty()) endTransaction(pick(2) == 0);
    verify();
  }

 private:
  size_t pick(size_t limit) { return static_cast<size_t>(random_() % limit); }

  void step() {
    const size_t what = pick(1000);
    if (what < 300) return insertPerson();
    if (what < 480) return updatePerson();
    if (what < 540) return removePeople();
    if (what < 720) return insertThing();
    if (what < 800) return updateThings();
    if (what < 860) return removeThings();
    if (what < 900) return lookUp();
    if (what < 940) return beginTransaction();
    if (what < 990) return endTransaction(what < 970);
    if (saved_.empty()) what < 997 ? reopen() : compact();
  }

  std::u16string randomText(size_t longest) {
    static constexpr std::u16string_view kLetters = u"aąbcćdeęfghijklłmnńoóprsśtuwyzźżAĄBZŻ 0123456789-'";
    std::u16string text(pick(longest + 1), u' ');
    for (char16_t& c : text) c = kLetters[pick(kLetters.size())];
    // Blanks at the end do not count in comparisons.
    while (!text.empty() && text.back() == u' ') text.pop_back();
    return text;
  }
  Person randomPerson() {
    Person person;
    if (pick(5) != 0) person.code = static_cast<int32_t>(pick(600)) - 100;
    if (pick(8) != 0) person.name = randomText(60) + u"x";
    if (pick(3) == 0)
      person.note =
          std::u16string(pick(3) == 0 ? pick(12000) : pick(100), static_cast<char16_t>(u'a' + pick(300)));
    person.weight = static_cast<double>(pick(1000)) / 8 - 50;
    return person;
  }
  template <typename Map>
  int32_t randomKey(const Map& map) {
    return map.empty() ? -1 : std::next(map.begin(), static_cast<std::ptrdiff_t>(pick(map.size())))->first;
  }
  bool isCodeTaken(std::optional<int32_t> code, int32_t except) const {
    for (const auto& [nr, person] : model_.people)
      if (code && person.code == code && nr != except) return true;
    return false;
  }
  static std::u16string number(int64_t n) { return fromUtf8(std::to_string(n)); }
  static std::u16string literal(const std::u16string& text) {
    std::u16string out = u"'";
    for (const char16_t c : text) out += c == u'\'' ? std::u16string(u"''") : std::u16string(1, c);
    return out + u"'";
  }
  // The error's number, which must be the expected one; 0 for none.
  template <typename Action>
  bool expect(int expected, Action&& action) {
    int number = 0;
    try {
      action();
    } catch (const Error& error) {
      number = error.number();
      if (number != expected) ADD_FAILURE() << "operation " << operation_ << ": " << error.what();
    }
    if (number == 0 && expected != 0)
      ADD_FAILURE() << "operation " << operation_ << ": no error " << expected;
    return number == 0;
  }

  static void put(Recordset& rows, const Person& person) {
    rows.field(u"kod").setValue(valueOf(person.code));
    rows.field(u"nazwa").setValue(valueOf(person.name));
    rows.field(u"uwagi").setValue(valueOf(person.note));
    rows.field(u"waga").setValue(Value(person.weight));
  }

  void insertPerson() {
    if (model_.people.size() > 300) return removePeople();
    const Person person = randomPerson();
    const auto nr = static_cast<int32_t>(pick(5000));
    const bool taken = model_.people.contains(nr) || isCodeTaken(person.code, -1);
    const auto rows = database_->openRecordset(u"SELECT * FROM osoby WHERE nr = -1");
    rows->addNew();
    rows->field(u"nr").setValue(Value(nr));
    put(*rows, person);
    if (expect(taken ? 3022 : 0, [&] { rows->update(); })) model_.people[nr] = person;
  }

  void updatePerson() {
    const int32_t nr = randomKey(model_.people);
    if (nr < 0) return;
    if (pick(10) == 0) return renumberPerson(nr);
    Person person = randomPerson();
    const auto rows = database_->openRecordset(u"SELECT * FROM osoby WHERE nr = " + number(nr));
    if (rows->eof()) {
      ADD_FAILURE() << "operation " << operation_ << ": person " << nr << " is missing";
      return;
    }
    rows->edit();
    if (pick(2) == 0) {
      const Person& old = model_.people[nr];
      person.code = old.code, person.name = old.name, person.weight = old.weight;
      rows->field(u"uwagi").setValue(valueOf(person.note));
    } else {
      put(*rows, person);
    }
    if (expect(isCodeTaken(person.code, nr) ? 3022 : 0, [&] { rows->update(); })) model_.people[nr] = person;
  }

  // Things follow their owner's number.
  void renumberPerson(int32_t nr) {
    const auto to = static_cast<int32_t>(pick(2) == 0 ? 100000 + pick(100000)
                                                      : static_cast<size_t>(randomKey(model_.people)));
    const bool taken = to != nr && model_.people.contains(to);
    const auto sql = u"UPDATE osoby SET nr = " + number(to) + u" WHERE nr = " + number(nr);
    if (!expect(taken ? 3022 : 0, [&] { database_->execute(sql); }) || to == nr) return;
    auto node = model_.people.extract(nr);
    node.key() = to;
    model_.people.insert(std::move(node));
    for (auto& [key, thing] : model_.things)
      if (thing.owner == nr) thing.owner = to;
  }

  void removePeople() {
    const auto from = static_cast<double>(pick(1000)) / 8 - 50, to = from + 2;
    const auto sql = u"DELETE FROM osoby WHERE waga >= " + fromUtf8(std::to_string(from)) + u" AND waga < " +
                     fromUtf8(std::to_string(to));
    std::vector<int32_t> doomed;
    for (const auto& [nr, person] : model_.people)
      if (person.weight >= from && person.weight < to) doomed.push_back(nr);
    int64_t affected = -1;
    expect(0, [&] { affected = database_->execute(sql); });
    EXPECT_EQ(affected, static_cast<int64_t>(doomed.size())) << "operation " << operation_;
    for (const int32_t nr : doomed) {
      model_.people.erase(nr);
      std::erase_if(model_.things, [&](const auto& entry) { return entry.second.owner == nr; });
    }
  }

  void insertThing() {
    if (model_.things.size() > 400) return removeThings();
    Thing thing;
    if (pick(6) != 0) thing.owner = pick(10) == 0 ? 5000000 : randomKey(model_.people);
    thing.name = randomText(20) + u"r";
    const bool orphan = thing.owner && !model_.people.contains(*thing.owner);
    const auto sql = u"INSERT INTO rzeczy (osoba, nazwa) VALUES (" +
                     (thing.owner ? number(*thing.owner) : std::u16string(u"Null")) + u", " +
                     literal(thing.name) + u")";
    if (!expect(orphan ? 3201 : 0, [&] { database_->execute(sql); })) return;
    const int32_t nr = database_->lastAutoNumber();
    EXPECT_FALSE(model_.things.contains(nr)) << "operation " << operation_;
    model_.things[nr] = thing;
  }

  void updateThings() {
    const int32_t from = randomKey(model_.things), owner = randomKey(model_.people);
    if (owner < 0) return;
    const std::u16string name = randomText(30);
    const auto sql = u"UPDATE rzeczy SET osoba = " + number(owner) + u", nazwa = " + literal(name + u"z") +
                     u" WHERE nr BETWEEN " + number(from) + u" AND " + number(from + 5);
    expect(0, [&] { database_->execute(sql); });
    for (auto& [nr, thing] : model_.things)
      if (nr >= from && nr <= from + 5) thing = {owner, name + u"z"};
  }

  void removeThings() {
    const int32_t from = randomKey(model_.things), to = from + static_cast<int32_t>(pick(10));
    expect(0, [&] {
      const auto rows = database_->openRecordset(u"SELECT * FROM rzeczy WHERE nr >= " + number(from) +
                                                 u" AND nr <= " + number(to));
      for (; !rows->eof(); rows->moveNext()) rows->remove();
    });
    std::erase_if(model_.things, [&](const auto& entry) { return entry.first >= from && entry.first <= to; });
  }

  void lookUp() {
    const int32_t nr = randomKey(model_.people);
    if (nr < 0) return;
    const Person& person = model_.people[nr];
    if (person.code) {
      const auto rows = database_->openRecordset(u"SELECT nr FROM osoby WHERE kod = " + number(*person.code));
      EXPECT_TRUE(!rows->eof() && rows->value(u"nr") == Value(nr)) << "operation " << operation_;
    }
    const auto rows = database_->openRecordset(
        u"SELECT Count(*) AS ile FROM rzeczy INNER JOIN osoby ON rzeczy.osoba = osoby.nr WHERE osoby.nr = " +
        number(nr));
    int32_t things = 0;
    for (const auto& [key, thing] : model_.things) things += thing.owner == nr;
    EXPECT_EQ(rows->value(u"ile"), Value(things)) << "operation " << operation_;
  }

  void beginTransaction() {
    if (saved_.size() == 5) return;
    workspace_->beginTrans();
    saved_.push_back(model_);
  }

  void endTransaction(bool keep) {
    if (saved_.empty()) return;
    keep ? workspace_->commitTrans() : workspace_->rollback();
    if (!keep) model_ = std::move(saved_.back());
    saved_.pop_back();
  }

  void reopen() {
    const auto path = database_->path();
    database_.reset();
    expectOtherReaderAgreesOn(environment_.content(path));
    database_ = workspace_->openDatabase(path);
  }

  void compact() {
    const auto path = database_->path();
    database_.reset();
    const std::filesystem::path next = "model" + std::to_string(++files_) + ".mdb";
    workspace_->compactDatabase(path, next);
    environment_.remove(path);
    database_ = workspace_->openDatabase(next);
  }

  void verify() {
    database_->check(
        [&](const std::u16string& fault) {
          ADD_FAILURE() << "operation " << operation_ << ": " << toUtf8(fault);
        },
        true);
    Model found;
    const auto people = database_->openRecordset(u"SELECT * FROM osoby", RecordsetType::Snapshot);
    for (; !people->eof(); people->moveNext()) {
      found.people[people->value(u"nr").get<int32_t>()] = {
          optionalOf<int32_t>(people->value(u"kod")), optionalOf<Text>(people->value(u"nazwa")),
          optionalOf<Text>(people->value(u"uwagi")), people->value(u"waga").get<double>()};
    }
    const auto things = database_->openRecordset(u"SELECT * FROM rzeczy", RecordsetType::Snapshot);
    for (; !things->eof(); things->moveNext())
      found.things[things->value(u"nr").get<int32_t>()] = {optionalOf<int32_t>(things->value(u"osoba")),
                                                           things->value(u"nazwa").get<Text>()};
    EXPECT_TRUE(found == model_) << "operation " << operation_ << ": " << found.people.size() << " people, "
                                 << model_.people.size() << " in the model; " << found.things.size()
                                 << " things, " << model_.things.size() << " in the model";
  }

  test::MemoryEnvironment environment_;
  std::unique_ptr<Workspace> workspace_ = std::make_unique<Workspace>(environment_);
  std::unique_ptr<Database> database_;
  std::mt19937 random_;
  Model model_;
  std::vector<Model> saved_;  // as it was when each open transaction began
  int operation_ = 0, files_ = 0;
};

TEST(Model, RandomOperationsAgree) {
  const char* seed = std::getenv("TANDEKO_SEED");
  ModelRun(seed ? static_cast<unsigned>(std::strtoul(seed, nullptr, 10)) : 20261122)
      .run(std::getenv("TANDEKO_LONG") ? 200'000 : 10'000);
}

}  // namespace
}  // namespace jet
