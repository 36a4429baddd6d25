# BLAS::BLAS, OpenBLAS when there is one: the reference implementation works but is several times slower.
set(BLA_VENDOR OpenBLAS)
find_package(BLAS QUIET)
if(NOT BLAS_FOUND)
  unset(BLA_VENDOR)
  find_package(BLAS REQUIRED)
endif()
unset(BLA_VENDOR)
