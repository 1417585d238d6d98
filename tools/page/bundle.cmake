# SPDX-License-Identifier: MIT
# page_shell: the source with the session page's script and style, and whether it has any. Node makes it of page/ where it has its packages
# (scripts/setup.sh bundle); else the tool is built without, and says so when it is asked for a page.
find_program(TRAGUARDO_NODE NAMES node nodejs)
set(page_folder ${PROJECT_SOURCE_DIR}/page)
if(TRAGUARDO_NODE AND EXISTS ${page_folder}/node_modules/esbuild AND EXISTS ${page_folder}/node_modules/uplot)
  set(page_has_script ON)
  set(page_shell ${CMAKE_CURRENT_BINARY_DIR}/page_shell.cpp)
  file(GLOB page_scripts CONFIGURE_DEPENDS ${page_folder}/src/*)
  add_custom_command(OUTPUT ${page_shell}
    COMMAND ${TRAGUARDO_NODE} ${page_folder}/bundle.mjs ${page_shell}
    DEPENDS ${page_scripts} ${page_folder}/bundle.mjs ${page_folder}/shell.html ${page_folder}/package-lock.json
    COMMENT "Bundling the session page"
    VERBATIM)
else()
  set(page_has_script OFF)
  message(STATUS "The tool is built without `traguardo page`: scripts/setup.sh bundle installs what that needs")
  set(page_shell ${CMAKE_CURRENT_SOURCE_DIR}/page/no_shell.cpp)
endif()
