#pragma once

#include <memory>
#include <mutex>

#include "media/Media.h"
#include "platform/Error.h"

namespace quibel::media {

/// Loads the module quibel-media.so when it is first asked for, and never unloads
/// it: a thread that waits for the sound server may outlive everything else.
class MediaModule {
 public:
  /// Any thread; the first call takes some 50 ms. Fails where the module is not to
  /// be found or not to be loaded, and then tries again with the next call.
  platform::Result<Media*> load();

 private:
  std::mutex mutex_;
  std::unique_ptr<Media> media_;
};

}  // namespace quibel::media
