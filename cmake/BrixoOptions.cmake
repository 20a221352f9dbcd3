# brixo::options - how everything in this tree is compiled. Not exported: clients choose their own.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Debug, Release, RelWithDebInfo or MinSizeRel" FORCE)
endif()

set(BRIXO_SANITIZE "" CACHE STRING "Sanitizers, as for -fsanitize=: address,undefined or thread")
option(BRIXO_COVERAGE "Instrument for line coverage (gcov)" OFF)

add_library(brixo_options INTERFACE)
add_library(brixo::options ALIAS brixo_options)
target_compile_options(brixo_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast -Wcast-qual
  -Wnon-virtual-dtor -Woverloaded-virtual -Wnull-dereference -Wdouble-promotion -Wformat=2
  -Wundef -Werror
  $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wduplicated-branches -Wlogical-op -Wuseless-cast>
  $<$<CXX_COMPILER_ID:Clang>:-Wglobal-constructors -Wexit-time-destructors -Wextra-semi>)
if(BRIXO_SANITIZE)
  target_compile_options(brixo_options INTERFACE
    -fsanitize=${BRIXO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(brixo_options INTERFACE -fsanitize=${BRIXO_SANITIZE})
endif()
if(BRIXO_COVERAGE)
  target_compile_options(brixo_options INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(brixo_options INTERFACE --coverage)
endif()
