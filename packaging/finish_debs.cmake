# SPDX-License-Identifier: MIT
# Run by cpack on the packages that it has just made.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  if(package MATCHES "\\.deb$")
    execute_process(COMMAND ${CPACK_VXCLSS_SOURCE_DIR}/packaging/finish_deb.sh ${package}
      COMMAND_ERROR_IS_FATAL ANY)
  endif()
endforeach()
