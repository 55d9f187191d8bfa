#include "register/require_register.h"

namespace tandeko {

bool requireRegister(Session& session) {
  if (session.currentRegister() >= 1) return true;
  session.messages().ask(
      QStringLiteral("Dla wykonania operacji niezbędne jest zdefiniowanie przynajmniej jednego rejestru. "
                     "Chcesz zdefiniować rejestr teraz?"));
  return false;
}

}  // namespace tandeko
