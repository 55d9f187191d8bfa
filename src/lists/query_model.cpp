#include "lists/query_model.h"

#include <QLocale>
#include <limits>

#include "platform/text.h"

namespace tandeko {

namespace {

QString moneyText(const jet::Value& value) {
  if (value.isNull()) return {};
  const double amount = toDouble(value);
  QLocale locale;
  locale.setNumberOptions(QLocale::OmitGroupSeparator);
  QString text = locale.toString(amount, 'f', 4);
  for (int spare = 0; spare < 2 && text.endsWith(u'0'); ++spare) text.chop(1);
  return text;
}

}  // namespace

QString formatCell(const jet::Value& value, CellFormat format) {
  switch (format) {
    case CellFormat::ShortDate: {
      const QDate date = toDate(value);
      return date.isValid() ? date.toString(QStringLiteral("dd.MM.yyyy")) : toText(value);
    }
    case CellFormat::Money:
      return moneyText(value);
    case CellFormat::YesNo:
      if (value.isNull()) return {};
      return toBool(value) ? QStringLiteral("Tak") : QStringLiteral("Nie");
    case CellFormat::General:
    case CellFormat::GeneralNumber:
      break;
  }
  return toText(value);
}

QueryModel::QueryModel(QList<ListColumn> columns, int keyField, QObject* parent)
    : QAbstractTableModel(parent), columns_(std::move(columns)), keyField_(keyField) {}

void QueryModel::setRows(std::unique_ptr<jet::Recordset> rows) {
  beginResetModel();
  source_ = std::move(rows);
  rowCount_ = 0;
  fieldCount_ = 0;
  if (source_) {
    rowCount_ = static_cast<int>(std::min<int64_t>(source_->recordCount(), std::numeric_limits<int>::max()));
    fieldCount_ = static_cast<int>(source_->fieldCount());
  }
  endResetModel();
}

jet::Value QueryModel::fieldValue(int row, int field) const {
  if (row < 0 || row >= rowCount_ || field < 0 || field >= fieldCount_) return {};
  source_->setAbsolutePosition(row);
  return source_->field(static_cast<size_t>(field)).value();
}

jet::Type QueryModel::fieldType(int field) const {
  if (field < 0 || field >= fieldCount_) return jet::Type::Null;
  return source_->field(static_cast<size_t>(field)).type();
}

int QueryModel::key(int row) const { return toInt(fieldValue(row, keyField_)); }

int QueryModel::rowOf(int key) const {
  for (int row = 0; row < rowCount_; ++row)
    if (toInt(fieldValue(row, keyField_)) == key) return row;
  return -1;
}

double QueryModel::sum(int field) const {
  double total = 0;
  for (int row = 0; row < rowCount_; ++row) total += toDouble(fieldValue(row, field));
  return total;
}

QString QueryModel::cellText(int row, int column) const {
  const ListColumn& shown = columns_[column];
  return formatCell(fieldValue(row, shown.field), shown.format);
}

void QueryModel::setSort(const QList<SortKey>& keys) {
  sort_ = keys;
  if (!columns_.isEmpty()) Q_EMIT headerDataChanged(Qt::Horizontal, 0, static_cast<int>(columns_.size()) - 1);
}

int QueryModel::sortPlace(int column, bool* descending) const {
  const QString wanted = columns_[column].sortColumn();
  for (int place = 0; place < sort_.size(); ++place)
    if (sort_[place].column.compare(wanted, Qt::CaseInsensitive) == 0) {
      if (descending) *descending = sort_[place].descending;
      return place;
    }
  return -1;
}

int QueryModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : rowCount_; }

int QueryModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

bool QueryModel::isNumeric(int column) const {
  const ListColumn& shown = columns_[column];
  if (shown.format == CellFormat::GeneralNumber || shown.format == CellFormat::Money) return true;
  switch (fieldType(shown.field)) {
    case jet::Type::Byte:
    case jet::Type::Integer:
    case jet::Type::Long:
    case jet::Type::Currency:
    case jet::Type::Single:
    case jet::Type::Double:
    case jet::Type::Decimal:
      return true;
    default:
      return false;
  }
}

QVariant QueryModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  switch (role) {
    case Qt::DisplayRole:
      // One line a row: the line ends of notes would push the rest out of sight.
      return cellText(index.row(), index.column()).simplified();
    case Qt::ToolTipRole:
      return cellText(index.row(), index.column());
    case Qt::TextAlignmentRole:
      if (columns_[index.column()].format == CellFormat::YesNo) return int(Qt::AlignCenter);
      return int(Qt::AlignVCenter | (isNumeric(index.column()) ? Qt::AlignRight : Qt::AlignLeft));
    default:
      return {};
  }
}

QVariant QueryModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= columns_.size()) return {};
  if (role == Qt::DisplayRole) return columns_[section].caption;
  if (role == Qt::TextAlignmentRole) return int(Qt::AlignLeft | Qt::AlignVCenter);
  return {};
}

}  // namespace tandeko
