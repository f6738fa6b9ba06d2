// The energy job's driver: the run settings shared by its source files, the batch job list
// and the site-energy tables.
#ifndef GET_INTER_ENER_DRIVER_H
#define GET_INTER_ENER_DRIVER_H

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

// Set by -verbose during the option scan; prints the indented detail lines of a run.
extern bool bVerbose;

// The single conversion factor from hartree to meV.
constexpr double hartree_to_meV = 27211.4;

// Energies of every job of the batch list, in meV, indexed by the 0-based job number, which
// is also the lattice site number.
struct SiteEnergies {
  std::vector<double> U_cC_e;  // anion (electron)
  std::vector<double> U_cC_h;  // cation (hole)
  std::vector<double> U_nM;    // neutral
};

// A count read from an input file, as the length of the array it sizes. A negative count
// fails as an array of negative length does, with std::bad_array_new_length, not caught.
std::size_t array_length(int count);

// Reads the job count and the job lines from the open batch list `batch` (named
// `batch_name` in messages) and takes the anion, cation and neutral energies of each job
// from its three output files with engine code `engine_code`. A job line that repeats an
// earlier one copies that job's energies without reading a file. A missing job line repeats
// the last line read.
SiteEnergies read_batch_jobs(std::FILE* batch, const std::string& batch_name, int engine_code);

// The site tables' text, for every program that writes them: the suite's later stages read
// them as they stand.
//
// "uc_U.dat": the site count, one row of anion, cation and neutral energy (meV) per site, then
// a heading line.
constexpr const char* kSiteEnergyFile = "uc_U.dat";
void print_site_table(std::FILE* out, const SiteEnergies& energies);

// The name of site `site`'s (0-based) difference table: "EH01.dat" for prefix "EH" and site 0.
std::string difference_table_name(const char* prefix, std::size_t site);

// Site `site`'s difference table: its neighbour count, then for each neighbour k its
// charged-minus-neutral energy less the site's own, then "# in meV". `charged` is the cation
// energy for holes (EH), the anion energy for electrons (EL).
void print_difference_table(std::FILE* out, const std::vector<double>& charged,
                            const std::vector<double>& neutral, const std::vector<int>& neighbors,
                            std::size_t site);

// Writes "uc_U.dat", reads "neighbor.dat" and writes the hole files "EHnn.dat" of all sites,
// then the electron files "ELnn.dat".
void write_site_tables(const SiteEnergies& energies, const std::string& batch_name);

#endif  // GET_INTER_ENER_DRIVER_H
