"""Names of procedures that Fortran compilers know or define themselves, in lower case."""

# What GNU Fortran takes for an intrinsic without a declaration of it, beyond the standard's as well.
INTRINSICS = frozenset("""
abort abs access achar acos acosd acosh adjustl adjustr aimag aint alarm algama all allocated alog alog10 amax0
amax1 amin0 amin1 amod and anint any asin asind asinh associated atan atan2 atan2d atand atanh atomic_add atomic_and
atomic_cas atomic_define atomic_fetch_add atomic_fetch_and atomic_fetch_or atomic_fetch_xor atomic_or atomic_ref
atomic_xor backtrace besj0 besj1 besjn bessel_j0 bessel_j1 bessel_jn bessel_y0 bessel_y1 bessel_yn besy0 besy1 besyn
bge bgt ble blt btest cabs ccos ccotan cdabs cdcos cdexp cdlog cdsin cdsqrt ceiling cexp char chdir chmod clog cmplx
co_broadcast co_max co_min co_reduce co_sum command_argument_count complex conjg cos cosd cosh cotan cotand count
cpu_time cshift csin csqrt ctime dabs dacos dacosd dacosh dasin dasind dasinh datan datan2 datan2d datand datanh
date_and_time dbesj0 dbesj1 dbesjn dbesy0 dbesy1 dbesyn dble dcmplx dconjg dcos dcosd dcosh dcotan dcotand ddim derf
derfc dexp dfloat dgamma digits dim dimag dint dlgama dlog dlog10 dmax1 dmin1 dmod dnint dot_product dprod dreal
dshiftl dshiftr dsign dsin dsind dsinh dsqrt dtan dtand dtanh dtime eoshift epsilon erf erfc erfc_scaled etime
event_query execute_command_line exit exp exponent extends_type_of failed_images fdate fget fgetc findloc float
floor flush fnum fput fputc fraction free fseek fstat ftell gamma gerror get_command get_command_argument
get_environment_variable get_team getarg getcwd getenv getgid getlog getpid getuid gmtime hostnm huge hypot iabs
iachar iall iand iany iargc ibclr ibits ibset ichar idate idim idint idnint ieor ierrno ifix imag image_index
image_status imagpart index int int2 int8 ior iparity irand is_contiguous is_iostat_end is_iostat_eor isatty ishft
ishftc isign isnan itime kill kind lbound lcobound leadz len len_trim lgamma lge lgt link lle llt lnblnk loc log
log10 log_gamma logical long lshift lstat ltime malloc maskl maskr matmul max max0 max1 maxexponent maxloc maxval
mclock mclock8 merge merge_bits min min0 min1 minexponent minloc minval mod modulo move_alloc mvbits nearest
new_line nint norm2 not null num_images or pack parity perror poppar precision present product radix ran rand
random_init random_number random_seed range rank real realpart rename repeat reshape rrspacing rshift same_type_as
scale scan secnds second selected_char_kind selected_int_kind selected_real_kind set_exponent shape shifta shiftl
shiftr short sign signal sin sind sinh size sizeof sleep sngl spacing spread sqrt srand stat stopped_images
storage_size sum symlnk system system_clock tan tand tanh team_number this_image time time8 tiny trailz transfer
transpose trim ttynam ubound ucobound umask unlink unpack verify xor zabs zcos zcotan zexp zlog zsin zsqrt
""".split())

# What other compilers take for an intrinsic, or have in the archives that they link every program with.
OTHERS = frozenset("""
bessel bic bis bit bsearch clock compl cot date dclock dcot dflotk drand drandm dsecnds eqv exec fork fseeko ftello
getc getegid geteuid getfd getgroups getlasterror getpgrp getppid getsid hostnam ibchng ieee_flags ieee_handler
ieeer isha ishc ishl ixor izext jdate jnint jzext kzext mkdir nargs neqv outstr packtime popcnt putc putenv qsort
raise rindex rmdir rotate rtc scanenv setenv setgid setpgid setuid shift sigset stime symlink sysclock timef times
truncate tzset unpacktime unsetenv utime wait zext
""".split())
