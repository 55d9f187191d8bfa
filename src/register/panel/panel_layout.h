#pragma once

#include <QList>

#include "lists/column_layout.h"
#include "platform/registry.h"

namespace tandeko {

// How the panel looked when its user chose "Zapamiętaj wygląd okna".
struct PanelLayout {
  int employeeView = 0;  // 0 large icons, 1 small icons, 2 list, 3 details
  bool warehouseShown = true;
  bool binShown = true;
  QString order = QStringLiteral("1");  // of the panes; "1" the standard
  ColumnLayout columns;                 // of the details view
  QList<int> paneSizes;                 // of the columns of panes, pixels; empty: standard
  QList<int> stackSizes;                // of warehouse and bin, pixels; empty: standard

  // `qualifier`: the font size of lists.
  static PanelLayout load(const Registry& registry, const QString& qualifier);
  void store(Registry& registry, const QString& qualifier) const;
  // Back to the standard look.
  static void forget(Registry& registry);
};

}  // namespace tandeko
