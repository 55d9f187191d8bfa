// Every operation on a database's file with every single call to the disk failing, with the program killed
// or the power cut at every change, with a full disk and with a copy folder that vanishes: the database or
// the version that the message names is there afterwards, and the date of the last run only after success.

#include <gtest/gtest.h>

#include <functional>
#include <iostream>

#include "database/handy_list.h"
#include "database/upkeep.h"
#include "database/upkeep_names.h"
#include "jet/dao/dao.h"
#include "platform/text.h"
#include "support/fault_env.h"
#include "support/test_session.h"

using namespace tandeko;
using jet::test::FaultEnvironment;
using jet::test::Loss;
using jet::test::MemoryEnvironment;

namespace {

const QString kBase = QStringLiteral("/firma/firma.mdb");
const QString kOther = QStringLiteral("/firma/nowa.mdb");
const QString kCopies = QStringLiteral("/kopie");

enum class Operation { Compact, Copy, SaveAs, SaveOver, Repair, Rename, RenameOver, Restore };

// A database with `rows` rows.
std::string databaseBytes(int rows) {
  MemoryEnvironment files;
  {
    jet::Workspace workspace(files);
    const auto database = workspace.createDatabase(toPath(kBase), jet::kPolishLocale);
    database->execute(u"CREATE TABLE osoby (id COUNTER CONSTRAINT pk PRIMARY KEY, nazwa TEXT(50))");
    for (int i = 0; i < rows; ++i) database->execute(u"INSERT INTO osoby (nazwa) VALUES ('Żółw')");
  }
  return files.content(toPath(kBase));
}

constexpr int kRows = 7, kOldRows = 3;
const std::string& currentBytes() {
  static const std::string bytes = databaseBytes(kRows);
  return bytes;
}
const std::string& oldBytes() {
  static const std::string bytes = databaseBytes(kOldRows);
  return bytes;
}

// The rows of a sound database; -1 when it is missing or unsound.
int rowsOf(jet::Environment& files, const QString& path) {
  try {
    if (!files.exists(toPath(path))) return -1;
    jet::Workspace workspace(files);
    const auto database = workspace.openDatabase(toPath(path));
    if (!database->check([](const std::u16string&) {})) return -1;
    return toInt(database->openRecordset(u"SELECT Count(*) FROM osoby")->field(size_t{0}).value());
  } catch (const jet::Error&) {
    return -1;
  }
}

// Everything in a folder that is not there any more.
class VanishingFolder : public jet::Environment {
 public:
  VanishingFolder(jet::Environment& base, const QString& folder) : base_(base), folder_(toPath(folder)) {}
  bool gone = false;

  std::unique_ptr<jet::File> open(const std::filesystem::path& path, Open mode) override {
    return refuse(path), base_.open(path, mode);
  }
  bool exists(const std::filesystem::path& path) override { return !isGone(path) && base_.exists(path); }
  bool remove(const std::filesystem::path& path) override { return refuse(path), base_.remove(path); }
  bool removeOpened(const std::filesystem::path& path, std::unique_ptr<jet::File> file) override {
    return !isGone(path) && base_.removeOpened(path, std::move(file));
  }
  void rename(const std::filesystem::path& from, const std::filesystem::path& to) override {
    refuse(to), base_.rename(from, to);
  }
  void syncFolder(const std::filesystem::path& path) override { refuse(path), base_.syncFolder(path); }
  void sleepMilliseconds(unsigned milliseconds) override { base_.sleepMilliseconds(milliseconds); }
  uint64_t monotonicMilliseconds() override { return base_.monotonicMilliseconds(); }
  double localTime() override { return base_.localTime(); }
  std::string computerName() override { return base_.computerName(); }

 private:
  bool isGone(const std::filesystem::path& path) const { return gone && path.parent_path() == folder_; }
  void refuse(const std::filesystem::path& path) const {
    if (isGone(path)) throw jet::Error(3044, {}, "DAO.Workspace");
  }

  jet::Environment& base_;
  std::filesystem::path folder_;
};

// One operation on a fresh firm in memory.
struct Firm : TestSession {
  explicit Firm(Operation operation) : operation_(operation) {
    disk.setContent(toPath(kBase), currentBytes());
    disk.setContent(toPath(copy()), oldBytes());
    if (operation == Operation::SaveOver || operation == Operation::RenameOver)
      disk.setContent(toPath(kOther), oldBytes());
    session.settings().store(QStringLiteral("Folder roboczy"), folder.path());
    session.settings().load();
    set(u"Folder", QStringLiteral("/firma"));
    set(u"Kopia folder", kCopies);
    set(u"Kopia dzienna", QStringLiteral("1"));
  }

