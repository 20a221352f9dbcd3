# brixo_tool(NAME SOURCE LIBRARY) - a program for people, which stands on one library and is installed with it. It says the
# project's version, BRIXO_VERSION, for --version.
function(brixo_tool name source library)
  add_executable(${name} ${source})
  target_link_libraries(${name} PRIVATE ${library} brixo::options)
  target_compile_definitions(${name} PRIVATE BRIXO_VERSION="${PROJECT_VERSION}")
  set_property(GLOBAL APPEND PROPERTY BRIXO_TOOLS ${name})
endfunction()
