#include "model/AudioError.h"

namespace quibel {

std::string localizedDescription(AudioError error) {
  switch (error) {
    case AudioError::invalid:
      return "El archivo no contiene audio válido.";
  }
  return {};
}

std::string localizedDescription(const LoadError& error) {
  if (const auto* own = std::get_if<AudioError>(&error)) return localizedDescription(*own);
  return std::get<platform::Error>(error).localizedDescription();
}

}  // namespace quibel
