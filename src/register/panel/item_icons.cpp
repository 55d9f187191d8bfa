#include "register/panel/item_icons.h"

#include <array>

#include "platform/resources.h"

namespace tandeko {

QIcon itemIcon(int icon, bool isSet) {
  // Stored numbers count from 1; items keep theirs in the file, so pictures are only added at the end.
  static const std::array pictures = {"computer", "laptop", "monitor",   "printer", "phone",
                                      "camera",   "desk",   "furniture", "tool",    "helmet",
                                      "clothing", "shoes",  "vehicle",   "book",    "key"};
  const auto place = static_cast<size_t>(icon) - 1;
  if (icon >= 1 && place < pictures.size()) return tandeko::icon(pictures[place]);
  return tandeko::icon(isSet ? "set" : "item");
}

QIcon employeeIcon(bool active) { return icon(active ? "person" : "person-inactive"); }

}  // namespace tandeko
