# What `cpack` makes of the installed tree: a package for Debian, which names the libraries that it needs.

set(CPACK_PACKAGE_NAME velmarind)
set(CPACK_PACKAGE_CONTACT "The Velmarind developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Filter and analyse motion recordings with graphs of small blocks")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_GENERATOR DEB)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "python3, libeigen3-dev, libpoco-dev, cmake")
set(CPACK_DEBIAN_COMPRESSION_TYPE gzip) # a tenth of the time of xz, for two megabytes more
include(CPack)
