#include "app/instance_check.h"

namespace tandeko {

bool InstanceCheck(Session& session) {
  if (session.settings().stored(QStringLiteral("Instancje"), QStringLiteral("1")) == u"1") return false;
  const QString title = session.title();
  session.setTitle(title + QStringLiteral("(1)"));
  if (!session.windows().find(title)) {
    session.setTitle(title);
    return false;
  }
  const bool second =
      session.messages().ask(QStringLiteral("Aplikacja o nazwie ") + title +
                                 QStringLiteral(" została już uruchomiona. Uruchomić drugą kopię aplikacji?"),
                             QStringLiteral("Program ") + title);
  // A second copy keeps its marked title, so that a third one finds the first.
  if (second) return false;
  session.windows().raise(title);
  return true;
}

}  // namespace tandeko
