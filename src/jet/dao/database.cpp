#include "jet/catalog/table.h"
#include "jet/dao/database_impl.h"
#include "jet/dao/recordset_impl.h"

namespace jet {

namespace {

constexpr size_t kMaxPasswordLength = 20;

// The parts of an open database; 3420 after close().
template <typename Impl>
Impl& opened(const std::unique_ptr<Impl>& impl) {
  if (!impl->pager) throw Error(3420);
  return *impl;
}

}  // namespace

Database::Impl::~Impl() { close(); }

void Database::Impl::attach(std::shared_ptr<Workspace::Impl> owner) {
  workspace = std::move(owner);
  if (!pager->readOnly())
    for (int level = 0; level < workspace->transactionLevel; ++level) pager->begin();
  workspace->databases.push_back(this);
}

void Database::Impl::close() {
  if (workspace) std::erase(workspace->databases, this);
  workspace.reset();
  engine.reset();
  catalog.reset();
  pager.reset();
}

Database::Database(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

Database::~Database() = default;

const std::filesystem::path& Database::path() const { return opened(impl_).pager->path(); }

bool Database::readOnly() const { return opened(impl_).pager->readOnly(); }

bool Database::exclusive() const { return impl_->exclusive; }

Version Database::version() const { return opened(impl_).pager->layout().version; }

void Database::close() { impl_->close(); }

std::unique_ptr<Recordset> Database::openRecordset(std::u16string_view source,
                                                   std::optional<RecordsetType> type) {
  auto recordset = std::make_unique<Recordset::Impl>(opened(impl_), std::u16string(source), type);
  recordset->open();
  return std::unique_ptr<Recordset>(new Recordset(std::move(recordset)));
}

int64_t Database::execute(std::u16string_view sql) {
  opened(impl_).recordsAffected = 0;
  impl_->recordsAffected = impl_->engine->execute(sql);
  impl_->lastAutoNumber = impl_->engine->lastAutoNumber();
  return impl_->recordsAffected;
}

int64_t Database::recordsAffected() const { return impl_->recordsAffected; }

int32_t Database::lastAutoNumber() const { return opened(impl_).lastAutoNumber; }

void Database::stream(std::u16string_view sql, sql::RowSink& sink) {
  ReadScope scope(*opened(impl_).pager);
  impl_->engine->query(sql, sink);
}

bool Database::isQuery(std::u16string_view sql) const { return opened(impl_).engine->isQuery(sql); }

Catalog& Database::catalog() { return *opened(impl_).catalog; }

TableDefPtr Database::tableDef(std::u16string_view name) {
  ReadScope scope(*opened(impl_).pager);
  TableDefPtr def = impl_->catalog->table(name);
  if (!def) throw Error(3265);
  return def;
}

std::vector<std::u16string> Database::tableNames() {
  ReadScope scope(*opened(impl_).pager);
  return impl_->catalog->userTables();
}

std::vector<Relation> Database::relations() {
  ReadScope scope(*opened(impl_).pager);
  return impl_->catalog->relations();
}

void Database::define(const std::function<void(Catalog&)>& change) {
  Transaction transaction(*opened(impl_).pager);
  change(*impl_->catalog);
  transaction.commit();
}

void Database::newPassword(std::u16string_view oldPassword, std::u16string_view newPassword) {
  Transaction transaction(*opened(impl_).pager);
  if (impl_->catalog->header().password != oldPassword) throw Error(3031);
  if (newPassword.size() > kMaxPasswordLength) throw Error(3001);
  impl_->catalog->setPassword(newPassword);
  transaction.commit();
}

bool Database::check(const std::function<void(const std::u16string&)>& fault, bool leaks) {
  ReadScope scope(*opened(impl_).pager);
  bool sound = true;
  const auto line = [&](const std::u16string& text) {
    sound = false;
    fault(text);
  };
  checkDatabase(*impl_->catalog, line, leaks);
  return sound;
}

}  // namespace jet
