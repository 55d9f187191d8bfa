#pragma once

#include <QIcon>

namespace tandeko {

// The picture of an item in a tree. `icon` is the number stored with the item; 0 and numbers without a
// picture give the one of a set or of a single item.
QIcon itemIcon(int icon, bool isSet);
QIcon employeeIcon(bool active);

}  // namespace tandeko
