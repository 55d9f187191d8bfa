#include "people/dokSWPRA.h"

#include "errors/error_reporter.h"
#include "lists/form_fields.h"
#include "lists/rst_check.h"
#include "people/dictionary_forms.h"
#include "platform/resources.h"
#include "platform/statements.h"
#include "platform/text.h"
#include "ui_dokSWPRA.h"

namespace tandeko {

namespace {

QString employeeQuery(int employee) {
  return QStringLiteral("SELECT * FROM swpra") + QStringLiteral(" WHERE indpra = ") + str(employee);
}

jet::Value numberOrNull(const NumberField& field) {
  const auto number = field.number();
  return number ? jet::Value(*number) : jet::Value();
}

std::optional<double> numberIn(const jet::Value& value) {
  return value.isNull() ? std::nullopt : std::optional(toDouble(value));
}

}  // namespace

dokSWPRA* dokSWPRA::open(Session& session, int employee, const QString& karParent) {
  dokSWPRA* form = nullptr;
  guarded(session, "dokSWPRA", [&] {
    if (!session.frame()) return;
    for (ChildForm* opened : session.frame()->forms()) {
      auto* same = qobject_cast<dokSWPRA*>(opened);
      if (!same || employee < 1 || same->recordKey() != employee) continue;
      same->bringToFront();
      form = same;
      return;
    }
    if (employee > 0 && openRows(session.database(), employeeQuery(employee))->eof()) return;
    std::unique_ptr<dokSWPRA> made(new dokSWPRA(session, employee, karParent));
    form = made.release();
    session.frame()->showForm(form);
  });
  return form;
}

dokSWPRA::dokSWPRA(Session& session, int employee, const QString& karParent)
    : RecordForm(session, QStringLiteral("dokSWPRA"), karParent),
      employee_(employee),
      ui_(std::make_unique<Ui::dokSWPRA>()) {
  setWindowIcon(icon("person"));
  ui_->setupUi(this);
  const int character = fontMetrics().averageCharWidth();
  ui_->txtEmail->setMinimumWidth(character * 64);
  ui_->txtIndpra->setMaximumWidth(character * 12);
  for (QComboBox* combo : {ui_->cmbGrupa, ui_->cmbKomorka})
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  fillCombos();
  showEmployee();
  watch(ui_->cmdZapisz, ui_->cmdAnuluj);
  connect(ui_->cmdWyslij, &QPushButton::clicked, this, [this] {
    const QString address = QStringLiteral("mailto:") + ui_->txtEmail->text().trimmed();
    if (session_.shell().openAddress(address) != ShellResult::Done)
      session_.messages().refuse(QStringLiteral("Nie można uruchomić programu poczty elektronicznej."));
  });
  const auto enableMail = [this] { ui_->cmdWyslij->setEnabled(!ui_->txtEmail->text().trimmed().isEmpty()); };
  connect(ui_->txtEmail, &QLineEdit::textChanged, this, enableMail);
  enableMail();
  setRights();
  ui_->txtNazwisko->setFocus();
}

dokSWPRA::~dokSWPRA() = default;

void dokSWPRA::fillCombos() {
  fillCombo(*ui_->cmbGrupa, session_.database(),
            QStringLiteral("SELECT Indgpc, Nazwa FROM swgpc ORDER BY Nazwa"));
  fillCombo(*ui_->cmbKomorka, session_.database(),
            QStringLiteral("SELECT Indkom, Nazwa FROM swkom ORDER BY Nazwa"));
}

void dokSWPRA::showEmployee() {
  const Loading loading(*this);
  const auto row = openRows(session_.database(), employeeQuery(employee_));
  const std::pair<QLineEdit*, const char16_t*> texts[] = {{ui_->txtNazwisko, u"Nazwisko"},
                                                          {ui_->txtImie, u"Imie"},
                                                          {ui_->txtNumpok, u"Numpok"},
                                                          {ui_->txtTelefon, u"Telefon"},
                                                          {ui_->txtEmail, u"Email"}};
  for (const auto& [line, name] : texts)
    if (const int size = row->field(name).size(); size > 0) line->setMaxLength(size);
  ui_->txtIndpra->setText(QString::number(employee_));
  ui_->cbAktywny->setChecked(true);
  for (QComboBox* combo : {ui_->cmbGrupa, ui_->cmbKomorka}) combo->setCurrentIndex(-1);
  if (!row->eof()) {
    for (const auto& [line, name] : texts) line->setText(toText(row->value(name)));
    ui_->cbAktywny->setChecked(toBool(row->value(u"Aktywny")));
    setComboKey(*ui_->cmbGrupa, toInt(row->value(u"Indgpc")));
    setComboKey(*ui_->cmbKomorka, toInt(row->value(u"Indkom")));
    ui_->txtWzrost->setNumber(numberIn(row->value(u"Wzrost")));
    ui_->txtKolnierz->setNumber(numberIn(row->value(u"Kolnierz")));
    ui_->txtObuwie->setNumber(numberIn(row->value(u"Obuwie")));
    ui_->txtUwagi->setPlainText(toText(row->value(u"Uwagi")));
  }
  setEdited(false);
  showCaption();
}

void dokSWPRA::setRights() {
  setReadOnly(session_.database().readOnly() || !session_.UserCanWrite() || session_.UserReadOnly({}, 0));
  const QColor background = session_.settings().program().readOnlyColor;
  for (QWidget* field : std::initializer_list<QWidget*>{
           ui_->txtNazwisko, ui_->txtImie, ui_->cmbGrupa, ui_->cmbKomorka, ui_->txtNumpok, ui_->txtTelefon,
           ui_->txtEmail, ui_->cbAktywny, ui_->txtWzrost, ui_->txtKolnierz, ui_->txtObuwie, ui_->txtUwagi})
    setFieldReadOnly(*field, readOnly(), background);
  setFieldReadOnly(*ui_->txtIndpra, true, background);
  ui_->cmdZapisz->setEnabled(!readOnly());
}

void dokSWPRA::showCaption() {
  setWindowTitle(employee_ > 0 ? QStringLiteral("Dane pracownika: ") + ui_->txtNazwisko->text() + u' ' +
                                     ui_->txtImie->text()
                               : QStringLiteral("Nowy pracownik"));
}

bool dokSWPRA::mayStore() {
  const auto goTo = [this](QWidget* field) {
    ui_->tabDane->setCurrentWidget(ui_->tabPracownik);
    field->setFocus();
  };
  if (ui_->txtNazwisko->text().trimmed().isEmpty()) {
    session_.messages().inform(QStringLiteral("Wprowadź nazwisko pracownika i spróbuj ponownie."));
    goTo(ui_->txtNazwisko);
    return false;
  }
  if (comboNumber(*ui_->cmbKomorka) < 1) {
    goTo(ui_->cmbKomorka);
    if (session_.messages().ask(
            QStringLiteral("Wymagane jest wprowadzenie działu firmy. Chcesz zdefiniować działy teraz?")))
      openDictionary(session_, QStringLiteral("sloSWKOM"));
    return false;
  }
  if (comboNumber(*ui_->cmbGrupa) < 1) {
    goTo(ui_->cmbGrupa);
    if (session_.messages().ask(
            QStringLiteral("Wymagane jest wprowadzenie grupy pracowników. Chcesz zdefiniować grupy teraz?")))
      openDictionary(session_, QStringLiteral("sloSWGPC"));
    return false;
  }
  return true;
}

void dokSWPRA::writeFields(jet::Recordset& row) const {
  const auto set = [&row](std::u16string_view field, const jet::Value& value) {
    row.field(field).setValue(value);
  };
  set(u"Nazwisko", fromText(ui_->txtNazwisko->text()));
  set(u"Imie", textOrNull(ui_->txtImie->text()));
  set(u"Aktywny", jet::Value(ui_->cbAktywny->isChecked()));
  set(u"Indgpc", jet::Value(int32_t{comboNumber(*ui_->cmbGrupa)}));
  set(u"Indkom", jet::Value(int32_t{comboNumber(*ui_->cmbKomorka)}));
  set(u"Numpok", textOrNull(ui_->txtNumpok->text()));
  set(u"Wzrost", numberOrNull(*ui_->txtWzrost));
  set(u"Kolnierz", numberOrNull(*ui_->txtKolnierz));
  set(u"Obuwie", numberOrNull(*ui_->txtObuwie));
  set(u"Telefon", textOrNull(ui_->txtTelefon->text()));
  set(u"Email", textOrNull(ui_->txtEmail->text()));
  set(u"Uwagi", textOrNull(ui_->txtUwagi->toPlainText()));
}

bool dokSWPRA::save() {
  return guarded(session_, "dokSWPRA.cmdZapisz", [this] {
    if (!mayStore()) return false;
    Transaction transaction(session_.workspace());
    const auto row = openRows(session_.database(), employeeQuery(employee_));
    if (employee_ < 1) {
      row->addNew();
    } else if (row->eof()) {
      session_.messages().refuse(QStringLiteral("Pracownik został w międzyczasie usunięty."));
      return false;
    } else {
      row->edit();
    }
    writeFields(*row);
    if (!RstCheck(session_.database(), *row, QStringLiteral("SWPRA"), session_.messages())) {
      row->cancelUpdate();
      return false;
    }
    row->update();
    row->setBookmark(row->lastModified());
    const int key = toInt(row->value(u"Indpra"));
    transaction.commit();
    employee_ = key;
    ui_->txtIndpra->setText(QString::number(key));
    setEdited(false);
    showCaption();
    tellViews();
    return true;
  });
}

void dokSWPRA::tellViews() {
  for (const char16_t* view : {u"karEWPAN", u"karSWPRA", u"karEWKAR"})
    session_.KarRefresh(QString::fromUtf16(view));
  Q_EMIT saved(employee_);
}

void dokSWPRA::KarRefresh() {
  guarded(session_, "dokSWPRA.KarRefresh", [this] {
    const Loading loading(*this);
    fillCombos();
  });
}

}  // namespace tandeko
