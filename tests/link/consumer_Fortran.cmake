# A project of a user who writes Fortran only.
cmake_minimum_required(VERSION 3.25)
project(consumer LANGUAGES Fortran)
find_package(qxport 1.0 REQUIRED)
add_executable(with_shared prog.f90)
target_link_libraries(with_shared PRIVATE qxport::qxport)
add_executable(with_static prog.f90)
target_link_libraries(with_static PRIVATE qxport::qxport_static)
# Of default integers of 8 bytes.
foreach(linkage shared static)
  add_executable(wide_with_${linkage} wide.f90)
  target_compile_options(wide_with_${linkage} PRIVATE -fdefault-integer-8)
endforeach()
target_link_libraries(wide_with_shared PRIVATE qxport::qxport_i8)
target_link_libraries(wide_with_static PRIVATE qxport::qxport_i8_static)
# One that uses a module of another name, with names of its own.
qxport_module(old_modules old_names other_names OF sorting NAMES names.txt)
add_executable(ported ported.f90)
target_link_libraries(ported PRIVATE old_modules qxport::qxport)
