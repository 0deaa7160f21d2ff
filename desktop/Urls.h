#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <optional>

#include "platform/FileURL.h"

namespace quibel::desktop {

/// The local file that a URL names, or nothing for any other URL. A name's
/// bytes are kept, UTF-8 or not.
std::optional<platform::FileURL> fileURL(const QUrl& url);

/// The `file:` URI of a file, percent-encoded.
QByteArray fileURI(const platform::FileURL& url);

/// The file that Qt shows under `path`. Qt shows bytes that are no UTF-8 as
/// U+FFFD; where exactly one name in a folder looks that way, it is the one meant.
platform::FileURL fileShownAs(const QString& path);

}  // namespace quibel::desktop
