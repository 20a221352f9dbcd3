# brixo::options - how everything in this tree is compiled. Not exported: clients choose their own flags.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

set(BRIXO_SANITIZE "" CACHE STRING "Sanitizers, as for -fsanitize=: address,undefined or thread")
option(BRIXO_COVERAGE "Instrument for line coverage (GCC's gcov)" OFF)
# The presets, and with them the build server, switch it on: the next compiler's new warning shall stop no client's build.
option(BRIXO_WERROR "Treat every warning as an error" OFF)

add_library(brixo_warnings INTERFACE)
target_compile_options(brixo_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast -Wcast-qual
  -Wnon-virtual-dtor -Woverloaded-virtual -Wdouble-promotion -Wformat=2
  -Wundef
  $<$<BOOL:${BRIXO_WERROR}>:-Werror>
  # Not -Wuseless-cast: a cast that narrows in one word size is useless in the other.
  # Not GCC's -Wnull-dereference: once optimised, the standard library's own headers set it off.
  $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wduplicated-branches -Wlogical-op>
  $<$<CXX_COMPILER_ID:Clang>:-Wnull-dereference -Wextra-semi>)

add_library(brixo_options INTERFACE)
add_library(brixo::options ALIAS brixo_options)
target_link_libraries(brixo_options INTERFACE brixo_warnings)
target_compile_options(brixo_options INTERFACE
  # Nothing but registration runs when a library is loaded.
  $<$<CXX_COMPILER_ID:Clang>:-Wglobal-constructors -Wexit-time-destructors>
  # A library calls itself directly, not through its procedure linkage table; Clang does so anyway.
  $<$<CXX_COMPILER_ID:GNU>:-fno-semantic-interposition>)

# __FILE__ is the path in this tree, wherever the tree stands: messages and binaries are the same on every machine.
add_compile_options(-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)

# A file may exceed 2 GiB, inode numbers 32 bits and times the year 2038, in 32-bit too. No public header depends on it.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
endif()

# For i686 GCC would copy by `rep movsb` where it does not know the size, which takes some 10 ns to begin.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_SIZEOF_VOID_P EQUAL 4)
  add_compile_options(-mstringop-strategy=libcall)
endif()

# A sanitizer instruments what the whole build makes, GoogleTest included; coverage only what is ours.
if(BRIXO_SANITIZE)
  add_compile_options(
    -fsanitize=${BRIXO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${BRIXO_SANITIZE})
endif()
# The fuzzers see which way the libraries go; tests stay as they are.
if(BRIXO_BUILD_FUZZERS)
  target_compile_options(brixo_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(BRIXO_COVERAGE)
  target_compile_options(brixo_warnings INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(brixo_warnings INTERFACE --coverage)
endif()
