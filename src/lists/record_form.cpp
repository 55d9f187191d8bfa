#include "lists/record_form.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTabWidget>

#include "lists/form_fields.h"

namespace tandeko {

bool mayLeave(Session& session, const std::function<bool()>& save) {
  switch (session.messages().show({QStringLiteral("Dane zostały zmienione. Zapisać zmiany?"),
                                   {},
                                   Icon::Question,
                                   Buttons::YesNoCancel,
                                   Answer::Yes})) {
    case Answer::Yes:
      return save();
    case Answer::No:
      return true;
    default:
      return false;
  }
}

RecordForm::RecordForm(Session& session, const QString& name, const QString& karParent)
    : session_(session), karParent_(karParent) {
  setObjectName(name);
}

void RecordForm::watch(QPushButton* cmdZapisz, QPushButton* cmdAnuluj) {
  cmdZapisz_ = cmdZapisz;
  const auto changed = [this] {
    if (!loading()) setEdited(true);
  };
  for (auto* field : findChildren<QLineEdit*>())
    if (!field->isReadOnly()) connect(field, &QLineEdit::textChanged, this, changed);
  for (auto* field : findChildren<QComboBox*>())
    connect(field, &QComboBox::currentIndexChanged, this, changed);
  for (auto* field : findChildren<QPlainTextEdit*>())
    connect(field, &QPlainTextEdit::textChanged, this, changed);
  for (auto* field : findChildren<QCheckBox*>()) connect(field, &QCheckBox::toggled, this, changed);
  connect(cmdZapisz, &QPushButton::clicked, this, [this] {
    const bool isNew = recordKey() < 1;
    if (saveSound() && !(isNew && session_.settings().program().keepNewFormOpen)) close();
  });
  connect(cmdAnuluj, &QPushButton::clicked, this, &QWidget::close);
}

void RecordForm::setEdited(bool edited) { edited_ = edited; }

bool RecordForm::saveSound() { return fieldsSound(*this, session_.messages()) && save(); }

void RecordForm::closeEvent(QCloseEvent* event) {
  if (edited_ && !readOnly()) {
    if (!mayLeave(session_, [this] { return saveSound(); })) return event->ignore();
    edited_ = false;
  }
  ChildForm::closeEvent(event);
}

void RecordForm::keyPressEvent(QKeyEvent* event) {
  auto* tabs = findChild<QTabWidget*>();
  // Ctrl+Tab belongs to the windows of the frame.
  if (tabs && event->modifiers() == Qt::ControlModifier &&
      (event->key() == Qt::Key_PageDown || event->key() == Qt::Key_PageUp)) {
    const int step = event->key() == Qt::Key_PageDown ? 1 : tabs->count() - 1;
    return tabs->setCurrentIndex((tabs->currentIndex() + step) % tabs->count());
  }
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (event->key() == Qt::Key_Escape)
    close();
  else if (enter && cmdZapisz_ && cmdZapisz_->isEnabled())
    cmdZapisz_->click();
  else
    ChildForm::keyPressEvent(event);
}

}  // namespace tandeko