  static QString copy() { return kCopies + QStringLiteral("/Kopia firma.mdb"); }
  static QString previous() { return kCopies + QStringLiteral("/Temp Kopia firma.mdb"); }
  QString work(const QString& file) const { return folder.path() + u'/' + file; }

  void set(const char16_t* name, const QString& value) {
    registry.write(handyKey(QStringLiteral("firma.mdb")), QString::fromUtf16(name), value);
  }
  QString date() {
    const QString name = operation_ == Operation::Compact ? QStringLiteral("Defragmentacja data")
                                                          : QStringLiteral("Kopia data");
    return registry.read(handyKey(QStringLiteral("firma.mdb")), name);
  }

  void run(jet::Environment& files) {
    const UpkeepTools tools{session, files};
    messages.onShow = [this](const Message& message) {
      messages.answers = {message.buttons == Buttons::YesNo ? Answer::Yes : Answer::Ok};
    };
    messages.files = {operation_ == Operation::Restore ? copy() : kOther};
    switch (operation_) {
      case Operation::Compact:
        return BaseDefrag(tools, kBase, {}, true);
      case Operation::Copy:
        return BaseCopy(tools, kBase, {}, true);
      case Operation::SaveAs:
      case Operation::SaveOver:
        succeeded = BaseSaveAs(tools, kBase);
        return;
      case Operation::Repair:
        succeeded = BaseReapir(tools, kBase);
        return;
      case Operation::Rename:
      case Operation::RenameOver:
        succeeded = BaseRename(tools, kBase, QStringLiteral("nowa"), QStringLiteral("/firma"));
        return;
      case Operation::Restore:
        succeeded = BaseFromArchiw(tools, kBase);
        return;
    }
  }

  bool said(const QString& part) const {
    for (const Message& message : messages.shown)
      if (message.text.contains(part)) return true;
    return false;
  }
  bool reportedSuccess() const {
    for (const Message& message : messages.shown)
      if (message.title == u"Sukces") return true;
    return succeeded;
  }
  // A failure was told, in one of the texts of the operation, or went to the error reporter.
  bool reportedFailure() const {
    static const QStringList texts = {
        QStringLiteral("Defragmentacja bazy: firma nie powiodła się. "),
        QStringLiteral("Kopiowanie bazy: firma nie powiodło się. "),
        QStringLiteral("Błąd kopiowania pliku: "),
        QStringLiteral("Błąd zmiany nazwy bazy: "),
        QStringLiteral("Błąd zmiany nazwy. Baza została usunięta. "),
        QStringLiteral("Błąd kopiowania pliku bazy: "),
        QStringLiteral("Błąd kopiowania pliku z archiwum: "),
        QStringLiteral("Błąd usuwania pliku bazy: "),
    };
    for (const QString& text : texts)
      if (said(text)) return true;
    return !failures.failures.empty();
  }

  // Where the database, whole and as it was or as it was to become, is now.
  QString whereabouts(jet::Environment& files) const {
    const bool restoring = operation_ == Operation::Restore;
    for (const QString& path : {kBase, kOther, work(QStringLiteral("firma przed zmianą nazwy.mdb"))}) {
      if (path == kOther && operation_ != Operation::Rename && operation_ != Operation::RenameOver) continue;
      const int rows = rowsOf(files, path);
      if (rows == kRows || (restoring && rows == kOldRows)) return path;
    }
    return {};
  }
  // The last good copy is there under one of its names, whatever happens to the new one.
  bool hasCopy(jet::Environment& files) const {
    return rowsOf(files, copy()) > 0 || rowsOf(files, previous()) > 0;
  }

  MemoryEnvironment disk;
  FaultEnvironment faults{disk};
  bool succeeded = false;

 private:
  Operation operation_;
};

struct EveryStep : testing::TestWithParam<Operation> {
  static constexpr const char* kNames[] = {"compacting", "copying",  "saving as",     "saving over",
                                           "repairing",  "renaming", "renaming over", "restoring"};
  static const char* name() { return kNames[static_cast<int>(GetParam())]; }

