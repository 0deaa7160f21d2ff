#pragma once

#include <QImage>
#include <QPainter>
#include <QRegion>
#include <vector>

#include "views/DeviceGrid.h"
#include "views/StripGeometry.h"
#include "views/Theme.h"

namespace quibel {

/// Paints the waveform strip. The envelope is stroked when samples, size,
/// device pixels or colours change, and kept as two pictures, a grey and an
/// accent one; everything else is drawn from the state each time, only where it
/// is asked for, with the same pixels as when all is drawn.
class StripPainter {
 public:
  void setSamples(const std::vector<double>& samples);
  const std::vector<double>& samples() const { return samples_; }

  /// Paints the parts of the strip that touch `dirty` (points), at the
  /// painter's origin.
  void paint(QPainter& painter, const StripState& state, QSizeF size, const Colors& colors,
             const QRegion& dirty);

  /// The points that look different in `after`, on the device pixels last
  /// painted on. Nothing where no pixel changes.
  QRegion changed(const StripState& before, const StripState& after, QSizeF size) const;

 private:
  struct Key {
    QSizeF size;
    DeviceGrid grid;
    Colors colors;

    friend bool operator==(const Key&, const Key&) = default;
  };

  void strokeEnvelope();
  QImage composed(const QRect& pixels, const StripState& state) const;

  std::vector<double> samples_;
  Key key_;
  bool stroked_ = false;
  QImage greyEnvelope_;
  QImage accentEnvelope_;
};

}  // namespace quibel
