#pragma once

#include <functional>

#include "database/schedule.h"
#include "session/session.h"

namespace tandeko {

// Whether a run of that kind is due and the user agrees; `confirm` tells whether he wants to hear of its
// success. `before` as for BaseDefrag.
bool mayRun(Session& session, const QString& path, Upkeep kind, bool forced, bool& confirm,
            const std::function<bool()>& before);

}  // namespace tandeko
