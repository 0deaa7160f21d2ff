#include <QApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QTimer>
#include <QVariantMap>
#include <QWidget>
#include <functional>
#include <utility>

#include <gtest/gtest.h>

#include "desktop/FilePanels.h"
#include "desktop/PortalFileChooser.h"
#include "desktop/PortalFilter.h"
#include "tests/desktop/PrivateBus.h"

namespace quibel::desktop {
namespace {

using platform::FileURL;

/// A portal whose person answers every question alike.
class FakePortal final : public QDBusVirtualObject {
 public:
  /// What it does with a question, which arrived under that path.
  using Answer = std::function<void(FakePortal&, const QString& request)>;

  FakePortal(const QString& bus, Answer answer)
      : answer_(std::move(answer)),
        connection_(QDBusConnection::connectToBus(bus, QStringLiteral("portal"))) {
    connection_.registerVirtualObject(path(), this);
    connection_.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
  }
  ~FakePortal() override { end(); }

  QString introspect(const QString&) const override { return {}; }

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    asked.append(message);
    auto sender = message.service().mid(1);
    const auto options = optionsOf(message);
    const auto request = QStringLiteral("%1/request/%2/%3")
                             .arg(choosesPaths ? path() + QStringLiteral("/own") : path(),
                                  sender.replace(QLatin1Char('.'), QLatin1Char('_')),
                                  options.value(QStringLiteral("handle_token")).toString());
    connection.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request))));
    answer_(*this, request);
    return true;
  }

  void respond(const QString& request, unsigned response, const QStringList& uris = {}) {
    auto signal = QDBusMessage::createSignal(
        request, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"));
    signal << response << QVariantMap{{QStringLiteral("uris"), uris}};
    connection_.send(signal);
  }

  /// Leaves the bus, as a program that crashed.
  void end() {
    connection_.unregisterService(QStringLiteral("org.freedesktop.portal.Desktop"));
    QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
  }

  static QVariantMap optionsOf(const QDBusMessage& message) {
    return qdbus_cast<QVariantMap>(message.arguments().at(2));
  }

  QList<QDBusMessage> asked;
  bool choosesPaths = false;

 private:
  static QString path() { return QStringLiteral("/org/freedesktop/portal/desktop"); }

  const Answer answer_;
  QDBusConnection connection_;
};

FakePortal::Answer choose(const QString& uri) {
  return [uri](FakePortal& portal, const QString& request) { portal.respond(request, 0, {uri}); };
}

void cancel(FakePortal& portal, const QString& request) { portal.respond(request, 1); }

struct PortalFileChooserTest : testing::Test {
  void SetUp() override {
    if (!bus.isThere()) GTEST_SKIP() << "no D-Bus daemon is installed";
  }

  PrivateBus& bus = PrivateBus::ofTheProcess();
  PortalFileChooser chooser;
  const FileQuestion open{.kind = FileQuestion::Kind::open,
                          .title = QStringLiteral("Selecciona una canción"),
                          .filterName = QStringLiteral("Audio"),
                          .patterns = {QStringLiteral("*.mp3"), QStringLiteral("*.wav")},
                          .folder = QStringLiteral("/música"),
                          .name = {}};
  const FileQuestion save{.kind = FileQuestion::Kind::save,
                          .title = QStringLiteral("Guardar tono para iPhone"),
                          .filterName = QStringLiteral("Tono para iPhone"),
                          .patterns = {QStringLiteral("*.m4r")},
                          .folder = QStringLiteral("/música"),
                          .name = QStringLiteral("Mi canción.m4r")};
};

