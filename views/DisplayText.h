#pragma once

#include <QString>
#include <string_view>

namespace quibel {

/// Text to be shown as it is, from UTF-8; what is no UTF-8 becomes the
/// replacement character.
QString displayText(std::string_view text);

/// A file name, whatever its bytes, on one line: like displayText, and control
/// characters, line separators and marks that reorder text are shown as symbols
/// instead of doing what they do.
QString displayFileName(std::string_view name);

/// A text and the file name that it ends in, either of which may be empty.
struct NamingText {
  QString text;
  QString name;
};

/// The model's status: of a saved ringtone, with its name as displayFileName shows it.
NamingText displayStatus(std::string_view status);

/// `name` to be put into a sentence: it has a direction of its own and does not
/// reorder what stands around it.
QString isolated(const QString& name);

/// `text` as a tooltip that shows it literally, markup characters included.
QString plainToolTip(const QString& text);

}  // namespace quibel
