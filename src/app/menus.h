#pragma once

#include <QMenu>
#include <optional>
#include <span>

#include "session/forms.h"

class QMenuBar;

namespace tandeko {

// What an entry needs to be enabled.
enum class Need {
  Nothing,
  Database,   // an open database
  Form,       // an open database, and the form that the entry opens is part of this version
  Active,     // a child form that supports the entry's command
  Change,     // as Active, and the right to change data
  Layout,     // a child form whose layout can be kept
  TextField,  // decided when the menu opens, by the focused text field
  Window,     // at least one child form
  Later,      // not part of this version
};

// One line of a menu. Level 0 opens a menu of the menu bar, a line followed by deeper ones a submenu; the
// caption "-" is a separator.
struct MenuLine {
  int level;
  const char16_t* name;
  const char16_t* caption;
  Need need = Need::Nothing;
  std::optional<Command> command = std::nullopt;
  const char* shortcut = nullptr;
  const char* icon = nullptr;
};

std::span<const MenuLine> mainMenu();
std::span<const MenuLine> contextMenu(ContextMenu menu);

// The line of an action made from one of the tables; null for others.
const MenuLine* lineOf(const QAction* action);

// Fills a menu bar or a menu. Every action has its line's name as objectName.
void buildMenuBar(QMenuBar& bar, std::span<const MenuLine> lines);
void buildMenu(QMenu& menu, std::span<const MenuLine> lines);

// The form that a menu entry opens; empty for the others.
QString formOfMenu(const QString& menuName);

}  // namespace tandeko
