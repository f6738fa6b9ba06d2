# What `cmake --install` puts under the prefix, in the GNU layout:
#   bin/get_inter_ener                  the tool
#   bin/check_inter_ener                the check of a run's inputs
#   bin/site_energies                   checked site energies and disorder of many crystals
#   bin/make_crystal                    a crystal directory from a structure file (runs the
#                                       workflow's make_crystal.py)
#   share/man/man1/get_inter_ener.1     their manual pages
#   share/man/man1/check_inter_ener.1
#   share/man/man1/site_energies.1
#   share/get_inter_ener/workflows/many-crystals/   the campaign workflow: Snakefile, scripts,
#                                       configuration and profiles
#   lib/libmmutil.a                     the utility library
#   include/mmutil/text.h, numeric.h    its headers
#   lib/cmake/mmutil/                   its CMake package: find_package(mmutil) gives mmutil::mmutil
#   lib/pkgconfig/mmutil.pc             its pkg-config file
# The CMake package and the pkg-config file locate the prefix from where they stand, so an
# installed tree can be moved or unpacked anywhere.
include(CMakePackageConfigHelpers)

install(TARGETS get_inter_ener check_inter_ener site_energies)

foreach(page get_inter_ener check_inter_ener site_energies)
  configure_file(doc/${page}.1.in doc/${page}.1 @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/doc/${page}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endforeach()

# The Slurm profile's status script is run by Snakemake: it stays executable.
install(DIRECTORY workflows/many-crystals DESTINATION ${CMAKE_INSTALL_DATADIR}/${PROJECT_NAME}/workflows
  PATTERN __pycache__ EXCLUDE PATTERN "*.pyc" EXCLUDE
  PATTERN slurm-status PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
    WORLD_READ WORLD_EXECUTE)

# make_crystal runs the workflow's script where it is installed, found from its own place, so
# that an installed tree can be moved.
file(RELATIVE_PATH make_crystal_script ${CMAKE_INSTALL_FULL_BINDIR}
  ${CMAKE_INSTALL_FULL_DATADIR}/${PROJECT_NAME}/workflows/many-crystals/make_crystal.py)
file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/make_crystal CONTENT "#!/bin/sh
# A crystal directory of the campaign from a structure file: see make_crystal.py's help.
exec /usr/bin/python3 \"$(dirname \"$0\")/${make_crystal_script}\" \"$@\"
")
install(PROGRAMS ${PROJECT_BINARY_DIR}/make_crystal DESTINATION ${CMAKE_INSTALL_BINDIR})

install(TARGETS mmutil EXPORT mmutil INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY lib/include/mmutil DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")

set(mmutil_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/mmutil)
install(EXPORT mmutil FILE mmutilConfig.cmake NAMESPACE mmutil:: DESTINATION ${mmutil_package_dir})
write_basic_package_version_file(mmutilConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/mmutilConfigVersion.cmake DESTINATION ${mmutil_package_dir})

set(mmutil_pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH mmutil_pc_prefix
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" mmutil_pc_prefix ${mmutil_pc_prefix})
configure_file(cmake/mmutil.pc.in mmutil.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/mmutil.pc DESTINATION ${mmutil_pkgconfig_dir})
