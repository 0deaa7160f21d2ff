# What every target of the project is compiled with. Included once, before any
# target exists, so that tests and benchmarks obey the same rules.
add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion
  -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual -Werror)
# Where several sources are compiled as one, a name that hides another source's is nobody's
# concern, and a source is no header.
if(NOT CMAKE_UNITY_BUILD)
  add_compile_options(-Wshadow)
elseif(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  add_compile_options(-Wno-subobject-linkage)
endif()

# Qt: no implicit char* to QString conversions, no Qt keywords as macros.
add_compile_definitions(QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS
  QT_NO_FOREACH QT_DISABLE_DEPRECATED_BEFORE=0x060400)

if(QUIBEL_SANITIZE)
  # -g1 is all that a report's stack needs, and compiles in three quarters of the time.
  add_compile_options(-fsanitize=${QUIBEL_SANITIZE} -fno-omit-frame-pointer -O1 -g1)
  add_link_options(-fsanitize=${QUIBEL_SANITIZE})
  if(QUIBEL_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
endif()
