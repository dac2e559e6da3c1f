# Finds QXlsx, an installed one first, then the one that ./run and ./test build
# into the user's cache folder (packaging/qxlsx.sh). Gives QXlsx::QXlsx.

if(DEFINED ENV{XDG_CACHE_HOME})
  set(cache "$ENV{XDG_CACHE_HOME}/velmo/qxlsx")
else()
  set(cache "$ENV{HOME}/.cache/velmo/qxlsx")
endif()
file(TO_CMAKE_PATH "$ENV{CMAKE_PREFIX_PATH}" prefixes_of_user)

# The package is called QXlsxQt6 or QXlsx, and one called QXlsx can be built for
# Qt 5. Once find_package has taken a package there is no way back, so the targets'
# file is read before.
foreach(prefix IN LISTS CMAKE_PREFIX_PATH prefixes_of_user CMAKE_SYSTEM_PREFIX_PATH cache)
  foreach(name QXlsxQt6 QXlsx)
    foreach(libraries lib/${CMAKE_LIBRARY_ARCHITECTURE} lib lib64)
      set(folder "${prefix}/${libraries}/cmake/${name}")
      if(NOT TARGET QXlsx::QXlsx AND EXISTS "${folder}/${name}Config.cmake")
        file(GLOB targets "${folder}/*Targets.cmake")
        file(STRINGS ${targets} for_qt6 REGEX "Qt6::Core" LIMIT_COUNT 1)
        if(for_qt6)
          set(${name}_DIR "${folder}")
          find_package(${name} QUIET)
        endif()
      endif()
    endforeach()
  endforeach()
endforeach()
if(NOT TARGET QXlsx::QXlsx)
  message(FATAL_ERROR "QXlsx, the library for workbooks, is missing. ./run and ./test bring it; "
    "or install libqt6qxlsx-dev, or QXlsx 1.4.4 or newer built for Qt 6.")
endif()
