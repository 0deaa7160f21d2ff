# The newest version that each of these files names is the project's own.
function(expect_first file pattern)
  file(READ ${SOURCE}/${file} text)
  if(NOT text MATCHES "${pattern}")
    message(FATAL_ERROR "${file} names no version")
  elseif(NOT CMAKE_MATCH_1 STREQUAL VERSION)
    message(FATAL_ERROR "${file} names ${CMAKE_MATCH_1}, the project is ${VERSION}")
  endif()
endfunction()

expect_first(packaging/desktop/org.quibel.quibel.metainfo.xml "<release version=\"([0-9.]+)\"")
expect_first(man/quibel.1 "\"Quibel ([0-9.]+)\"")
expect_first(debian/changelog "quibel \\(([0-9.]+)\\)")
expect_first(CHANGELOG.md "## ([0-9.]+) ")
