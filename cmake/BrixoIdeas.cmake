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
