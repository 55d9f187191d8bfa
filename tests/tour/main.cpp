// A tour of the program on a real display: opens a firm, works in it with the real mouse and keyboard
// (xdotool), checks the file after each step and leaves screenshots. Status 0 when everything was as it should
// be.
//
//   tour FIRM.mdb FOLDER

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLocale>
#include <cstdio>

#include "app/startup.h"
#include "driver.h"
#include "platform/resources.h"

using namespace tandeko;

// The register whose items form sets.
static bool chooseComputers(tour::Driver& driver) {
  auto* registers = driver.window.findChild<QComboBox*>(QStringLiteral("cmbEwiRejestr"));
  const int computers = registers ? registers->findText(QStringLiteral("Sprzęt komputerowy")) : -1;
  if (!driver.check(computers >= 0, "the register combo offers the firm's registers")) return false;
  registers->setCurrentIndex(computers);
  Q_EMIT registers->activated(computers);
  return true;
}

int main(int argc, char** argv) {
  QLocale::setDefault(QLocale(QLocale::Polish, QLocale::Poland));
  QApplication application(argc, argv);
  QApplication::setApplicationName(kProgramName);
  if (application.arguments().size() != 3) return std::fputs("tour FIRM.mdb FOLDER\n", stderr), 2;
  useResources();
  const QString file = QFileInfo(application.arguments()[1]).absoluteFilePath();
  const QString folder = QFileInfo(application.arguments()[2]).absoluteFilePath();
  QDir().mkpath(folder);

  // The administrator has no password and is let in without a question when he was the last user.
  MemoryRegistry registry;
  registry.write(kProgramKey, QStringLiteral("Uzytkownik"), QStringLiteral("AD"));
  const auto windows = systemWindowSearch();
  ScreenMessages messages;
  SystemShell shell;
  SystemMail mail;
  SystemClock clock;
  Session session(Platform{registry, messages, shell, mail, clock, *windows});
  const auto window = startUp(session, file);
  if (!window || !session.databaseOpen()) return std::fputs("the firm does not open\n", stderr), 1;
  window->showMaximized();
  tour::Driver::wait(800);
  tour::Driver driver(session, *window, file, folder);
  if (chooseComputers(driver)) {
    tour::tourPanel(driver);
    tour::tourCardList(driver);
  }
  window->close();
  return driver.failures() == 0 ? 0 : 1;
}
