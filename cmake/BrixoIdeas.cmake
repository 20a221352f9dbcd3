# brixo_ideas(LIBRARY FOLDER idea... [INTERNAL idea...] [LINK lib...])
#
# A folder as the list of its ideas. Of each idea a library takes what there is beside this list:
#
#   Vel/Ptr      ->      Vel/Ptr.cpp, a source      Vel/Ptr.h, a public header      Vel/Ptr_test.cpp, the test FOLDER/Vel/Ptr
#
# The folder becomes one of the library's include roots. A header of an idea of INTERNAL is not installed. Tests link the
# library, or LINK.
function(brixo_ideas library folder)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "INTERNAL;LINK")
  set(root ${CMAKE_CURRENT_SOURCE_DIR})
  set(sources "")
  set(headers "")
  set(tests "")
  foreach(idea IN LISTS arg_UNPARSED_ARGUMENTS arg_INTERNAL)
    set(found "")
    if(EXISTS ${root}/${idea}.cpp)
      list(APPEND sources ${root}/${idea}.cpp)
      set(found yes)
    endif()
    if(EXISTS ${root}/${idea}.h)
      set(found yes)
      if(NOT idea IN_LIST arg_INTERNAL)
        list(APPEND headers ${root}/${idea}.h)
      endif()
    endif()
    if(EXISTS ${root}/${idea}_test.cpp)
      list(APPEND tests ${idea})
      set(found yes)
    endif()
    if(NOT found)
      message(FATAL_ERROR "${folder}: there is no ${idea}.h, ${idea}.cpp or ${idea}_test.cpp")
    endif()
  endforeach()
  target_sources(${library} PRIVATE ${sources}
    PUBLIC FILE_SET HEADERS BASE_DIRS ${root} FILES ${headers})
  if(NOT arg_LINK)
    set(arg_LINK ${library})
  endif()
  brixo_test(${folder} ${tests} LINK ${arg_LINK})
endfunction()

# brixo_types(LIBRARY FOLDER LIST [LINK lib...])
#
# The ideas of a module's types: LIST, the header with the module's list of types, and each type whose header stands beside it
# and is included there.
function(brixo_types library folder list)
  cmake_parse_arguments(PARSE_ARGV 3 arg "" "" "LINK")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
  file(STRINGS ${list} includes REGEX "^#include <.*[.]h>$")
  list(TRANSFORM includes REPLACE "^#include <(.*)[.]h>$" "\\1")
  string(REGEX REPLACE "[.]h$" "" ideas ${list})
  foreach(type IN LISTS includes)
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${type}.h)
      list(APPEND ideas ${type})
    endif()
  endforeach()
  brixo_ideas(${library} ${folder} ${ideas} LINK ${arg_LINK})
endfunction()
