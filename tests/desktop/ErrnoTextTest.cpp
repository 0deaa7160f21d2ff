#include <cerrno>
#include <string>

#include <gmock/gmock.h>

#include "desktop/ErrnoText.h"

namespace quibel::desktop {
namespace {

using testing::HasSubstr;

std::string textOf(int code) { return errnoError(code).localizedDescription(); }

TEST(ErrnoText, EachThingAPersonCanMendHasASentenceOfItsOwn) {
  EXPECT_EQ(textOf(ENOSPC), "No queda espacio en el disco.");
  EXPECT_EQ(textOf(EDQUOT), "Se ha agotado la cuota de disco.");
  EXPECT_EQ(textOf(EFBIG), "El archivo supera el tamaño máximo permitido.");
  EXPECT_EQ(textOf(EROFS), "El disco es de solo lectura.");
  EXPECT_EQ(textOf(EACCES), "No hay permiso para acceder al archivo o a su carpeta.");
  EXPECT_EQ(textOf(EISDIR), "Hay una carpeta con ese nombre.");
  EXPECT_EQ(textOf(ENAMETOOLONG), "El nombre del archivo es demasiado largo.");
  EXPECT_EQ(textOf(ENOENT), "El archivo o su carpeta no existe.");
}

TEST(ErrnoText, WhatAPersonCannotMendHasTheSystemsDetail) {
  EXPECT_THAT(textOf(EIO), HasSubstr("El disco ha fallado ("));
  EXPECT_THAT(textOf(EPROTO), HasSubstr("Ha fallado una operación con el archivo ("));
  EXPECT_NE(textOf(EPROTO), textOf(EPIPE));
}

TEST(ErrnoText, EverySentenceEndsAsOne) {
  for (int code = 1; code < 134; ++code) EXPECT_EQ(textOf(code).back(), '.') << code;
}

}  // namespace
}  // namespace quibel::desktop
