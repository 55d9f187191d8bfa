#pragma once

#include <QMap>
#include <QString>
#include <functional>

#include "session/session.h"

namespace tandeko {

class mdiMenu;

// What the menu entries do that neither open a child form nor go to the active one, by the entry's name.
QMap<QString, std::function<void()>> menuHandlers(Session& session, mdiMenu& window);

// What the edit menu can do with the text field that has the focus.
struct TextFieldState {
  bool canCut = false;
  bool canCopy = false;
  bool canPaste = false;
};
TextFieldState focusedTextField();

}  // namespace tandeko
