# Tests: one executable per test file, so that a test links little, fails alone and runs beside the others.
# GoogleTest is built from Debian's sources (package googletest), so that it has this build's word size and sanitizer.
#
# brixo_test(FOLDER path... [LINK lib...])
#   For each path an executable from <path>_test.cpp beside the code and a ctest FOLDER/path with the label FOLDER:
#     brixo_test(bitmask Orn/BitId Orn/U64Bitmask)   ->   bitmask/Orn/BitId, bitmask/Orn/U64Bitmask
#   A FOLDER within a folder is a label beside its floor: the tests of framework/map have framework and framework/map.
#   It links shared libraries as a client does: BrixoTypes unless LINK says otherwise.
#
# brixo_cross_test(FOLDER path... [LINK lib...])
#   The same for a test that needs this build and a build of the other word size. It carries the labels FOLDER and
#   cross, and finds the two build directories in the environment variables BRIXO_THIS_BUILD and BRIXO_OTHER_BUILD;
#   an executable stands at the same place in both. Not registered where BRIXO_OTHER_BUILD is empty.
set(BRIXO_OTHER_BUILD "" CACHE PATH "Build directory of the other word size, for the tests labelled cross")
set(BRIXO_GOOGLETEST_DIR /usr/src/googletest CACHE PATH "Sources of GoogleTest")

# AUTO stays in the cache: once GoogleTest is installed, the next configuration finds it.
if(BRIXO_BUILD_TESTS AND NOT EXISTS ${BRIXO_GOOGLETEST_DIR}/CMakeLists.txt)
  if(NOT BRIXO_BUILD_TESTS STREQUAL "AUTO")
    message(FATAL_ERROR "GoogleTest is not installed (${BRIXO_GOOGLETEST_DIR}). Install Debian's package googletest, "
      "as scripts/setup test does, or build without tests: -DBRIXO_BUILD_TESTS=OFF")
  endif()
  message(STATUS "Tests are left out: GoogleTest is not installed (scripts/setup test installs it)")
  set(BRIXO_BUILD_TESTS OFF)
endif()

if(BRIXO_BUILD_TESTS)
  enable_testing()
  set(INSTALL_GTEST OFF)
  add_subdirectory(${BRIXO_GOOGLETEST_DIR} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  foreach(target gtest gtest_main gmock gmock_main)
    get_target_property(includes ${target} INTERFACE_INCLUDE_DIRECTORIES)
    set_target_properties(${target} PROPERTIES INTERFACE_SYSTEM_INCLUDE_DIRECTORIES "${includes}")
  endforeach()

  # What every test executable is compiled with: brixo::options without the word on global constructors, because
  # GoogleTest registers each test with one.
  add_library(brixo_test_options INTERFACE)
  target_link_libraries(brixo_test_options INTERFACE brixo_warnings gmock gtest_main)
  target_compile_definitions(brixo_test_options INTERFACE BRIXO_SOURCE_DIR="${PROJECT_SOURCE_DIR}")

  # GoogleTest's headers cost more to parse than most tests to compile: they are parsed once.
  add_executable(brixo_test_headers ${CMAKE_CURRENT_LIST_DIR}/test_headers.cpp)
  target_link_libraries(brixo_test_headers PRIVATE brixo_test_options)
  target_precompile_headers(brixo_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
endif()

# Under the thread sanitizer only tests that may have a second thread or process are of use: those whose text, or that of a
# header testing/ which they include, speaks of one. The others are neither built nor run; ctest lists them as disabled.
function(brixo_is_of_use path result)
  set(${result} TRUE PARENT_SCOPE)
  if(NOT BRIXO_SANITIZE MATCHES "thread")
    return()
  endif()
  file(READ ${path}_test.cpp text)
  string(REGEX MATCHALL "[A-Za-z0-9_/]*testing/[A-Za-z0-9_]+\\.h" headers "${text}")
  foreach(header IN LISTS headers)
    file(GLOB found ${PROJECT_SOURCE_DIR}/*/${header} ${PROJECT_SOURCE_DIR}/*/*/${header})
    foreach(file IN LISTS found)
      file(READ ${file} more)
      string(APPEND text "${more}")
    endforeach()
  endforeach()
  if(NOT text MATCHES "thread|[Ff]ork|async|inChild|TraceHandle|_EXIT|_DEATH")
    set(${result} FALSE PARENT_SCOPE)
  endif()
endfunction()

# Adds the executables and the ctests; the callers add what sets their tests apart.
function(brixo_add_tests folder paths libraries)
  string(REGEX REPLACE "/.*" "" floor ${folder})
  set(labels ${floor} ${folder})
  list(REMOVE_DUPLICATES labels)
  foreach(path IN LISTS paths)
    string(REPLACE "/" "-" target ${folder}-${path})
    add_executable(${target} ${path}_test.cpp)
    target_link_libraries(${target} PRIVATE ${libraries} brixo_test_options)
    target_precompile_headers(${target} REUSE_FROM brixo_test_headers)
    add_test(NAME ${folder}/${path} COMMAND ${target})
    set_tests_properties(${folder}/${path} PROPERTIES LABELS "${labels}" TIMEOUT 300)
    brixo_is_of_use(${path} is_of_use)
    if(NOT is_of_use)
      set_target_properties(${target} PROPERTIES EXCLUDE_FROM_ALL TRUE)
      set_tests_properties(${folder}/${path} PROPERTIES DISABLED TRUE)
    endif()
  endforeach()
endfunction()

function(brixo_test folder)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK")
  if(BRIXO_BUILD_TESTS)
    if(NOT arg_LINK)
      set(arg_LINK Brixo::BrixoTypes)
    endif()
    brixo_add_tests(${folder} "${arg_UNPARSED_ARGUMENTS}" "${arg_LINK}")
  endif()
endfunction()

function(brixo_cross_test folder)
  if(NOT BRIXO_OTHER_BUILD)
    return()
  endif()
  brixo_test(${folder} ${ARGN})
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK")
  if(BRIXO_BUILD_TESTS)
    foreach(path IN LISTS arg_UNPARSED_ARGUMENTS)
      set_tests_properties(${folder}/${path} PROPERTIES LABELS "${folder};cross" ENVIRONMENT
        "BRIXO_THIS_BUILD=${CMAKE_BINARY_DIR};BRIXO_OTHER_BUILD=${BRIXO_OTHER_BUILD}")
    endforeach()
  endif()
endfunction()
