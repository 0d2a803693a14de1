# SPDX-License-Identifier: Apache-2.0
# kaldata_companion(<target> EXPORT <name> HEADER <file> MAP <file>
#                   DESCRIPTION <text> [REQUIRES <pc modules>] [REQUIRES_PRIVATE <pc modules>])
#
# Makes a shared companion library of libkaldata look like every other one:
# the kaldata::<name> alias (the same name as installed), its public include
# folder, the SONAME, hidden visibility with a version script so that only the
# library's own interface leaves the object, the install rules and a
# pkg-config file. Call it after add_library(<target> SHARED ...).
function(kaldata_companion target)
  cmake_parse_arguments(C "" "EXPORT;HEADER;MAP;DESCRIPTION;REQUIRES;REQUIRES_PRIVATE" "" ${ARGN})
  add_library(kaldata::${C_EXPORT} ALIAS ${target})
  target_include_directories(${target}
    PUBLIC $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>
           $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/kaldata>)
  target_compile_options(${target} PRIVATE ${KALDATA_WARNINGS})
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${C_EXPORT}
    # Finds libkaldata beside itself once installed, whatever the program's own search path.
    INSTALL_RPATH "$ORIGIN"
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    LINK_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${C_MAP})
  target_link_options(${target} PRIVATE -Wl,--version-script=${CMAKE_CURRENT_SOURCE_DIR}/${C_MAP})
  install(TARGETS ${target} EXPORT kaldataTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${C_HEADER} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kaldata)
  get_target_property(output ${target} OUTPUT_NAME)
  if(NOT output)
    set(output ${target})
  endif()
  kaldata_pkgconfig(${target} "${C_DESCRIPTION}" "${C_REQUIRES}" "-l${output}" "${C_REQUIRES_PRIVATE}")
endfunction()
