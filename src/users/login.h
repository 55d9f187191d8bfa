#pragma once

#include "session/session.h"

namespace tandeko {

// Asks who works on the open database. `userId`: who is offered, and who was chosen. With `closeForms`
// every form of the frame is closed before the change of user counts.
bool BaseLogin(Session& session, QString& userId, bool closeForms);

// Loads a user's record and rights into the session; a user who is not there gives the administrator.
bool BaseSetUser(Session& session, const QString& userId);

}  // namespace tandeko
