#include "song/file/Errors.h"

#include <array>
#include <cerrno>
#include <system_error>

#include "song/file/Pointers.h"

namespace quibel::song {

namespace {

std::string describe(int errorNumber) { return std::generic_category().message(errorNumber); }

}  // namespace

std::string_view sentence(Failure failure) {
  switch (failure) {
    case Failure::missing:
      return "El archivo no existe o se ha movido.";
    case Failure::noPermission:
      return "No tienes permiso para leer el archivo.";
    case Failure::folder:
      return "Es una carpeta, no un archivo de audio.";
    case Failure::notRegular:
      return "No es un archivo normal, sino un dispositivo o un canal del sistema.";
    case Failure::emptyFile:
      return "El archivo está vacío.";
    case Failure::unknownFormat:
      return "El archivo no es de un formato de audio conocido.";
    case Failure::noSound:
      return "El archivo no contiene ninguna pista de sonido.";
    case Failure::damaged:
      return "El archivo está dañado y no se puede decodificar.";
    case Failure::noCodec:
      return "Falta el códec que necesita este archivo.";
    case Failure::cannotOpen:
      return "No se puede abrir el archivo.";
    case Failure::readError:
      return "No se puede leer el archivo.";
    case Failure::cutWhileReading:
      return "El archivo ha cambiado mientras se leía.";
    case Failure::outOfMemory:
      return "No hay memoria suficiente.";
    case Failure::cancelled:
      return "La operación se ha cancelado.";
    case Failure::emptyRange:
      return "El fragmento elegido no contiene audio.";
    case Failure::noEncoder:
      return "Falta el codificador AAC.";
    case Failure::encoderFailed:
      return "El codificador AAC ha fallado.";
    case Failure::cannotCreate:
      return "No se puede crear el archivo temporal.";
    case Failure::cannotWriteThere:
      return "No tienes permiso para escribir en la carpeta temporal.";
    case Failure::diskFull:
      return "No queda espacio en el disco.";
    case Failure::fileTooLarge:
      return "El sistema no permite un archivo tan grande.";
    case Failure::writeError:
      return "No se puede escribir el archivo temporal.";
    case Failure::internal:
      return "Ha ocurrido un error inesperado.";
  }
  return "Ha ocurrido un error inesperado.";
}

platform::Error makeError(Failure failure, std::string_view detail) {
  std::string text(sentence(failure));
  if (!detail.empty()) {
    text.pop_back();
    text.append(" (").append(detail).append(").");
  }
  return platform::Error(std::move(text));
}

platform::Error openingError(int errorNumber) {
  switch (errorNumber) {
    case ENOENT:
    case ENOTDIR:
      return makeError(Failure::missing);
    case EACCES:
    case EPERM:
      return makeError(Failure::noPermission);
    case EISDIR:
      return makeError(Failure::folder);
    case ENXIO:
    case ENODEV:
      return makeError(Failure::notRegular);
    case ENOMEM:
      return makeError(Failure::outOfMemory);
    default:
      return makeError(Failure::cannotOpen, describe(errorNumber));
  }
}

platform::Error readingError(int errorNumber) {
  return errorNumber == ENOMEM ? makeError(Failure::outOfMemory)
                               : makeError(Failure::readError, describe(errorNumber));
}

platform::Error creatingError(int errorNumber) {
  switch (errorNumber) {
    case EACCES:
    case EPERM:
    case EROFS:
      return makeError(Failure::cannotWriteThere);
    case ENOSPC:
    case EDQUOT:
      return makeError(Failure::diskFull);
    default:
      return makeError(Failure::cannotCreate, describe(errorNumber));
  }
}

platform::Error writingError(int errorNumber) {
  switch (errorNumber) {
    case ENOSPC:
    case EDQUOT:
      return makeError(Failure::diskFull);
    case EFBIG:
      return makeError(Failure::fileTooLarge);
    case ENOMEM:
      return makeError(Failure::outOfMemory);
    default:
      return makeError(Failure::writeError, describe(errorNumber));
  }
}

platform::Error codeError(int code, Failure otherwise) {
  if (code == AVERROR(ENOMEM)) return makeError(Failure::outOfMemory);
  if (code == AVERROR_EXIT) return makeError(Failure::cancelled);
  if (code == AVERROR_DECODER_NOT_FOUND) return makeError(Failure::noCodec);
  if (code == AVERROR_ENCODER_NOT_FOUND) return makeError(Failure::noEncoder);
  return makeError(otherwise);
}

}  // namespace quibel::song
