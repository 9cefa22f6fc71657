# SPDX-License-Identifier: MIT
# What cpack makes: Debian packages of the libraries, of what a host is built with, of the command
# and, where it is built, of the Python module. packaging/build_debs.sh calls it with Debian's
# compiler flags.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vxclss)
set(CPACK_PACKAGE_CONTACT "the vxclss authors <authors@vxclss.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR})
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE vxclss)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${PROJECT_BINARY_DIR}/clss ${PROJECT_BINARY_DIR}/foundation)
# A program needs the release that it was built against, or a later one.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

# The two libraries belong together, so one package has both; the number is that of the SONAMEs.
set(vxclss_runtime libvxclss${PROJECT_VERSION_MAJOR})
set(vxclss_same_release
  "${vxclss_runtime} (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(vxclss_about
"vxclss decides what a measured object is: trained on objects whose category is
known, it gives every category of a new one with its scores and with the cost
to expect of deciding for it. It has Bayesian and nearest-neighbour
classification, decision trees and rule tables.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${vxclss_runtime})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "pattern classification for machine vision - libraries
${vxclss_about}

This package has the shared libraries.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvxclss-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS ${vxclss_same_release})
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "pattern classification for machine vision - development files
${vxclss_about}

This package has what a C++ program is built with: headers, a CMake package, a
pkg-config file, and examples.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME vxclss-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION science)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS ${vxclss_same_release})
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "pattern classification for machine vision - command
${vxclss_about}

This package has the vxclss command, which trains, runs and evaluates
classifiers on CSV files.")

if(TARGET vxclss_python)
  list(APPEND CPACK_COMPONENTS_ALL python)
  # A compiled module fits one minor version of the interpreter.
  find_package(Python REQUIRED COMPONENTS Interpreter)
  math(EXPR vxclss_next_python "${Python_VERSION_MINOR} + 1")
  string(JOIN ", " CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
    "${vxclss_same_release}"
    "python3 (>= ${Python_VERSION_MAJOR}.${Python_VERSION_MINOR}~)"
    "python3 (<< ${Python_VERSION_MAJOR}.${vxclss_next_python})"
    python3-numpy)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-vxclss)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
  set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "python3-matplotlib, python3-sklearn")
  set(CPACK_DEBIAN_PYTHON_DESCRIPTION "pattern classification for machine vision - Python module
${vxclss_about}

This package has the Python module, with estimators for scikit-learn.")
endif()

# Outside of a package the examples stay with the sources.
get_property(vxclss_examples GLOBAL PROPERTY VXCLSS_EXAMPLES)
install(FILES ${vxclss_examples} ${PROJECT_SOURCE_DIR}/examples/data/iris.csv
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libvxclss-dev/examples
  COMPONENT development EXCLUDE_FROM_ALL)

# What Debian asks for and CPack doesn't do.
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/finish_debs.cmake)
set(CPACK_VXCLSS_SOURCE_DIR ${PROJECT_SOURCE_DIR})

include(CPack)
