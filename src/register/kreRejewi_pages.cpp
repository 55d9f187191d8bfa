#include "register/kreRejewi_pages.h"

#include <QButtonGroup>
#include <QFormLayout>
#include <QVBoxLayout>

#include "errors/error_reporter.h"
#include "register/dlgParRejEwi.h"
#include "register/kreRejewi.h"
#include "register/register_boxes.h"

namespace tandeko {

namespace {

using Operation = kreRejewi::Operation;

class RegisterPage : public QWizardPage {
 public:
  RegisterPage(kreRejewi& wizard, const char16_t* title) : wizard_(wizard) {
    setTitle(QString::fromUtf16(title));
  }

 protected:
  void inform(const char16_t* text) { wizard_.session().messages().inform(QString::fromUtf16(text)); }
  kreRejewi& wizard_;
};

class OperationChoice : public RegisterPage {
 public:
  explicit OperationChoice(kreRejewi& wizard)
      : RegisterPage(wizard, u"Co chcesz zrobić?"), operations_(new QButtonGroup(this)) {
    auto* column = new QVBoxLayout(this);
    const std::pair<Operation, const char16_t*> choices[] = {{Operation::Create, u"&Utworzyć nowy rejestr"},
                                                             {Operation::Change, u"&Zmienić rejestr"},
                                                             {Operation::Delete, u"U&sunąć rejestr"}};
    for (const auto& [operation, caption] : choices) {
      auto* button = new QRadioButton(QString::fromUtf16(caption), this);
      operations_->addButton(button, static_cast<int>(operation));
      column->addWidget(button);
    }
    operations_->button(0)->setChecked(true);
    registers_ = new QComboBox(this);  // behind the choices for the keyboard too
    registers_->setObjectName(QStringLiteral("cmbRejestr"));
    registers_->setAccessibleName(QStringLiteral("Rejestr"));
    column->addWidget(registers_);
    column->addStretch();
    registers_->setEnabled(false);
    connect(operations_, &QButtonGroup::idClicked, this, [this](int id) { registers_->setEnabled(id != 0); });
  }

  void initializePage() override {
    guarded(wizard_.session(), "kreRejewi", [this] {
      fillCombo(*registers_, wizard_.session().database(),
                QStringLiteral("SELECT Indrew, Nazwa FROM swrew ORDER BY Nazwa"));
      registers_->setCurrentIndex(-1);
    });
  }

  bool validatePage() override {
    return guarded(wizard_.session(), "kreRejewi", [this] {
      const auto operation = static_cast<Operation>(operations_->checkedId());
      if (wizard_.choose(operation, comboNumber(*registers_))) return true;
      inform(u"Wybierz rejestr i spróbuj ponownie.");
      return false;
    });
  }

 private:
  QButtonGroup* operations_;
  QComboBox* registers_ = nullptr;
};

class NameEntry : public RegisterPage {
 public:
  explicit NameEntry(kreRejewi& wizard)
      : RegisterPage(wizard, u"Nazwa rejestru"), txtNazwa_(new QLineEdit(this)) {
    txtNazwa_->setObjectName(QStringLiteral("txtNazwa"));
    txtNazwa_->setMaxLength(registerNameSize(wizard.session().database()));
    auto* form = new QFormLayout(this);
    form->addRow(QStringLiteral("&Nazwa rejestru"), txtNazwa_);
  }
  void initializePage() override { txtNazwa_->setText(wizard_.data().name); }
  bool validatePage() override {
    return guarded(wizard_.session(), "kreRejewi", [this] {
      wizard_.data().name = txtNazwa_->text();
      return checkRegisterName(wizard_.session(), txtNazwa_->text(), wizard_.data().key);
    });
  }

 private:
  QLineEdit* txtNazwa_;
};

// Shows boxes of fields and takes them over when the page is left.
class Boxes : public RegisterPage {
 public:
  Boxes(kreRejewi& wizard, const char16_t* title, std::vector<RegisterBox*> boxes)
      : RegisterPage(wizard, title), boxes_(std::move(boxes)) {
    auto* column = new QVBoxLayout(this);
    for (RegisterBox* box : boxes_) column->addWidget(box);
    column->addStretch();
  }
  void initializePage() override {
    for (RegisterBox* box : boxes_) box->show(wizard_.data());
  }
  bool validatePage() override {
    if (!fieldsSound(*this, wizard_.session().messages())) return false;
    for (const RegisterBox* box : boxes_) box->read(wizard_.data());
    return true;
  }

