#pragma once

#include <QIcon>

namespace tandeko {

// Makes the built-in icons (":/icons/NAME-SIZE.png", sizes 16, 24, 32, 48; "tandeko", the program's own, also
// 64, 128, 256) and Qt's own Polish texts available and installs the latter. Call once, after the
// application object exists.
void useResources();

// On Windows all of Qt is inside the program: no plugin is loaded from the folder where Qt was built, whose
// name anybody may give to a folder of his own there. Call before the application object exists.
void useBuiltInPlugins();

// A built-in icon in all its sizes.
QIcon icon(const char* name);

}  // namespace tandeko
