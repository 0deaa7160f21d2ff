#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/FileURL.h"

namespace quibel::platform {

/// What a panel offers: any audio file, or the files of one extension.
struct ContentType {
  std::string filenameExtension;  ///< without its dot; empty for any audio

  static ContentType audio() { return {}; }

  friend bool operator==(const ContentType&, const ContentType&) = default;
};

/// A modal chooser of one existing file.
struct OpenPanel {
  std::string title;
  std::vector<ContentType> allowedContentTypes;
  bool allowsMultipleSelection = true;

  friend bool operator==(const OpenPanel&, const OpenPanel&) = default;
};

/// A modal chooser of a place to write to. It asks before an existing file is chosen.
struct SavePanel {
  std::string title;
  std::string nameFieldStringValue;  ///< the proposed file name
  std::vector<ContentType> allowedContentTypes;

  friend bool operator==(const SavePanel&, const SavePanel&) = default;
};

}  // namespace quibel::platform
