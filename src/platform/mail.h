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
  // Opens the letter in the user's mail program, through the mail interface, for finishing and sending.
  virtual ShellResult compose(const Letter& letter) = 0;
};

// "mailto:to?subject=...&Body=..." with everything that an address may not hold written as %XX; without the
// attachments, which an address cannot carry.
QString mailAddress(const Letter& letter);

class SystemMail : public Mail {
 public:
  ShellResult compose(const Letter& letter) override;
};

}  // namespace tandeko
