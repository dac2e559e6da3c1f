# Finds QXlsx, an installed one first, then the one that ./run and ./test build
# into the user's cache folder (packaging/qxlsx.sh). Gives QXlsx::QXlsx.

if(DEFINED ENV{XDG_CACHE_HOME})
  list(APPEND CMAKE_PREFIX_PATH "$ENV{XDG_CACHE_HOME}/velmo/qxlsx")
elseif(DEFINED ENV{HOME})
  list(APPEND CMAKE_PREFIX_PATH "$ENV{HOME}/.cache/velmo/qxlsx")
endif()

find_package(QXlsxQt6 QUIET)
if(NOT QXlsxQt6_FOUND)
  find_package(QXlsx QUIET)
endif()
if(NOT TARGET QXlsx::QXlsx)
  message(FATAL_ERROR "QXlsx, the library for workbooks, is missing. ./run and ./test bring it; "
    "or install libqt6qxlsx-dev, or QXlsx 1.4.4 or newer built for Qt 6.")
endif()
