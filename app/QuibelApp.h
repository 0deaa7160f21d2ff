#pragma once

#include <QApplication>

namespace quibel {

/// The application: one window for as long as it runs.
class QuibelApp : public QApplication {
  Q_OBJECT

 public:
  /// `argc` must outlive the application.
  QuibelApp(int& argc, char** argv);

  /// Opens the window and returns the exit status once it is closed. The
  /// standard platform is set by now.
  int run();

  bool notify(QObject* receiver, QEvent* event) override;
};

}  // namespace quibel
