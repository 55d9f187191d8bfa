#pragma once

#include <QString>
#include <QStringList>

namespace tandeko {

// Why an open or a start failed.
enum class ShellResult {
  Done,
  NotFound,   // no such file, folder or program
  NoAccess,   // it exists and may not be read or run
  NoProgram,  // no program is set up for this kind of document or address
  Failed,     // the system gave no other reason
};

// The side of the help window that is to be seen.
enum class HelpView { Contents, Index };

class Shell {
 public:
  virtual ~Shell() = default;
  // The shell's "open" for a document or a folder.
  virtual ShellResult openDocument(const QString& path) = 0;
  // A file of HTML Help (.chm) in the system's help window; where there is none, as a document.
  virtual ShellResult openHelp(const QString& path, HelpView view) = 0;
  // A web page or a "mailto:" address.
  virtual ShellResult openAddress(const QString& address) = 0;
  // Starts a program with a normal window and does not wait for it.
  virtual ShellResult startProgram(const QString& program, const QStringList& arguments) = 0;
};

class SystemShell : public Shell {
 public:
  // Closes the help window, which lives in this process.
  ~SystemShell() override;
  ShellResult openDocument(const QString& path) override;
  ShellResult openHelp(const QString& path, HelpView view) override;
  ShellResult openAddress(const QString& address) override;
  ShellResult startProgram(const QString& program, const QStringList& arguments) override;
};

}  // namespace tandeko
