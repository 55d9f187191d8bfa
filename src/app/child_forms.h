#pragma once

#include <QString>

#include "session/session.h"

namespace tandeko {

// The forms that menus open by name. One that this version does not have is not available, and creating
// it gives null.
bool formAvailable(const QString& formName);
ChildForm* createForm(Session& session, const QString& formName);

}  // namespace tandeko
