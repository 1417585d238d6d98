# SPDX-License-Identifier: MIT
# One static library per room of src/. A room sees src/ as its include root; what it may include is held by
# scripts/check_arrows.py, what it links is listed where it is made.

add_library(traguardo_flags INTERFACE)
target_compile_options(traguardo_flags INTERFACE
  -Wall -Wextra -Wconversion -Wshadow $<$<BOOL:${TRAGUARDO_WERROR}>:-Werror>
  # Results are compared bit for bit: one multiply, one add, in the order that the code gives.
  -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # g++ 12 sees overlaps in std::string where there are none.
  target_compile_options(traguardo_flags INTERFACE -Wno-restrict)
endif()
if(TRAGUARDO_SANITIZE)
  target_compile_options(traguardo_flags INTERFACE
    -fsanitize=${TRAGUARDO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(traguardo_flags INTERFACE -fsanitize=${TRAGUARDO_SANITIZE})
endif()
if(TRAGUARDO_FUZZ)
  target_compile_options(traguardo_flags INTERFACE -fsanitize=fuzzer-no-link,address,undefined)
  target_link_options(traguardo_flags INTERFACE -fsanitize=address,undefined)
endif()
if(WIN32)
  target_compile_definitions(traguardo_flags INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
    _WIN32_WINNT=0x0601 __USE_MINGW_ANSI_STDIO=1)
  # No time of linking in what is packed: packages of one commit are equal.
  target_link_options(traguardo_flags INTERFACE -static -Wl,--no-insert-timestamp)
endif()
include(cmake/hardening.cmake)

function(traguardo_room name)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${name}/*.cpp)
  list(FILTER sources EXCLUDE REGEX "/platform/(posix|win32)\\.cpp$")
  if(name STREQUAL "support")
    if(WIN32)
      list(APPEND sources ${PROJECT_SOURCE_DIR}/src/support/platform/win32.cpp)
    else()
      list(APPEND sources ${PROJECT_SOURCE_DIR}/src/support/platform/posix.cpp)
    endif()
  endif()
  set(public)
  foreach(other IN LISTS ARGN)
    list(APPEND public tg_${other})
  endforeach()
  if(name STREQUAL "logger")
    list(APPEND public ZLIB::ZLIB)
  endif()
  if(sources)
    add_library(tg_${name} STATIC ${sources})
    target_include_directories(tg_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(tg_${name} PUBLIC traguardo_flags ${public})
    if(name STREQUAL "api")
      # Linked in whole, not taken from a DLL.
      target_compile_definitions(tg_api PUBLIC TRAGUARDO_STATIC)
    endif()
  else()
    add_library(tg_${name} INTERFACE)
    target_include_directories(tg_${name} INTERFACE ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(tg_${name} INTERFACE traguardo_flags ${public})
  endif()
endfunction()

# The linker's lists of what leaves the library, from the one list of names.
function(traguardo_export_lists)
  set(list ${PROJECT_SOURCE_DIR}/src/api/exported_functions.txt)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${list})
  file(STRINGS ${list} names)
  list(TRANSFORM names PREPEND "  " OUTPUT_VARIABLE indented)
  list(JOIN indented "\n" def_lines)
  list(JOIN indented ";\n  " map_lines)
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/traguardo.def @ONLY CONTENT "LIBRARY traguardo\nEXPORTS\n@def_lines@\n")
  # A version node, so that a later interface can stand beside this one.
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/traguardo.map @ONLY
    CONTENT "TRAGUARDO_1.0 {\n  global:\n  @map_lines@;\n  local: *;\n};\n")
endfunction()

function(traguardo_shared_library)
  traguardo_export_lists()
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/api/*.cpp)
  if(WIN32)
    list(APPEND sources ${PROJECT_BINARY_DIR}/traguardo.def)
  endif()
  add_library(traguardo SHARED ${sources})
  add_library(traguardo::traguardo ALIAS traguardo)
  # Hosts include <traguardo/exports.h>, from the build tree as from an installed copy.
  configure_file(${PROJECT_SOURCE_DIR}/src/api/exports.h ${PROJECT_BINARY_DIR}/include/traguardo/exports.h COPYONLY)
  target_include_directories(traguardo
    PUBLIC $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    PRIVATE ${PROJECT_SOURCE_DIR}/src)
  target_compile_definitions(traguardo PRIVATE TRAGUARDO_BUILDING_LIBRARY)
  target_link_libraries(traguardo PRIVATE traguardo_flags tg_logger tg_legacy)
  set_target_properties(traguardo PROPERTIES
    PREFIX "lib" C_VISIBILITY_PRESET hidden VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  if(WIN32)
    set_target_properties(traguardo PROPERTIES PREFIX "" IMPORT_PREFIX "lib")
  else()
    target_link_options(traguardo PRIVATE
      -Wl,--version-script=${PROJECT_BINARY_DIR}/traguardo.map -Wl,--exclude-libs,ALL)
    set_property(TARGET traguardo APPEND PROPERTY LINK_DEPENDS ${PROJECT_BINARY_DIR}/traguardo.map)
    if(NOT TRAGUARDO_SANITIZE AND NOT TRAGUARDO_FUZZ)
      target_link_options(traguardo PRIVATE -Wl,-z,defs)
    endif()
  endif()
endfunction()