 private:
  std::vector<RegisterBox*> boxes_;
};

class TemplateEntry : public Boxes {
 public:
  explicit TemplateEntry(kreRejewi& wizard)
      : Boxes(wizard, u"Numer ewidencyjny", {new TemplateBox(wizard.session().clock().today())}) {}

  bool validatePage() override {
    Boxes::validatePage();
    switch (checkPeriod(wizard_.data())) {
      case NumberingFault::NoNumber:
        inform(kNoNumberText);
        return false;
      case NumberingFault::MonthlyWithoutMonth:
        inform(
            u"Jeżeli ustawiłeś numerację miesięczną to jeden ze składników numeru musi zawierać miesiąc. "
            u"Zmień postać numeru "
            u"lub ciągłość numeracji i spróbuj ponownie.");
        return false;
      case NumberingFault::PerGroupWithoutGroup:
        inform(kPerGroupText);
        return false;
      case NumberingFault::None:
        break;
    }
    return templateHasYear(wizard_.data()) ||
           !wizard_.session().messages().ask(
               QStringLiteral("Numer nie zawiera roku. Jeżeli chcesz przechowywać w bazie dane z wielu lat "
                              "wymagane jest, aby w "
                              "numerze dokumentu zawarty był rok. Chcesz zmienić postać numeru?"));
  }
};

QString yesNo(bool yes) { return yes ? QStringLiteral("tak") : QStringLiteral("nie"); }

class Summary : public RegisterPage {
 public:
  explicit Summary(kreRejewi& wizard) : RegisterPage(wizard, u"Podsumowanie"), text_(new QLabel(this)) {
    text_->setTextFormat(Qt::PlainText);
    text_->setWordWrap(true);
    auto* column = new QVBoxLayout(this);
    column->addWidget(text_);
    column->addStretch();
  }
  void initializePage() override {
    const RegisterData& record = wizard_.data();
    if (wizard_.operation() == Operation::Delete) {
      text_->setText(QStringLiteral("Zostanie usunięty rejestr: ") + record.name);
      return;
    }
    const QString period = record.monthly    ? QStringLiteral("miesiąca")
                           : record.perGroup ? QStringLiteral("grupy")
                                             : QStringLiteral("roku");
    text_->setText((QStringList{
                        QStringLiteral("Nazwa: ") + record.name,
                        QStringLiteral("Rodzaj: ") +
                            (record.kind == u"L" ? QStringLiteral("lista") : QStringLiteral("struktura")),
                        QStringLiteral("Postać numeru: ") + NumTemplateBuild(record.numbering),
                        sampleNumbers(record, wizard_.session().clock().today()),
                        QStringLiteral("Ciągłość numeracji w ramach jednego: ") + period,
                        QStringLiteral("Numery proponowane automatycznie: ") + yesNo(record.numberAutomatic),
                        QStringLiteral("Zmiana numeru przez użytkownika: ") + yesNo(record.numberEditable),
                    })
                       .join(u'\n'));
  }

 private:
  QLabel* text_;
};

}  // namespace

void addRegisterPages(kreRejewi& wizard) {
  wizard.setPage(kreRejewi::OperationPage, new OperationChoice(wizard));
  wizard.setPage(kreRejewi::NamePage, new NameEntry(wizard));
  wizard.setPage(kreRejewi::KindPage,
                 new Boxes(wizard, u"Rodzaj rejestru i nazwy przedmiotów", {new KindBox}));
  wizard.setPage(kreRejewi::PeriodPage, new Boxes(wizard, u"Numeracja", {new PeriodBox, new ProposalBox}));
  wizard.setPage(kreRejewi::TemplatePage, new TemplateEntry(wizard));
  wizard.setPage(kreRejewi::StartPage, new Boxes(wizard, u"Wartości proponowane w oknie przedmiotów",
                                                 {new StartBox(wizard.session().database())}));
  wizard.setPage(kreRejewi::SummaryPage, new Summary(wizard));
}

}  // namespace tandeko
