# `cmake --install` gives bin/quillmere, the libraries and the plug-ins, the headers in the tree in which
# they are written here, a package that `find_package(Velmarind)` finds, with the targets Quillmere::Core,
# Quillmere::Host and Quillmere::Testing, and, under share/doc, the licence, the documents and the examples.

include(CMakePackageConfigHelpers)

# All that is built of what is installed, for who needs no tests.
add_custom_target(product DEPENDS quillmere Velmarind VelmarindEveryday completion)
if(TARGET reference)
  add_dependencies(product reference)
endif()

set(headers "${CMAKE_INSTALL_INCLUDEDIR}/velmarind")
set(package "${CMAKE_INSTALL_LIBDIR}/cmake/Velmarind")

set_target_properties(velmarind_numerics PROPERTIES EXPORT_NAME numerics)
file(STRINGS "${PROJECT_SOURCE_DIR}/framework/core/Version.h" frameworkVersion REGEX "kFrameworkVersion =")
string(REGEX MATCH "[0-9.]+[0-9]" frameworkVersion "${frameworkVersion}")
# The version of the framework is part of the libraries' names: a plug-in runs with the one that it was built
# for.
set_target_properties(QuillmereCore QuillmereHost PROPERTIES VERSION ${frameworkVersion} SOVERSION 0)
set_target_properties(QuillmereCore QuillmereHost Velmarind VelmarindEveryday PROPERTIES INSTALL_RPATH "$ORIGIN")
set_target_properties(quillmere PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

install(TARGETS velmarind_numerics QuillmereCore QuillmereHost quillmere Velmarind VelmarindEveryday
  EXPORT VelmarindTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/framework" DESTINATION "${headers}" FILES_MATCHING PATTERN "*.h")
# Of the host what programs and plug-ins need: its umbrella header and what that includes, as a test looks.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/host/InstalledHeaders.txt")
file(STRINGS "${PROJECT_SOURCE_DIR}/host/InstalledHeaders.txt" hostHeaders REGEX "^[^#]")
foreach(header IN LISTS hostHeaders)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES "${PROJECT_SOURCE_DIR}/${header}" DESTINATION "${headers}/${folder}")
endforeach()
foreach(header IN ITEMS EntryPoints FilterFactory PluginEntry)
  install(FILES "${PROJECT_SOURCE_DIR}/plugin/${header}.h" DESTINATION "${headers}/plugin")
endforeach()
# Of the blocks' headers one is needed to build; the others tell what each block is made of, and what they
# hold.
foreach(folder IN ITEMS blocks design spectral estimation)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/${folder}" DESTINATION "${headers}"
    FILES_MATCHING PATTERN "*.h" PATTERN kernels EXCLUDE)
endforeach()
# The tests' small language, which the package offers as Quillmere::Testing.
foreach(file IN ITEMS Feed.h Feed.cpp Numbers.h Numbers.cpp)
  install(FILES "${PROJECT_SOURCE_DIR}/tests/support/${file}" DESTINATION "${headers}/tests/support")
endforeach()

install(DIRECTORY "${PROJECT_SOURCE_DIR}/manual/" DESTINATION "${CMAKE_INSTALL_LIBDIR}/${VELMARIND_MANUAL}"
  FILES_MATCHING PATTERN "*.yaml" PATTERN everyday EXCLUDE)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/manual/everyday/"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/${VELMARIND_EVERYDAY_MANUAL}" FILES_MATCHING PATTERN "*.yaml")

# Under the command's name, as bash looks for it.
install(FILES "${PROJECT_BINARY_DIR}/cli/quillmere.bash" RENAME quillmere
  DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")

if(VELMARIND_REFERENCE)
  install(FILES "${VELMARIND_MAN_PAGE}" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
  install(DIRECTORY "${VELMARIND_REFERENCE}/" DESTINATION "${CMAKE_INSTALL_DOCDIR}/docs/blocks"
    FILES_MATCHING PATTERN "*.md")
endif()

# What people read and try. Recordings and results that lie about in a working tree stay there.
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs" DESTINATION "${CMAKE_INSTALL_DOCDIR}"
  FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.png")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples" DESTINATION "${CMAKE_INSTALL_DOCDIR}"
  USE_SOURCE_PERMISSIONS FILES_MATCHING PATTERN "*.yaml" PATTERN "*.py" PATTERN "*.h" PATTERN "*.cpp"
  PATTERN "CMakeLists.txt" PATTERN "recordings/*" PATTERN "build" EXCLUDE PATTERN "__pycache__" EXCLUDE)

install(EXPORT VelmarindTargets NAMESPACE Quillmere:: DESTINATION "${package}")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/VelmarindConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/generated/VelmarindConfig.cmake" INSTALL_DESTINATION "${package}" PATH_VARS headers)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/generated/VelmarindConfigVersion.cmake"
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/generated/VelmarindConfig.cmake"
  "${PROJECT_BINARY_DIR}/generated/VelmarindConfigVersion.cmake" DESTINATION "${package}")
