#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QLocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "app/startup.h"
#include "console/console.h"
#include "errors/error_reporter.h"
#include "platform/resources.h"

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace {

// Whether only --help or --version is asked for, which must work without a display.
bool onlyText(int argc, char** argv) {
  for (int i = 1; i < argc; ++i)
    for (const char* option : {"-h", "--help", "-v", "--version"})
      if (std::strcmp(argv[i], option) == 0) return true;
  return false;
}

// A failure that no procedure caught is reported too, and the program goes on.
class Application : public QApplication {
 public:
  using QApplication::QApplication;
  void setSession(tandeko::Session* session) { session_ = session; }

  bool notify(QObject* receiver, QEvent* event) override {
    try {
      return QApplication::notify(receiver, event);
    } catch (...) {
      if (!session_) throw;
      tandeko::reportFailure(*session_, tandeko::currentFailure(QStringLiteral("Application")));
      return false;
    }
  }

 private:
  tandeko::Session* session_ = nullptr;
};

[[noreturn]] void leave(const QString& text, std::FILE* stream, int status) {
  print(text.toStdString(), stream);
  std::exit(status);
}

// The file named on the command line, if any; answers --help and --version.
QString fileOf(const QCoreApplication& application) {
  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral("Ewidencja wyposażenia pracowników"));
  const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                QStringLiteral("Wyświetla tę pomoc."));
  parser.addOption(help);
  const QCommandLineOption version = parser.addVersionOption();
  parser.addPositionalArgument(QStringLiteral("BAZA.mdb"), QStringLiteral("Baza danych do otwarcia"),
                               QStringLiteral("[BAZA.mdb]"));
  if (!parser.parse(application.arguments())) leave(parser.errorText() + u'\n', stderr, EXIT_FAILURE);
  if (parser.isSet(help)) leave(parser.helpText(), stdout, EXIT_SUCCESS);
  if (parser.isSet(version))
    leave(tandeko::kProgramName + u' ' + tandeko::programVersion().text() + u'\n', stdout, EXIT_SUCCESS);
  const QStringList files = parser.positionalArguments();
  return files.isEmpty() ? QString() : QFileInfo(files.first()).absoluteFilePath();
}

}  // namespace

int main(int argc, char** argv) {
  using namespace tandeko;
#ifdef Q_OS_WIN
  // A drive that is gone is told in the program's own words.
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
#endif
  QLocale::setDefault(QLocale(QLocale::Polish, QLocale::Poland));
  QCoreApplication::setApplicationName(kProgramName);
  QCoreApplication::setApplicationVersion(programVersion().text());
  if (onlyText(argc, argv)) {
    const QCoreApplication console(argc, argv);
    useResources();
    fileOf(console);
    return 0;
  }
  useBuiltInPlugins();
  Application application(argc, argv);
  QApplication::setDesktopFileName(QStringLiteral("tandeko"));
  useResources();
  QApplication::setWindowIcon(icon("tandeko"));
  const QString file = fileOf(application);

  const auto registry = systemRegistry();
  const auto windows = systemWindowSearch();
  ScreenMessages messages;
  SystemShell shell;
  SystemMail mail;
  SystemClock clock;
  Session session(Platform{*registry, messages, shell, mail, clock, *windows});

  application.setSession(&session);

  const auto window = startUp(session, file);
  const int status = window ? QApplication::exec() : 0;
  application.setSession(nullptr);
  return status;
}
