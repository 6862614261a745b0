# What holds between the folders, checked on the files themselves.
velmarind_tests(rooms SOURCES IncludeRules.cpp IncludeRulesTest.cpp InstalledHeadersTest.cpp
  SentenceTest.cpp SourceTree.cpp SourceTreeTest.cpp)
target_compile_definitions(test_rooms PRIVATE "SOURCE_FOLDER=\"${PROJECT_SOURCE_DIR}\"")

# Every header stands alone. One that has a source beside it does, since that source includes it first (a test
# looks); each of the others is compiled here, twice in a row, as the first thing in a file of its own.
set(folders framework processor design spectral estimation blocks plugin everyday host cli tests)
list(TRANSFORM folders APPEND "/*.h")
list(TRANSFORM folders PREPEND "${PROJECT_SOURCE_DIR}/")
file(GLOB_RECURSE headers RELATIVE "${PROJECT_SOURCE_DIR}" CONFIGURE_DEPENDS ${folders})
set(lone_headers)
foreach(header IN LISTS headers)
  string(REGEX REPLACE "\\.h$" ".cpp" source "${header}")
  if(NOT EXISTS "${PROJECT_SOURCE_DIR}/${source}")
    file(CONFIGURE OUTPUT "headers/${source}" CONTENT "#include \"${header}\"\n#include \"${header}\"\n")
    list(APPEND lone_headers "${CMAKE_CURRENT_BINARY_DIR}/headers/${source}")
  endif()
endforeach()
add_library(velmarind_lone_headers OBJECT ${lone_headers})
target_compile_options(velmarind_lone_headers PRIVATE -O0 -g0)
target_include_directories(velmarind_lone_headers PRIVATE "${PROJECT_SOURCE_DIR}")
target_link_libraries(velmarind_lone_headers PRIVATE Quillmere::Host Velmarind::test_support_framework)
