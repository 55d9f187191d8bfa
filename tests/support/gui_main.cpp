// Runs the tests of a group that has windows, in the language the program is used in.

#include <gtest/gtest.h>

#include <QApplication>
#include <QLocale>
#include <QStandardPaths>

#include "platform/resources.h"

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QStandardPaths::setTestModeEnabled(true);
  testing::InitGoogleTest(&argc, argv);
  QLocale::setDefault(QLocale(QLocale::Polish, QLocale::Poland));
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Tandeko"));
  tandeko::useResources();
  return RUN_ALL_TESTS();
}
