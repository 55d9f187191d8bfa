#pragma once

#include <QIcon>

namespace tandeko {

// Makes the built-in icons (":/icons/NAME-SIZE.png", sizes 16, 24, 32, 48; "tandeko", the program's own, also
// 64, 128, 256) and Qt's own Polish texts available and installs the latter. Call once, after the
// application object exists.
void useResources();

// A built-in icon in all its sizes.
QIcon icon(const char* name);

}  // namespace tandeko
