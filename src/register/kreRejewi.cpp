#include "register/kreRejewi.h"

#include "errors/error_reporter.h"
#include "register/dlgParRejEwi.h"
#include "register/kreRejewi_pages.h"

namespace tandeko {

kreRejewi::kreRejewi(Session& session, QWidget* parent) : QWizard(parent), session_(session) {
  setObjectName(QStringLiteral("kreRejewi"));
  setWindowTitle(QStringLiteral("Kreator rejestrów"));
  setWizardStyle(ModernStyle);
  setOption(NoBackButtonOnStartPage);
  setButtonText(BackButton, QStringLiteral("< &Wstecz"));
  setButtonText(NextButton, QStringLiteral("&Dalej >"));
  setButtonText(CancelButton, QStringLiteral("Anuluj"));
  addRegisterPages(*this);
  connect(this, &QWizard::currentIdChanged, this, [this](int page) {
    if (page != SummaryPage) return;
    setButtonText(FinishButton, operation_ == Operation::Create   ? QStringLiteral("Utwórz")
                                : operation_ == Operation::Change ? QStringLiteral("Zapisz")
                                                                  : QStringLiteral("Usuń"));
  });
}

bool kreRejewi::choose(Operation operation, int key) {
  operation_ = operation;
  if (operation == Operation::Create) {
    data_ = {};
    return true;
  }
  const auto stored = key > 0 ? loadRegisterData(session_.database(), key) : std::nullopt;
  if (stored) data_ = *stored;
  return stored.has_value();
}

int kreRejewi::nextId() const {
  if (currentId() == SummaryPage) return -1;
  return currentId() == OperationPage && operation_ == Operation::Delete ? SummaryPage : currentId() + 1;
}

bool kreRejewi::create() {
  bool dropSets = false;
  if (operation_ == Operation::Change && data_.kind == u"L" &&
      registerHasSets(session_.database(), data_.key)) {
    if (!session_.messages().ask(QStringLiteral("Kartoteka posiada przedmioty tworzące struktury danych. "
                                                "Zmiana rodzaju rejestru spowoduje utratę "
                                                "definicji struktur. Chcesz zmienić rodzaj rejestru?")))
      return false;
    dropSets = true;
  }
  if (!saveRegister(session_.workspace(), session_.database(), data_, dropSets)) {
    session_.messages().refuse(QString::fromUtf16(kRegisterGoneText));
    return false;
  }
  if (operation_ == Operation::Create)
    session_.messages().inform(
        QStringLiteral("Rejestr o nazwie: ") + data_.name +
        QStringLiteral(
            " został poprawnie utworzony. Aby zmienić parametry rejestru wybierz z menu Narzędzia polecenie "
            "Parametry rejestru... Aby usunąć rejestr wybierz ponownie kreator rejestrów."));
  return true;
}

bool kreRejewi::remove() {
  if (registerHasItems(session_.database(), data_.key) &&
      !session_.messages().ask(
          QStringLiteral("Rejestr zawiera przedmioty. Usunięcie rejestru spowoduje utratę przedmiotów "
                         "należących do usuwanego "
                         "rejestru. Operacja jest nieodwracalna. Usunąć rejestr wraz z przedmiotami?.")))
    return false;
  deleteRegister(session_.workspace(), session_.database(), data_.key);
  session_.messages().inform(QStringLiteral("Rejestr o nazwie: ") + data_.name +
                             QStringLiteral(" został poprawnie usunięty. "));
  return true;
}

void kreRejewi::accept() {
  const bool done = guarded(session_, "kreRejewi",
                            [this] { return operation_ == Operation::Delete ? remove() : create(); });
  if (!done) return;
  if (operation_ == Operation::Create && session_.currentRegister() < 1)
    session_.setCurrentRegister(data_.key);
  if (session_.frame()) session_.frame()->reloadRegisters();
  for (const char16_t* view : {u"karEWPAN", u"karEWKAR", u"dlgParRejEwi"})
    session_.KarRefresh(QString::fromUtf16(view));
  QWizard::accept();
}

void runRegisterWizard(Session& session) {
  if (!session.databaseOpen()) return;
  if (session.database().readOnly() || !session.UserCanWrite()) {
    session.messages().refuse(QStringLiteral("Nie masz uprawnień do zmiany rejestrów."));
    return;
  }
  guarded(session, "kreRejewi", [&] {
    kreRejewi wizard(session, session.frame() ? session.frame()->window() : nullptr);
    wizard.exec();
    // A message and the wizard close one right behind the other, which loses some window managers the focus.
    if (session.frame() && session.frame()->window()) session.frame()->window()->activateWindow();
  });
}

}  // namespace tandeko
