#pragma once

#include <QString>
#include <QStringList>

#include "platform/shell.h"

namespace tandeko {

struct Letter {
  QString to;
  QString subject;
  QString body;
  QStringList attachments;  // paths
};

class Mail {
 public:
  virtual ~Mail() = default;
  // Opens the letter in the user's mail program for finishing and sending. With `direct` through the
  // mail interface (which carries attachments), otherwise by a "mailto:" address.
  virtual ShellResult compose(const Letter& letter, bool direct) = 0;
};

// "mailto:to?subject=...&Body=..." with everything that an address may not hold written as %XX.
QString mailAddress(const Letter& letter);

class SystemMail : public Mail {
 public:
  explicit SystemMail(Shell& shell) : shell_(shell) {}
  ShellResult compose(const Letter& letter, bool direct) override;

 private:
  Shell& shell_;
};

}  // namespace tandeko
