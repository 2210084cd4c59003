// The widget tests share one QApplication, made before any test runs.

#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  QApplication app(argc, argv);
  QApplication::setStyle(QStringLiteral("Fusion"));  // the same look on every desktop
  return RUN_ALL_TESTS();
}
