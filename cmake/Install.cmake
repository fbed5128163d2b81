# What `cmake --install` lays down, and the two ways to find it again: pkg-config and a CMake package. Components:
# runtime (what programs need to run), development (what they are built with), documentation.
include(CMakePackageConfigHelpers)

install(TARGETS qxport_shared qxport_static qxport_i8_shared qxport_i8_static
                qxcore_gnu_shared qxcore_gnu_static qxcore_posix_shared qxcore_posix_static
        EXPORT qxportTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} ${CMAKE_INSTALL_INCLUDEDIR}/qxport)
install(FILES ${QXPORT_HEADER} ${QXPORT_MODULE_SOURCE} ${QXPORT_NUMBERS_SOURCE}
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qxport COMPONENT development)
install(FILES ${QXPORT_I8_MODULE_SOURCE} ${QXPORT_I8_NUMBERS_SOURCE}
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qxport/i8 COMPONENT development)
# Modules are the compiler's own format: those of another one come from the source installed beside them.
install(DIRECTORY ${QXPORT_MODULE_DIR}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qxport COMPONENT development
        FILES_MATCHING PATTERN "*.mod")
install(DIRECTORY ${QXPORT_I8_MODULE_DIR}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/qxport/i8 COMPONENT development
        FILES_MATCHING PATTERN "*.mod")
install(DIRECTORY ${QXPORT_GENERATED}/man/ DESTINATION ${CMAKE_INSTALL_MANDIR} COMPONENT documentation)
install(DIRECTORY ${QXPORT_GENERATED}/html/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/html COMPONENT documentation)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples
        COMPONENT documentation FILES_MATCHING PATTERN "*.f90" PATTERN "README.md")
# The command for programs that are to be ported, and what it and other tools know of the library.
file(READ ${PROJECT_SOURCE_DIR}/porting/qxport command)
foreach(place share:DATADIR:/qxport include:INCLUDEDIR:/qxport lib:LIBDIR:)
  string(REGEX MATCH "^(.*):(.*):(.*)$" parts ${place})
  set(inner ${CMAKE_MATCH_3})
  set(plain "../${CMAKE_MATCH_1}${inner}")
  cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_BINDIR BASE_DIRECTORY /prefix OUTPUT_VARIABLE from)
  cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_${CMAKE_MATCH_2} BASE_DIRECTORY /prefix OUTPUT_VARIABLE to)
  file(RELATIVE_PATH there ${from} ${to}${inner})
  string(REPLACE "= \"${plain}\"" "= \"${there}\"" command "${command}")
endforeach()
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/qxport CONTENT "${command}" @ONLY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/porting/qxport)
install(PROGRAMS ${PROJECT_BINARY_DIR}/qxport DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/porting/qxporting DESTINATION ${CMAKE_INSTALL_DATADIR}/qxport/python
        COMPONENT development FILES_MATCHING PATTERN "*.py")
install(FILES ${QXPORT_GENERATED}/share/catalogue.json ${PROJECT_SOURCE_DIR}/porting/catalogue.schema.json
        ${PROJECT_SOURCE_DIR}/porting/doctor.schema.json
        ${PROJECT_SOURCE_DIR}/porting/README.md DESTINATION ${CMAKE_INSTALL_DATADIR}/qxport COMPONENT development)

# One file a provider: qxport.pc names the run-time of the compiler that the library was built with, and so does
# qxport-i8.pc, which is for programs whose default integers take 8 bytes. The prefix is told
# from where the file lies, so that the tree can be moved, unless a directory was given as an absolute one.
cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_LIBDIR BASE_DIRECTORY /prefix OUTPUT_VARIABLE library_directory)
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(PC_PREFIX ${CMAKE_INSTALL_PREFIX})
  set(PC_LIBDIR ${CMAKE_INSTALL_LIBDIR})
else()
  file(RELATIVE_PATH up ${library_directory}/pkgconfig /prefix)
  set(PC_PREFIX "\${pcfiledir}/${up}")
  string(REGEX REPLACE "/$" "" PC_PREFIX ${PC_PREFIX})
  set(PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
set(PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
if(IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(PC_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})
endif()
list(JOIN QXPORT_STATIC_THREADS ",-u,pthread_" PC_STATIC_THREADS)
foreach(package qxport:gnu: qxport-posix:posix: qxport-i8:gnu:i8)
  string(REGEX MATCH "^(.*):(.*):(.*)$" parts ${package})
  set(PC_NAME ${CMAKE_MATCH_1})
  set(PC_PROVIDER ${CMAKE_MATCH_2})
  set(PC_MODULES "")
  set(PC_LIBRARY "")
  set(PC_OF "${PC_PROVIDER} run-time")
  if(CMAKE_MATCH_3)
    set(PC_MODULES /${CMAKE_MATCH_3})
    set(PC_LIBRARY " -lqxportmt_${CMAKE_MATCH_3}")
    string(APPEND PC_OF ", default integers of 8 bytes")
  endif()
  configure_file(${PROJECT_SOURCE_DIR}/cmake/qxport.pc.in ${PROJECT_BINARY_DIR}/${PC_NAME}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${PC_NAME}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/qxport)
install(EXPORT qxportTargets NAMESPACE qxport:: DESTINATION ${package_dir} COMPONENT development)
set(QXPORT_COMMAND_DIR ${CMAKE_INSTALL_BINDIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qxportConfig.cmake.in
  ${PROJECT_BINARY_DIR}/qxportConfig.cmake INSTALL_DESTINATION ${package_dir}
  PATH_VARS QXPORT_COMMAND_DIR)
# -m32 is an option to CMake, not a target: it does not know that its programs have narrow addresses.
if(QXPORT_M32)
  set(CMAKE_SIZEOF_VOID_P 4)
endif()
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qxportConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qxportConfig.cmake ${PROJECT_BINARY_DIR}/qxportConfigVersion.cmake
              ${PROJECT_SOURCE_DIR}/cmake/qxportModule.cmake ${PROJECT_SOURCE_DIR}/cmake/qxportProviders.cmake
        DESTINATION ${package_dir} COMPONENT development)
