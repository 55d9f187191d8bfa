#include "app/startup.h"

#include <QApplication>
#include <QFile>

#include "app/frmSplash.h"
#include "app/instance_check.h"

namespace tandeko {

namespace {

void restorePeriod(Session& session) {
  const QDate today = session.clock().today();
  const int month = session.settings().SettingGet(QStringLiteral("Miesiac")).toInt();
  const int year = session.settings().SettingGet(QStringLiteral("Rok")).toInt();
  const bool valid = QDate::isValid(year, month, 1);
  session.setCurrentPeriod(valid ? month : today.month(), valid ? year : today.year());
}

void defaultCursor() {
  while (QApplication::overrideCursor()) QApplication::restoreOverrideCursor();
}

}  // namespace

QString helpFile(Session& session) {
  const QString own = session.settings().ownFolder() + QStringLiteral("/Help/Tandeko.chm");
  return QFile::exists(own) ? own : session.settings().program().folderHelp + QStringLiteral("/Tandeko.chm");
}

std::unique_ptr<mdiMenu> startUp(Session& session, const QString& file) {
  QApplication::setOverrideCursor(Qt::BusyCursor);
  frmSplash splash;
  splash.show();
  QApplication::processEvents();

  session.settings().createKeys();
  session.settings().load();
  session.settings().store(QStringLiteral("Wersja"), programVersion().text());
  if (InstanceCheck(session)) {
    splash.close();
    defaultCursor();
    return nullptr;
  }
  session.settings().setHelpFile(helpFile(session));
  restorePeriod(session);

  auto window = std::make_unique<mdiMenu>(session);
  window->show();
  splash.raise();
  QApplication::processEvents();

  const bool listed = !session.registry().subkeys(kDatabasesKey).isEmpty();
  const bool chosen = listed && window->desk().readList();
  window->updateCommands();
  splash.close();
  if (!file.isEmpty())
    window->desk().openFile(file);
  else if (chosen)
    window->desk().openSelected();
  window->updateCommands();
  defaultCursor();
  return window;
}

}  // namespace tandeko
