#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>

namespace tandeko {

// Finds the main window of another running copy of the program by its caption.
class WindowSearch {
 public:
  virtual ~WindowSearch() = default;
  virtual bool find(const QString& caption) = 0;
  // Brings the found window to the top and shows it maximised.
  virtual void raise(const QString& caption) = 0;
  // Makes this copy findable under `caption`, instead of an earlier one; `onRaise` runs when another
  // copy asks for this window.
  virtual void announce(const QString& caption, std::function<void()> onRaise) = 0;
};

// The system's window search on Windows. Elsewhere each copy keeps a note with its caption in a folder
// of the login session, held by a lock that ends with the process; raising puts a request beside it.
// (Window managers, Wayland above all, let no program see or raise another's windows.)
std::unique_ptr<WindowSearch> systemWindowSearch();
std::unique_ptr<WindowSearch> windowSearchIn(const QString& folder);

}  // namespace tandeko
