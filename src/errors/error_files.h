#pragma once

#include <QDateTime>
#include <QString>

#include "session/failure.h"

namespace tandeko {

// The text for the user about a failure, from "Errormsg.txt" in `folder`: section by kind, key by number.
// Ends with the advice where to send the circumstances.
QString describeFailure(const QString& folder, const QString& kind, int number);

// Adds the failure to the log, in a section named by the moment to the minute. False when the log cannot
// be written.
bool logFailure(const QString& path, const Failure& failure, const QDateTime& moment);

// "Error.log" in the user's data folder of the program.
QString errorLogPath();

}  // namespace tandeko
