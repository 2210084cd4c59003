// The viewer tests share one QApplication. Their settings (recent files, geometry) go to
// a folder of their own, never the user's.

#include <gtest/gtest.h>

#include <QApplication>
#include <QTemporaryDir>

#include <cstdlib>

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  QTemporaryDir config;
  setenv("XDG_CONFIG_HOME", config.path().toLocal8Bit().constData(), 1);
  QApplication app(argc, argv);
  QApplication::setStyle(QStringLiteral("Fusion"));
  QApplication::setOrganizationName(QStringLiteral("OrvaneTests"));
  QApplication::setApplicationName(QStringLiteral("orvane-viewer-tests"));
  return RUN_ALL_TESTS();
}
