# Installs BUILD and moves the result to PREFIX: whatever is found there later is found relative to itself.
file(REMOVE_RECURSE ${prefix} ${prefix}-from)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${build} --prefix ${prefix}-from
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${prefix}-from ${prefix})

# Nothing in it names the place where it was built.
file(GLOB_RECURSE texts ${prefix}/*.cmake ${prefix}/*.pc ${prefix}/*.h)
foreach(text IN LISTS texts)
  file(READ ${text} content)
  string(FIND "${content}" "${build}" place)
  if(NOT place EQUAL -1)
    message(SEND_ERROR "${text} names the build directory")
  endif()
endforeach()
list(LENGTH texts count)
message("installed: ${count} headers and package files")
