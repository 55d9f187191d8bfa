#include "platform/statements.h"

#include "platform/text.h"

namespace tandeko {

std::unique_ptr<jet::Recordset> openRows(jet::Database& database, const QString& sql) {
  return database.openRecordset(toU16(sql));
}

int64_t execute(jet::Database& database, const QString& sql) { return database.execute(toU16(sql)); }

std::optional<int> keyOf(const jet::Value& value) {
  if (value.isNull()) return std::nullopt;
  return toInt(value);
}

Transaction::~Transaction() {
  if (!workspace_) return;
  try {
    workspace_->rollback();
  } catch (const jet::Error&) {
    // The failure that led here is the one to report.
  }
}

void Transaction::commit() {
  workspace_->commitTrans();
  workspace_ = nullptr;
}

}  // namespace tandeko
