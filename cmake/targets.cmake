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

# cw_library(NAME DEPS lib...): a static library of the sources in the current folder, tests left out, which sees
# only the libraries that it names. Headers are included by their path from the root of the tree.
function(cw_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${ARG_DEPS})
  cw_settings(${name})
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
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120)
endfunction()
