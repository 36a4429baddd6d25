# Nested dissection ordering: target METIS::METIS.
find_path(METIS_INCLUDE_DIR metis.h)
find_library(METIS_LIBRARY metis)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(METIS REQUIRED_VARS METIS_LIBRARY METIS_INCLUDE_DIR)
mark_as_advanced(METIS_INCLUDE_DIR METIS_LIBRARY)
if(METIS_FOUND AND NOT TARGET METIS::METIS)
  add_library(METIS::METIS UNKNOWN IMPORTED)
  set_target_properties(METIS::METIS PROPERTIES IMPORTED_LOCATION "${METIS_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${METIS_INCLUDE_DIR}")
endif()
