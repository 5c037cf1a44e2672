# Debian packages: `cpack` in a build folder makes libzelsolver1 and libzelstudy1 (the libraries),
# libzelsolver-dev (what building against them takes), zelsolver (the program and the documentation)
# and python3-zelsolver.
#
# Paths are those of the configuration. With -DCMAKE_INSTALL_PREFIX=/usr the library goes into the
# architecture's own folder, otherwise into /usr/lib, where it is found as well.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zelsolver)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/cmake/package/permissions.cmake)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library study_library development program python)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "zelsolver maintainers <maintainers@zelsolver.example>"
  CACHE STRING "Maintainer of the Debian packages")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(library libzelsolver${PROJECT_VERSION_MAJOR})
set(about "An engineering study's project file (.vrdb) holds parameters, designs,
criteria and trained metamodels of its responses. zelsolver opens it and
predicts the responses at any design, with the errors to expect there.
.
This package holds")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "predictions from trained metamodels (shared library)
${about} the shared library.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_SOURCE_DIR}/cmake/package/triggers)

set(study_library libzelstudy${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_STUDY_LIBRARY_PACKAGE_NAME ${study_library})
set(CPACK_DEBIAN_STUDY_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_STUDY_LIBRARY_DESCRIPTION "trainings and studies of metamodels (shared library)
${about} the shared library that trains metamodels from tables of
designs, samples, describes and predicts.")
set(CPACK_DEBIAN_STUDY_LIBRARY_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_SOURCE_DIR}/cmake/package/triggers)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzelsolver-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${library} (= ${PROJECT_VERSION}-1), ${study_library} (= ${PROJECT_VERSION}-1)")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "predictions from trained metamodels (development)
${about} the headers for C and C++, and the files by which CMake
and pkg-config find the library.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME zelsolver)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION science)
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "predictions from trained metamodels (program zel)
${about} the program zel, the documentation and a sample
project.")

# An installation without packages leaves the Python package to pip.
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-zelsolver)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
  "python3 (>= 3.9), python3-numpy, ${library} (>= ${PROJECT_VERSION}), \
${study_library} (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS "python3-pandas, python3-matplotlib, python3-sklearn, \
python3-dask, python3-distributed, python3-tqdm")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "metamodels of engineering studies (Python)
${about} the Python package: training, predictions, pictures, an
estimator for scikit-learn, and dask for many designs.")
install(DIRECTORY python/zelsolver DESTINATION lib/python3/dist-packages
  COMPONENT python EXCLUDE_FROM_ALL FILES_MATCHING PATTERN *.py PATTERN py.typed
  PATTERN __pycache__ EXCLUDE)

# What each package must tell about itself; an installation without packages has no use for it.
execute_process(COMMAND date -u -R -d ${ZEL_BUILD_DATE}
  OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS CHANGELOG.md)
set(package_files ${CMAKE_CURRENT_BINARY_DIR}/package)
configure_file(cmake/package/changelog.Debian.in package/changelog.Debian @ONLY)
execute_process(COMMAND ${ZEL_GZIP} -9nf ${package_files}/changelog.Debian
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${ZEL_GZIP} -9nc ${CMAKE_CURRENT_SOURCE_DIR}/CHANGELOG.md
  OUTPUT_FILE ${package_files}/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
foreach(component ${CPACK_COMPONENTS_ALL})
  string(TOUPPER ${component} upper)
  install(FILES cmake/package/copyright ${package_files}/changelog.gz
    ${package_files}/changelog.Debian.gz
    DESTINATION share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}
    COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
