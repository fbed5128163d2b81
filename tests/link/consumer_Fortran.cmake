# A project of a user who writes Fortran only.
cmake_minimum_required(VERSION 3.25)
project(consumer LANGUAGES Fortran)
find_package(qxport 1.0 REQUIRED)
add_executable(with_shared prog.f90)
target_link_libraries(with_shared PRIVATE qxport::qxport)
add_executable(with_static prog.f90)
target_link_libraries(with_static PRIVATE qxport::qxport_static)
# One that uses a module of another name, with names of its own.
qxport_module(old_modules old_names other_names OF sorting NAMES names.txt)
add_executable(ported ported.f90)
target_link_libraries(ported PRIVATE old_modules qxport::qxport)
