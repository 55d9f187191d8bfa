#include <QHBoxLayout>
#include <QPushButton>

#include "lists/form_fields.h"
#include "lists/kar_form.h"

// The bands of a list: its quick filters and buttons.
namespace tandeko {

namespace {

const QString kOrder = QStringLiteral("Order ");
const QString kBandWidths = QStringLiteral("Order Width");
const QString kStandardOrder = QStringLiteral("1");

}  // namespace

void KarForm::makeBands(const QString& name) {
  bands_ = new BandContainer(this);
  bands_->setObjectName(name);
  page_->addWidget(bands_);
}

void KarForm::addBand(const QuickBand& band, QWidget* field) {
  field->setObjectName(QString::fromUtf16(band.field));
  auto* made = new Band(QString::fromUtf16(band.band), band.width);
  made->setField(QString::fromUtf16(band.label), QString::fromUtf16(band.caption), field);
  bands_->addBand(made);
}

QLineEdit* KarForm::addTextBand(const QuickBand& band) {
  auto* field = new QLineEdit(this);
  addQuickText(field);
  addBand(band, field);
  return field;
}

QComboBox* KarForm::addComboBand(const QuickBand& band, const QString& placeholder) {
  auto* combo = new QComboBox(this);
  makeSearchable(*combo);
  combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  combo->setMinimumContentsLength(8);
  combo->lineEdit()->setPlaceholderText(placeholder);
  addQuickCombo(combo);
  addBand(band, combo);
  return combo;
}

void KarForm::addButtonBand() {
  auto* row = new QHBoxLayout;
  const auto add = [this, row](const char16_t* name, const char16_t* caption, auto clicked) {
    auto* button = new QPushButton(QString::fromUtf16(caption), this);
    button->setObjectName(QString::fromUtf16(name));
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, clicked);
    row->addWidget(button);
    return button;
  };
  const auto addCommand = [this, &add](const char16_t* name, const char16_t* caption, Command command) {
    QPushButton* button = add(name, caption, [this, command] { run(command); });
    button->setEnabled(false);
    connect(this, &ChildForm::commandsChanged, button,
            [this, button, command] { button->setEnabled(supports(command)); });
  };
  addCommand(u"cmdNowy", u"&Nowy", Command::Nowy);
  addCommand(u"cmdPopraw", u"&Popraw", Command::Popraw);
  addCommand(u"cmdUsun", u"&Usuń", Command::Usun);
  add(u"cmdWybierz", u"Wybierz", [this] { KarRefresh(); });
  add(u"cmdZamknij", u"Z&amknij", [this] { closeWindow(); });
  auto* band = new Band(QStringLiteral("pboxButtons"), 0);
  band->setContent(row);
  bands_->addBand(band);
}

void KarForm::readBands() {
  if (!bands_) return;
  bands_->setOrder(session_.registry().read(layoutGroup(), kOrder, kStandardOrder));
  bands_->setWidths(session_.registry().read(layoutGroup(), kBandWidths));
}

void KarForm::storeBands(bool save) {
  if (!bands_) return;
  Registry& registry = session_.registry();
  if (save) {
    registry.write(layoutGroup(), kOrder, bands_->order());
    registry.write(layoutGroup(), kBandWidths, bands_->widths());
    return;
  }
  registry.removeValue(layoutGroup(), kOrder);
  registry.removeValue(layoutGroup(), kBandWidths);
  readBands();
}

}  // namespace tandeko
