// A window of Qt Widgets with one label in it: what no program with a window goes below.
#include <QApplication>
#include <QLabel>

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  QLabel label(QStringLiteral("Quibel"));
  label.resize(780, 580);
  label.show();
  return QApplication::exec();
}
