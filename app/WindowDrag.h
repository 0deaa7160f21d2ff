#pragma once

#include <QMargins>
#include <QObject>
#include <QPoint>
#include <QRect>
#include <optional>

class QMouseEvent;
class QWindow;

namespace quibel {

/// The edges that a point near a window's border would resize; none further
/// than `reach` points inside it.
Qt::Edges edgesAt(QPoint point, QSize window, int reach);

/// `geometry` with `edges` moved by `by`, never smaller than `minimum`; the
/// opposite edges stay where they are.
QRect resized(QRect geometry, Qt::Edges edges, QPoint by, QSize minimum);

/// Moves and resizes a window that has no frame. The window system does it
/// where it can; otherwise the window follows the pointer. It takes the
/// pointer's presses on the window's edges before any view sees them.
class WindowDrag : public QObject {
  Q_OBJECT

 public:
  explicit WindowDrag(QWindow& window);
  ~WindowDrag() override;

  /// The edges are that far inside the window.
  void setMargins(const QMargins& margins) { margins_ = margins; }

  /// Begins to move the window, with the left button held.
  void move();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct Following {
    Qt::Edges edges;  ///< none: the window moves
    QPoint pressedAt;
    QRect geometry;
  };

  bool pressed(const QMouseEvent& event);
  bool moved(const QMouseEvent& event);
  void follow(Qt::Edges edges);
  void showCursor(Qt::Edges edges);
  Qt::Edges edgesBelow(const QMouseEvent& event) const;

  QWindow& window_;
  QMargins margins_;
  std::optional<Following> following_;
  Qt::Edges cursorEdges_;
};

}  // namespace quibel
