#pragma once

#include <QMainWindow>

#include "session/settings.h"

namespace tandeko {

// Entries of the setting "Rozmiar MDI": what is stored, and what the user reads.
struct WindowSizeChoice {
  QString value;  // empty: as left the last time; "max"; "WIDTHxHEIGHT"
  QString text;
};
QList<WindowSizeChoice> windowSizeChoices();

// The main window's size and place at start, by "Rozmiar MDI"; never outside the screens.
void placeMainWindow(QMainWindow& window, const Settings& settings);
void rememberMainWindow(const QMainWindow& window, Settings& settings);

}  // namespace tandeko
