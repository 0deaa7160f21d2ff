#include "app/Window.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QShortcut>
#include <QToolTip>
#include <QWindow>

#include "app/ContentView.h"
#include "app/FocusReturn.h"
#include "app/WindowControls.h"
#include "app/WindowDrag.h"
#include "app/WindowShadow.h"
#include "views/Theme.h"

namespace quibel {
namespace {

constexpr int stripHeight = ContentView::padding;

}  // namespace

Window::Window(Frame frame)
    : QMainWindow(nullptr, Qt::Window | Qt::FramelessWindowHint), frame_(frame) {
  setWindowTitle(tr("Quibel"));
  setAccessibleName(tr("Quibel"));
  content_ = new ContentView;
  setCentralWidget(content_);
  // A child of the content, so that a file may be dropped on it as well.
  controls_ = new WindowControls(content_);
  connect(controls_, &WindowControls::minimise, this, &QWidget::showMinimized);
  connect(controls_, &WindowControls::toggleMaximised, this, &Window::toggleMaximised);
  connect(controls_, &WindowControls::close, this, &QWidget::close);
  for (const auto key : {QKeySequence::Close, QKeySequence::Quit}) {
    connect(new QShortcut(key, this), &QShortcut::activated, this, &QWidget::close);
  }

  if (frame_ != Frame::plain) {
    setAttribute(Qt::WA_TranslucentBackground);
    for (const auto corner :
         {Qt::TopLeftCorner, Qt::TopRightCorner, Qt::BottomLeftCorner, Qt::BottomRightCorner})
      corners_.append(new RoundedCorner(corner, this));
  }
  QToolTip::setPalette(toolTipPalette(palette()));
  new FocusReturn(*this);

  create();
  drag_ = new WindowDrag(*windowHandle());
  layOutFrame();
  resize(content_->minimumSizeHint().grownBy(contentsMargins()));
}

QRect Window::body() const { return rect().marginsRemoved(contentsMargins()); }

void Window::layOutFrame() {
  const bool fillsScreen = isMaximized() || isFullScreen();
  const bool hasShadow = frame_ == Frame::shadowed && !fillsScreen;
  setContentsMargins(hasShadow ? shadowMargins : QMargins());
  drag_->setMargins(contentsMargins());
  if (frame_ == Frame::shadowed) declareShadow(*windowHandle(), contentsMargins(), minimumSize());
  for (auto* const corner : corners_) {
    corner->place(body(), hasShadow);
    corner->setVisible(!fillsScreen);
  }
}

void Window::arrangeButtons(const ButtonLayout& layout) { controls_->arrange(layout); }

void Window::toggleMaximised() {
  const bool maximise = !isMaximized();
  const auto before = geometry();
  setWindowState(windowState() ^ Qt::WindowMaximized);
  if (hasWindowManager()) return;
  // Nobody else will. Not by QWidget, which would take it for the end of the state.
  windowHandle()->setGeometry(maximise ? screen()->availableGeometry() : restored_);
  if (maximise) restored_ = before;
}

bool Window::event(QEvent* event) {
  const bool handled = QMainWindow::event(event);
  if (event->type() == QEvent::LayoutRequest && drag_) layOutFrame();
  return handled;
}

void Window::changeEvent(QEvent* event) {
  if (event->type() == QEvent::WindowStateChange) {
    controls_->setMaximised(isMaximized());
    layOutFrame();
  }
  if (event->type() == QEvent::ActivationChange) update();
  if (event->type() == QEvent::PaletteChange) QToolTip::setPalette(toolTipPalette(palette()));
  QMainWindow::changeEvent(event);
}

void Window::closeEvent(QCloseEvent* event) {
  event->accept();
  // Ends the loop of an open panel too, which waits inside the application's.
  QCoreApplication::exit();
}

void Window::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  layOutFrame();
  const int gap = (stripHeight - controls_->sizeHint().height()) / 2;
  controls_->setGeometry(2 * gap, gap, body().width() - 4 * gap, stripHeight - 2 * gap);
  controls_->raise();
}

void Window::paintEvent(QPaintEvent*) {
  if (contentsMargins().isNull()) return;
  QPainter painter(this);
  paintShadow(painter, body(), isActiveWindow());
}

void Window::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) groundPressedAt_ = event->globalPosition().toPoint();
}

void Window::mouseMoveEvent(QMouseEvent* event) {
  if (!groundPressedAt_) return;
  const auto distance = event->globalPosition().toPoint() - *groundPressedAt_;
  if (distance.manhattanLength() < QApplication::startDragDistance()) return;
  groundPressedAt_.reset();
  drag_->move();
}

void Window::mouseReleaseEvent(QMouseEvent*) { groundPressedAt_.reset(); }

void Window::mouseDoubleClickEvent(QMouseEvent* event) {
  groundPressedAt_.reset();
  if (event->button() == Qt::LeftButton && event->position().y() < body().top() + stripHeight)
    toggleMaximised();
}

}  // namespace quibel
