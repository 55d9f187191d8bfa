#pragma once

#include <QString>

// Who holds an item: an employee's key (greater than 0), the warehouse or the bin.
namespace tandeko {

inline constexpr int kWarehouse = 0;
inline constexpr int kBin = -1;

}  // namespace tandeko
