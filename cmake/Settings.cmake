# What every target of the tree is compiled with.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# A shared library that was built anew offers what it offered: what is linked with it needs no new link.
set(CMAKE_LINK_DEPENDS_NO_SHARED ON)

if(NOT CMAKE_BUILD_TYPE AND PROJECT_IS_TOP_LEVEL)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "" FORCE)
endif()

if(QXPORT_M32)
  add_compile_options(-m32)
  add_link_options(-m32)
  # 64-bit files and times on the 32-bit target; SSE arithmetic, so that both targets give the same results.
  add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:-msse2> $<$<COMPILE_LANGUAGE:C,CXX>:-mfpmath=sse>)
  add_compile_definitions($<$<COMPILE_LANGUAGE:C,CXX>:_FILE_OFFSET_BITS=64>
                          $<$<COMPILE_LANGUAGE:C,CXX>:_TIME_BITS=64>)
  set(QXPORT_TARGET 32)
else()
  set(QXPORT_TARGET 64)
endif()

if(QXPORT_SANITIZE MATCHES fuzzer)
  # Clang's: what gfortran compiles stays as it is. A Fortran procedure has no type that a caller could know.
  add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:-fsanitize=${QXPORT_SANITIZE}>
                      $<$<COMPILE_LANGUAGE:C,CXX>:-fno-sanitize-recover=all>
                      $<$<COMPILE_LANGUAGE:C,CXX>:-fno-sanitize=function>)
  add_link_options(-fsanitize=${QXPORT_SANITIZE})
elseif(QXPORT_SANITIZE)
  add_compile_options(-fsanitize=${QXPORT_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QXPORT_SANITIZE})
endif()

add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:-Wall> $<$<COMPILE_LANGUAGE:C,CXX>:-Wextra>)
# gfortran takes the descriptors of its own allocatable arrays for uninitialised variables in instrumented code.
add_compile_options("$<$<COMPILE_LANGUAGE:Fortran>:-Wall;-Wextra;-Wno-intrinsics-std;-Wno-maybe-uninitialized>")
# gfortran knows no CMAKE_COMPILE_WARNING_AS_ERROR before CMake 3.29.
if(CMAKE_COMPILE_WARNING_AS_ERROR)
  add_compile_options($<$<COMPILE_LANGUAGE:Fortran>:-Werror>)
endif()

# The same tree gives the same bytes wherever it stands.
add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=./build)

# The names, behind `pthread_`, that a program without shared libraries is asked to take in.
set(QXPORT_STATIC_THREADS create join cond_broadcast cond_destroy cond_init cond_wait mutex_destroy mutex_init
    mutex_trylock)
