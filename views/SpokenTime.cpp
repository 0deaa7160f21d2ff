#include "views/SpokenTime.h"

#include <QCoreApplication>
#include <QLocale>
#include <QStringList>
#include <cmath>

#include "model/AudioEditorModel.h"

namespace quibel {
namespace {

QString tr(const char* text) { return QCoreApplication::translate("SpokenTime", text); }

}  // namespace

QString spokenTime(double seconds) {
  static const QLocale spanish(QLocale::Spanish);
  if (!std::isfinite(seconds)) return tr("tiempo desconocido");
  // Rounded first, so that no minute ever has sixty seconds.
  const double tenths = std::round(std::abs(seconds) * 10);
  const double minutes = std::floor(tenths / 600);
  const double rest = std::fmod(tenths, 600);

  QStringList parts;
  if (seconds < 0 && tenths > 0) parts += tr("menos");
  if (minutes > 0) {
    parts += (minutes == 1 ? tr("%1 minuto") : tr("%1 minutos")).arg(minutes, 0, 'f', 0);
  }
  if (rest > 0 || minutes == 0) {
    const bool whole = std::fmod(rest, 10) == 0;
    parts += (rest == 10 ? tr("%1 segundo") : tr("%1 segundos"))
                 .arg(spanish.toString(rest / 10, 'f', whole ? 0 : 1));
  }
  return parts.join(u' ');
}

QString spokenHandle(double time, double fragment) {
  const auto text = tr("%1, fragmento de %2").arg(spokenTime(time), spokenTime(fragment));
  constexpr double longest = AudioEditorModel::maximumDuration;
  const auto roundedToTenths = [](double t) { return std::round(t * 10); };
  const bool isCut = roundedToTenths(fragment) > roundedToTenths(longest);
  return isCut ? tr("%1, solo se guardan %2").arg(text, spokenTime(longest)) : text;
}

}  // namespace quibel
