! The routines for types that no component of any record has, by their names alone.
program records_none_external
  use, intrinsic :: iso_fortran_env, only: int32
  use checks, only: check, finish
  implicit none
  external :: pxfacharget, pxfacharset, pxfadblget, pxfadblset, pxfalgclget, pxfalgclset, pxfarealget, &
    pxfarealset, pxfastrget, pxfastrset, pxfcharget, pxfcharset, pxfdblget, pxfdblset, pxfecharget, &
    pxfecharset, pxfedblget, pxfedblset, pxfeint8get, pxfeint8set, pxfelgclget, pxfelgclset, &
    pxferealget, pxferealset, pxfestrset, pxflgclget, pxflgclset, pxfrealget, pxfrealset, &
    pxfstructcreate, pxfstructfree
  include 'records_none.inc'
end program
