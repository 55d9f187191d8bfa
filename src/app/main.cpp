#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QIcon>
#include <QLocale>

#include "app/startup.h"
#include "platform/resources.h"

namespace {

// The file named on the command line, if any; answers --help and --version.
QString fileOf(const QApplication& application) {
  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral("Ewidencja wyposażenia pracowników"));
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addPositionalArgument(QStringLiteral("BAZA.mdb"), QStringLiteral("Baza danych do otwarcia"),
                               QStringLiteral("[BAZA.mdb]"));
  parser.process(application);
  const QStringList files = parser.positionalArguments();
  return files.isEmpty() ? QString() : QFileInfo(files.first()).absoluteFilePath();
}

}  // namespace

int main(int argc, char** argv) {
  using namespace tandeko;
  QLocale::setDefault(QLocale(QLocale::Polish, QLocale::Poland));
  QApplication application(argc, argv);
  QApplication::setApplicationName(kProgramName);
  QApplication::setApplicationVersion(programVersion().text());
  QApplication::setDesktopFileName(QStringLiteral("tandeko"));
  useResources();
  QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/program-48.png")));
  const QString file = fileOf(application);

  const auto registry = systemRegistry();
  const auto windows = systemWindowSearch();
  ScreenMessages messages;
  SystemShell shell;
  SystemMail mail;
  SystemClock clock;
  Session session(Platform{*registry, messages, shell, mail, clock, *windows});

  const auto window = startUp(session, file);
  return window ? QApplication::exec() : 0;
}
