#include "register/require_register.h"

#include "register/kreRejewi.h"

namespace tandeko {

bool requireRegister(Session& session) {
  if (session.currentRegister() >= 1) return true;
  const QString question = QStringLiteral(
      "Dla wykonania operacji niezbędne jest zdefiniowanie przynajmniej jednego rejestru. "
      "Chcesz zdefiniować rejestr teraz?");
  if (!session.messages().ask(question, {}, Answer::Yes)) return false;
  runRegisterWizard(session);
  return session.currentRegister() >= 1;
}

}  // namespace tandeko
