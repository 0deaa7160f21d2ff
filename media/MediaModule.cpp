#include "media/MediaModule.h"

#include <string>

#include <dlfcn.h>

namespace quibel::media {
namespace {

constexpr const char* fileName = "quibel-media.so";

platform::Error cannotLoad() {
  const char* const reason = dlerror();
  return platform::Error("Falta una parte de Quibel, vuelve a instalarlo (" +
                         std::string(reason ? reason : fileName) + ").");
}

}  // namespace

platform::Result<Media*> MediaModule::load() {
  const std::lock_guard lock(mutex_);
  if (!media_) {
    // Found by the program's own search path, which names the module's folder.
    void* const module = dlopen(fileName, RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) return std::unexpected(cannotLoad());
    void* const symbol = dlsym(module, makeMediaName);
    if (symbol == nullptr) return std::unexpected(cannotLoad());
    media_.reset(reinterpret_cast<MakeMedia>(symbol)());
  }
  return media_.get();
}

}  // namespace quibel::media