TEST_F(PortalFileChooserTest, AsksForOneFileOfThesePatternsInThatFolder) {
  const FakePortal portal(bus.address(), cancel);
  ASSERT_TRUE(chooser.ask(open));
  const auto& message = portal.asked.front();
  EXPECT_EQ(message.interface(), QStringLiteral("org.freedesktop.portal.FileChooser"));
  EXPECT_EQ(message.member(), QStringLiteral("OpenFile"));
  EXPECT_EQ(message.arguments().at(1).toString(), open.title);
  const auto options = FakePortal::optionsOf(message);
  EXPECT_FALSE(options.value(QStringLiteral("multiple")).toBool());
  EXPECT_EQ(options.value(QStringLiteral("current_folder")).toByteArray(),
            QByteArray("/m\xC3\xBAsica\0", 9));
  const auto filters = qdbus_cast<QList<PortalFilter>>(options.value(QStringLiteral("filters")));
  ASSERT_EQ(filters.size(), 1);
  EXPECT_EQ(filters.front().name, QStringLiteral("Audio"));
  ASSERT_EQ(filters.front().patterns.size(), 2);
  EXPECT_EQ(filters.front().patterns[1].kind, PortalPattern::glob);
  EXPECT_EQ(filters.front().patterns[1].text, QStringLiteral("*.wav"));
}

TEST_F(PortalFileChooserTest, ProposesTheNameOfAFileToSave) {
  const FakePortal portal(bus.address(), cancel);
  ASSERT_TRUE(chooser.ask(save));
  EXPECT_EQ(portal.asked.front().member(), QStringLiteral("SaveFile"));
  EXPECT_EQ(
      FakePortal::optionsOf(portal.asked.front()).value(QStringLiteral("current_name")).toString(),
      save.name);
}

TEST_F(PortalFileChooserTest, GivesTheChosenFileWithItsOwnBytes) {
  const FakePortal portal(bus.address(),
                          choose(QStringLiteral("file:///m%C3%BAsica/a%FF%20b.mp3")));
  const auto chosen = chooser.ask(open);
  ASSERT_TRUE(chosen);
  EXPECT_EQ(*chosen, FileURL("/música/a\xFF b.mp3"));
}

TEST_F(PortalFileChooserTest, ACancelledQuestionChoosesNothing) {
  const FakePortal portal(bus.address(), cancel);
  const auto chosen = chooser.ask(open);
  ASSERT_TRUE(chosen);
  EXPECT_EQ(*chosen, std::nullopt);
}

TEST_F(PortalFileChooserTest, IsUnavailableWithoutAPortal) { EXPECT_FALSE(chooser.ask(open)); }

TEST_F(PortalFileChooserTest, ListensWhereThePortalSaysThatItAnswers) {
  FakePortal portal(bus.address(), [](FakePortal& asked, const QString& request) {
    QTimer::singleShot(100, &asked, [&asked, request] {
      asked.respond(request, 0, {QStringLiteral("file:///a.mp3")});
    });
  });
  portal.choosesPaths = true;
  const auto chosen = chooser.ask(open);
  ASSERT_TRUE(chosen);
  EXPECT_EQ(*chosen, FileURL("/a.mp3"));
}

TEST_F(PortalFileChooserTest, APortalThatEndsHasChosenNothing) {
  const FakePortal portal(bus.address(), [](FakePortal& asked, const QString&) {
    QTimer::singleShot(0, &asked, [&asked] { asked.end(); });
  });
  const auto chosen = chooser.ask(open);
  ASSERT_TRUE(chosen);
  EXPECT_EQ(*chosen, std::nullopt);
}

TEST_F(PortalFileChooserTest, TheWindowCannotBeWorkedMeanwhile) {
  QWidget window;
  window.show();
  window.activateWindow();
  ASSERT_TRUE(eventually([&] { return QApplication::activeWindow() == &window; }));
  bool wasBlocked = false;
  const FakePortal portal(bus.address(), [&](FakePortal& asked, const QString& request) {
    wasBlocked = QApplication::activeModalWidget() != nullptr;
    cancel(asked, request);
  });
  ASSERT_TRUE(chooser.ask(open));
  EXPECT_TRUE(wasBlocked);
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(PortalFileChooserTest, TheSavePanelAddsTheExtensionToWhatWasChosen) {
  const FakePortal portal(bus.address(), choose(QStringLiteral("file:///nowhere/vol.%202")));
  FilePanels panels;
  EXPECT_EQ(panels.runModal(platform::SavePanel{"Guardar", "tono.m4r", {{"m4r"}}}),
            FileURL("/nowhere/vol. 2.m4r"));
}

}  // namespace
}  // namespace quibel::desktop
