#include "jet/pager/pager.h"

#include "jet/pager/file_pager.h"

namespace jet {

std::unique_ptr<Pager> Pager::open(Environment& env, const std::filesystem::path& path,
                                   const Options& options) {
  return std::make_unique<FilePager>(env, path, options);
}

std::unique_ptr<Pager> Pager::create(Environment& env, const std::filesystem::path& path, Version version,
                                     PageNumber firstPages) {
  return std::make_unique<FilePager>(env, path, version, firstPages);
}

Transaction::~Transaction() {
  if (pager_) pager_->rollback();
}

void Transaction::commit() {
  const int level = pager_->level();
  try {
    pager_->commit();
  } catch (...) {
    // The outermost level is gone then, an inner one is not.
    if (pager_->level() < level) pager_ = nullptr;
    throw;
  }
  pager_ = nullptr;
}

}  // namespace jet
