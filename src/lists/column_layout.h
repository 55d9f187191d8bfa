#pragma once

#include <QList>
#include <QString>

#include "platform/registry.h"

namespace tandeko {

// How a grid looked when its user chose "Zapamiętaj wygląd okna". Kept per form under
// "FORM\Kol QUALIFIER"; it counts only while the value "FORMKol " of the program key is "1". The qualifier
// is the font size of lists: other letters need other widths.
struct ColumnLayout {
  struct Column {
    int width = -1;  // pixels, 0 hidden, -1 the standard width
    int place = -1;  // from the left, -1 the standard place
  };
  QList<Column> columns;
  int rowHeight = 0;  // pixels, 0 the standard height

  // Nothing stored, or switched off: no columns. Values that make no sense count as standard ones.
  static ColumnLayout load(const Registry& registry, const QString& form, const QString& qualifier,
                           int columnCount);
  bool store(Registry& registry, const QString& form, const QString& qualifier) const;
  // Standard widths from the next opening on.
  static void forget(Registry& registry, const QString& form);
};

}  // namespace tandeko
