#pragma once

#include <QString>
#include <utility>

#include "session/session.h"

namespace tandeko {

// The one road of unexpected failures: looks the description up, writes the log when the user wants it,
// shows dlgError, returns when the user continues. Never throws.
void reportFailure(Session& session, const Failure& failure);

// Runs a procedure's body; a failure is reported under the procedure's name and gives false.
//   return guarded(session, "BaseCheck", [&] { ... });
template <typename Body>
bool guarded(Session& session, const char* procedure, Body&& body) {
  try {
    if constexpr (std::is_same_v<std::invoke_result_t<Body&>, bool>)
      return body();
    else
      body();
    return true;
  } catch (...) {
    reportFailure(session, currentFailure(QString::fromLatin1(procedure)));
    return false;
  }
}

}  // namespace tandeko
