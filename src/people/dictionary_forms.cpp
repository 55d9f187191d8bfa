#include "people/dictionary_forms.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>
#include <utility>

#include "errors/error_reporter.h"
#include "lists/form_fields.h"
#include "lists/rst_check.h"
#include "platform/resources.h"
#include "platform/statements.h"
#include "platform/text.h"

namespace tandeko {

namespace {

const QString kNewEntry = QStringLiteral("Nowy wpis");
const QString kProperties = QStringLiteral("Właściwości");
constexpr int kKey = Qt::UserRole;

// Numbers sort as numbers.
class Entry : public QTreeWidgetItem {
 public:
  using QTreeWidgetItem::QTreeWidgetItem;
  bool operator<(const QTreeWidgetItem& other) const override {
    const int column = treeWidget() ? treeWidget()->sortColumn() : 0;
    if (column == 0 && data(0, kKey).typeId() == QMetaType::Int)
      return data(0, kKey).toInt() < other.data(0, kKey).toInt();
    return QString::localeAwareCompare(text(column), other.text(column)) < 0;
  }
};

}  // namespace

const QList<DictionaryKind>& dictionaryKinds() {
  const auto text = [](const char16_t* literal) { return QString::fromUtf16(literal); };
  static const QList<DictionaryKind> kinds = {
      {text(u"sloSWGPC"), text(u"Grupy pracowników"), text(u"swgpc"), text(u"Indgpc"), text(u"Numer grupy"),
       text(u"Nazwa grupy pracowników")},
      {text(u"sloSWKOM"), text(u"Działy firmy (komórki ogranizacyjne)"), text(u"swkom"), text(u"Indkom"),
       text(u"Numer"), text(u"Nazwa działu firmy"), false, true},
      {text(u"sloSWJED"), text(u"Jednostki miary"), text(u"swjed"), text(u"Indjed"),
       text(u"Symbol jednostki"), text(u"Nazwa jednostki miary"), true},
      {text(u"sloSWGEW"), text(u"Grupy przedmiotów"), text(u"swgew"), text(u"Indgew"), text(u"Numer grupy"),
       text(u"Nazwa grupy przedmiotów")},
      {text(u"sloSWSEW"), text(u"Stany przedmiotów"), text(u"swsew"), text(u"Indsew"), text(u"Numer grupy"),
       text(u"Nazwa stanu elementu wyposażenia")},
  };
  return kinds;
}

DictionaryForm::DictionaryForm(Session& session, const DictionaryKind& kind)
    : session_(session), kind_(kind) {
  setObjectName(kind_.form);
  setWindowTitle(kind_.caption);
  setWindowIcon(icon("dictionary"));
  build();
  guarded(session_, "DictionaryForm", [this] {
    setReadOnly(session_.database().readOnly() || !session_.UserCanWrite() || session_.UserReadOnly({}, 0));
    const auto row = openRows(session_.database(), QStringLiteral("SELECT * FROM ") + kind_.table);
    if (kind_.typedKey) txtKey_->setMaxLength(row->field(toU16(kind_.keyField)).size());
    txtNazwa_->setMaxLength(row->field(u"Nazwa").size());
    if (txtMail_ && row->field(u"Email").size() > 0) txtMail_->setMaxLength(row->field(u"Email").size());
    fillList({});
  });
  for (QLineEdit* field : {txtKey_, txtNazwa_, txtMail_})
    if (field)
      setFieldReadOnly(*field, readOnly() || (field == txtKey_ && !kind_.typedKey),
                       session_.settings().program().readOnlyColor);
  enableButtons();
}

void DictionaryForm::build() {
  QFont font = this->font();
  font.setPointSize(session_.settings().program().dictionaryFontSize);
  list_ = new QTreeWidget(this);
  list_->setObjectName(QStringLiteral("lst") + kind_.stem());
  list_->setAccessibleName(kind_.caption);
  list_->setFont(font);
  list_->setHeaderLabels(
      {kind_.typedKey ? QStringLiteral("Symbol") : QStringLiteral("Numer"), QStringLiteral("Nazwa")});
  list_->setRootIsDecorated(false);
  list_->setUniformRowHeights(true);
  list_->setAllColumnsShowFocus(true);
  list_->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
  list_->setSortingEnabled(true);
  list_->sortByColumn(1, Qt::AscendingOrder);
  connect(list_, &QTreeWidget::currentItemChanged, this, &DictionaryForm::select);

  fraWlas_ = new QGroupBox(kProperties, this);
  fraWlas_->setObjectName(QStringLiteral("fraWlas"));
  fraWlas_->setLayout(buildFields());

  const auto button = [this](const char16_t* name, const char16_t* caption,
                             void (DictionaryForm::*clicked)()) {
    auto* made = new QPushButton(QString::fromUtf16(caption), this);
    made->setObjectName(QString::fromUtf16(name));
    connect(made, &QPushButton::clicked, this, clicked);
    return made;
  };
  cmdNowy_ = button(u"cmdNowy", u"&Nowy", &DictionaryForm::newEntry);
  cmdUsun_ = button(u"cmdUsun", u"&Usuń", &DictionaryForm::remove);
  cmdZapisz_ = button(u"cmdZapisz", u"&Zapisz", &DictionaryForm::save);
  cmdAnuluj_ = button(u"cmdAnuluj", u"Anuluj", &DictionaryForm::cancelEntry);
  cmdZamknij_ = new QPushButton(QStringLiteral("Z&amknij"), this);
  cmdZamknij_->setObjectName(QStringLiteral("cmdZamknij"));
  connect(cmdZamknij_, &QPushButton::clicked, this, &QWidget::close);

  auto* ofEntry = new QHBoxLayout;
  ofEntry->addStretch();
  ofEntry->addWidget(cmdZapisz_);
  ofEntry->addWidget(cmdAnuluj_);
  auto* ofForm = new QHBoxLayout;
  ofForm->addWidget(cmdNowy_);
  ofForm->addWidget(cmdUsun_);
  ofForm->addStretch();
  ofForm->addWidget(cmdZamknij_);
  auto* right = new QVBoxLayout;
  right->addWidget(fraWlas_);
  right->addLayout(ofEntry);
  right->addStretch();
  right->addLayout(ofForm);
  auto* whole = new QHBoxLayout(this);
  whole->addWidget(list_, 1);
  whole->addLayout(right, 1);
  list_->setMinimumSize(fontMetrics().averageCharWidth() * 45, fontMetrics().height() * 20);
}

QLayout* DictionaryForm::buildFields() {
  auto* fields = new QGridLayout;
  const auto add = [&](int row, const QString& caption, const QString& name) {
    auto* field = new QLineEdit(fraWlas_);
    field->setObjectName(name);
    auto* label = new QLabel(caption, fraWlas_);
    label->setBuddy(field);
    fields->addWidget(label, row, 0);
    fields->addWidget(field, row + 1, 0, 1, row == 0 ? 1 : 2);
    connect(field, &QLineEdit::textEdited, this, [this] { setEdited(true); });
    return field;
  };
  txtKey_ = add(0, kind_.keyLabel, QStringLiteral("txt") + kind_.keyField);
  if (!kind_.typedKey)
    fields->addWidget(new QLabel(QStringLiteral("(Nadawany automatycznie)"), fraWlas_), 1, 1);
  txtNazwa_ = add(2, kind_.nameLabel, QStringLiteral("txtNazwa"));
  if (kind_.email)
    txtMail_ = add(4, QStringLiteral("Adres elektroniczny (E-Mail)"), QStringLiteral("txtMail"));
  return fields;
}

bool DictionaryForm::isNew() const { return fraWlas_->title() == kNewEntry; }

QVariant DictionaryForm::selectedKey() const {
  return list_->currentItem() ? list_->currentItem()->data(0, kKey) : QVariant();
}

QString DictionaryForm::entryQuery(const QVariant& key) const {
  const QString from = QStringLiteral("SELECT * FROM ") + kind_.table;
  if (kind_.typedKey)
    return from + QStringLiteral(" WHERE indjed = '") + quoted(key.toString()) + QStringLiteral("' ");
  return from + QStringLiteral(" WHERE ") + kind_.keyField + QStringLiteral(" = ") + str(key.toInt());
}

void DictionaryForm::fillList(const QVariant& select) {
  const auto rows = openRows(session_.database(), QStringLiteral("SELECT ") + kind_.keyField +
                                                      QStringLiteral(", Nazwa FROM ") + kind_.table +
                                                      QStringLiteral(" ORDER BY Nazwa"));
  filling_ = true;
  list_->setSortingEnabled(false);
  list_->clear();
  for (; !rows->eof(); rows->moveNext()) {
    const jet::Value value = rows->field(size_t{0}).value();
    const QVariant key = kind_.typedKey ? QVariant(toText(value)) : QVariant(toInt(value));
    auto* entry = new Entry(list_);
    entry->setText(0, key.toString());
    entry->setText(1, toText(rows->field(size_t{1}).value()));
    entry->setData(0, kKey, key);
  }
  list_->setSortingEnabled(true);
  markInList(select);
  if (!list_->currentItem() && list_->topLevelItemCount() > 0) list_->setCurrentItem(list_->topLevelItem(0));
  filling_ = false;
  showEntry();
}

// Makes the entry with that key the list's current one, or none.
void DictionaryForm::markInList(const QVariant& key) {
  const bool before = std::exchange(filling_, true);
  QTreeWidgetItem* found = nullptr;
  for (int row = 0; row < list_->topLevelItemCount() && key.isValid(); ++row)
    if (list_->topLevelItem(row)->data(0, kKey) == key) found = list_->topLevelItem(row);
  list_->setCurrentItem(found);
  if (found) list_->scrollToItem(found);
  filling_ = before;
}

void DictionaryForm::showEntry() {
  guarded(session_, "DictionaryForm.showEntry", [this] {
    fraWlas_->setTitle(kProperties);
    shown_ = selectedKey();
    QString key, name, mail;
    if (shown_.isValid()) {
      const auto row = openRows(session_.database(), entryQuery(shown_));
      if (!row->eof()) {
        key = shown_.toString();
        name = toText(row->value(u"Nazwa"));
        if (kind_.email) mail = toText(row->value(u"Email"));
      }
    }
    txtKey_->setText(key);
    txtNazwa_->setText(name);
    if (txtMail_) txtMail_->setText(mail);
    setEdited(false);
  });
}

void DictionaryForm::select(QTreeWidgetItem* current) {
  if (filling_) return;
  const QVariant wanted = current ? current->data(0, kKey) : QVariant();
  const bool changes = edited_;
  if (!settleChanges()) return markInList(isNew() ? QVariant() : shown_);  // its fields stay on the screen
  guarded(session_, "DictionaryForm.select", [&] {
    if (changes)
      fillList(wanted);
    else
      showEntry();
  });
}

// Offers to save what was changed. False when saving was asked for and refused.
bool DictionaryForm::settleChanges() {
  if (!edited_ || readOnly()) return true;
  if (session_.messages().ask(QStringLiteral("Dane zostały zmienione. Zapisać zmiany?"), {}, Answer::Yes))
    return store();
  setEdited(false);
  return true;
}

void DictionaryForm::newEntry() {
  const bool changes = edited_;
  if (!settleChanges()) return;
  if (changes) guarded(session_, "DictionaryForm.cmdNowy", [this] { fillList(shown_); });
  fraWlas_->setTitle(kNewEntry);
  markInList({});
  for (QLineEdit* field : {txtKey_, txtNazwa_, txtMail_})
    if (field) field->clear();
  setEdited(false);
  (kind_.typedKey ? txtKey_ : txtNazwa_)->setFocus();
}

void DictionaryForm::cancelEntry() {
  markInList(shown_);
  showEntry();
}

void DictionaryForm::save() {
  if (!store()) return;
  guarded(session_, "DictionaryForm.save", [this] { fillList(shown_); });
}

// Writes the entry in the fields; it is the one shown then.
bool DictionaryForm::store() {
  return guarded(session_, "DictionaryForm.cmdZapisz", [this] {
    const bool adding = isNew();
    const auto row = openRows(session_.database(), entryQuery(adding ? QVariant() : shown_));
    if (adding)
      row->addNew();
    else if (row->eof())
      return false;
    else
      row->edit();
    if (kind_.typedKey) row->field(u"Indjed").setValue(fromText(txtKey_->text()));
    row->field(u"nazwa").setValue(fromText(txtNazwa_->text()));
    if (txtMail_) row->field(u"Email").setValue(textOrNull(txtMail_->text()));
    if (!RstCheck(session_.database(), *row, kind_.stem(), session_.messages())) {
      row->cancelUpdate();
      return false;
    }
    row->update();
    row->setBookmark(row->lastModified());
    const jet::Value key = row->value(toU16(kind_.keyField));
    shown_ = kind_.typedKey ? QVariant(toText(key)) : QVariant(toInt(key));
    fraWlas_->setTitle(kProperties);
    setEdited(false);
    tellForms();
    return true;
  });
}

void DictionaryForm::remove() {
  if (!selectedKey().isValid() || isNew()) return;
  guarded(session_, "DictionaryForm.cmdUsun", [this] {
    const auto row = openRows(session_.database(), entryQuery(selectedKey()));
    if (!row->eof()) row->remove();
    const QTreeWidgetItem* next = list_->itemBelow(list_->currentItem());
    if (!next) next = list_->itemAbove(list_->currentItem());
    fillList(next ? next->data(0, kKey) : QVariant());
    tellForms();
  });
}

void DictionaryForm::setEdited(bool edited) {
  edited_ = edited;
  enableButtons();
}

void DictionaryForm::enableButtons() {
  const bool may = !readOnly();
  cmdNowy_->setEnabled(may);
  cmdUsun_->setEnabled(may && !isNew() && selectedKey().isValid());
  cmdZapisz_->setEnabled(may && (isNew() || selectedKey().isValid()));
  cmdAnuluj_->setEnabled(may && (edited_ || isNew()));
  // Not by the list, which is filled anew after a save: a field that is disabled for a moment loses the
  // focus.
  const bool shown = isNew() || shown_.isValid();
  for (QLineEdit* field : {txtKey_, txtNazwa_, txtMail_})
    if (field) field->setEnabled(shown);
}

// Lists and combos show names of this dictionary.
void DictionaryForm::tellForms() {
  if (!session_.frame()) return;
  for (ChildForm* form : session_.frame()->forms())
    if (form != this) form->KarRefresh();
}

void DictionaryForm::KarRefresh() {
  if (edited_ || isNew()) return;
  guarded(session_, "DictionaryForm.KarRefresh", [this] { fillList(selectedKey()); });
}

void DictionaryForm::closeEvent(QCloseEvent* event) {
  if (!settleChanges()) return event->ignore();
  ChildForm::closeEvent(event);
}

void DictionaryForm::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (enter && cmdZapisz_->isEnabled() && edited_)
    cmdZapisz_->click();
  else if (event->key() == Qt::Key_Escape && cmdAnuluj_->isEnabled())
    cmdAnuluj_->click();
  else if (event->key() == Qt::Key_Escape)
    close();
  else if (event->key() == Qt::Key_Insert && cmdNowy_->isEnabled())
    cmdNowy_->click();
  else
    ChildForm::keyPressEvent(event);
}

void openDictionary(Session& session, const QString& form) {
  if (!session.frame() || !session.databaseOpen() || session.frame()->activateForm(form)) return;
  for (const DictionaryKind& kind : dictionaryKinds())
    if (kind.form == form) session.frame()->showForm(new DictionaryForm(session, kind));
}

}  // namespace tandeko
