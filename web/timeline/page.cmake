# The page of sonascope timeline: its TypeScript bundled by esbuild, and all its parts as a C++
# source that goes into the program. Without esbuild the parts are empty.

set(page_folder ${CMAKE_CURRENT_LIST_DIR})
set(page_output ${PROJECT_BINARY_DIR}/web/timeline)
find_program(SONAPROBE_ESBUILD NAMES esbuild)
file(GLOB_RECURSE page_sources CONFIGURE_DEPENDS ${page_folder}/src/*.ts ${page_folder}/src/*.css
     ${page_folder}/src/*.html)

if(SONAPROBE_ESBUILD)
  # The worker's script goes into the page's as a text.
  set(esbuild ${SONAPROBE_ESBUILD} --bundle --minify --format=iife --target=es2022
              --log-level=warning)
  add_custom_command(
    OUTPUT ${page_output}/page_parts.cpp
    COMMAND ${esbuild} ${page_folder}/src/data/worker.ts --outfile=${page_output}/worker.txt
    COMMAND ${esbuild} ${page_folder}/src/main.ts --outfile=${page_output}/page.js
            --alias:worker-script=${page_output}/worker.txt --loader:.txt=text
    COMMAND ${esbuild} ${page_folder}/src/page.css --outfile=${page_output}/page.css
    COMMAND ${CMAKE_COMMAND} -D FOLDER=${page_output} -D PAGE=${page_folder}/src/page.html -P
            ${page_folder}/page_parts.cmake
    DEPENDS ${page_sources} ${page_folder}/page_parts.cmake
    COMMENT "Bundling the timeline's page"
    VERBATIM)
else()
  message(STATUS "no esbuild: sonascope is built without timeline")
  add_custom_command(
    OUTPUT ${page_output}/page_parts.cpp
    COMMAND ${CMAKE_COMMAND} -D FOLDER=${page_output} -P ${page_folder}/page_parts.cmake
    DEPENDS ${page_folder}/page_parts.cmake
    VERBATIM)
endif()
# The page is a longer text than every compiler has to take.
set_source_files_properties(${page_output}/page_parts.cpp PROPERTIES COMPILE_OPTIONS
                                                                     -Wno-overlength-strings)
