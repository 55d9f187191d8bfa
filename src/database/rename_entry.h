#pragma once

#include "database/handy_list.h"

namespace tandeko {

// Carries the values of a listed database over to the name and folder of `newPath`; absent ones get their
// defaults. When the last runs were is not carried, so that both schedules count as never run, nor is the
// daily copy.
void handyCarry(Session& session, const HandyEntry& entry, const QString& newPath);

}  // namespace tandeko
