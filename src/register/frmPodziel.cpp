#include "register/frmPodziel.h"

#include "errors/error_reporter.h"
#include "lists/form_fields.h"
#include "platform/statements.h"
#include "platform/text.h"
#include "register/numbering.h"
#include "ui_frmPodziel.h"

namespace tandeko {

frmPodziel::frmPodziel(Session& session, const ItemData& item, int registerKey, QWidget* parent)
    : QDialog(parent),
      session_(session),
      item_(item),
      registerKey_(registerKey),
      ui_(std::make_unique<Ui::frmPodziel>()) {
  ui_->setupUi(this);
  const QColor background = session.settings().program().readOnlyColor;
  for (QLineEdit* field :
       {ui_->txtNazwa, ui_->txtIlosc, ui_->txtIndjed, ui_->txtNumewi, ui_->txtNumser, ui_->txtIndewi})
    setFieldReadOnly(*field, true, background);
  ui_->txtIndewi->setMaximumWidth(fontMetrics().averageCharWidth() * 10);
  ui_->txtNazwa->setMinimumWidth(fontMetrics().averageCharWidth() * 50);
  ui_->txtIlosc->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  ui_->txtIndewi->setText(QString::number(item.id));
  ui_->txtNazwa->setText(item.name);
  ui_->txtIndjed->setText(item.unit);
  ui_->txtNumewi->setText(item.number);
  ui_->txtNumser->setText(item.serialNumber);
  guarded(session, "frmPodziel", [&] {
    const auto row = openRows(session.database(), QStringLiteral("SELECT * FROM ewkar WHERE indewi = 0"));
    ui_->txtNumewi2->setMaxLength(row->field(u"numewi").size());
    ui_->txtNumser2->setMaxLength(row->field(u"numser").size());
  });
  guarded(session, "NumNext", [&] {
    const QString proposed = NumNext(session.database(), registerKey, item.purchased, item.group);
    if (!proposed.startsWith(u'?')) ui_->txtNumewi2->setText(proposed);
  });
  showQuantities();
  connect(ui_->txtIlosc2, &QLineEdit::textChanged, this, &frmPodziel::showQuantities);
  connect(ui_->cmdZapisz, &QPushButton::clicked, this, &frmPodziel::save);
  connect(ui_->cmdAnuluj, &QPushButton::clicked, this, &QDialog::reject);
  ui_->txtIlosc2->setFocus();
}

frmPodziel::~frmPodziel() = default;

void frmPodziel::showQuantities() {
  const double stored = item_.quantity.value_or(0), taken = ui_->txtIlosc2->number().value_or(0);
  ui_->txtIlosc->setText(toText(jet::Value(stored - taken)));
  ui_->labStan->setText(taken != 0 ? QStringLiteral("Stan po podziale") : QStringLiteral("Stan"));
  ui_->cmdZapisz->setEnabled(taken > 0 && taken < stored);
}

void frmPodziel::save() {
  const bool done = guarded(session_, "frmPodziel.cmdZapisz", [this] {
    const ItemStore store{session_.workspace(), session_.database(), registerKey_};
    newItem_ = splitItem(store, item_.id, ui_->txtIlosc2->number().value_or(0), ui_->txtNumewi2->text(),
                         ui_->txtNumser2->text());
    if (newItem_ > 0) return true;
    const auto now = loadItem(session_.database(), item_.id);
    if (!now) {
      session_.messages().refuse(QString::fromUtf16(kItemGoneText));
      return true;
    }
    item_ = *now;
    showQuantities();
    session_.messages().refuse(QStringLiteral(
        "Ilość przedmiotu została w międzyczasie zmieniona. Popraw ilość i spróbuj ponownie."));
    return false;
  });
  if (done) newItem_ > 0 ? accept() : reject();
}

}  // namespace tandeko
