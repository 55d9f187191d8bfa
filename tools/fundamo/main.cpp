// The structure tool: the only program that creates and changes tables.

#include <cstdio>
#include <string>
#include <vector>

#include "console/console.h"
#include "jet/dao/dao.h"
#include "structure/create.h"

#ifdef TANDEKO_GUI
#include <QApplication>
#include <QLocale>

#include "handover.h"
#include "platform/resources.h"
#include "window.h"
#endif

namespace {

constexpr char kUsage[] =
    "fundamo --create FILE [--password PW]   new database with the current structure\n"
#ifdef TANDEKO_GUI
    "fundamo \"A|FILE\"                       upgrade FILE, answer through the registry\n"
    "fundamo                                window with both commands\n"
#endif
    "fundamo --help | --version\n";

int create(const std::string& file, const std::string& password) {
  try {
    structure::createDatabase(toPath(file), jet::fromUtf8(password));
    return 0;
  } catch (const jet::Error& error) {
    print(std::string("error ") + error.what() + "\n", stderr);
    return 1;
  }
}

#ifdef TANDEKO_GUI
// Needs no display: the program that waits for the answer shows what there is to show.
int upgrade(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  return upgradeForProgram(*tandeko::systemRegistry(), application.arguments().at(1).mid(2));
}

int showWindow(int argc, char** argv) {
  QLocale::setDefault(QLocale(QLocale::Polish, QLocale::Poland));
  tandeko::useBuiltInPlugins();
  const QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Fundamo bazy"));
  QApplication::setDesktopFileName(QStringLiteral("fundamo"));
  tandeko::useResources();
  QApplication::setWindowIcon(tandeko::icon("tandeko"));
  tandeko::ScreenMessages messages;
  Window window(messages);
  window.show();
  return QApplication::exec();
}
#endif

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words = commandLine(argc, argv);
  if (words.size() == 1 && words[0] == "--help") return print(kUsage), 0;
  if (words.size() == 1 && words[0] == "--version") return print("fundamo " TANDEKO_VERSION "\n"), 0;
  if (words.size() == 2 && words[0] == "--create") return create(words[1], {});
  if (words.size() == 4 && words[0] == "--create" && words[2] == "--password")
    return create(words[1], words[3]);
#ifdef TANDEKO_GUI
  if (words.empty()) return showWindow(argc, argv);
  if (words.size() == 1 && words[0].starts_with("A|")) return upgrade(argc, argv);
#endif
  return print(kUsage, stderr), 2;
}
