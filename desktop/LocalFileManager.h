#pragma once

#include "platform/FileManager.h"

namespace quibel::desktop {

/// Files by the operating system's own calls, which get a name's bytes as they
/// are. No call follows a symbolic link at the name that is removed or created.
class LocalFileManager final : public platform::FileManager {
 public:
  /// The folder that TMPDIR names, or /tmp.
  platform::FileURL temporaryDirectory() const override;

  bool fileExists(const platform::FileURL& url) const override;

  /// Fails on a folder: a folder that bears the name of a file to be written is
  /// somebody's work, and no single answer in a panel may cost all it holds.
  platform::Result<void> removeItem(const platform::FileURL& url) override;

  /// The copy's permissions are those of any new file: what the umask leaves.
  platform::Result<void> copyItem(const platform::FileURL& from,
                                  const platform::FileURL& to) override;
  platform::Result<void> moveItem(const platform::FileURL& from,
                                  const platform::FileURL& to) override;
};

}  // namespace quibel::desktop
