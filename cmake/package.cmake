# `cpack` (and `make package` in the root Makefile): a .tar.gz and a .deb of what
# `cmake --install` puts in place, named with the project version.
set(CPACK_GENERATOR TGZ DEB)
set(CPACK_PACKAGE_VENDOR "Transport Group, Example University")
set(CPACK_PACKAGE_CONTACT "Transport Group <transport@example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
  "lattice-site internal energies of molecular crystals for charge transport")
string(CONCAT CPACK_PACKAGE_DESCRIPTION
  "get_inter_ener (suite release ${SUITE_RELEASE}) reads the quantum-chemistry outputs\n"
  "of the anion, cation and neutral state of every site of a unit cell and writes\n"
  "the site-energy tables of hole and electron transport; check_inter_ener tells,\n"
  "before a run, what is wrong with those outputs; site_energies writes the tables\n"
  "from the outputs of any of the four engines, checked first, with the figures of\n"
  "energetic disorder, for many crystals in one run; a Snakemake workflow runs\n"
  "campaigns of thousands of crystals with them. The package also holds\n"
  "the mmutil utility library with its headers, CMake package and pkg-config file.")

# Debian package names take no underscore.
set(CPACK_DEBIAN_PACKAGE_NAME get-inter-ener)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The campaign workflow runs on Snakemake and draws its figures with matplotlib.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "snakemake, python3-matplotlib, python3-ase, slurm-client")

include(CPack)
