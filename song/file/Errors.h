#pragma once

#include <string>
#include <string_view>

#include "platform/Error.h"

namespace quibel::song {

/// Everything that reading or writing a song can come to grief of.
enum class Failure {
  missing,
  noPermission,
  folder,
  notRegular,
  emptyFile,
  unknownFormat,
  noSound,
  damaged,
  noCodec,
  cannotOpen,
  readError,
  cutWhileReading,
  outOfMemory,
  cancelled,
  emptyRange,
  noEncoder,
  encoderFailed,
  cannotCreate,
  cannotWriteThere,
  diskFull,
  fileTooLarge,
  writeError,
  internal,
};

/// The Spanish sentence of a failure, without its detail. The one table of them.
std::string_view sentence(Failure failure);

/// The error of a failure; `detail` stands in parentheses before the full stop.
platform::Error makeError(Failure failure, std::string_view detail = {});

/// What an errno of open() or fstat() on the song means; the number itself is
/// the detail where the sentence is a general one.
platform::Error openingError(int errorNumber);

/// What an errno of reading means.
platform::Error readingError(int errorNumber);

/// What an errno of creating, writing or closing the exported file means.
platform::Error creatingError(int errorNumber);
platform::Error writingError(int errorNumber);

/// What a negative result of FFmpeg means; `otherwise` is the failure of those
/// that carry no meaning of their own (most of them say "invalid data").
platform::Error codeError(int code, Failure otherwise);

}  // namespace quibel::song
