# cmake --install: headers, the four shared libraries, a CMake package and pkg-config files.
# Both find everything relative to themselves: an installed tree may be moved.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

get_property(libraries GLOBAL PROPERTY BRIXO_LIBRARIES)
install(TARGETS ${libraries} EXPORT BrixoTypesTargets FILE_SET HEADERS)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/BrixoTypes)
install(EXPORT BrixoTypesTargets NAMESPACE Brixo:: DESTINATION ${package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/BrixoTypesConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/BrixoTypesConfig.cmake INSTALL_DESTINATION ${package_dir})
# The version file also turns away a client of the other word size.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/BrixoTypesConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/BrixoTypesConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/BrixoTypesConfigVersion.cmake
  DESTINATION ${package_dir})

# brixo_pkg_config(NAME DESCRIPTION [NAME of a library that it brings along...])
function(brixo_pkg_config name description)
  file(RELATIVE_PATH prefix_from_pc /p/${CMAKE_INSTALL_LIBDIR}/pkgconfig /p)
  string(REGEX REPLACE "/$" "" prefix_from_pc "${prefix_from_pc}")
  list(JOIN ARGN ", " requires)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${name}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

brixo_pkg_config(pinbuf "Named DMA memory regions that outlive their process")
brixo_pkg_config(Ferrolog "Binary ring-buffer trace that can be read after a kill")
brixo_pkg_config(Vel "Object framework: counted objects, strings, maps, reflection")
brixo_pkg_config(BrixoTypes "${PROJECT_DESCRIPTION}" Vel pinbuf Ferrolog)
