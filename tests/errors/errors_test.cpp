#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDirIterator>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSet>
#include <functional>
#include <new>
#include <system_error>

#include "errors/dlgError.h"
#include "errors/error_files.h"
#include "errors/error_reporter.h"
#include "errors/support_letter.h"
#include "jet/format/error.h"
#include "platform/ini_file.h"
#include "session/program_errors.h"
#include "support/dialogs.h"
#include "support/test_session.h"

using namespace tandeko;

namespace {

const QString kAdvice = QStringLiteral(" Do poczty załącz plik dziennika błędów: Error.log.");

void writeFile(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(bytes);
}

struct Errors : testing::Test, TestSession {
  Errors() { QFile::remove(errorLogPath()); }
  ~Errors() override { QFile::remove(errorLogPath()); }
};

}  // namespace

TEST_F(Errors, DescriptionsOfEachKind) {
  writeFile(file(QStringLiteral("Errormsg.txt")),
            "[DAO]\n3021=Brak rekordu.   \n[Program]\n5=Zły parametr.\n");
  const QString path = QDir::toNativeSeparators(file(QStringLiteral("Errormsg.txt")));
  const struct {
    QString kind;
    int number;
    QString text;
  } cases[] = {
      {QStringLiteral("DAO"), 3021, QStringLiteral("Błąd dostępu lub przetwarzania danych. Brak rekordu.\n")},
      {QStringLiteral("DAO"), 5, QStringLiteral("Błąd dostępu lub przetwarzania danych. \n")},
      {QStringLiteral("Program"), 5, QStringLiteral("Błąd programu. Zły parametr.\n")},
  };
  for (const auto& c : cases) {
    const QString text = describeFailure(folder.path(), c.kind, c.number);
    EXPECT_TRUE(text.startsWith(c.text)) << text.toStdString();
    EXPECT_TRUE(text.endsWith(kAdvice));
  }
  QFile::remove(path);
  EXPECT_TRUE(describeFailure(folder.path(), QStringLiteral("DAO"), 3021)
                  .startsWith(QStringLiteral("Brak dostępu do pliku opisów błędów: ") + path +
                              QStringLiteral(" - sprawdź czy we wskazanym folderze znaduje się plik "
                                             "Errormsg.txt.\n")));
}

namespace {

const QString kSources = QStringLiteral(TANDEKO_TEST_DATA "/../..");

QString contentOf(const QString& path) {
  QFile file(path);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
  return QString::fromUtf8(file.readAll());
}

// The numbers that a section of the shipped file describes.
QSet<int> described(const QString& section) {
  QSet<int> numbers;
  bool inside = false;
  const QString path = kSources + QStringLiteral("/resources/Errormsg.txt");
  for (const QString& line : decodeText(contentOf(path).toUtf8()).split(u'\n')) {
    if (line.startsWith(u'[')) inside = line.startsWith(u'[' + section + u']');
    const auto equals = line.indexOf(u'=');
    if (!inside || equals < 0) continue;
    EXPECT_GT(line.size() - equals, 12) << line.toStdString();
    const int number = line.first(equals).toInt();
    EXPECT_FALSE(numbers.contains(number)) << number << " is described twice";
    numbers << number;
  }
  return numbers;
}

// The numbers that the engine's sources raise.
QSet<int> raised() {
  static const QRegularExpression raise(QStringLiteral("\\b(?:Error|withText)\\((\\d+)\\b"));
  QSet<int> numbers;
  QDirIterator sources(kSources + QStringLiteral("/src/jet"),
                       {QStringLiteral("*.cpp"), QStringLiteral("*.h")}, QDir::Files,
                       QDirIterator::Subdirectories);
  while (sources.hasNext())
    for (auto match = raise.globalMatch(contentOf(sources.next())); match.hasNext();)
      numbers << match.next().captured(1).toInt();
  return numbers;
}

}  // namespace

// The file that the program ships describes exactly the numbers that can occur.
TEST_F(Errors, EveryErrorHasADescriptionAndEveryDescriptionAnError) {
  QSet<int> engine;
  for (int number = 1; number < 10000; ++number)
    if (!jet::errorText(number).empty()) engine << number;
  const QSet<int> dao = described(QStringLiteral("DAO"));
  EXPECT_TRUE((engine - dao).isEmpty()) << "engine errors without a description: " << *(engine - dao).begin();
  EXPECT_TRUE((dao - engine).isEmpty()) << "descriptions of unknown errors: " << *(dao - engine).begin();
  const QSet<int> used = raised();
  EXPECT_GT(used.size(), 100);
  EXPECT_TRUE((used - dao).isEmpty()) << "raised without a description: " << *(used - dao).begin();
  EXPECT_EQ(described(QStringLiteral("Program")),
            QSet<int>(std::begin(kProgramErrors), std::end(kProgramErrors)));
}

