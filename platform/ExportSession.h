#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "platform/Error.h"
#include "platform/FileURL.h"

namespace quibel::platform {

/// A rational time: `value` units of 1/`timescale` seconds.
struct Time {
  std::int64_t value = 0;
  std::int32_t timescale = 1;

  double seconds() const { return static_cast<double>(value) / timescale; }

  friend bool operator==(const Time&, const Time&) = default;
};

struct TimeRange {
  Time start;
  Time duration;

  friend bool operator==(const TimeRange&, const TimeRange&) = default;
};

/// `seconds` in units of 1/`preferredTimescale`, truncated toward zero. A time
/// that is not a number gives 0; one beyond 64 bits gives the nearest value.
Time makeTime(double seconds, std::int32_t preferredTimescale);

enum class ExportStatus { unknown, waiting, exporting, completed, failed, cancelled };

enum class FileType { appleM4A };

/// Writes a time range of one song as AAC audio in an MPEG-4 container. Set up
/// and started once, on the main thread.
class ExportSession {
 public:
  ExportSession() = default;
  ExportSession(const ExportSession&) = delete;
  ExportSession& operator=(const ExportSession&) = delete;
  virtual ~ExportSession() = default;

  virtual void setOutputURL(const FileURL& url) = 0;
  virtual void setOutputFileType(FileType type) = 0;
  virtual void setTimeRange(const TimeRange& range) = 0;

  /// Starts writing and returns. The handler is called once, on a thread of the
  /// session's own, after `status` and `error` have their final values. Where no such
  /// thread could be started, it is called before this returns.
  virtual void exportAsynchronously(std::function<void()> completionHandler) = 0;

  virtual ExportStatus status() const = 0;
  virtual std::optional<Error> error() const = 0;
};

}  // namespace quibel::platform
