#pragma once

#include <QComboBox>

#include "jet/dao/dao.h"

// Combos over tables of many rows.
namespace tandeko {

// As fillCombo with an entry without key in front, if `empty`; but the rows stay packed and are decoded when
// they are looked at, so that tens of thousands cost next to nothing. Such a combo takes no further entries.
void fillLookup(QComboBox& combo, jet::Database& database, const QString& sql, bool empty = false);

}  // namespace tandeko
