# `docs`: the HTML API reference, made with Doxygen from the public headers (those that
# TavrinDatabase.h includes), warnings as errors.
find_package(Doxygen)
if(NOT DOXYGEN_FOUND)
  return()
endif()
file(STRINGS ${PROJECT_SOURCE_DIR}/src/TavrinDatabase.h _includes REGEX "^#include \"tavrin/")
set(TAVRIN_DOC_INPUT ${PROJECT_SOURCE_DIR}/src/TavrinDatabase.h)
foreach(line IN LISTS _includes)
  string(REGEX REPLACE "^#include \"(tavrin/[^\"]+)\".*" "\\1" header "${line}")
  if(header STREQUAL "tavrin/Version.h")
    list(APPEND TAVRIN_DOC_INPUT ${PROJECT_BINARY_DIR}/include/${header})
  else()
    list(APPEND TAVRIN_DOC_INPUT ${PROJECT_SOURCE_DIR}/src/${header})
  endif()
endforeach()
list(APPEND TAVRIN_DOC_INPUT ${PROJECT_SOURCE_DIR}/docs/REFERENCE.md)
list(JOIN TAVRIN_DOC_INPUT " \\\n    " TAVRIN_DOC_INPUT)
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
add_custom_target(docs
  COMMAND Doxygen::doxygen ${PROJECT_BINARY_DIR}/Doxyfile
  WORKING_DIRECTORY ${PROJECT_BINARY_DIR}
  COMMENT "API reference into ${PROJECT_BINARY_DIR}/docs/html"
  VERBATIM)
