# A project of a user who writes C only, and has no Fortran compiler.
cmake_minimum_required(VERSION 3.25)
project(consumer LANGUAGES C)
find_package(qxport 1.0 REQUIRED)
add_executable(with_shared prog.c)
target_link_libraries(with_shared PRIVATE qxport::qxport qxport::core_posix)
add_executable(with_static prog.c)
target_link_libraries(with_static PRIVATE qxport::qxport_static qxport::core_posix_static)
