# What people read of the command and of the blocks outside it, made of what these tell themselves: a
# Markdown page for each block, and the manual page. The scripts need Python; a build without it goes without.

find_package(Python3 COMPONENTS Interpreter)
if(NOT Python3_Interpreter_FOUND)
  message(STATUS "No Python: the reference of blocks and the manual page are left out.")
  return()
endif()

set(VELMARIND_REFERENCE "${PROJECT_BINARY_DIR}/reference")
set(VELMARIND_MAN_PAGE "${PROJECT_BINARY_DIR}/reference/quillmere.1")
set(reference_script "${PROJECT_SOURCE_DIR}/scripts/reference")
set(man_script "${PROJECT_SOURCE_DIR}/scripts/man-page")
file(GLOB_RECURSE pages CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/manual/*.yaml")
add_custom_command(OUTPUT "${VELMARIND_MAN_PAGE}"
  COMMAND Python3::Interpreter "${reference_script}" "$<TARGET_FILE:quillmere>" "${VELMARIND_REFERENCE}"
  COMMAND Python3::Interpreter "${man_script}" "$<TARGET_FILE:quillmere>" > "${VELMARIND_MAN_PAGE}"
  DEPENDS quillmere Velmarind VelmarindEveryday "${reference_script}" "${man_script}" ${pages}
  COMMENT "Writing the reference of blocks and the manual page" VERBATIM)
add_custom_target(reference ALL DEPENDS "${VELMARIND_MAN_PAGE}")
