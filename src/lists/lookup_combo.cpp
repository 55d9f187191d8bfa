#include "lists/lookup_combo.h"

#include <QAbstractListModel>
#include <QListView>
#include <limits>

#include "lists/form_fields.h"
#include "platform/text.h"

namespace tandeko {

namespace {

// The rows of a query of two columns, key and name.
class LookupModel : public QAbstractListModel {
 public:
  LookupModel(std::unique_ptr<jet::Recordset> rows, bool empty, QObject* parent)
      : QAbstractListModel(parent),
        rows_(std::move(rows)),
        first_(empty ? 1 : 0),
        count_(first_ + static_cast<int>(std::min<int64_t>(rows_->recordCount(), kMost))) {}

  int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : count_; }

  QVariant data(const QModelIndex& index, int role) const override {
    const int row = index.row() - first_;
    if (!index.isValid() || row < 0) return {};
    switch (role) {
      case Qt::DisplayRole:
      case Qt::EditRole:
        rows_->setAbsolutePosition(row);
        return toText(rows_->field(size_t{1}).value());
      case Qt::UserRole: {
        rows_->setAbsolutePosition(row);
        const jet::Value key = rows_->field(size_t{0}).value();
        return key.getIf<jet::Text>() ? QVariant(toText(key)) : QVariant(toInt(key));
      }
      default:
        return {};
    }
  }

 private:
  static constexpr int kMost = std::numeric_limits<int>::max() - 1;

  std::unique_ptr<jet::Recordset> rows_;
  int first_;
  int count_;
};

}  // namespace

void fillLookup(QComboBox& combo, jet::Database& database, const QString& sql, bool empty) {
  const QVariant chosen = comboKey(combo);
  combo.setModel(
      new LookupModel(database.openRecordset(toU16(sql), jet::RecordsetType::Snapshot), empty, &combo));
  if (auto* list = qobject_cast<QListView*>(combo.view())) list->setUniformItemSizes(true);
  setComboKey(combo, chosen);
}

}  // namespace tandeko
