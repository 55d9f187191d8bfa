#include "register/dokEWKAR.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include "errors/error_reporter.h"
#include "lists/form_fields.h"
#include "lists/lookup_combo.h"
#include "lists/rst_check.h"
#include "people/dictionary_forms.h"
#include "platform/resources.h"
#include "platform/statements.h"
#include "platform/text.h"
#include "register/current_register.h"
#include "register/numbering.h"
#include "register/require_register.h"
#include "ui_dokEWKAR.h"

namespace tandeko {

namespace {

const QString kHolders = QStringLiteral(
    "SELECT -1, '[Kosz]' FROM dbfir UNION SELECT 0, '[Magazyn]' FROM dbfir UNION SELECT indpra, nazwisko & ' "
    "' & imie FROM "
    "swpra ORDER BY 2");

// The warehouse and the bin are rows of the holder combo by way of the company's one row.
void ensureCompany(jet::Database& database) {
  if (!database.readOnly() && openRows(database, QStringLiteral("SELECT * FROM dbfir"))->eof())
    execute(database, QStringLiteral("INSERT INTO dbfir (Nazwa) VALUES ('Nazwa firmy...') "));
}

QStringList clipboardFiles() {
  const QMimeData* data = QGuiApplication::clipboard()->mimeData();
  return data ? filesIn(*data) : QStringList();
}

}  // namespace

dokEWKAR* dokEWKAR::open(Session& session, const ItemFormRequest& request) {
  dokEWKAR* form = nullptr;
  guarded(session, "dokEWKAR", [&] {
    if (!session.frame()) return;
    for (ChildForm* opened : session.frame()->forms()) {
      auto* same = qobject_cast<dokEWKAR*>(opened);
      if (!same || request.item < 1 || same->recordKey() != request.item) continue;
      same->bringToFront();
      form = same;
      return;
    }
    if (!requireRegister(session)) return;
    const auto current = loadRegister(session.database(), session.currentRegister());
    if (!current) return;
    if (request.item > 0 && !loadItem(session.database(), request.item)) {
      session.messages().refuse(QString::fromUtf16(kItemGoneText));
      return;
    }
    std::unique_ptr<dokEWKAR> made(new dokEWKAR(session, *current, request));
    form = made.release();
    session.frame()->showForm(form);
  });
  return form;
}

dokEWKAR::dokEWKAR(Session& session, const CurrentRegister& current, const ItemFormRequest& request)
    : RecordForm(session, QStringLiteral("dokEWKAR"), request.karParent),
      register_(current),
      ui_(std::make_unique<Ui::dokEWKAR>()) {
  setWindowIcon(icon("item"));
  ui_->setupUi(this);
  const int character = fontMetrics().averageCharWidth();
  ui_->txtIndewi->setMaximumWidth(character * 10);
  for (QComboBox* combo : {ui_->cmbPracownik, ui_->cmbParent, ui_->cmbGrupa, ui_->cmbStan, ui_->cmbIndjed}) {
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    makeSearchable(*combo);
  }
  for (QComboBox* combo : {ui_->cmbPracownik, ui_->cmbParent}) combo->setMinimumWidth(character * 30);
  ui_->txtCenazak->setMoney();
  hideFields();
  fillCombos();
  limitTexts();
  if (request.item > 0) {
    showItem(loadItem(session_.database(), request.item).value());
  } else {
    ItemData proposed = proposeItem(session_.database(), register_.key, session_.clock().today());
    proposed.holder = request.holder;
    proposed.parent = register_.isList() ? 0 : request.parent;
    showItem(proposed);
    proposeNumber();
    setEdited(false);
  }
  connectFields();
  setRights();
  ui_->txtNazwa->setFocus();
}

dokEWKAR::~dokEWKAR() = default;

void dokEWKAR::fillCombos() {
  jet::Database& database = session_.database();
  ensureCompany(database);
  fillLookup(*ui_->cmbPracownik, database, kHolders);
  fillCombo(*ui_->cmbGrupa, database, QStringLiteral("SELECT Indgew, Nazwa FROM swgew ORDER BY Nazwa"));
  fillCombo(*ui_->cmbStan, database, QStringLiteral("SELECT Indsew, Nazwa FROM swsew ORDER BY Nazwa"));
  fillCombo(*ui_->cmbIndjed, database, QStringLiteral("SELECT Indjed, Nazwa FROM swjed ORDER BY Nazwa"));
}

// What the register does not show of its items is no field of theirs either.
void dokEWKAR::hideFields() {
  const std::pair<QWidget*, bool> fields[] = {
      {ui_->txtNumewi, register_.showNumber},
      {ui_->txtNumkat, register_.showCatalogNumber},
      {ui_->txtNumser, register_.showSerialNumber},
      {ui_->txtIlosc, register_.showQuantity},
      {ui_->txtCenazak, register_.showPrice},
      {ui_->txtWartosc, register_.showQuantity && register_.showPrice},
  };
  for (const auto& [field, shown] : fields) {
    if (shown) continue;
    field->hide();
    for (auto* label : findChildren<QLabel*>())
      if (label->buddy() == field) label->hide();
  }
}

// No text longer than its field can be typed.
void dokEWKAR::limitTexts() {
  const auto row = openRows(session_.database(), QStringLiteral("SELECT * FROM ewkar WHERE indewi = 0"));
  const std::pair<QLineEdit*, const char16_t*> fields[] = {{ui_->txtNazwa, u"nazwa"},
                                                           {ui_->txtNumewi, u"numewi"},
                                                           {ui_->txtNumser, u"numser"},
                                                           {ui_->txtNumkat, u"Numkat"}};
  for (const auto& [line, name] : fields)
    if (const int size = row->field(name).size(); size > 0) line->setMaxLength(size);
  ui_->lstZrodlo->setNameSize(linkNameSize(session_.database()));
}

void dokEWKAR::showItem(const ItemData& item) {
  const Loading loading(*this);
  item_ = item;
  ui_->txtIndewi->setText(item.id > 0 ? QString::number(item.id) : QString());
  ui_->txtNazwa->setText(item.name);
  setComboKey(*ui_->cmbPracownik, item.holder);
  fillSets();
  setComboKey(*ui_->cmbParent, item.parent > 0 ? QVariant(item.parent) : QVariant());
  setComboKey(*ui_->cmbGrupa, item.group);
  setComboKey(*ui_->cmbStan, item.state);
  setComboKey(*ui_->cmbIndjed, item.unit);
  ui_->txtIlosc->setNumber(item.quantity);
  ui_->txtCenazak->setNumber(item.price);
  ui_->txtNumewi->setText(item.number);
  ui_->txtNumser->setText(item.serialNumber);
  ui_->txtNumkat->setText(item.catalogNumber);
  ui_->txtData->setDate(item.issued);
  ui_->txtDatazak->setDate(item.purchased);
  ui_->txtUwagi->setPlainText(item.notes);
  ui_->cbSrodek->setChecked(item.fixedAsset);
  const QString folder = session_.settings().program().folderDocuments;
  ui_->lstZrodlo->setLinks(
      item.id > 0 ? DocLinksLoad(session_.database(), linkAddress(register_.key, item.id)) : QList<DocLink>{},
      folder);
  setEdited(false);
  showWorth();
  showCaption();
}

ItemData dokEWKAR::entered() const {
  ItemData item = item_;
  item.name = ui_->txtNazwa->text();
  item.holder = comboNumber(*ui_->cmbPracownik);
  item.parent = comboNumber(*ui_->cmbParent);
  item.group = comboNumber(*ui_->cmbGrupa);
  item.state = comboNumber(*ui_->cmbStan);
  item.unit = comboKey(*ui_->cmbIndjed).toString();
  item.quantity = ui_->txtIlosc->number();
  item.price = ui_->txtCenazak->number();
  item.number = ui_->txtNumewi->text();
  item.serialNumber = ui_->txtNumser->text();
  item.catalogNumber = ui_->txtNumkat->text();
  item.issued = ui_->txtData->date();
  item.purchased = ui_->txtDatazak->date();
  item.notes = ui_->txtUwagi->toPlainText();
  item.fixedAsset = ui_->cbSrodek->isChecked();
  return item;
}

void dokEWKAR::connectFields() {
  watch(ui_->cmdZapisz, ui_->cmdAnuluj);
  connect(ui_->lstZrodlo, &LinkList::edited, this, [this] { setEdited(true); });
  connect(ui_->lstZrodlo, &LinkList::openRequested, this, &dokEWKAR::openLink);
  connect(ui_->lstZrodlo, &LinkList::commandRequested, this, &dokEWKAR::run);
  connect(ui_->lstZrodlo, &LinkList::filesDropped, this, &dokEWKAR::addLinks);
  connect(ui_->lstZrodlo, &LinkList::renameRefused, this, [this](const QString& name) {
    session_.messages().inform(QStringLiteral("Dokument o nazwie: ") + name +
                               QStringLiteral(" jest już na liście. Zmień nazwę i spróbuj ponownie."));
  });
  connect(ui_->lstZrodlo, &QTreeWidget::currentItemChanged, this, [this] {
    ui_->cmdZrodloPodglad->setEnabled(ui_->lstZrodlo->currentItem() != nullptr);
    Q_EMIT commandsChanged();
  });
  ui_->cmdZrodloPodglad->setEnabled(false);
  ui_->lstZrodlo->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(ui_->lstZrodlo, &QWidget::customContextMenuRequested, this, [this](const QPoint& at) {
    session_.frame()->popupMenu(ContextMenu::DocumentLinks, ui_->lstZrodlo->viewport()->mapToGlobal(at));
  });

  connect(ui_->cmbPracownik, &QComboBox::currentIndexChanged, this, [this] {
    if (!loading()) guarded(session_, "dokEWKAR.cmbPracownik", [this] { fillSets(); });
  });
  connect(ui_->txtDatazak, &DateField::dateChanged, this, &dokEWKAR::proposeNumber);
  connect(ui_->cmbGrupa, &QComboBox::currentIndexChanged, this, &dokEWKAR::proposeNumber);
  connect(ui_->txtIlosc, &QLineEdit::textChanged, this, &dokEWKAR::showWorth);
  connect(ui_->txtCenazak, &QLineEdit::textChanged, this, &dokEWKAR::showWorth);
  connect(ui_->cmdZrodloDodaj, &QPushButton::clicked, this, [this] { run(Command::ZrodloNowy); });
  connect(ui_->cmdZrodloPodglad, &QPushButton::clicked, this, &dokEWKAR::openLink);
}

void dokEWKAR::setRights() {
  const bool may = !session_.database().readOnly() && session_.UserCanWrite() &&
                   !session_.UserReadOnly(QStringLiteral("swrew"), register_.key);
  setReadOnly(!may);
  const QColor background = session_.settings().program().readOnlyColor;
  for (QWidget* field : std::initializer_list<QWidget*>{
           ui_->txtNazwa, ui_->cmbPracownik, ui_->cmbGrupa, ui_->cmbStan, ui_->txtIlosc, ui_->cmbIndjed,
           ui_->txtCenazak, ui_->txtNumser, ui_->txtNumkat, ui_->txtData, ui_->txtDatazak, ui_->txtUwagi,
           ui_->cbSrodek})
    setFieldReadOnly(*field, !may, background);
  setFieldReadOnly(*ui_->cmbParent, !may || register_.isList(), background);
  setFieldReadOnly(*ui_->txtNumewi, !may || (register_.numberAutomatic && !register_.numberEditable),
                   background);
  setFieldReadOnly(*ui_->txtIndewi, true, background);
  setFieldReadOnly(*ui_->txtWartosc, true, background);
  ui_->lstZrodlo->setReadOnly(!may);
  ui_->cmdZrodloDodaj->setEnabled(may);
  ui_->cmdZapisz->setEnabled(may);
}

void dokEWKAR::fillSets() {
  fillLookup(*ui_->cmbParent, session_.database(),
             QStringLiteral("SELECT indewi, nazwa FROM ewkar WHERE indpra = ") +
                 str(comboNumber(*ui_->cmbPracownik)) + QStringLiteral(" And indewi <> ") + str(item_.id),
             true);
}

void dokEWKAR::proposeNumber() {
  if (loading() || item_.id > 0) return;
  guarded(session_, "NumNext", [this] {
    ui_->txtNumewi->setText(QStringLiteral("?"));  // stays when the period has no numbers left
    ui_->txtNumewi->setText(
        NumNext(session_.database(), register_.key, ui_->txtDatazak->date(), comboNumber(*ui_->cmbGrupa)));
  });
}

void dokEWKAR::showWorth() {
  const auto quantity = ui_->txtIlosc->number(), price = ui_->txtCenazak->number();
  ui_->txtWartosc->setText(quantity && price ? QLocale().toString(*quantity * *price, 'f', 2) : QString());
}

void dokEWKAR::showCaption() {
  setWindowTitle(item_.id > 0 ? QStringLiteral("Przedmiot: ") + item_.name
                              : QStringLiteral("Nowy przedmiot"));
}

bool dokEWKAR::askForDictionary(const QString& question, const QString& form) {
  if (session_.messages().ask(question)) openDictionary(session_, form);
  return false;
}

bool dokEWKAR::mayStore(const ItemData& item) {
  const ChildForm* list = session_.frame() ? session_.frame()->findForm(QStringLiteral("karEWKAR")) : nullptr;
  const auto refuse = [this](const QString& text, QWidget* field) {
    session_.messages().inform(text);
    if (field) field->setFocus();
    return false;
  };
  if (list && list->isOn(Command::WszystkieRejestry))
    return refuse(QStringLiteral(
                      "Włączona jest opcja przeglądania danych z wszystkich rejestrów. Wyłącz opcję, aby móc "
                      "zapisywać dane."),
                  nullptr);
  switch (checkItem(item)) {
    case ItemFault::NoName:
      return refuse(QStringLiteral("Wprowadź nazwę przedmiotu i spróbuj ponownie."), ui_->txtNazwa);
    case ItemFault::NameWithBackslash:
      return refuse(
          QStringLiteral("Nazwa przedmiotu nie może zawierać znaku \\. Popraw nazwę i spróbuj ponownie."),
          ui_->txtNazwa);
    case ItemFault::NoGroup:
      return askForDictionary(
          QStringLiteral(
              "Wymagane jest wprowadzenie grupy przedmiotów. Chcesz zdefiniować grupy przedmiotów teraz?"),
          QStringLiteral("sloSWGEW"));
    case ItemFault::NoState:
      return askForDictionary(
          QStringLiteral(
              "Wymagane jest wprowadzenie stanu przedmiotu. Chcesz zdefiniować stany przedmiotów teraz?"),
          QStringLiteral("sloSWSEW"));
    case ItemFault::NoUnit:
      return askForDictionary(
          QStringLiteral("Wymagane jest wprowadzenie jednostki miary. Chcesz zdefiniować jednostki teraz?"),
          QStringLiteral("sloSWJED"));
    case ItemFault::None:
      break;
  }
  const auto other = itemWithNumber(session_.database(), item.id, item.number);
  return !other || session_.messages().ask(
                       QStringLiteral("Wprowadzony numer ewidencyjny posiada już przedmiot: ") + *other +
                       QStringLiteral(". Chcesz zapisać przedmiot z tym samym numerem ewidencyjnym?"));
}

bool dokEWKAR::save() {
  return guarded(session_, "dokEWKAR.cmdZapisz", [this] {
    ItemData item = entered();
    if (!mayStore(item)) return false;
    const ItemStore store{session_.workspace(), session_.database(), register_.key};
    const auto complete = [this](const jet::Recordset& row) {
      return RstCheck(session_.database(), row, QStringLiteral("EWKAR"), session_.messages());
    };
    switch (saveItem(store, item, session_.CurrentUserId(), ui_->lstZrodlo->links(), complete)) {
      case SaveResult::Incomplete:
        return false;
      case SaveResult::WrongSet:
        session_.messages().inform(
            QStringLiteral("Element nie może należeć do wskazanego zestawu. Popraw dane i spróbuj ponownie"));
        return false;
      case SaveResult::Gone:
        session_.messages().refuse(QString::fromUtf16(kItemGoneText));
        return false;
      case SaveResult::Saved:
        break;
    }
    item_ = item;
    setEdited(false);
    ui_->txtIndewi->setText(QString::number(item.id));
    showCaption();
    tellViews();
    return true;
  });
}

void dokEWKAR::tellViews() {
  session_.KarRefresh(QStringLiteral("karEWKAR"));
  session_.KarRefresh(QStringLiteral("karEWPAN"));
  Q_EMIT saved(item_.id);
}

void dokEWKAR::KarRefresh() {
  guarded(session_, "dokEWKAR.KarRefresh", [this] {
    const Loading loading(*this);
    fillCombos();
    fillSets();
  });
}

bool dokEWKAR::supports(Command command) const {
  switch (command) {
    case Command::ZrodloNowy:
      return !readOnly();
    case Command::ZrodloWklej:
      return !readOnly() && !clipboardFiles().isEmpty();
    case Command::ZrodloUsun:
    case Command::ZrodloNazwa:
    case Command::ZrodloPlik:
      return !readOnly() && ui_->lstZrodlo->currentItem();
    default:
      return false;
  }
}

void dokEWKAR::run(Command command) {
  if (!supports(command)) return;
  switch (command) {
    case Command::ZrodloNowy:
      if (const auto link = DocLinkAdd(session_)) ui_->lstZrodlo->add(*link);
      return;
    case Command::ZrodloPlik:
      if (const auto link = DocLinkAdd(session_)) ui_->lstZrodlo->replaceSelected(*link);
      return;
    case Command::ZrodloWklej:
      return addLinks(clipboardFiles());
    case Command::ZrodloUsun:
      return ui_->lstZrodlo->removeSelected();
    case Command::ZrodloNazwa:
      return ui_->lstZrodlo->renameSelected();
    default:
      return;
  }
}

void dokEWKAR::addLinks(const QStringList& files) {
  for (const QString& file : files)
    if (const auto link = linkTo(session_, file)) ui_->lstZrodlo->add(*link);
}

void dokEWKAR::openLink() {
  const QString path = ui_->lstZrodlo->selectedPath();
  if (!path.isEmpty()) DocLinkOpen(session_, path);
}

}  // namespace tandeko
