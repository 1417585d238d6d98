# SPDX-License-Identifier: MIT
# What an attacker who finds a fault shall not get for nothing: flags for optimised builds, on traguardo_flags.
# tests/api/check_hardening.py looks for their traces in the built files. Sanitizers have checks of their own, and
# don't go with fortified calls.

# Bounds of the standard library's containers: where faults are looked for, not where samples are read.
string(COMPARE NOTEQUAL "${TRAGUARDO_SANITIZE}" "" sanitized)
if(sanitized OR TRAGUARDO_FUZZ OR CMAKE_BUILD_TYPE STREQUAL "Debug")
  target_compile_definitions(traguardo_flags INTERFACE _GLIBCXX_ASSERTIONS)
endif()

if(NOT sanitized AND NOT TRAGUARDO_FUZZ)
  set(optimised "$<CONFIG:Release,RelWithDebInfo,MinSizeRel>")
  target_compile_options(traguardo_flags INTERFACE $<${optimised}:-fstack-protector-strong>)
  if(WIN32)
    # Said to the linker as well, the option brings the protector's own library, as a part of what is built.
    target_link_options(traguardo_flags INTERFACE
      $<${optimised}:-fstack-protector-strong>
      $<${optimised}:-Wl,--dynamicbase,--nxcompat,--high-entropy-va>)
  else()
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES C CXX)
    # Fortified calls need an optimiser, which tests do without.
    target_compile_options(traguardo_flags INTERFACE
      $<${optimised}:-fstack-clash-protection>
      $<$<AND:${optimised},$<NOT:$<BOOL:$<TARGET_PROPERTY:TRAGUARDO_UNOPTIMISED>>>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|amd64|AMD64")
      target_compile_options(traguardo_flags INTERFACE $<${optimised}:-fcf-protection>)
    endif()
    target_link_options(traguardo_flags INTERFACE $<${optimised}:LINKER:-z,relro,-z,now,-z,noexecstack>)
  endif()
endif()
