# The targets that a project links, over those of the libraries themselves; the same for the installed package and for a
# project that has the sources below it.
#
# qxport::qxport         the shared library, with the companion of the project's Fortran run-time
# qxport::qxport_static  the same with the static libraries
# qxport::qxport_i8, qxport::qxport_i8_static  the same for Fortran whose default integers take 8 bytes
# qxport::core_gnu, qxport::core_posix (and ..._static)  the companions by themselves
#
# Where the project has a Fortran compiler the companion is core_gnu, whichever language its programs are linked by; where
# it has none it is core_posix, which knows no Fortran units. A target that is to have the other one says so:
#   set_target_properties(prog PROPERTIES QXPORT_PROVIDER posix)
get_property(qxport_languages GLOBAL PROPERTY ENABLED_LANGUAGES)
set(qxport_is_gnu "$<NOT:$<STREQUAL:$<TARGET_PROPERTY:QXPORT_PROVIDER>,posix>>")
if(NOT "Fortran" IN_LIST qxport_languages)
  set(qxport_is_gnu "$<STREQUAL:$<TARGET_PROPERTY:QXPORT_PROVIDER>,gnu>")
endif()
foreach(qxport_linkage shared static)
  set(qxport_suffix "")
  if(qxport_linkage STREQUAL "static")
    set(qxport_suffix "_static")
  endif()
  foreach(qxport_provider gnu posix)
    add_library(qxport::core_${qxport_provider}${qxport_suffix} INTERFACE IMPORTED ${QXPORT_TARGET_SCOPE})
    target_link_libraries(qxport::core_${qxport_provider}${qxport_suffix} INTERFACE
      qxport::core_${qxport_provider}_${qxport_linkage}_library)
  endforeach()
  add_library(qxport::qxport${qxport_suffix} INTERFACE IMPORTED ${QXPORT_TARGET_SCOPE})
  set(qxport_core $<IF:${qxport_is_gnu},qxport::core_gnu${qxport_suffix},qxport::core_posix${qxport_suffix}>)
  target_link_libraries(qxport::qxport${qxport_suffix} INTERFACE qxport::${qxport_linkage}_library ${qxport_core})
  get_target_property(qxport_is_imported qxport::${qxport_linkage}_library IMPORTED)
  if(qxport_is_imported)
    # It stands before its companion, wherever else a project names that one.
    target_link_libraries(qxport::${qxport_linkage}_library INTERFACE ${qxport_core})
  endif()
  # Its modules are found before those of the same names that come with the library below.
  add_library(qxport::qxport_i8${qxport_suffix} INTERFACE IMPORTED ${QXPORT_TARGET_SCOPE})
  target_link_libraries(qxport::qxport_i8${qxport_suffix} INTERFACE qxport::i8_${qxport_linkage}_library
    qxport::qxport${qxport_suffix})
endforeach()
# A program that another compiler links has the run-time of the static companion only when it is told.
target_link_libraries(qxport::core_gnu_static INTERFACE $<$<NOT:$<LINK_LANGUAGE:Fortran>>:gfortran>
                      $<$<NOT:$<LINK_LANGUAGE:Fortran>>:m>)
unset(qxport_languages)
unset(qxport_is_gnu)
unset(qxport_linkage)
unset(qxport_core)
unset(qxport_is_imported)
unset(qxport_suffix)
unset(qxport_provider)
