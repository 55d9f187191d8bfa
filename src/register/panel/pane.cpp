#include "register/panel/pane.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace tandeko {

Pane::Pane(const QString& name, const QString& labelName, const QString& caption, QWidget* control)
    : label_(new QLabel(caption, this)), info_(new QLabel(this)), control_(control) {
  setObjectName(name);
  label_->setObjectName(labelName);
  label_->setBuddy(control);
  QFont bold = label_->font();
  bold.setBold(true);
  label_->setFont(bold);
  QPalette colors = info_->palette();
  colors.setColor(QPalette::WindowText, colors.color(QPalette::PlaceholderText));
  info_->setPalette(colors);
  info_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  info_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  auto* head = new QHBoxLayout;
  head->setContentsMargins(4, 3, 4, 3);
  head->addWidget(label_);
  head->addWidget(info_, 1);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addLayout(head);
  column->addWidget(control, 1);
}

void Pane::setInfo(const QString& info) {
  info_->setText(info);
  info_->setToolTip(info);
}

}  // namespace tandeko
