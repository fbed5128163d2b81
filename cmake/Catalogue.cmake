# What tools/apigen.py makes from the catalogue: the header, the Fortran modules, the version scripts, the reference.
find_package(Python3 3.11 REQUIRED COMPONENTS Interpreter)

include(BuildDate)

set(QXPORT_GENERATED ${PROJECT_BINARY_DIR}/generated)
file(GLOB catalogue_files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/api/*.toml ${PROJECT_SOURCE_DIR}/api/tasks/*.f90)
file(GLOB guide_files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/*.md)
file(GLOB generator_files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tools/qxapi/*.py)
set(QXPORT_APIGEN ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/tools/apigen.py --api ${PROJECT_SOURCE_DIR}/api)
set(generate_command ${QXPORT_APIGEN} --out ${QXPORT_GENERATED} --target ${QXPORT_TARGET}
    --guides ${PROJECT_SOURCE_DIR}/docs --version-text ${QXPORT_VERSION_TEXT} --date ${QXPORT_BUILD_DATE})

set(QXPORT_HEADER ${QXPORT_GENERATED}/include/qxport/qxport.h)
set(QXPORT_MODULE_SOURCE ${QXPORT_GENERATED}/fortran/qxport.f90)
set(QXPORT_VERSION_SCRIPT ${QXPORT_GENERATED}/symbols/libqxportmt.map)
set(QXCORE_VERSION_SCRIPT ${QXPORT_GENERATED}/symbols/libqxcoremt.map)
set(QXPORT_MODULE_DIR ${PROJECT_BINARY_DIR}/modules)
# Of programs whose default integers take 8 bytes.
set(QXPORT_I8_MODULE_SOURCE ${QXPORT_GENERATED}/fortran/i8/qxport.f90)
set(QXPORT_I8_VERSION_SCRIPT ${QXPORT_GENERATED}/symbols/libqxportmt_i8.map)
set(QXPORT_I8_VARIANTS ${QXPORT_GENERATED}/private/qxport_i8_traditional.inc
    ${QXPORT_GENERATED}/private/qxport_i8_desktop.inc ${QXPORT_GENERATED}/private/qxport_i8_posix.inc)
set(QXPORT_I8_MODULE_DIR ${PROJECT_BINARY_DIR}/modules_i8)
# CMake looks for them before they are made, where another project has these sources below it.
file(MAKE_DIRECTORY ${QXPORT_GENERATED}/include ${QXPORT_MODULE_DIR} ${QXPORT_I8_MODULE_DIR})

# A stamp, not the files, is the output: unchanged files keep their times, and nothing is rebuilt for a changed text.
add_custom_command(
  OUTPUT ${QXPORT_GENERATED}/stamp
  BYPRODUCTS ${QXPORT_HEADER} ${QXPORT_MODULE_SOURCE} ${QXPORT_I8_MODULE_SOURCE} ${QXPORT_VERSION_SCRIPT}
             ${QXPORT_I8_VERSION_SCRIPT} ${QXCORE_VERSION_SCRIPT} ${QXPORT_I8_VARIANTS}
  # The reference of a routine that is no more must not be installed.
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${QXPORT_GENERATED}/man ${QXPORT_GENERATED}/html
  COMMAND ${generate_command}
  COMMAND ${CMAKE_COMMAND} -E touch ${QXPORT_GENERATED}/stamp
  DEPENDS ${catalogue_files} ${guide_files} ${generator_files} ${PROJECT_SOURCE_DIR}/tools/apigen.py
  COMMENT "Generating the header, the modules and the reference from api/"
  VERBATIM)
add_custom_target(qxport_catalogue DEPENDS ${QXPORT_GENERATED}/stamp)

# The numbers are those of the host's headers, as this target's compiler sees them: a program prints their module.
set(QXPORT_NUMBERS_SOURCE ${QXPORT_GENERATED}/fortran/qxport_numbers.f90)
set(QXPORT_I8_NUMBERS_SOURCE ${QXPORT_GENERATED}/fortran/i8/qxport_numbers.f90)
add_executable(qxport_print_numbers ${PROJECT_SOURCE_DIR}/fortran/numbers.c)
target_compile_definitions(qxport_print_numbers PRIVATE _GNU_SOURCE)
target_include_directories(qxport_print_numbers PRIVATE ${QXPORT_GENERATED}/private)
add_dependencies(qxport_print_numbers qxport_catalogue)
add_custom_command(
  OUTPUT ${QXPORT_NUMBERS_SOURCE} ${QXPORT_I8_NUMBERS_SOURCE}
  COMMAND qxport_print_numbers ${QXPORT_NUMBERS_SOURCE} 4
  COMMAND qxport_print_numbers ${QXPORT_I8_NUMBERS_SOURCE} 8
  DEPENDS qxport_print_numbers
  COMMENT "Printing the modules of the host's numbers"
  VERBATIM)

# The modules hold interfaces and parameters only, so they are checked for syntax and leave .mod files, no object code.
set(module_flags -std=f2018 -Wall -Werror -fsyntax-only)
if(QXPORT_M32)
  list(APPEND module_flags -m32)
endif()
function(add_modules target directory)
  add_custom_command(
    OUTPUT ${directory}/stamp
    BYPRODUCTS ${directory}/qxport.mod ${directory}/qxport_numbers.mod
    COMMAND ${CMAKE_COMMAND} -E make_directory ${directory}
    COMMAND ${CMAKE_Fortran_COMPILER} ${module_flags} -J ${directory} ${ARGN}
    COMMAND ${CMAKE_COMMAND} -E touch ${directory}/stamp
    DEPENDS ${ARGN} qxport_catalogue
    COMMENT "Compiling the Fortran modules (${target})"
    VERBATIM)
  add_custom_target(${target} ALL DEPENDS ${directory}/stamp)
endfunction()
add_modules(qxport_modules ${QXPORT_MODULE_DIR} ${QXPORT_MODULE_SOURCE} ${QXPORT_NUMBERS_SOURCE})
add_modules(qxport_i8_modules ${QXPORT_I8_MODULE_DIR} ${QXPORT_I8_MODULE_SOURCE} ${QXPORT_I8_NUMBERS_SOURCE})
