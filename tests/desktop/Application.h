#pragma once

#include <QCoreApplication>
#include <QTimer>
#include <chrono>

namespace quibel::desktop {

/// Runs the event loop until the condition holds; false if it does not within a
/// minute, far beyond what any machine needs.
template <class Condition>
bool eventually(Condition holds) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  // Looks again now and then, for what holds without any event of this program.
  QTimer look;
  look.start(std::chrono::milliseconds(2));
  while (!holds()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  return true;
}

}  // namespace quibel::desktop
