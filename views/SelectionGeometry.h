#pragma once

namespace quibel {

/// The shortest fragment that dragging leaves, in seconds.
inline constexpr double minimumFragment = 0.5;

/// The horizontal coordinate of `time` in a view `width` points wide that shows
/// a song of `duration` seconds. Not clamped: times outside the song lie
/// outside the view. Without a duration (0, negative, NaN) it is 0.
double position(double time, double duration, double width);

/// The time in seconds at the horizontal coordinate `x`, in points from the
/// left edge of a view `width` points wide, clamped to the song. Without a
/// width, 0 for x = 0 and `duration` for any x to the right of it.
double toTime(double x, double width, double duration);

/// `time` clamped to 0 … `duration`, the upper bound winning where they cross;
/// a NaN counts as 0.
double clampedToSong(double time, double duration);

/// Where the start of the fragment goes when it is dragged to `time`: at most
/// minimumFragment before `end`, even where that is before the song.
double draggedStart(double time, double end);

/// Where the end of the fragment goes when it is dragged to `time`: at least
/// minimumFragment after `start`, even where that is beyond the song. Nothing
/// holds it to the longest ringtone.
double draggedEnd(double time, double start);

}  // namespace quibel
