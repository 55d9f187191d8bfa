#pragma once

#include "session/session.h"

namespace tandeko {

// True when this copy is to end at once, because the user prefers the copy that is running already.
bool InstanceCheck(Session& session);

}  // namespace tandeko
