#pragma once

#include <QStringList>

namespace tandeko {

// What a repair could not bring back, for the user: one line for each of the engine's, the first dozen.
QString lossesText(const QStringList& lines);

}  // namespace tandeko
