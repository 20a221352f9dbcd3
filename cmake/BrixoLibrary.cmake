# brixo_shared_library(NAME [OBJECTS lib...] [SOURCES file...] [LINK lib...])
#
# A shared library with the project's version in its SONAME and hidden visibility by default. OBJECTS are object
# libraries of folders that ship inside it; their public headers and include roots become the library's own.
function(brixo_shared_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "OBJECTS;SOURCES;LINK")
  add_library(${name} SHARED ${arg_SOURCES})
  add_library(Brixo::${name} ALIAS ${name})
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINKER_LANGUAGE CXX)
  target_compile_features(${name} PUBLIC cxx_std_20)
  target_link_libraries(${name}
    PUBLIC ${arg_LINK} PRIVATE $<BUILD_INTERFACE:brixo::options>)
  target_link_options(${name} PRIVATE -Wl,--no-undefined -Wl,-z,relro -Wl,-z,now)
  foreach(object IN LISTS arg_OBJECTS)
    target_sources(${name} PRIVATE $<TARGET_OBJECTS:${object}>)
    target_include_directories(${name} PUBLIC
      $<BUILD_INTERFACE:$<TARGET_PROPERTY:${object},SOURCE_DIR>>)
  endforeach()
endfunction()
