# brixo_shared_library(NAME EXPORTS file [OBJECTS lib...] [SOURCES file...] [LINK lib...])
#
# A shared library with the project's version in its SONAME and hidden visibility by default, known to clients as
# Brixo::NAME. It exports what the linker script EXPORTS lists. Its public headers are its file set HEADERS. OBJECTS are object libraries of folders that ship inside it:
# their code, their public headers and their include roots become the library's own.
function(brixo_shared_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "EXPORTS" "OBJECTS;SOURCES;LINK")
  add_library(${name} SHARED ${arg_SOURCES})
  add_library(Brixo::${name} ALIAS ${name})
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINKER_LANGUAGE CXX
    INSTALL_RPATH "$ORIGIN")
  target_compile_features(${name} PUBLIC cxx_std_20)
  target_link_libraries(${name}
    PUBLIC ${arg_LINK} PRIVATE $<BUILD_INTERFACE:brixo::options>)
  target_link_options(${name} PRIVATE -Wl,-z,relro -Wl,-z,now
    # Threads that end, processes that fork and the registry of types call back: a library stays once it is loaded.
    -Wl,-z,nodelete)
  set(exports ${CMAKE_CURRENT_SOURCE_DIR}/${arg_EXPORTS})
  target_link_options(${name} PRIVATE -Wl,--version-script=${exports})
  set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS ${exports})
  if(NOT BRIXO_SANITIZE) # Clang leaves the sanitizer's symbols to the executable
    target_link_options(${name} PRIVATE -Wl,--no-undefined)
  endif()
  if(BRIXO_COVERAGE)
    target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/coverage_dump.cpp)
  endif()
  foreach(object IN LISTS arg_OBJECTS)
    brixo_take_in(${name} ${object})
  endforeach()
  set_property(GLOBAL APPEND PROPERTY BRIXO_LIBRARIES ${name})
endfunction()

# Makes the code and the public headers of an object library the library's own.
function(brixo_take_in library object)
  target_compile_features(${object} PUBLIC cxx_std_20)
  target_link_libraries(${object} PRIVATE $<BUILD_INTERFACE:brixo::options>)
  target_sources(${library} PRIVATE $<TARGET_OBJECTS:${object}>)
  get_target_property(roots ${object} HEADER_DIRS)
  get_target_property(headers ${object} HEADER_SET)
  if(headers)
    target_sources(${library} PUBLIC FILE_SET HEADERS BASE_DIRS ${roots} FILES ${headers})
    set_target_properties(${object} PROPERTIES VERIFY_INTERFACE_HEADER_SETS OFF) # the library verifies them
  endif()
endfunction()
