#include "app/child_forms.h"

#include <QMap>
#include <functional>

#include "people/dictionary_forms.h"
#include "people/karSWPRA.h"
#include "register/card_list_form.h"
#include "register/dlgParRejEwi.h"
#include "register/panel/karEWPAN.h"
#include "register/require_register.h"

namespace tandeko {

namespace {

using Maker = std::function<ChildForm*(Session&)>;

const QMap<QString, Maker>& makers() {
  static const QMap<QString, Maker> forms = [] {
    QMap<QString, Maker> made;
    made[QStringLiteral("karEWPAN")] = [](Session& session) { return new karEWPAN(session); };
    made[QStringLiteral("karEWKAR")] = [](Session& session) { return new karEWKAR(session); };
    made[QStringLiteral("karSWPRA")] = [](Session& session) { return new karSWPRA(session); };
    made[QStringLiteral("dlgParRejEwi")] = [](Session& session) -> ChildForm* {
      return requireRegister(session) ? new dlgParRejEwi(session) : nullptr;
    };
    for (const DictionaryKind& kind : dictionaryKinds())
      made[kind.form] = [&kind](Session& session) { return new DictionaryForm(session, kind); };
    return made;
  }();
  return forms;
}

}  // namespace

bool formAvailable(const QString& formName) { return makers().contains(formName); }

ChildForm* createForm(Session& session, const QString& formName) {
  const Maker maker = makers().value(formName);
  return maker ? maker(session) : nullptr;
}

}  // namespace tandeko
