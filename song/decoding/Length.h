#pragma once

namespace quibel::song {

/// How well a song's length has to be known.
enum class Length {
  /// To the frame, even if the whole song has to be decoded for that.
  exact,
  /// What the file says, where only reading the whole song would tell: sound beyond it
  /// is left out, and silence fills what it lacks.
  stated,
};

}  // namespace quibel::song