  static void check(Firm& firm, uint64_t step) {
    const std::string where = std::string(name()) + ", step " + std::to_string(step);
    firm.faults.heal();
    firm.disk.setCapacity(~uint64_t{0});
    const QString place = firm.whereabouts(firm.disk);
    EXPECT_FALSE(place.isEmpty()) << where;
    const bool lost = firm.said(QStringLiteral("Baza została usunięta"));
    EXPECT_EQ(lost, place.contains(QStringLiteral("przed zmianą nazwy"))) << where;
    EXPECT_TRUE(firm.hasCopy(firm.disk)) << where;
    EXPECT_NE(firm.reportedSuccess(), firm.reportedFailure()) << where;
    const bool dated = GetParam() == Operation::Compact || GetParam() == Operation::Copy;
    if (dated) {
      EXPECT_EQ(!firm.date().isEmpty(), firm.reportedSuccess()) << where;
    }
  }
};

}  // namespace

TEST_P(EveryStep, FailsOnceAndForEver) {
  uint64_t steps = 0;
  for (const bool forever : {false, true})
    for (uint64_t step = 1;; ++step) {
      Firm firm(GetParam());
      firm.faults.failAt(step, forever, step % 2 ? 3043 : 3026);
      firm.run(firm.faults);
      const bool reached = firm.faults.failed();
      check(firm, step);
      if (HasFailure() || !reached) break;
      ++steps;
    }
  std::cout << name() << ": " << steps << " failing steps\n";
  RecordProperty("steps", static_cast<int>(steps));
}

TEST_P(EveryStep, IsTheLastOneOfAKilledProgram) {
  Firm firm(GetParam());
  std::mt19937_64 random(7);
  uint64_t steps = 0;
  firm.faults.onChange = [&] {
    ++steps;
    for (const Loss loss : {Loss::Nothing, Loss::Everything, Loss::Random}) {
      const auto after = firm.disk.afterPowerCut(loss, random);
      EXPECT_FALSE(firm.whereabouts(*after).isEmpty()) << name() << ", change " << steps;
      EXPECT_TRUE(firm.hasCopy(*after)) << name() << ", change " << steps;
    }
  };
  firm.run(firm.faults);
  EXPECT_TRUE(firm.reportedSuccess());
  std::cout << name() << ": killed and without power at " << steps << " changes\n";
  RecordProperty("steps", static_cast<int>(steps));
}

TEST_P(EveryStep, FindsTheDiskFull) {
  const bool over = GetParam() == Operation::SaveOver || GetParam() == Operation::RenameOver;
  const uint64_t present = currentBytes().size() + (over ? 2 : 1) * oldBytes().size();
  int full = 0;
  for (uint64_t room = 0; room < 4 * currentBytes().size(); room += 16 * 1024) {
    Firm firm(GetParam());
    firm.disk.setCapacity(present + room);
    firm.run(firm.disk);
    full += firm.reportedFailure();
    check(firm, room);
    // With room again it works.
    if (firm.reportedFailure() && firm.whereabouts(firm.disk) == kBase) {
      firm.messages.shown.clear();
      firm.failures.failures.clear();
      firm.run(firm.disk);
      EXPECT_TRUE(firm.reportedSuccess()) << name() << " with room again";
    }
    if (HasFailure()) break;
  }
  if (GetParam() != Operation::Repair) {
    EXPECT_GT(full, 1);
  }
}

INSTANTIATE_TEST_SUITE_P(Operations, EveryStep,
                         testing::Values(Operation::Compact, Operation::Copy, Operation::SaveAs,
                                         Operation::SaveOver, Operation::Repair, Operation::Rename,
                                         Operation::RenameOver, Operation::Restore));

TEST(VanishedFolder, OfTheCopiesLeavesDatabaseAndDate) {
  uint64_t steps = 0;
  for (bool vanished = true; vanished; ++steps) {
    Firm firm(Operation::Copy);
    VanishingFolder files(firm.faults, kCopies);
    uint64_t changes = 0;
    firm.faults.onChange = [&] { files.gone = files.gone || ++changes > steps; };
    files.gone = steps == 0;
    firm.run(files);
    vanished = files.gone;
    EXPECT_EQ(rowsOf(firm.disk, kBase), kRows);
    EXPECT_TRUE(firm.hasCopy(firm.disk)) << steps;
    EXPECT_EQ(firm.date().isEmpty(), firm.said(QStringLiteral("Kopiowanie bazy: firma nie powiodło się. Błąd "
                                                              "kopiowania pliku. Sprawdź czy baza")))
        << steps;
    // Back again, the next run makes a good copy.
    files.gone = false;
    firm.faults.onChange = nullptr;
    firm.run(files);
    EXPECT_EQ(rowsOf(firm.disk, Firm::copy()), kRows) << steps;
    EXPECT_EQ(rowsOf(firm.disk, Firm::previous()), -1) << steps;
    if (testing::Test::HasFailure()) break;
  }
  std::cout << "copying: the folder vanishes at " << steps << " steps\n";
}