TEST_F(Errors, FailuresOfTheSystemHaveNumbersOfTheirOwn) {
  const auto code = [](std::errc error) { return std::system_error(std::make_error_code(error)); };
  const struct {
    std::function<void()> raise;
    int number;
  } cases[] = {
      {[] { throw std::bad_alloc(); }, kNoMemory},
      {[&] { throw code(std::errc::no_such_file_or_directory); }, kNoFile},
      {[&] { throw code(std::errc::no_space_on_device); }, kDiskFull},
      {[&] { throw code(std::errc::permission_denied); }, kNoAccess},
      {[&] { throw code(std::errc::io_error); }, kDiskFailure},
      {[&] { throw code(std::errc::timed_out); }, kUnexpected},
      {[] { throw 1; }, kUnexpected},
  };
  for (const auto& c : cases) {
    guarded(session, "KopiaBazy", c.raise);
    ASSERT_FALSE(failures.failures.empty());
    EXPECT_EQ(failures.failures.back().number, c.number);
    EXPECT_EQ(failures.failures.back().kind(), QStringLiteral("Program"));
  }
}

TEST_F(Errors, GuardedTellsWhatFailedAndWhere) {
  EXPECT_TRUE(guarded(session, "A", [] {}));
  EXPECT_FALSE(guarded(session, "A", [] { return false; }));
  EXPECT_TRUE(failures.failures.empty());
  EXPECT_FALSE(guarded(session, "BaseCheck", []() -> bool { throw jet::Error(3021, {}, "DAO.Recordset"); }));
  EXPECT_FALSE(guarded(session, "BaseDefrag", [] { throw std::runtime_error("nie ma"); }));
  ASSERT_EQ(failures.failures.size(), 2u);
  EXPECT_EQ(failures.failures[0].number, 3021);
  EXPECT_EQ(failures.failures[0].kind(), QStringLiteral("DAO"));
  EXPECT_EQ(failures.failures[0].source, QStringLiteral("DAO.Recordset"));
  EXPECT_EQ(failures.failures[0].procedure, QStringLiteral("BaseCheck"));
  EXPECT_EQ(failures.failures[1].kind(), QStringLiteral("Program"));
  EXPECT_EQ(failures.failures[1].description, QStringLiteral("nie ma"));
  EXPECT_FALSE(QFile::exists(errorLogPath())) << "the log is off by default";
}

TEST_F(Errors, LogKeepsOneSectionAMinute) {
  session.settings().store(QStringLiteral("Zapisz błędy"), QStringLiteral("1"));
  const Failure first{3021, QStringLiteral("DAO.Recordset"), QStringLiteral("No current record."),
                      QStringLiteral("BaseCheck")};
  Failure second = first;
  second.number = 3022;
  reportFailure(session, first);
  reportFailure(session, second);
  const QString section = QStringLiteral("15.03.2024 10:30");
  const auto read = [&section](const char16_t* key) {
    return iniRead(errorLogPath(), section, QString::fromUtf16(key)).value_or(QStringLiteral("(brak)"));
  };
  EXPECT_EQ(read(u"Numer"), QStringLiteral("3022"));
  EXPECT_EQ(read(u"Program"), QStringLiteral("Tandeko ver. ") + programVersion().text());
  EXPECT_EQ(read(u"Źródło"), QStringLiteral("DAO.Recordset"));
  EXPECT_EQ(read(u"Obiekt"), QStringLiteral("BaseCheck"));
  EXPECT_EQ(read(u"Opis"), QStringLiteral("No current record."));
  QFile log(errorLogPath());
  ASSERT_TRUE(log.open(QIODevice::ReadOnly));
  EXPECT_EQ(log.readAll().count('['), 1);
}

