# The three kinds of target: cw_library (one per folder), cw_program, and cw_tests (one test program per folder,
# made of the folder's NAME_test.cpp files). All share the language level, the warnings and the sanitizers.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

find_program(CW_CCACHE ccache)
if(CW_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CW_CCACHE})
endif()

find_package(GTest REQUIRED)
include(GoogleTest)

set(CW_WARNINGS -Wall -Wextra -Wpedantic -Wconversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  list(APPEND CW_WARNINGS -Wno-restrict) # false alarms on std::string concatenation in GCC 12
endif()

# What every target of ours gets.
function(cw_settings target)
  target_compile_options(${target} PRIVATE ${CW_WARNINGS})
  if(CW_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${CW_SANITIZE} -fno-sanitize-recover=undefined
                                             -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${CW_SANITIZE})
  endif()
endfunction()

# The standard headers that most files include, and those of tests, are compiled once for all targets. A build
# without it (preset noqt) shows what includes too little.
option(CW_PRECOMPILED "compile common headers once" ON)
set(CW_COMMON_HEADERS <algorithm> <functional> <map> <memory> <optional> <string> <string_view> <vector>)
# Tests need not be fast, and are half of what is compiled.
set(CW_TEST_OPTIONS $<$<CONFIG:Release>:-O1>)
set(CW_HEADER_NOISE $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-stringop-overflow>)
function(cw_precompiled name)
  if(NOT EXISTS ${CMAKE_BINARY_DIR}/${name}.cpp)
    file(WRITE ${CMAKE_BINARY_DIR}/${name}.cpp "")
  endif()
  add_library(${name} OBJECT ${CMAKE_BINARY_DIR}/${name}.cpp)
  target_precompile_headers(${name} PRIVATE ${CW_COMMON_HEADERS} ${ARGN})
  target_compile_options(${name} PRIVATE ${CW_HEADER_NOISE})
  cw_settings(${name})
endfunction()
if(CW_PRECOMPILED)
  cw_precompiled(cw_common_headers)
  cw_precompiled(cw_test_headers <gtest/gtest.h>)
  target_link_libraries(cw_test_headers PRIVATE GTest::gtest)
  target_compile_options(cw_test_headers PRIVATE ${CW_TEST_OPTIONS})
endif()
# Those of the targets that see no Qt, whose code is compiled another way.
function(cw_reuse_headers target from)
  if(CW_PRECOMPILED AND NOT "${ARGN}" MATCHES "qt|Qt|trvgui|cli")
    target_precompile_headers(${target} REUSE_FROM ${from})
    # GCC's false alarms inside std::string are no longer known to be in a system's header.
    target_compile_options(${target} PRIVATE ${CW_HEADER_NOISE})
  endif()
endfunction()

# cw_library(NAME DEPS lib...): a static library of the sources in the current folder, tests left out, which sees
# only the libraries that it names. Headers are included by their path from the root of the tree.
function(cw_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${ARG_DEPS})
  cw_settings(${name})
  cw_reuse_headers(${name} cw_common_headers ${name} ${ARG_DEPS})
endfunction()

function(cw_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS})
  cw_settings(${name})
endfunction()

# cw_tests(NAME SOURCES file... DEPS lib...): one GoogleTest program; every case is a test of ctest.
function(cw_tests name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS} GTest::gtest_main)
  target_compile_definitions(${name} PRIVATE CW_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  cw_settings(${name})
  target_compile_options(${name} PRIVATE ${CW_TEST_OPTIONS})
  cw_reuse_headers(${name} cw_test_headers ${name} ${ARG_DEPS})
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120)
endfunction()

# Lets a test fail the calls of the system that make and write files: chronoweave/import/failing_calls_testing.h.
function(cw_fail_calls name)
  foreach(call open mkstemp unlink rename fdatasync ftruncate pwrite)
    target_link_options(${name} PRIVATE -Wl,--wrap=${call})
  endforeach()
endfunction()
