# Finds dxflib, which has no CMake package. Gives dxflib::dxflib.

find_path(DXFLIB_INCLUDE_DIR dxflib/dl_dxf.h)
find_library(DXFLIB_LIBRARY dxflib)
if(NOT DXFLIB_INCLUDE_DIR OR NOT DXFLIB_LIBRARY)
  message(FATAL_ERROR "dxflib, the library for drawings, is missing: install libdxflib-dev.")
endif()
add_library(dxflib::dxflib UNKNOWN IMPORTED)
set_target_properties(dxflib::dxflib PROPERTIES
  IMPORTED_LOCATION "${DXFLIB_LIBRARY}"
  INTERFACE_INCLUDE_DIRECTORIES "${DXFLIB_INCLUDE_DIR}")
