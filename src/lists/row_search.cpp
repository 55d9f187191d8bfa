#include "lists/row_search.h"

namespace tandeko {

RowSearch::RowSearch(const QueryModel& model, const QString& text, QList<int> columns)
    : model_(model), matcher_(text, Qt::CaseInsensitive), columns_(std::move(columns)) {}

int RowSearch::columnIn(int row) const {
  for (const int column : columns_) {
    const ListColumn& shown = model_.columns()[column];
    const jet::Value value = model_.fieldValue(row, shown.field);
    // Most cells are texts; they are compared where they lie.
    const auto* text = shown.format == CellFormat::General ? value.getIf<jet::Text>() : nullptr;
    if (text) {
      const QStringView view(reinterpret_cast<const QChar*>(text->data()),
                             static_cast<qsizetype>(text->size()));
      if (matcher_.indexIn(view) >= 0) return column;
    } else if (!value.isNull() && matcher_.indexIn(formatCell(value, shown.format)) >= 0) {
      return column;
    }
  }
  return -1;
}

}  // namespace tandeko
