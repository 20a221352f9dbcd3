# cmake --install: headers, the four shared libraries, the tools, a CMake package and pkg-config files.
# Everything finds everything relative to itself: an installed tree may be moved.
#
# Components, each for `cmake --install --component`:
#   runtime       the libraries, as programs load them
#   development   what clients are built with: headers, links to the libraries, packages. Needs runtime.
#   tools         ferrolog-cat and pinbuf-ls. Need runtime.
# The target `uninstall` removes what the last installation of each of them, or of all, has installed.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

foreach(directory BINDIR LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${directory}}")
    message(FATAL_ERROR "CMAKE_INSTALL_${directory} is ${CMAKE_INSTALL_${directory}}, but must be relative to the prefix: "
      "an installed tree may be moved")
  endif()
endforeach()

# CMake itself would install nothing for a name that it does not know, and say nothing. A host may have other components.
if(PROJECT_IS_TOP_LEVEL)
  install(CODE [[
    if(DEFINED CMAKE_INSTALL_COMPONENT AND NOT CMAKE_INSTALL_COMPONENT MATCHES "^(runtime|development|tools)$")
      message(FATAL_ERROR "There is no component \"${CMAKE_INSTALL_COMPONENT}\" to install; "
        "there are: runtime, development, tools")
    endif()]] ALL_COMPONENTS)
endif()

get_property(libraries GLOBAL PROPERTY BRIXO_LIBRARIES)
install(TARGETS ${libraries} EXPORT BrixoTypesTargets
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  FILE_SET HEADERS COMPONENT development)

get_property(tools GLOBAL PROPERTY BRIXO_TOOLS)
file(RELATIVE_PATH lib_from_bin /p/${CMAKE_INSTALL_BINDIR} /p/${CMAKE_INSTALL_LIBDIR})
set_target_properties(${tools} PROPERTIES INSTALL_RPATH "$ORIGIN/${lib_from_bin}")
install(TARGETS ${tools} RUNTIME COMPONENT tools)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/BrixoTypes)
install(EXPORT BrixoTypesTargets NAMESPACE Brixo:: DESTINATION ${package_dir} COMPONENT development)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/BrixoTypesConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/BrixoTypesConfig.cmake INSTALL_DESTINATION ${package_dir})
# The version file also turns away a client of the other word size.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/BrixoTypesConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/BrixoTypesConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/BrixoTypesConfigVersion.cmake
  DESTINATION ${package_dir} COMPONENT development)

# A folder that others may use, too, stays even when it is left empty.
if(PROJECT_IS_TOP_LEVEL)
  add_custom_target(uninstall COMMENT "" VERBATIM COMMAND ${CMAKE_COMMAND}
    -D build=${CMAKE_BINARY_DIR}
    -D "shared=${CMAKE_INSTALL_BINDIR}|${CMAKE_INSTALL_LIBDIR}|${CMAKE_INSTALL_INCLUDEDIR}|pkgconfig|cmake"
    -P ${CMAKE_CURRENT_LIST_DIR}/Uninstall.cmake)
endif()

# brixo_pkg_config(NAME DESCRIPTION [NAME of a library that it brings along...])
function(brixo_pkg_config name description)
  file(RELATIVE_PATH prefix_from_pc /p/${CMAKE_INSTALL_LIBDIR}/pkgconfig /p)
  string(REGEX REPLACE "/$" "" prefix_from_pc "${prefix_from_pc}")
  list(JOIN ARGN ", " requires)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${name}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endfunction()

brixo_pkg_config(pinbuf "Named DMA memory regions that outlive their process")
brixo_pkg_config(Ferrolog "Binary ring-buffer trace that can be read after a kill")
brixo_pkg_config(Vel "Object framework: counted objects, strings, maps, reflection")
brixo_pkg_config(BrixoTypes "${PROJECT_DESCRIPTION}" Vel pinbuf Ferrolog)
