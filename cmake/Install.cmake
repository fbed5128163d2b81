# What `cmake --install` lays down, and the two ways to find it again: pkg-config and a CMake package.
include(CMakePackageConfigHelpers)

install(TARGETS qxport_shared qxport_static
                qxcore_gnu_shared qxcore_gnu_static qxcore_posix_shared qxcore_posix_static
        EXPORT qxportTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${QXPORT_HEADER} ${QXPORT_MODULE_SOURCE} ${QXPORT_NUMBERS_SOURCE} DESTINATION include/qxport)
# Modules are the compiler's own format: those of another one come from the source installed beside them.
install(DIRECTORY ${QXPORT_MODULE_DIR}/ DESTINATION include/qxport FILES_MATCHING PATTERN "*.mod")
install(DIRECTORY ${QXPORT_GENERATED}/man/ DESTINATION share/man)
install(DIRECTORY ${QXPORT_GENERATED}/html/ DESTINATION share/doc/qxport/html)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/README.md DESTINATION share/doc/qxport)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/ DESTINATION share/doc/qxport/examples
        FILES_MATCHING PATTERN "*.f90" PATTERN "README.md")
# The command for programs that are to be ported, and what it and other tools know of the library.
install(PROGRAMS ${PROJECT_SOURCE_DIR}/porting/qxport DESTINATION bin)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/porting/qxporting DESTINATION share/qxport/python FILES_MATCHING PATTERN "*.py")
install(FILES ${QXPORT_GENERATED}/share/catalogue.json ${PROJECT_SOURCE_DIR}/porting/catalogue.schema.json
        ${PROJECT_SOURCE_DIR}/porting/doctor.schema.json
        ${PROJECT_SOURCE_DIR}/porting/README.md DESTINATION share/qxport)

# One file a provider: qxport.pc names the run-time of the compiler that the library was built with.
list(JOIN QXPORT_STATIC_THREADS ",-u,pthread_" PC_STATIC_THREADS)
foreach(package_and_provider qxport:gnu qxport-posix:posix)
  string(REPLACE ":" ";" names ${package_and_provider})
  list(GET names 0 PC_NAME)
  list(GET names 1 PC_PROVIDER)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/qxport.pc.in ${PROJECT_BINARY_DIR}/${PC_NAME}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${PC_NAME}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/qxport)
install(EXPORT qxportTargets NAMESPACE qxport:: DESTINATION ${package_dir})
set(QXPORT_COMMAND_DIR bin)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qxportConfig.cmake.in
  ${PROJECT_BINARY_DIR}/qxportConfig.cmake INSTALL_DESTINATION ${package_dir}
  PATH_VARS QXPORT_COMMAND_DIR)
# -m32 is an option to CMake, not a target: it does not know that its programs have narrow addresses.
if(QXPORT_M32)
  set(CMAKE_SIZEOF_VOID_P 4)
endif()
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qxportConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qxportConfig.cmake ${PROJECT_BINARY_DIR}/qxportConfigVersion.cmake
              ${PROJECT_SOURCE_DIR}/cmake/qxportModule.cmake
        DESTINATION ${package_dir})
