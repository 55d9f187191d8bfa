#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include "app/mdiMenu.h"
#include "support/test_session.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

TEST(AccessKeysTest, TheFormWithTheFocusGoesBeforeTheMenus) {
  TestSession tested;
  mdiMenu window(tested.session);
  auto* form = new ChildForm;
  form->setObjectName(u"karTEST"_s);
  auto* list = new QLineEdit(form);
  auto* button = new QPushButton(u"&Nowy"_s, form);
  auto* label = new QLabel(u"&Pokój"_s, form);
  auto* room = new QLineEdit(form);
  label->setBuddy(room);
  auto* layout = new QVBoxLayout(form);
  for (QWidget* widget : {static_cast<QWidget*>(list), static_cast<QWidget*>(button),
                          static_cast<QWidget*>(label), static_cast<QWidget*>(room)})
    layout->addWidget(widget);
  int clicks = 0;
  QObject::connect(button, &QPushButton::clicked, [&clicks] { ++clicks; });
  window.show();
  window.showForm(form);
  window.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));

  for (int press = 1; press <= 3; ++press) {
    list->setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_N, Qt::AltModifier);
    EXPECT_EQ(clicks, press) << "every time, though the menu Narzędzia has this key too";
    EXPECT_EQ(QApplication::focusWidget(), list);
  }
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_P, Qt::AltModifier);
  EXPECT_EQ(QApplication::focusWidget(), room);
  button->setEnabled(false);
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_N, Qt::AltModifier);
  EXPECT_EQ(clicks, 3);
  EXPECT_EQ(window.menuBar()->activeAction(), window.findChild<QMenu*>(u"mnuParametry"_s)->menuAction())
      << "a button that does nothing leaves the key to the menu";
}

}  // namespace
}  // namespace tandeko
