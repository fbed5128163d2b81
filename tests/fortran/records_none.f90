! The routines for types that no component of any record has, through the module.
program records_none
  use, intrinsic :: iso_fortran_env, only: int32
  use checks, only: check, finish
  use qxport, only: pxfacharget, pxfacharset, pxfadblget, pxfadblset, pxfalgclget, pxfalgclset, pxfarealget, &
    pxfarealset, pxfastrget, pxfastrset, pxfcharget, pxfcharset, pxfdblget, pxfdblset, &
    pxfecharget, pxfecharset, pxfedblget, pxfedblset, pxfeint8get, pxfeint8set, pxfelgclget, &
    pxfelgclset, pxferealget, pxferealset, pxfestrset, pxflgclget, pxflgclset, pxfrealget, &
    pxfrealset, pxfstructcreate, pxfstructfree
  implicit none
  include 'records_none.inc'
end program
