#include "tests/support/TestHome.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  QCoreApplication application(argc, argv);
  // A test that forgets to make a home of its own must still never reach the user's.
  const quillo::TestHome home;
  return RUN_ALL_TESTS();
}
