# What `cmake --install` and `cpack` give: the tool, and the libraries with their headers as a package
# that find_package(moradmin) finds: moradmin::mor, and in front of which program it stands
# moradmin::host.
include(CMakePackageConfigHelpers)

set(config_folder ${CMAKE_INSTALL_LIBDIR}/cmake/moradmin)

set_target_properties(mor_platform PROPERTIES EXPORT_NAME platform)
set_target_properties(mor_host PROPERTIES EXPORT_NAME host)
install(TARGETS mor_platform mor mor_host EXPORT moradminTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(EXPORT moradminTargets NAMESPACE moradmin:: DESTINATION ${config_folder}
        COMPONENT development)
foreach(folder IN ITEMS platform frame space xref dwgfs)
  install(DIRECTORY ${folder} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/moradmin
          COMPONENT development FILES_MATCHING PATTERN "*.h")
endforeach()
install(FILES host/command_line.h host/counters.h host/documents.h host/faults.h host/handles.h host/host.h host/placement.h host/records.h
              host/references.h host/result.h host/saving.h host/values.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/moradmin/host COMPONENT development)

configure_package_config_file(cmake/moradminConfig.cmake.in moradminConfig.cmake
                              INSTALL_DESTINATION ${config_folder})
write_basic_package_version_file(moradminConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/moradminConfig.cmake
              ${PROJECT_BINARY_DIR}/moradminConfigVersion.cmake
        DESTINATION ${config_folder} COMPONENT development)

install(TARGETS moradmin RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tool)
install(TARGETS moradmin_paint moradmin_editor LIBRARY DESTINATION ${MORADMIN_MODULES}
        COMPONENT tool)
install(FILES README.md docs/damage.md docs/json.md docs/dump.schema.json docs/tour.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT tool)

install(DIRECTORY docs/schemas DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT tool)
install(DIRECTORY ${PROJECT_BINARY_DIR}/man/man1/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
        COMPONENT tool FILES_MATCHING PATTERN "*.1")
install(FILES docs/completion/moradmin.bash
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME moradmin
        COMPONENT tool)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME moradmin)
set(CPACK_PACKAGE_CONTACT "the moradmin developers <moradmin@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "looks into, fills, checks and repairs the file store inside CAD drawings")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
# The fonts that stand for those of drawings.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "fonts-dejavu-core, fonts-liberation")
find_program(DPKG_SHLIBDEPS dpkg-shlibdeps)
if(DPKG_SHLIBDEPS)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
else()
  string(APPEND CPACK_DEBIAN_PACKAGE_DEPENDS
         ", libc6, libstdc++6, libcairo2, libfreetype6, libfontconfig1, libedit2")
endif()
include(CPack)
