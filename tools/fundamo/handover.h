#pragma once

#include <QString>

#include "platform/registry.h"

// Upgrades a file for a program that waits: the registry value "Aktualizacja status" of the tool's key is "?"
// meanwhile, then "Ok" or "Error". The report goes to the standard output. Returns the exit status.
int upgradeForProgram(tandeko::Registry& registry, const QString& file);
