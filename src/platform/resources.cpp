#include "platform/resources.h"

#include <QCoreApplication>
#include <QFile>
#include <QTranslator>

static void initialise() { Q_INIT_RESOURCE(tandeko); }

namespace tandeko {

void useResources() {
  initialise();
  auto* texts = new QTranslator(QCoreApplication::instance());
  if (texts->load(QStringLiteral(":/translations/qtbase_pl.qm"))) QCoreApplication::installTranslator(texts);
}

void useBuiltInPlugins() {
#ifdef Q_OS_WIN
  QCoreApplication::setLibraryPaths({});
#endif
}

QIcon icon(const char* name) {
  QIcon result;
  for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
    const QString file = QStringLiteral(":/icons/%1-%2.png").arg(QLatin1StringView(name)).arg(size);
    if (QFile::exists(file)) result.addFile(file);
  }
  return result;
}

}  // namespace tandeko
