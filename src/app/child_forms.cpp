#include "app/child_forms.h"

#include <QMap>
#include <functional>

namespace tandeko {

namespace {

using Maker = std::function<ChildForm*(Session&)>;

const QMap<QString, Maker>& makers() {
  static const QMap<QString, Maker> forms = {};
  return forms;
}

}  // namespace

bool formAvailable(const QString& formName) { return makers().contains(formName); }

ChildForm* createForm(Session& session, const QString& formName) {
  const Maker maker = makers().value(formName);
  return maker ? maker(session) : nullptr;
}

}  // namespace tandeko
