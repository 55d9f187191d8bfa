#include "register/dlgParRejEwi.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>

#include "errors/error_reporter.h"
#include "lists/record_form.h"
#include "platform/resources.h"

namespace tandeko {

const char16_t* const kNoNumberText =
    u"Przynajmniej jeden ze składników numeru ewidencyjnego powinien zawierać Numer. Zmień sposób numeracji "
    u"i spróbuj "
    u"ponownie.";
const char16_t* const kPerGroupText =
    u"Jeżeli ustawiona jest numeracja w ramach grupy wymagane jest aby w numerze dokumentu zawarty był numer "
    u"grupy. Zmień "
    u"sposób numeracji i spróbuj ponownie.";

const char16_t* const kRegisterGoneText = u"Rejestr został w międzyczasie usunięty.";

bool checkRegisterName(Session& session, const QString& name, int own) {
  if (name.trimmed().isEmpty()) {
    session.messages().inform(QStringLiteral("Wprowadź nazwę rejestru i spróbuj ponownie."));
    return false;
  }
  const int same = registerNamed(session.database(), name);
  if (same < 1 || same == own) return true;
  session.messages().inform(QStringLiteral("Rejestr o nazwie: ") + name +
                            QStringLiteral(" istnieje w bazie. Zmień nazwę rejestru i spróbuj ponownie."));
  return false;
}

dlgParRejEwi::dlgParRejEwi(Session& session) : session_(session) {
  setObjectName(QStringLiteral("dlgParRejEwi"));
  setWindowTitle(QStringLiteral("Parametry rejestru"));
  setWindowIcon(icon("settings"));
  connect(&session_, &Session::registerChanged, this, &dlgParRejEwi::KarRefresh);
  guarded(session_, "dlgParRejEwi", [this] {
    build();
    showRegister();
  });
}

void dlgParRejEwi::build() {
  txtNazwa_ = new QLineEdit(this);
  txtNazwa_->setObjectName(QStringLiteral("txtNazwa"));
  txtNazwa_->setMaxLength(registerNameSize(session_.database()));
  auto* label = new QLabel(QStringLiteral("Nazwa rejestru"), this);
  label->setBuddy(txtNazwa_);
  auto* kind = new KindBox(this);
  auto* start = new StartBox(session_.database(), this);
  auto* form = new TemplateBox(session_.clock().today(), this);
  auto* period = new PeriodBox(this);
  auto* proposal = new ProposalBox(this);
  boxes_ = {kind, start, form, period, proposal};
  const auto button = [this](const char16_t* name, const char16_t* caption) {
    auto* made = new QPushButton(QString::fromUtf16(caption), this);
    made->setObjectName(QString::fromUtf16(name));
    return made;
  };
  cmdZapisz_ = button(u"cmdZapisz", u"Za&pisz");
  cmdZastosuj_ = button(u"cmdZastosuj", u"&Zastosuj");
  cmdZamknij_ = button(u"cmdZamknij", u"Anuluj");

  auto* grid = new QGridLayout(this);
  auto* head = new QHBoxLayout;
  head->addWidget(label);
  head->addWidget(txtNazwa_, 1);
  grid->addLayout(head, 0, 0, 1, 2);
  grid->addWidget(kind, 1, 0);
  grid->addWidget(start, 1, 1);
  grid->addWidget(form, 2, 0, 2, 1);
  grid->addWidget(period, 2, 1);
  grid->addWidget(proposal, 3, 1);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  for (QPushButton* each : {cmdZapisz_, cmdZastosuj_, cmdZamknij_}) buttons->addWidget(each);
  grid->addLayout(buttons, 5, 0, 1, 2);
  grid->setRowStretch(4, 1);
  grid->setColumnStretch(0, 3);
  grid->setColumnStretch(1, 2);

  connect(txtNazwa_, &QLineEdit::textEdited, this, [this] { setEdited(true); });
  for (RegisterBox* box : boxes_) connect(box, &RegisterBox::changed, this, [this] { setEdited(true); });
  connect(cmdZapisz_, &QPushButton::clicked, this, [this] {
    if (save()) close();
  });
  connect(cmdZastosuj_, &QPushButton::clicked, this, &dlgParRejEwi::save);
  connect(cmdZamknij_, &QPushButton::clicked, this, [this] {
    setEdited(false);
    close();
  });
}

void dlgParRejEwi::showRegister() {
  data_ = loadRegisterData(session_.database(), session_.currentRegister()).value_or(RegisterData{});
  setReadOnly(data_.key < 1 || session_.database().readOnly() || !session_.UserCanWrite() ||
              session_.UserReadOnly(QStringLiteral("swrew"), data_.key));
  txtNazwa_->setText(data_.name);
  for (RegisterBox* box : boxes_) {
    box->show(data_);
    box->setEnabled(!readOnly());
  }
  txtNazwa_->setReadOnly(readOnly());
  setWindowTitle(QStringLiteral("Parametry rejestru: ") + data_.name);
  setEdited(false);
}

void dlgParRejEwi::setEdited(bool edited) {
  edited_ = edited;
  cmdZapisz_->setEnabled(!readOnly());
  cmdZastosuj_->setEnabled(!readOnly() && edited);
}

bool dlgParRejEwi::mayStore(RegisterData& record, bool& dropSets) {
  MessageService& messages = session_.messages();
  if (!checkRegisterName(session_, record.name, record.key)) return false;
  if (!templateHasNumber(record)) {
    messages.inform(QString::fromUtf16(kNoNumberText));
    return false;
  }
  if (record.kind == u"L" && registerHasSets(session_.database(), record.key)) {
    switch (messages.show(
        {QStringLiteral("Kartoteka posiada przedmioty tworzące struktury danych. Zmiana rodzaju rejestru "
                        "spowoduje utratę definicji struktur. Chcesz zmienić rodzaj rejestru?"),
         {},
         Icon::Question,
         Buttons::YesNoCancel,
         Answer::No})) {
      case Answer::Yes:
        dropSets = true;
        break;
      case Answer::No:
        record.kind = QStringLiteral("S");
        boxes_.front()->show(record);
        break;
      default:
        return false;
    }
  }
  switch (checkPeriod(record)) {
    case NumberingFault::MonthlyWithoutMonth:
      messages.inform(
          QStringLiteral("Jeżeli ustawiona jest miesięczna numeracja dokumentów wymagane jest aby w numerze "
                         "dokumentu zawarty "
                         "był numer miesiąca. Zmień sposób numeracji i spróbuj ponownie."));
      return false;
    case NumberingFault::PerGroupWithoutGroup:
      messages.inform(QString::fromUtf16(kPerGroupText));
      return false;
    default:
      return true;
  }
}

bool dlgParRejEwi::save() {
  return guarded(session_, "dlgParRejEwi.cmdZapisz", [this] {
    RegisterData record = data_;
    record.name = txtNazwa_->text();
    if (!fieldsSound(*this, session_.messages())) return false;
    for (const RegisterBox* box : boxes_) box->read(record);
    bool dropSets = false;
    if (!mayStore(record, dropSets)) return false;
    if (!saveRegister(session_.workspace(), session_.database(), record, dropSets)) {
      session_.messages().refuse(QString::fromUtf16(kRegisterGoneText));
      return false;
    }
    if (session_.frame()) session_.frame()->reloadRegisters();
    showRegister();
    for (const char16_t* view : {u"karEWPAN", u"karEWKAR"}) session_.KarRefresh(QString::fromUtf16(view));
    return true;
  });
}

void dlgParRejEwi::KarRefresh() {
  if (edited_ && data_.key == session_.currentRegister()) return;
  guarded(session_, "dlgParRejEwi.KarRefresh", [this] { showRegister(); });
}

void dlgParRejEwi::closeEvent(QCloseEvent* event) {
  if (edited_ && !readOnly() && !mayLeave(session_, [this] { return save(); })) return event->ignore();
  ChildForm::closeEvent(event);
}

void dlgParRejEwi::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (event->key() == Qt::Key_Escape)
    cmdZamknij_->click();
  else if (enter && cmdZapisz_->isEnabled())
    cmdZapisz_->click();
  else
    ChildForm::keyPressEvent(event);
}

}  // namespace tandeko
