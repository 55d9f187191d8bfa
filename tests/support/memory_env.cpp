#include "support/memory_env.h"

#include <algorithm>

#include "jet/format/error.h"

namespace jet::test {

namespace fs = std::filesystem;

namespace {

constexpr size_t kSector = 512;

}  // namespace

class MemoryFile : public File {
 public:
  MemoryFile(MemoryEnvironment& env, std::shared_ptr<MemoryEnvironment::Node> node, bool writable)
      : env_(env), node_(std::move(node)), writable_(writable) {}
  ~MemoryFile() override {
    std::erase_if(node_->locks, [this](const auto& lock) { return lock.owner == this; });
  }

  size_t read(uint64_t offset, MutableBytes buffer) override {
    if (offset >= node_->bytes.size()) return 0;
    return node_->bytes.copy(reinterpret_cast<char*>(buffer.data()), buffer.size(), offset);
  }

  void write(uint64_t offset, Bytes data) override {
    const uint64_t end = offset + data.size();
    if (end > node_->bytes.size()) requireSpace(end - node_->bytes.size());
    change({false, offset, std::string(asChars(data))});
  }

  uint64_t size() override { return node_->bytes.size(); }

  void truncate(uint64_t size) override {
    if (size > node_->bytes.size()) requireSpace(size - node_->bytes.size());
    change({true, size, {}});
  }

  void sync() override {
    node_->durable = node_->bytes;
    node_->unsynced.clear();
  }

  bool tryLock(uint64_t offset, uint64_t length, Lock kind) override {
    if (kind == Lock::Exclusive && !writable_) throw Error(3050, {}, "DAO.Workspace");
    for (const auto& held : node_->locks) {
      const bool overlaps = held.offset < offset + length && offset < held.offset + held.length;
      if (held.owner != this && overlaps && (kind == Lock::Exclusive || held.kind == Lock::Exclusive))
        return false;
    }
    unlock(offset, length);
    node_->locks.push_back({this, offset, length, kind});
    return true;
  }

  void unlock(uint64_t offset, uint64_t length) override {
    std::erase_if(node_->locks, [&](const auto& held) {
      return held.owner == this && held.offset == offset && held.length == length;
    });
  }

  bool isNamed(const fs::path& path) override {
    const auto found = env_.names_.find(path);
    return found != env_.names_.end() && found->second == node_;
  }

 private:
  void change(MemoryEnvironment::Change change) {
    if (!writable_) throw Error(3043, {}, "DAO.Workspace");
    MemoryEnvironment::apply(change, node_->bytes);
    node_->unsynced.push_back(std::move(change));
  }

  void requireSpace(uint64_t more) {
    if (env_.used() + more > env_.capacity_) throw Error(3026, {}, "DAO.Workspace");
  }

  MemoryEnvironment& env_;
  std::shared_ptr<MemoryEnvironment::Node> node_;
  bool writable_;
};

std::unique_ptr<File> MemoryEnvironment::open(const fs::path& path, Open mode) {
  const auto found = names_.find(path);
  const bool exists = found != names_.end();
  const bool creates = mode == Open::CreateNew || mode == Open::CreateOrOpen;
  if (mode != Open::ReadOnly && readOnlyMedium_) throw Error(3051, {pathText(path)}, "DAO.Workspace");
  if (exists && mode == Open::CreateNew) throw Error(3204, {pathText(path)}, "DAO.Workspace");
  if (!exists && !creates) throw Error(3024, {pathText(path)}, "DAO.Workspace");
  if (!exists) changeName({path, std::make_shared<Node>(), {}});
  return std::make_unique<MemoryFile>(*this, names_.at(path), mode != Open::ReadOnly);
}

bool MemoryEnvironment::remove(const fs::path& path) {
  if (!names_.contains(path)) return false;
  changeName({path, nullptr, {}});
  return true;
}

bool MemoryEnvironment::removeOpened(const fs::path& path, std::unique_ptr<File> file) {
  const bool removed = remove(path);
  file.reset();
  return removed;
}

void MemoryEnvironment::rename(const fs::path& from, const fs::path& to) {
  if (!names_.contains(from)) throw Error(3024, {pathText(from)}, "DAO.Workspace");
  changeName({to, names_.at(from), from});
}

void MemoryEnvironment::syncFolder(const fs::path&) {
  durableNames_ = names_;
  unsyncedNames_.clear();
}

void MemoryEnvironment::setContent(const fs::path& path, std::string bytes) {
  const auto node = std::make_shared<Node>();
  node->bytes = node->durable = std::move(bytes);
  names_[path] = durableNames_[path] = node;
}

void MemoryEnvironment::changeName(NameChange change) {
  apply(change, names_);
  unsyncedNames_.push_back(std::move(change));
}

void MemoryEnvironment::apply(const NameChange& change, Names& names) {
  if (!change.from.empty()) names.erase(change.from);
  if (change.node) {
    names[change.path] = change.node;
  } else {
    names.erase(change.path);
  }
}

void MemoryEnvironment::apply(const Change& change, std::string& bytes) {
  if (change.truncates) {
    bytes.resize(change.offset);
    return;
  }
  if (bytes.size() < change.offset + change.data.size()) bytes.resize(change.offset + change.data.size());
  bytes.replace(change.offset, change.data.size(), change.data);
}

std::string MemoryEnvironment::survivor(const Node& node, Loss loss, std::mt19937_64& random) {
  if (loss == Loss::Nothing) return node.bytes;
  std::string bytes = node.durable;
  if (loss == Loss::Everything) return bytes;
  for (const Change& change : node.unsynced) {
    const auto fate = random() % 4;
    if (fate < 2) apply(change, bytes);
    if (fate != 2 || change.truncates) continue;
    for (size_t start = 0; start < change.data.size();) {
      const size_t length = std::min(kSector - (change.offset + start) % kSector, change.data.size() - start);
      if (random() % 2) apply({false, change.offset + start, change.data.substr(start, length)}, bytes);
      start += length;
    }
  }
  return bytes;
}

std::unique_ptr<MemoryEnvironment> MemoryEnvironment::afterPowerCut(Loss loss,
                                                                    std::mt19937_64& random) const {
  Names names = loss == Loss::Nothing ? names_ : durableNames_;
  if (loss == Loss::Random) {
    const size_t kept = random() % (unsyncedNames_.size() + 1);
    for (size_t i = 0; i < kept; ++i) apply(unsyncedNames_[i], names);
  }
  auto after = std::make_unique<MemoryEnvironment>();
  for (const auto& [path, node] : names) after->setContent(path, survivor(*node, loss, random));
  return after;
}

uint64_t MemoryEnvironment::used() const {
  uint64_t sum = 0;
  for (const auto& [path, node] : names_) sum += node->bytes.size();
  return sum;
}

}  // namespace jet::test
