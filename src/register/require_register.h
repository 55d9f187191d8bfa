#pragma once

#include "session/session.h"

namespace tandeko {

// Whether a register is chosen; without one the user is offered to define it in the register wizard.
bool requireRegister(Session& session);

}  // namespace tandeko
