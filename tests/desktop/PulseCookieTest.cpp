#include <QFile>

#include <gtest/gtest.h>

#include "desktop/PulseCookie.h"
#include "tests/desktop/TemporaryFolder.h"

namespace quibel::desktop {
namespace {

/// For a person whose home is the test's own folder.
class PulseCookieTest : public testing::Test {
 protected:
  void SetUp() override {
    qputenv("HOME", folder.path().c_str());
    qputenv("XDG_CONFIG_HOME", folder.path().c_str());
    qunsetenv("PULSE_COOKIE");
  }
  void TearDown() override {
    qputenv("HOME", home_);
    config_.isNull() ? qunsetenv("XDG_CONFIG_HOME") : qputenv("XDG_CONFIG_HOME", config_);
    cookie_.isNull() ? qunsetenv("PULSE_COOKIE") : qputenv("PULSE_COOKIE", cookie_);
  }

  TemporaryFolder folder;

 private:
  const QByteArray home_ = qgetenv("HOME");
  const QByteArray config_ = qgetenv("XDG_CONFIG_HOME");
  const QByteArray cookie_ = qgetenv("PULSE_COOKIE");
};

TEST_F(PulseCookieTest, IsInMemoryWhereThereIsNone) {
  keepPulseCookieInMemory();
  QFile cookie(qEnvironmentVariable("PULSE_COOKIE"));
  ASSERT_TRUE(cookie.open(QIODevice::ReadWrite)) << cookie.fileName().toStdString();
  EXPECT_EQ(cookie.write(QByteArray(256, 'x')), 256);
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST_F(PulseCookieTest, IsTheOneThatIsThere) {
  std::filesystem::create_directory(folder.path() / "pulse");
  folder.write("pulse/cookie", "x");
  keepPulseCookieInMemory();
  EXPECT_FALSE(qEnvironmentVariableIsSet("PULSE_COOKIE"));
}

TEST_F(PulseCookieTest, IsTheOldOneThatIsThere) {
  folder.write(".pulse-cookie", "x");
  keepPulseCookieInMemory();
  EXPECT_FALSE(qEnvironmentVariableIsSet("PULSE_COOKIE"));
}

TEST_F(PulseCookieTest, IsWhereTheEnvironmentSays) {
  qputenv("PULSE_COOKIE", "/elsewhere");
  keepPulseCookieInMemory();
  EXPECT_EQ(qgetenv("PULSE_COOKIE"), "/elsewhere");
}

}  // namespace
}  // namespace quibel::desktop
