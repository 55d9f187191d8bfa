// Every dialog of the shell can be used by keyboard alone and tells a screen reader what its fields are.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSet>
#include <QTabWidget>

#include "app/dlgParPakiet.h"
#include "database/dlgBazaRejestr.h"
#include "errors/dlgError.h"
#include "support/test_session.h"
#include "users/dlgBazaHaslo.h"
#include "users/dlgUserHaslo.h"
#include "users/dlgUserLista.h"

using namespace tandeko;

namespace {

struct Keyboard : testing::Test, TestSession {
  std::vector<std::unique_ptr<QDialog>> dialogs() {
    std::vector<std::unique_ptr<QDialog>> all;
    all.push_back(std::make_unique<dlgParPakiet>(session, nullptr));
    all.push_back(std::make_unique<dlgBazaRejestr>(session, nullptr));
    all.push_back(std::make_unique<dlgError>(session, Failure{}, QStringLiteral("opis"), nullptr));
    all.push_back(
        std::make_unique<dlgBazaHaslo>(session, dlgBazaHaslo::Mode::Open, QStringLiteral("x"), nullptr));
    all.push_back(
        std::make_unique<dlgBazaHaslo>(session, dlgBazaHaslo::Mode::NewUser, QStringLiteral("x"), nullptr));
    all.push_back(std::make_unique<dlgUserHaslo>(session, nullptr));
    all.push_back(std::make_unique<dlgUserLista>(session, nullptr));
    return all;
  }
};

bool isNamed(const QWidget& widget, const QSet<const QWidget*>& buddies) {
  const auto* button = qobject_cast<const QAbstractButton*>(&widget);
  return (button && button->text().size() > 1 && button->text() != u"...") ||
         !widget.accessibleName().isEmpty() || buddies.contains(&widget);
}

QChar accessKey(const QString& text) {
  for (qsizetype i = 0; i + 1 < text.size(); ++i) {
    if (text[i] != u'&') continue;
    if (text[i + 1] != u'&') return text[i + 1].toLower();
    ++i;
  }
  return {};
}

// The size below which a control's text is cut; none for those that scroll.
QSize neededSize(const QWidget& widget) {
  const auto* label = qobject_cast<const QLabel*>(&widget);
  if (widget.objectName().startsWith(u"qt_")) return {0, 0};
  if (label && label->wordWrap()) return {0, label->heightForWidth(label->width())};
  if (const auto* button = qobject_cast<const QPushButton*>(&widget))
    return button->fontMetrics().size(Qt::TextShowMnemonic, button->text()) + QSize(6, 4);
  if (label || qobject_cast<const QAbstractButton*>(&widget) || qobject_cast<const QComboBox*>(&widget))
    return widget.sizeHint();
  if (qobject_cast<const QLineEdit*>(&widget)) return {0, widget.sizeHint().height()};
  return {0, 0};
}

}  // namespace

TEST_F(Keyboard, EveryFieldHasANameAndTheTabReachesIt) {
  for (const auto& dialog : dialogs()) {
    QSet<const QWidget*> buddies;
    for (const QLabel* label : dialog->findChildren<QLabel*>()) buddies << label->buddy();
    QSet<const QWidget*> reached;
    for (const QWidget* next = dialog->nextInFocusChain(); next != dialog.get();
         next = next->nextInFocusChain())
      reached << next;
    for (const QWidget* widget : dialog->findChildren<QWidget*>()) {
      if (!(widget->focusPolicy() & Qt::TabFocus) || widget->objectName().startsWith(u"qt_")) continue;
      const std::string where = (dialog->objectName() + u' ' + widget->objectName()).toStdString();
      EXPECT_TRUE(reached.contains(widget)) << where;
      if (widget->inherits("QTabBar") || widget->inherits("QTabWidget")) continue;
      EXPECT_TRUE(isNamed(*widget, buddies)) << where;
    }
  }
}

TEST_F(Keyboard, NoTwoControlsOfOnePageShareAnAccessKey) {
  for (const auto& dialog : dialogs()) {
    QMap<QString, QString> taken;  // page and key, control
    const auto claim = [&](const QWidget* widget, const QString& text) {
      const QChar key = accessKey(text);
      if (key.isNull() || widget->isHidden()) return;
      const QWidget* page = widget->parentWidget();
      while (page != dialog.get() && !page->objectName().startsWith(u"pag")) page = page->parentWidget();
      for (const QString& area : {page->objectName(), dialog->objectName()}) {
        const QString previous = taken.value(area + key);
        EXPECT_TRUE(previous.isEmpty()) << dialog->objectName().toStdString() << ": " << text.toStdString()
                                        << " and " << previous.toStdString();
      }
      taken[page->objectName() + key] = text;
    };
    for (const QAbstractButton* button : dialog->findChildren<QPushButton*>()) claim(button, button->text());
    for (const QAbstractButton* button : dialog->findChildren<QAbstractButton*>())
      if (!button->inherits("QPushButton")) claim(button, button->text());
    for (const QLabel* label : dialog->findChildren<QLabel*>())
      if (label->buddy()) claim(label, label->text());
  }
}

// What is written on a control must not be cut off, nor a wrapped text lose its last line.
TEST_F(Keyboard, NoCaptionIsCutOff) {
  for (const auto& dialog : dialogs()) {
    dialog->show();
    auto* pages = dialog->findChild<QTabWidget*>();
    for (int page = 0; page < (pages ? pages->count() : 1); ++page) {
      if (pages) pages->setCurrentIndex(page);
      for (const QWidget* widget : dialog->findChildren<QWidget*>()) {
        if (!widget->isVisible()) continue;
        const std::string where = (dialog->objectName() + u' ' + widget->objectName()).toStdString();
        const QSize needed = neededSize(*widget);
        EXPECT_GE(widget->width(), needed.width()) << where;
        EXPECT_GE(widget->height(), needed.height()) << where;
      }
    }
  }
}

TEST_F(Keyboard, EnterHasItsButtonAndEscClosesEveryDialog) {
  for (const auto& dialog : dialogs()) {
    int defaults = 0;
    for (const QPushButton* button : dialog->findChildren<QPushButton*>()) defaults += button->isDefault();
    EXPECT_EQ(defaults, 1) << dialog->objectName().toStdString();
    dialog->show();
    dialog->reject();
    EXPECT_FALSE(dialog->isVisible()) << dialog->objectName().toStdString();
  }
}
