# `cmake --install` gives bin/quillmere, the three libraries, the headers in the tree in which they are written here, and
# a package that `find_package(Velmarind)` finds, with the targets Quillmere::Core and Quillmere::Host.

include(CMakePackageConfigHelpers)

set(headers "${CMAKE_INSTALL_INCLUDEDIR}/velmarind")
set(package "${CMAKE_INSTALL_LIBDIR}/cmake/Velmarind")

set_target_properties(velmarind_numerics PROPERTIES EXPORT_NAME numerics)
file(STRINGS "${PROJECT_SOURCE_DIR}/framework/core/Version.h" frameworkVersion REGEX "kFrameworkVersion =")
string(REGEX MATCH "[0-9.]+[0-9]" frameworkVersion "${frameworkVersion}")
# The version of the framework is part of the libraries' names: a plug-in runs with the one that it was built for.
set_target_properties(QuillmereCore QuillmereHost PROPERTIES VERSION ${frameworkVersion} SOVERSION 0)
set_target_properties(QuillmereCore QuillmereHost Velmarind PROPERTIES INSTALL_RPATH "$ORIGIN")
set_target_properties(quillmere PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

install(TARGETS velmarind_numerics QuillmereCore QuillmereHost quillmere Velmarind EXPORT VelmarindTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/framework" "${PROJECT_SOURCE_DIR}/host" DESTINATION "${headers}"
  FILES_MATCHING PATTERN "*.h")
install(FILES "${PROJECT_SOURCE_DIR}/plugin/EntryPoints.h" "${PROJECT_SOURCE_DIR}/plugin/FilterFactory.h"
  DESTINATION "${headers}/plugin")
install(FILES "${PROJECT_SOURCE_DIR}/blocks/Block.h" DESTINATION "${headers}/blocks")

install(EXPORT VelmarindTargets NAMESPACE Quillmere:: DESTINATION "${package}")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/VelmarindConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/generated/VelmarindConfig.cmake" INSTALL_DESTINATION "${package}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/generated/VelmarindConfigVersion.cmake"
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/generated/VelmarindConfig.cmake"
  "${PROJECT_BINARY_DIR}/generated/VelmarindConfigVersion.cmake" DESTINATION "${package}")
