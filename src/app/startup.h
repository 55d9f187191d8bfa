#pragma once

#include <memory>

#include "app/mdiMenu.h"
#include "session/session.h"

namespace tandeko {

// The start of a session. Gives the main window, which is shown, or null when this copy is to end at once.
// `file`: a database to open instead of the last one; empty for none.
std::unique_ptr<mdiMenu> startUp(Session& session, const QString& file);

// The help file: in the folder "Help" of the program when it is there, else in the help folder.
QString helpFile(Session& session);

}  // namespace tandeko
