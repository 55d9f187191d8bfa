#include <algorithm>

#include "jet/dao/connect_text.h"
#include "jet/dao/database_impl.h"

namespace jet {

namespace {

constexpr int kMaxTransactionLevel = 5;
constexpr size_t kCachePages = 8192;  // 32 MB: the items of a large register stay in memory

}  // namespace

void Workspace::Impl::endLevel(bool keep) {
  if (transactionLevel == 0) throw Error(3034, {}, "DAO.Workspace");
  --transactionLevel;
  std::exception_ptr failure;
  for (Database::Impl* database : databases) {
    if (database->pager->level() <= transactionLevel) continue;
    try {
      if (keep && !failure) database->pager->commit();
    } catch (...) {
      failure = std::current_exception();
    }
    // What was not committed; a failed commit of an inner level leaves it open.
    while (database->pager->level() > transactionLevel) database->pager->rollback();
  }
  if (failure) std::rethrow_exception(failure);
}

Workspace::Workspace(Environment& environment) : impl_(std::make_shared<Impl>(environment)) {}

Workspace::~Workspace() = default;

std::unique_ptr<Database> Workspace::openDatabase(const std::filesystem::path& path) {
  return openDatabase(path, OpenOptions{});
}

std::unique_ptr<Database> Workspace::openDatabase(const std::filesystem::path& path,
                                                  const OpenOptions& options) {
  auto database = std::make_unique<Database::Impl>();
  database->pager =
      Pager::open(impl_->environment, path,
                  {.exclusive = options.exclusive, .readOnly = options.readOnly, .cachePages = kCachePages});
  database->exclusive = options.exclusive;
  {
    ReadScope scope(*database->pager);
    database->catalog = Catalog::open(*database->pager);
    if (database->catalog->header().password != connectPart(options.connect, u"pwd"))
      throw Error(3031, {}, "DAO.Workspace");
  }
  database->engine = std::make_unique<sql::Engine>(*database->catalog);
  database->attach(impl_);
  return std::unique_ptr<Database>(new Database(std::move(database)));
}

std::unique_ptr<Database> Workspace::createDatabase(const std::filesystem::path& path,
                                                    std::u16string_view locale,
                                                    std::u16string_view password) {
  auto database = std::make_unique<Database::Impl>();
  database->pager = Pager::create(impl_->environment, path, Version::Jet4, Catalog::kEmptyDatabasePages);
  database->catalog = Catalog::createDatabase(*database->pager,
                                              localeLcid(locale).value_or(Collation::kGeneralLcid), password);
  database->pager->commit();
  database->engine = std::make_unique<sql::Engine>(*database->catalog);
  database->attach(impl_);
  return std::unique_ptr<Database>(new Database(std::move(database)));
}

void Workspace::beginTrans() {
  if (impl_->transactionLevel == kMaxTransactionLevel) throw Error(3003, {}, "DAO.Workspace");
  size_t begun = 0;
  try {
    for (; begun < impl_->databases.size(); ++begun)
      if (!impl_->databases[begun]->pager->readOnly()) impl_->databases[begun]->pager->begin();
  } catch (...) {
    while (begun-- > 0)
      if (!impl_->databases[begun]->pager->readOnly()) impl_->databases[begun]->pager->rollback();
    throw;
  }
  ++impl_->transactionLevel;
}

void Workspace::commitTrans() { impl_->endLevel(true); }

void Workspace::rollback() { impl_->endLevel(false); }

}  // namespace jet
