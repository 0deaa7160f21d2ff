#include "desktop/ErrnoText.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <system_error>

namespace quibel::desktop {
namespace {

struct Sentence {
  int code;
  const char* text;
};

constexpr std::array sentences{
    Sentence{ENOSPC, "No queda espacio en el disco."},
    Sentence{EDQUOT, "Se ha agotado la cuota de disco."},
    Sentence{EFBIG, "El archivo supera el tamaño máximo permitido."},
    Sentence{EROFS, "El disco es de solo lectura."},
    Sentence{EACCES, "No hay permiso para acceder al archivo o a su carpeta."},
    Sentence{EPERM, "El sistema no permite cambiar este archivo."},
    Sentence{EISDIR, "Hay una carpeta con ese nombre."},
    Sentence{EEXIST, "Ya existe un archivo con ese nombre."},
    Sentence{ENOENT, "El archivo o su carpeta no existe."},
    Sentence{ENOTDIR, "Una parte de la ruta no es una carpeta."},
    Sentence{ENAMETOOLONG, "El nombre del archivo es demasiado largo."},
    Sentence{ELOOP, "Hay demasiados enlaces en la ruta del archivo."},
    Sentence{EBUSY, "Otro programa está usando el archivo."},
    Sentence{ETXTBSY, "Otro programa está usando el archivo."},
    Sentence{EMFILE, "Hay demasiados archivos abiertos."},
    Sentence{ENFILE, "Hay demasiados archivos abiertos."},
    Sentence{ENOMEM, "No queda memoria."},
};

std::string systemDetail(int code) { return " (" + std::system_category().message(code) + ")."; }

}  // namespace

platform::Error errnoError(int code) {
  const auto known = std::ranges::find(sentences, code, &Sentence::code);
  if (known != sentences.end()) return platform::Error(known->text);
  if (code == EIO || code == ENXIO || code == ENODEV)
    return platform::Error("El disco ha fallado" + systemDetail(code));
  return platform::Error("Ha fallado una operación con el archivo" + systemDetail(code));
}

}  // namespace quibel::desktop
