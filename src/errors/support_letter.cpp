#include "errors/support_letter.h"

#include <QFile>

#include "errors/error_files.h"
#include "session/names.h"

namespace tandeko {

bool sendToSupport(Session& session, Letter letter, const QString& shortBody) {
  letter.to = kSupportAddress;
  const bool withoutMapi = session.settings().stored(QStringLiteral("Bez MAPI"), QStringLiteral("0")) == u"1";
  if (!withoutMapi && session.mail().compose(letter) == ShellResult::Done) return true;
  letter.body = shortBody;
  return session.shell().openAddress(mailAddress(letter)) == ShellResult::Done;
}

bool sendFailureReport(Session& session, const Failure& failure, const QString& explanation) {
  Letter letter;
  letter.subject =
      QStringLiteral("Błąd programu ") + kProgramName + QStringLiteral(" v.") + programVersion().text();
  letter.body = QStringLiteral(
                    "Proszę nie kasować poniższego tekstu\n"
                    "-----------------------------------------\n") +
                QStringLiteral("Numer: ") + QString::number(failure.number) + QStringLiteral("\nŹródło: ") +
                failure.source + QStringLiteral("\nOpis1: ") + failure.description +
                QStringLiteral("\nOpis2: ") + explanation +
                QStringLiteral("\n(>tutaj wpisz okoliczności wystąpienia błędu<)\n");
  if (QFile::exists(errorLogPath())) letter.attachments << errorLogPath();
  const QString shortBody = QStringLiteral("(Nie kasować) :     Numer: ") + QString::number(failure.number) +
                            QStringLiteral("   Źródło: ") + failure.source + QStringLiteral("   Opis1: ") +
                            failure.description + QStringLiteral("   Opis2: ") + explanation;
  return sendToSupport(session, letter, shortBody);
}

bool sendQuestion(Session& session) {
  Letter letter;
  letter.subject =
      QStringLiteral("Pytanie ") + kProgramName + QStringLiteral(" wersja ") + programVersion().text();
  letter.body = QStringLiteral("<Tutaj wpisz treść pytania>");
  return sendToSupport(session, letter, letter.body);
}

}  // namespace tandeko
