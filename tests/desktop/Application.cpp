#include "tests/desktop/Application.h"

#include <QApplication>
#include <memory>

#include <gtest/gtest.h>

namespace quibel::desktop {
namespace {

/// The one application object that queues, timers and dialogs need.
class Application final : public testing::Environment {
 public:
  void SetUp() override {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    application_ = std::make_unique<QApplication>(count_, arguments_);
  }
  void TearDown() override { application_.reset(); }

 private:
  int count_ = 1;
  char name_[8] = "desktop";
  char* arguments_[2] = {name_, nullptr};
  std::unique_ptr<QApplication> application_;
};

const auto* const environment = testing::AddGlobalTestEnvironment(new Application);

}  // namespace
}  // namespace quibel::desktop
