// A window of another program from which something is dragged: what a file
// manager is to Quibel. Run as: quibel_drag_source MIME-TYPE DATA
//
// Says on its standard output, a line each, where to press ("ready X Y"), what the
// window under the pointer answers ("accepts" or "refuses") and how the drag ended
// ("finished" or "cancelled"), after which it leaves. On Wayland a program does not
// know where its window is: there it is all of one colour, to be found by that.
#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QDrag>
#include <QGuiApplication>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QWidget>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <xcb/xcb.h>

namespace {

void say(const std::string& line) { std::cout << line << "\n" << std::flush; }

QNativeInterface::QX11Application* onX11() {
  return qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
}

/// Hears what the drop target sends back over the XDND protocol, which QDrag does
/// not pass on.
class TargetAnswers : public QAbstractNativeEventFilter {
 public:
  explicit TargetAnswers(xcb_connection_t* connection)
      : status_(atom(connection, "XdndStatus")), finished_(atom(connection, "XdndFinished")) {}

  bool nativeEventFilter(const QByteArray& /*eventType*/, void* message,
                         qintptr* /*result*/) override {
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    if ((event->response_type & ~sentBySendEvent) != XCB_CLIENT_MESSAGE) return false;
    const auto* answer = static_cast<const xcb_client_message_event_t*>(message);
    const bool accepted = (answer->data.data32[1] & 1U) != 0;
    if (answer->type == status_) say(accepted ? "accepts" : "refuses");
    if (answer->type == finished_) {
      say("finished");
      QCoreApplication::quit();
    }
    return false;
  }

 private:
  static constexpr std::uint8_t sentBySendEvent = 0x80;

  static xcb_atom_t atom(xcb_connection_t* connection, const std::string& name) {
    const auto cookie =
        xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr), &std::free);
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
  }

  xcb_atom_t status_;
  xcb_atom_t finished_;
};

class Source : public QWidget {
 public:
  Source(QString mimeType, QByteArray content)
      : QWidget(nullptr, Qt::X11BypassWindowManagerHint | Qt::WindowStaysOnTopHint),
        mimeType_(std::move(mimeType)),
        content_(std::move(content)) {
    constexpr QSize size(60, 40);
    resize(size);
    // Out of the way of other windows, which open at the left and in the middle.
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    move(screen.right() - width(), screen.bottom() - height());
  }

 protected:
  void mousePressEvent(QMouseEvent* /*event*/) override {
    auto* dragged = new QMimeData;
    dragged->setData(mimeType_, content_);
    auto* drag = new QDrag(this);
    drag->setMimeData(dragged);
    connect(drag, &QDrag::actionChanged, this, [](Qt::DropAction action) {
      if (!onX11()) say(action == Qt::IgnoreAction ? "refuses" : "accepts");
    });
    const bool wasTaken = drag->exec(Qt::CopyAction) != Qt::IgnoreAction;
    // On X11 the target says itself when it has taken it.
    if (wasTaken && onX11()) return;
    say(wasTaken ? "finished" : "cancelled");
    QCoreApplication::quit();
  }

  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter(this).fillRect(rect(), Qt::magenta);
    const QPoint centre = mapToGlobal(rect().center());
    say("ready " + std::to_string(centre.x()) + " " + std::to_string(centre.y()));
  }

 private:
  QString mimeType_;
  QByteArray content_;
};

}  // namespace

int main(int argc, char* argv[]) {
  QApplication application(argc, argv);
  if (argc != 3) return EXIT_FAILURE;
  std::optional<TargetAnswers> answers;
  if (const auto* x11 = onX11()) {
    answers.emplace(x11->connection());
    application.installNativeEventFilter(&*answers);
  }
  Source source(QString::fromUtf8(argv[1]), argv[2]);
  source.show();
  return QApplication::exec();
}
