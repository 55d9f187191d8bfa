#pragma once

#include <QString>

#include "session/session.h"

namespace tandeko {

// The structure tool's file name on this system.
QString structureToolFile();

// The path of a program of the package: in the folder of "Folder pakiet", else in the program's own; empty
// when it is in neither.
QString packageProgram(Session& session, const QString& file);

// Runs the structure tool on the database and waits for its answer, at most 30 seconds. False, with a
// message, when it is missing, fails or does not answer.
bool updateStructure(Session& session, const QString& path, const QString& databaseName);

}  // namespace tandeko
