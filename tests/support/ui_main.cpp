#include "tests/support/TestHome.h"

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  // A test that forgets to make a home of its own must still never reach the user's.
  const quillo::TestHome home;
  return RUN_ALL_TESTS();
}
