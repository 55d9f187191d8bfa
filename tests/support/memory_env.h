#pragma once

#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "jet/pager/env.h"

namespace jet::test {

// What a power cut leaves of that which was not synced.
enum class Loss {
  Everything,  // only what was synced is there
  Nothing,     // all is there, as after the end of the process alone
  Random,      // any part of the writes, torn at 512 bytes, and any first part of the changes of names
};

// Files in memory that know which of their bytes and names would survive a power cut. One folder without end:
// any parent path exists. The clock stands still but for sleeping.
class MemoryEnvironment : public Environment {
 public:
  std::unique_ptr<File> open(const std::filesystem::path& path, Open mode) override;
  bool exists(const std::filesystem::path& path) override { return names_.contains(path); }
  bool remove(const std::filesystem::path& path) override;
  bool removeOpened(const std::filesystem::path& path, std::unique_ptr<File> file) override;
  void rename(const std::filesystem::path& from, const std::filesystem::path& to) override;
  void syncFolder(const std::filesystem::path& path) override;
  void sleepMilliseconds(unsigned milliseconds) override { now_ += milliseconds; }
  uint64_t monotonicMilliseconds() override { return now_; }
  double localTime() override { return 36526.5; }
  std::string computerName() override { return computerName_; }

  // A copy of all files, without locks, as the next start of the machine finds them.
  std::unique_ptr<MemoryEnvironment> afterPowerCut(Loss loss, std::mt19937_64& random) const;

  const std::string& content(const std::filesystem::path& path) const { return names_.at(path)->bytes; }
  void setContent(const std::filesystem::path& path, std::string bytes);
  void setComputerName(std::string name) { computerName_ = std::move(name); }
  // Nothing can be created, written or locked exclusively, as on a read-only medium.
  void setReadOnlyMedium(bool readOnly) { readOnlyMedium_ = readOnly; }
  // Bytes that all files together may have; above it writing gives 3026.
  void setCapacity(uint64_t bytes) { capacity_ = bytes; }

 private:
  friend class MemoryFile;
  struct Change {
    bool truncates;
    uint64_t offset;  // or the new size
    std::string data;
  };
  struct HeldLock {
    const File* owner;
    uint64_t offset, length;
    File::Lock kind;
  };
  struct Node {
    std::string bytes, durable;
    std::vector<Change> unsynced;
    std::vector<HeldLock> locks;
  };
  using Names = std::map<std::filesystem::path, std::shared_ptr<Node>>;
  struct NameChange {
    std::filesystem::path path;
    std::shared_ptr<Node> node;  // null: the name is gone
    std::filesystem::path from;  // of a rename
  };

  void changeName(NameChange change);
  static void apply(const NameChange& change, Names& names);
  static void apply(const Change& change, std::string& bytes);
  static std::string survivor(const Node& node, Loss loss, std::mt19937_64& random);
  uint64_t used() const;

  Names names_, durableNames_;
  std::vector<NameChange> unsyncedNames_;
  uint64_t now_ = 0;
  std::string computerName_ = "DESK";
  bool readOnlyMedium_ = false;
  uint64_t capacity_ = ~uint64_t{0};
};

}  // namespace jet::test
