# Headers, libraries, CMake package, pkg-config file and tool.
include(CMakePackageConfigHelpers)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME dev)

install(TARGETS travik-platform travik-datablock EXPORT TravikDatablockTargets LIBRARY COMPONENT libraries NAMELINK_COMPONENT dev)
set(packages travik-datablock)
set(unbuilt PATTERN "service" EXCLUDE)
if(TRAVIK_BUILD_SERVICE)
  install(TARGETS travik-service EXPORT TravikDatablockTargets LIBRARY COMPONENT libraries NAMELINK_COMPONENT dev)
  install(TARGETS datablock COMPONENT tool)
  list(APPEND packages travik-service)
  unset(unbuilt)
endif()
if(TRAVIK_BUILD_FLEET)
  install(TARGETS travik-fleet EXPORT TravikDatablockTargets)
  list(APPEND packages travik-fleet)
else()
  list(APPEND unbuilt PATTERN "fleet" EXCLUDE)
endif()

# *Kernels.h are for the library itself and for the tests and benchmarks of the tree only, service/files/ and what the fleet
# library reaches databases and servers with are for the library.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/travik DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h" PATTERN "*Kernels.h" EXCLUDE PATTERN "files" EXCLUDE PATTERN "DatabaseConnection.h" EXCLUDE
  PATTERN "Http.h" EXCLUDE PATTERN "ModuleRows.h" EXCLUDE PATTERN "Sqlite.h" EXCLUDE PATTERN "StandardError.h" EXCLUDE ${unbuilt})
install(DIRECTORY ${PROJECT_BINARY_DIR}/generated/travik DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/TravikDatablock)
install(EXPORT TravikDatablockTargets NAMESPACE Travik:: DESTINATION ${package_dir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/TravikDatablockConfig.cmake.in
  ${PROJECT_BINARY_DIR}/TravikDatablockConfig.cmake INSTALL_DESTINATION ${package_dir}
  NO_SET_AND_CHECK_MACRO)
# Until 1.0 a minor version may change the interface.
if(PROJECT_VERSION_MAJOR EQUAL 0)
  set(compatibility SameMinorVersion)
else()
  set(compatibility SameMajorVersion)
endif()
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TravikDatablockConfigVersion.cmake COMPATIBILITY ${compatibility})
install(FILES ${PROJECT_BINARY_DIR}/TravikDatablockConfig.cmake ${PROJECT_BINARY_DIR}/TravikDatablockConfigVersion.cmake
  DESTINATION ${package_dir})

# Paths from the .pc file's own place, so that the tree can be moved.
file(RELATIVE_PATH pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pc_to_prefix ${pc_to_prefix})
file(RELATIVE_PATH prefix_to_lib ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH prefix_to_include ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
foreach(package IN LISTS packages)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${package}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
