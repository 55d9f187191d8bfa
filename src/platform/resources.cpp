#include "platform/resources.h"

#include <QCoreApplication>
#include <QTranslator>

static void initialise() { Q_INIT_RESOURCE(tandeko); }

namespace tandeko {

void useResources() {
  initialise();
  auto* texts = new QTranslator(QCoreApplication::instance());
  if (texts->load(QStringLiteral(":/translations/qtbase_pl.qm"))) QCoreApplication::installTranslator(texts);
}

}  // namespace tandeko
