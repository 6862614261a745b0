# Libraries that read recordings, or draw pictures, of one form each. A form is built in where its library is
# found, and off elsewhere: then RecordingForms.cpp or PictureFile.cpp refuses its files by name. The
# libraries stay private to the one that links them, and their headers are none of ours.

# velmarind_optional_library(NAME what LIBRARY names HEADER file [SUFFIXES folders] SOURCES files... KNOWN_BY
# file): adds what needs the library to QuillmereHost, and QUILLMERE_WITH_NAME to the source that knows of it.
function(velmarind_optional_library name what)
  cmake_parse_arguments(ARG "" "HEADER;KNOWN_BY" "LIBRARY;SUFFIXES;SOURCES" ${ARGN})
  option(VELMARIND_WITH_${name} "Whether to ${what}, where the library is found" ON)
  if(NOT VELMARIND_WITH_${name})
    message(STATUS "Without what would ${what}, since VELMARIND_WITH_${name} is off")
    return()
  endif()
  find_library(VELMARIND_${name}_LIBRARY NAMES ${ARG_LIBRARY} PATH_SUFFIXES ${ARG_SUFFIXES})
  find_path(VELMARIND_${name}_HEADERS NAMES ${ARG_HEADER} PATH_SUFFIXES ${ARG_SUFFIXES})
  mark_as_advanced(VELMARIND_${name}_LIBRARY VELMARIND_${name}_HEADERS)
  if(NOT VELMARIND_${name}_LIBRARY OR NOT VELMARIND_${name}_HEADERS)
    message(STATUS "Without what would ${what}, since ${ARG_HEADER} or its library isn't there (scripts/install)")
    return()
  endif()
  add_library(velmarind_${name} INTERFACE)
  target_include_directories(velmarind_${name} SYSTEM INTERFACE "${VELMARIND_${name}_HEADERS}")
  target_link_libraries(velmarind_${name} INTERFACE "${VELMARIND_${name}_LIBRARY}")
  target_sources(QuillmereHost PRIVATE ${ARG_SOURCES})
  target_link_libraries(QuillmereHost PRIVATE "$<BUILD_INTERFACE:velmarind_${name}>")
  set_property(SOURCE ${ARG_KNOWN_BY} APPEND PROPERTY COMPILE_DEFINITIONS QUILLMERE_WITH_${name}=1)
endfunction()
