#pragma once

#include <memory>
#include <vector>

#include "jet/dao/dao.h"
#include "jet/sql/engine.h"

// What the classes of dao.h share and their users do not see.
namespace jet {

struct Workspace::Impl {
  explicit Impl(Environment& env) : environment(env) {}

  Environment& environment;
  std::vector<Database::Impl*> databases;  // open ones
  int transactionLevel = 0;

  void endLevel(bool keep);
};

struct Database::Impl {
  std::shared_ptr<Workspace::Impl> workspace;
  std::unique_ptr<Pager> pager;
  std::unique_ptr<Catalog> catalog;
  std::unique_ptr<sql::Engine> engine;
  bool exclusive = false;
  int64_t recordsAffected = 0;
  int32_t lastAutoNumber = 0;  // given by a statement or by AddNew, whichever was last

  ~Impl();
  // Joins the workspace, and its transaction when one is open.
  void attach(std::shared_ptr<Workspace::Impl> owner);
  void close();
};

}  // namespace jet
