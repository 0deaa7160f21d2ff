# Installs the build below a folder of its own and compares what lies there with
# the list of what should.
set(root ${BUILD}/installed)
file(REMOVE_RECURSE ${root})
set(ENV{DESTDIR} ${root})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix /usr
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)

file(GLOB_RECURSE installed RELATIVE ${root} ${root}/*)
file(STRINGS ${EXPECTED} expected)
list(SORT installed)
list(SORT expected)
if(NOT installed STREQUAL expected)
  message(FATAL_ERROR "Installed: ${installed}\nExpected:  ${expected}")
endif()

# The desktop entry, the metainfo and the icon, found as a software centre would.
execute_process(COMMAND appstreamcli validate-tree --no-net ${root}
  COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE_RECURSE ${root})
