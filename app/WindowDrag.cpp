#include "app/WindowDrag.h"

#include <QCursor>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QWindow>
#include <algorithm>

namespace quibel {
namespace {

constexpr int edgeReach = 5;     // points inside the border
constexpr int cornerReach = 14;  // a corner is easier to hit

Qt::CursorShape cursorFor(Qt::Edges edges) {
  if (edges == (Qt::LeftEdge | Qt::TopEdge) || edges == (Qt::RightEdge | Qt::BottomEdge)) {
    return Qt::SizeFDiagCursor;
  }
  if (edges == (Qt::RightEdge | Qt::TopEdge) || edges == (Qt::LeftEdge | Qt::BottomEdge)) {
    return Qt::SizeBDiagCursor;
  }
  return edges & (Qt::LeftEdge | Qt::RightEdge) ? Qt::SizeHorCursor : Qt::SizeVerCursor;
}

}  // namespace

Qt::Edges edgesAt(QPoint point, QSize window, int reach) {
  const auto edges = [&](int within) {
    Qt::Edges found;
    found.setFlag(Qt::LeftEdge, point.x() < within);
    found.setFlag(Qt::RightEdge, point.x() >= window.width() - within);
    found.setFlag(Qt::TopEdge, point.y() < within);
    found.setFlag(Qt::BottomEdge, point.y() >= window.height() - within);
    return found;
  };
  // Along an edge, the last stretch before a corner takes both of its edges.
  return edges(reach) ? edges(std::max(reach, cornerReach)) : Qt::Edges();
}

QRect resized(QRect geometry, Qt::Edges edges, QPoint by, QSize minimum) {
  const int spareWidth = geometry.width() - minimum.width();
  const int spareHeight = geometry.height() - minimum.height();
  if (edges & Qt::LeftEdge) geometry.setLeft(geometry.left() + std::min(by.x(), spareWidth));
  if (edges & Qt::RightEdge) geometry.setRight(geometry.right() + std::max(by.x(), -spareWidth));
  if (edges & Qt::TopEdge) geometry.setTop(geometry.top() + std::min(by.y(), spareHeight));
  if (edges & Qt::BottomEdge)
    geometry.setBottom(geometry.bottom() + std::max(by.y(), -spareHeight));
  return geometry;
}

WindowDrag::WindowDrag(QWindow& window) : QObject(&window), window_(window) {
  window_.installEventFilter(this);
}

WindowDrag::~WindowDrag() { showCursor({}); }

void WindowDrag::move() {
  if (!window_.startSystemMove()) follow({});
}

void WindowDrag::follow(Qt::Edges edges) {
  following_ = Following{edges, QCursor::pos(), window_.geometry()};
}

bool WindowDrag::eventFilter(QObject*, QEvent* event) {
  switch (event->type()) {
    case QEvent::MouseButtonPress:
      return pressed(*static_cast<QMouseEvent*>(event));
    case QEvent::MouseMove:
      return moved(*static_cast<QMouseEvent*>(event));
    case QEvent::MouseButtonRelease:
      following_.reset();
      return false;
    case QEvent::Leave:
      showCursor({});
      return false;
    default:
      return false;
  }
}

Qt::Edges WindowDrag::edgesBelow(const QMouseEvent& event) const {
  const auto body = QRect(QPoint(), window_.size()).marginsRemoved(margins_);
  return edgesAt(event.position().toPoint() - body.topLeft(), body.size(), edgeReach);
}

bool WindowDrag::pressed(const QMouseEvent& event) {
  if (event.button() != Qt::LeftButton || window_.windowStates() & Qt::WindowMaximized)
    return false;
  const auto edges = edgesBelow(event);
  if (!edges) return false;
  if (!window_.startSystemResize(edges)) follow(edges);
  return true;
}

bool WindowDrag::moved(const QMouseEvent& event) {
  if (following_) {
    const auto by = event.globalPosition().toPoint() - following_->pressedAt;
    const auto& start = following_->geometry;
    window_.setGeometry(following_->edges
                            ? resized(start, following_->edges, by, window_.minimumSize())
                            : start.translated(by));
    return true;
  }
  if (event.buttons() == Qt::NoButton) {
    const bool maximised = window_.windowStates() & Qt::WindowMaximized;
    showCursor(maximised ? Qt::Edges() : edgesBelow(event));
  }
  return false;
}

void WindowDrag::showCursor(Qt::Edges edges) {
  if (edges == cursorEdges_) return;
  if (cursorEdges_) QGuiApplication::restoreOverrideCursor();
  if (edges) QGuiApplication::setOverrideCursor(cursorFor(edges));
  cursorEdges_ = edges;
}

}  // namespace quibel
