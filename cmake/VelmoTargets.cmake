# Settings and helpers that every folder uses.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "" FORCE)
endif()
find_program(VELMO_CCACHE ccache)
if(VELMO_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${VELMO_CCACHE}")
endif()

# The program is started in this folder: it finds its pages, images and
# translations through the working directory.
set(VELMO_STAGE_DIR "${PROJECT_BINARY_DIR}/velmo")

# velmo_settings(target): language level, warnings, sanitizers.
function(velmo_settings target)
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4 /utf-8)
  else()
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    if(VELMO_WERROR)
      target_compile_options(${target} PRIVATE -Werror)
    endif()
  endif()
  target_compile_definitions(${target} PRIVATE QT_NO_CAST_FROM_BYTEARRAY QT_NO_CAST_TO_ASCII)
  if(VELMO_SANITIZE)
    target_compile_options(${target} PRIVATE
      -fsanitize=${VELMO_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${VELMO_SANITIZE})
  endif()
  if(VELMO_FUZZ)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
endfunction()

# velmo_library(target FOLDER folder [HEADERS h...] SOURCES s... LINKS l...)
#
# A static library whose headers are included from the root, as in
# "device/frame.h". Each library shows its own headers through a folder of
# links, so that only a target that links it can include them: an include
# against the arrows of the architecture does not build. Without HEADERS the
# whole folder is shown.
function(velmo_library target)
  cmake_parse_arguments(arg "" "FOLDER" "HEADERS;SOURCES;LINKS" ${ARGN})
  add_library(${target} STATIC ${arg_SOURCES})
  set(shown "${PROJECT_BINARY_DIR}/include/${target}")
  # Anew each time: a library that now lists its headers must not write them
  # through the link to its whole folder.
  file(REMOVE_RECURSE "${shown}")
  file(MAKE_DIRECTORY "${shown}")
  if(arg_HEADERS)
    file(MAKE_DIRECTORY "${shown}/${arg_FOLDER}")
    foreach(header IN LISTS arg_HEADERS)
      file(CREATE_LINK "${PROJECT_SOURCE_DIR}/${arg_FOLDER}/${header}"
        "${shown}/${arg_FOLDER}/${header}" SYMBOLIC COPY_ON_ERROR)
    endforeach()
  else()
    file(CREATE_LINK "${PROJECT_SOURCE_DIR}/${arg_FOLDER}" "${shown}/${arg_FOLDER}"
      SYMBOLIC COPY_ON_ERROR)
  endif()
  target_include_directories(${target} PUBLIC "${shown}")
  target_link_libraries(${target} PUBLIC ${arg_LINKS})
  velmo_settings(${target})
endfunction()

# velmo_test(name SOURCES s... LINKS l... [LABELS l...] [WRAPS symbol...])
#
# One Qt Test program for one unit. The label "web" marks what starts the web
# engine. Each test gets a folder of its own as working directory, and another for
# the program's data (tests/support/private_data.cpp). WRAPS names functions of
# libraries that the test stands in for, to see what they are asked: calls of
# `symbol` go to the test's `__wrap_symbol`, and its `__real_symbol` is the library's.
function(velmo_test name)
  cmake_parse_arguments(arg "" "WORKING_DIRECTORY" "SOURCES;LINKS;LABELS;WRAPS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  foreach(symbol IN LISTS arg_WRAPS)
    target_link_options(${name} PRIVATE "LINKER:--wrap=${symbol}")
  endforeach()
  target_link_libraries(${name} PRIVATE ${arg_LINKS} velmo_test_support velmo_test_data Qt6::Test)
  velmo_settings(${name})
  if(NOT arg_WORKING_DIRECTORY)
    set(arg_WORKING_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/${name}.run")
    file(MAKE_DIRECTORY "${arg_WORKING_DIRECTORY}")
  endif()
  if(NOT "web" IN_LIST arg_LABELS)
    if(NOT TARGET velmo_plain_tests)
      add_custom_target(velmo_plain_tests)
    endif()
    add_dependencies(velmo_plain_tests ${name})
  endif()
  add_test(NAME ${name} COMMAND ${name} WORKING_DIRECTORY "${arg_WORKING_DIRECTORY}")
  set_tests_properties(${name} PROPERTIES
    LABELS "${arg_LABELS}"
    TIMEOUT 600
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;ASAN_OPTIONS=detect_leaks=0;UBSAN_OPTIONS=print_stacktrace=1")
endfunction()

# velmo_fuzzer(name SOURCES s... LINKS l... [SEEDS folder...] [DICTIONARY file])
#
# One libFuzzer program for one reader, with -DVELMO_FUZZ=ON and clang, run by
# CTest under the label "fuzz" for VELMO_FUZZ_SECONDS. Inputs that are worth
# keeping gather in <name>.corpus of the build folder and are used again; one that
# fails is left beside it.
set(VELMO_FUZZ_SECONDS 60 CACHE STRING "How long each fuzz target runs under CTest")
function(velmo_fuzzer name)
  if(NOT VELMO_FUZZ)
    return()
  endif()
  cmake_parse_arguments(arg "" "DICTIONARY" "SOURCES;LINKS;SEEDS" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LINKS})
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  velmo_settings(${name})
  if(NOT TARGET velmo_fuzzers)
    add_custom_target(velmo_fuzzers)
  endif()
  add_dependencies(velmo_fuzzers ${name})

  set(kept "${CMAKE_CURRENT_BINARY_DIR}/${name}.corpus")
  file(MAKE_DIRECTORY "${kept}")
  set(options -max_total_time=${VELMO_FUZZ_SECONDS} -timeout=20 -rss_limit_mb=4096 -max_len=8192
    -close_fd_mask=1 -print_final_stats=1
    "-artifact_prefix=${CMAKE_CURRENT_BINARY_DIR}/${name}.")
  if(arg_DICTIONARY)
    list(APPEND options "-dict=${CMAKE_CURRENT_SOURCE_DIR}/${arg_DICTIONARY}")
  endif()
  add_test(NAME ${name} COMMAND ${name} ${options} "${kept}" ${arg_SEEDS})
  math(EXPR limit "${VELMO_FUZZ_SECONDS} * 2 + 300")
  set_tests_properties(${name} PROPERTIES LABELS fuzz TIMEOUT ${limit}
    ENVIRONMENT "LC_ALL=C.UTF-8;ASAN_OPTIONS=detect_leaks=0;UBSAN_OPTIONS=print_stacktrace=1")
endfunction()
