#include <QApplication>

#include <gtest/gtest.h>

// The widgets under test need an application, and no screen.
int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication app(argc, argv);
  return RUN_ALL_TESTS();
}
