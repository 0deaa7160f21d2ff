#include "views/DisplayText.h"

#include <algorithm>

#include "model/AudioEditorModel.h"

namespace quibel {
namespace {

QChar harmless(QChar c) {
  const char16_t code = c.unicode();
  if (code < 0x20) return QChar(0x2400 + code);  // control pictures: ␀ …
  if (code == 0x7f) return QChar(0x2421);        // ␡
  const bool control = code >= 0x80 && code < 0xa0;
  const bool separator = code == 0x2028 || code == 0x2029;
  const bool reorders = (code >= 0x202a && code <= 0x202e) || (code >= 0x2066 && code <= 0x2069) ||
                        code == 0x200e || code == 0x200f || code == 0x061c;
  return control || separator || reorders ? QChar(QChar::ReplacementCharacter) : c;
}

}  // namespace

QString displayText(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString displayFileName(std::string_view name) {
  auto text = displayText(name);
  std::ranges::transform(text, text.begin(), harmless);
  return text;
}

NamingText displayStatus(std::string_view status) {
  constexpr auto saved = AudioEditorModel::savedStatus;
  if (!status.starts_with(saved)) return {displayText(status), {}};
  return {displayText(saved), displayFileName(status.substr(saved.size()))};
}

QString isolated(const QString& name) {
  constexpr QChar firstStrongIsolate(0x2068);
  constexpr QChar popDirectionalIsolate(0x2069);
  return firstStrongIsolate + name + popDirectionalIsolate;
}

QString plainToolTip(const QString& text) {
  return text.isEmpty() ? QString() : QStringLiteral("<qt>%1</qt>").arg(text.toHtmlEscaped());
}

}  // namespace quibel
