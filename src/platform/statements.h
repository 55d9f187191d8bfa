#pragma once

#include <QString>
#include <memory>
#include <optional>

#include "jet/dao/dao.h"

// Statements as forms build them: texts with keys joined in.
namespace tandeko {

std::unique_ptr<jet::Recordset> openRows(jet::Database& database, const QString& sql);
// Returns the number of records affected.
int64_t execute(jet::Database& database, const QString& sql);

// A whole number of a field; nullopt for Null.
std::optional<int> keyOf(const jet::Value& value);
// A text inside of single quotes.
inline QString quoted(QString text) { return text.replace(QStringLiteral("'"), QStringLiteral("''")); }
inline QString str(int key) { return QString::number(key); }

// Everything between the construction and commit() happens in the file or nothing does.
class Transaction {
 public:
  explicit Transaction(jet::Workspace& workspace) : workspace_(&workspace) { workspace.beginTrans(); }
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void commit();

 private:
  jet::Workspace* workspace_;
};

}  // namespace tandeko
