#include "errors/error_files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QStandardPaths>

#include "platform/ini_file.h"
#include "session/names.h"

namespace tandeko {

namespace {

constexpr qsizetype kLongestDescription = 4000;

QString withoutTrailingBlanks(QString text) {
  while (text.endsWith(u' ')) text.chop(1);
  return text;
}

QString advice() {
  return QStringLiteral("\nOkoliczności wystąpienia błędu prosimy przesłać pocztą elektroniczną na adres: ") +
         kSupportAddress + QStringLiteral(". Do poczty załącz plik dziennika błędów: Error.log.");
}

}  // namespace

QString describeFailure(const QString& folder, const QString& kind, int number) {
  const QString path = QDir::toNativeSeparators(folder + QStringLiteral("/Errormsg.txt"));
  if (!QFile::exists(path))
    return QStringLiteral("Brak dostępu do pliku opisów błędów: ") + path +
           QStringLiteral(" - sprawdź czy we wskazanym folderze znaduje się plik Errormsg.txt.") + advice();
  const QString found = iniRead(path, kind, QString::number(number)).value_or(QString());
  const QString description = withoutTrailingBlanks(found.left(kLongestDescription));
  const QString prefix = kind == u"DAO" ? QStringLiteral("Błąd dostępu lub przetwarzania danych. ")
                                        : QStringLiteral("Błąd programu. ");
  return prefix + description + advice();
}

bool logFailure(const QString& path, const Failure& failure, const QDateTime& moment) {
  QDir().mkpath(QFileInfo(path).absolutePath());
  const QLocale locale;
  const QString section = locale.toString(moment.date(), QLocale::ShortFormat) + u' ' +
                          locale.toString(moment.time(), QLocale::ShortFormat);
  const auto put = [&](const QString& key, const QString& value) {
    return iniWrite(path, section, key, value);
  };
  return put(QStringLiteral("Program"), kProgramName + QStringLiteral(" ver. ") + programVersion().text()) &&
         put(QStringLiteral("Źródło"), failure.source) &&
         put(QStringLiteral("Numer"), QString::number(failure.number)) &&
         put(QStringLiteral("Obiekt"), failure.procedure) && put(QStringLiteral("Opis"), failure.description);
}

QString errorLogPath() {
  return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
         QStringLiteral("/Tandeko/Error.log");
}

}  // namespace tandeko