TEST_F(Errors, DialogShowsTheFailureAndAsksBeforeEnding) {
  const Failure failure{3021, QStringLiteral("DAO.Recordset"), QStringLiteral("No current record."),
                        QStringLiteral("BaseCheck")};
  dlgError dialog(session, failure, QStringLiteral("Opis dla użytkownika"), nullptr);
  EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Błąd programu"));
  EXPECT_EQ(child<QLineEdit>(dialog, "txtNumer")->text(), QStringLiteral("3021"));
  EXPECT_EQ(child<QLineEdit>(dialog, "txtZrodlo")->text(), QStringLiteral("DAO.Recordset"));
  EXPECT_EQ(child<QPlainTextEdit>(dialog, "txtOpis1")->toPlainText(),
            QStringLiteral("No current record. [BaseCheck]"));

  child<QCheckBox>(dialog, "cbZapisz")->click();
  EXPECT_EQ(session.settings().stored(QStringLiteral("Zapisz błędy")), QStringLiteral("1"));

  dialog.show();
  messages.answers = {Answer::No, Answer::Yes};
  child<QPushButton>(dialog, "cmdPrzerwij")->click();
  const Message question = messages.takeOnly();
  EXPECT_EQ(
      question.text,
      QStringLiteral("Nastąpi przerwanie działania programu. Wszystkie niezapisane dane zostaną utracone. "
                     "Kontynuować?"));
  EXPECT_EQ(question.buttons, Buttons::YesNo);
  EXPECT_EQ(question.defaultButton, Answer::No);
  EXPECT_TRUE(dialog.isVisible());
  child<QPushButton>(dialog, "cmdPrzerwij")->click();
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_EQ(dialog.result(), QDialog::Rejected);
}

TEST_F(Errors, FolderOfTheDescriptions) {
  QTemporaryDir own;
  session.settings().setOwnFolder(own.path());
  writeFile(own.filePath(QStringLiteral("Errormsg.txt")), "[Program]\n5=Obok programu.\n");
  writeFile(file(QStringLiteral("Errormsg.txt")), "[Program]\n5=W pakiecie.\n");
  const Failure failure{5, QStringLiteral("Tandeko"), {}, QStringLiteral("A")};
  for (const QString& package : {QString(), folder.path()}) {
    session.settings().store(QStringLiteral("Folder pakiet"), package);
    reportFailure(session, failure);
    EXPECT_TRUE(failures.explanations.back().contains(package.isEmpty() ? QStringLiteral("Obok programu.")
                                                                        : QStringLiteral("W pakiecie.")));
  }
}

TEST_F(Errors, QuestionGoesToTheMaker) {
  EXPECT_TRUE(sendQuestion(session));
  ASSERT_EQ(mail.letters.size(), 1u);
  EXPECT_EQ(mail.letters[0].to, kSupportAddress);
  EXPECT_EQ(mail.letters[0].subject, QStringLiteral("Pytanie Tandeko wersja ") + programVersion().text());
  EXPECT_EQ(mail.letters[0].body, QStringLiteral("<Tutaj wpisz treść pytania>"));
}

TEST_F(Errors, ReportGoesByMailOrAsAnAddress) {
  const Failure failure{3021, QStringLiteral("DAO.Recordset"), QStringLiteral("No current record."),
                        QStringLiteral("BaseCheck")};
  const QString version = programVersion().text();
  EXPECT_TRUE(sendFailureReport(session, failure, QStringLiteral("opis")));
  ASSERT_EQ(mail.letters.size(), 1u);
  EXPECT_EQ(mail.letters[0].subject, QStringLiteral("Błąd programu Tandeko v.") + version);
  EXPECT_EQ(mail.letters[0].body,
            QStringLiteral("Proszę nie kasować poniższego tekstu\n-----------------------------------------\n"
                           "Numer: 3021\nŹródło: DAO.Recordset\nOpis1: No current record.\nOpis2: opis\n"
                           "(>tutaj wpisz okoliczności wystąpienia błędu<)\n"));

  session.settings().store(QStringLiteral("Bez MAPI"), QStringLiteral("1"));
  EXPECT_TRUE(sendFailureReport(session, failure, QStringLiteral("opis")));
  EXPECT_EQ(mail.letters.size(), 1u);
  ASSERT_EQ(shell.opened.size(), 1);
  const QString address = QString::fromUtf8(QByteArray::fromPercentEncoding(shell.opened[0].toUtf8()));
  EXPECT_TRUE(
      address.endsWith(QStringLiteral("?subject=Błąd programu Tandeko v.") + version +
                       QStringLiteral("&Body=(Nie kasować) :     Numer: 3021   Źródło: DAO.Recordset   "
                                      "Opis1: No current record.   Opis2: opis")))
      << address.toStdString();

  shell.result = ShellResult::NoProgram;
  EXPECT_FALSE(sendQuestion(session));
}
