#include "app/form_look.h"

#include <QAbstractItemView>

namespace tandeko {

namespace {

// Only read-only fields have a palette of their own in that colour.
void recolour(QWidget& field, const QColor& before, const QColor& now) {
  QPalette colors = field.palette();
  if (!field.testAttribute(Qt::WA_SetPalette) || colors.color(QPalette::Base) != before) return;
  colors.setColor(QPalette::Base, now);
  colors.setColor(QPalette::Text, now.lightness() > 127 ? Qt::black : Qt::white);
  field.setPalette(colors);
}

}  // namespace

void changeLook(ChildForm& form, const ProgramSettings& before, const ProgramSettings& now) {
  if (before.readOnlyColor != now.readOnlyColor)
    for (QWidget* field : form.findChildren<QWidget*>())
      recolour(*field, before.readOnlyColor, now.readOnlyColor);
  if (!form.formName().startsWith(u"slo")) return;
  for (auto* list : form.findChildren<QAbstractItemView*>()) {
    QFont font = list->font();
    font.setPointSize(now.dictionaryFontSize);
    list->setFont(font);
  }
}

}  // namespace tandeko
