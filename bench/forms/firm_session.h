#pragma once

#include <QTemporaryDir>

#include "firm.h"
#include "platform/text.h"
#include "session/session.h"
#include "structure/create.h"

namespace tandeko {

// A session with a firm of the given size open, in register 1.
class Firm {
 public:
  explicit Firm(const FirmSize& size)
      : session_(Platform{registry_, messages_, shell_, mail_, clock_, *windows_}) {
    const QString file = folder_.filePath(QStringLiteral("firma.mdb"));
    structure::createDatabase(toPath(file));
    {
      jet::Workspace workspace;
      const auto database = workspace.openDatabase(toPath(file));
      fillFirm(workspace, *database, size);
    }
    session_.BaseConnect(file, {});
    session_.setCurrentRegister(1);
  }
  Session& session() { return session_; }

 private:
  QTemporaryDir folder_;
  MemoryRegistry registry_;
  ScreenMessages messages_;
  SystemShell shell_;
  SystemMail mail_;
  SystemClock clock_;
  std::unique_ptr<WindowSearch> windows_ = systemWindowSearch();
  Session session_;
};

}  // namespace tandeko
