// The site-energy tables: "uc_U.dat" with every site's three energies, and per site the
// hole ("EHnn.dat") and electron ("ELnn.dat") energy differences to each of its neighbours,
// as listed in "neighbor.dat".
#include <cstdio>
#include <cstdlib>

#include "driver.h"
#include "error_report.h"

namespace {

constexpr const char* kSiteEnergyFile = "uc_U.dat";
constexpr const char* kNeighborFile = "neighbor.dat";

// The neighbour lists of the unit cell's sites, as 0-based site numbers.
struct NeighborTable {
  std::vector<int> root_mol_id;                   // each site's own number as written, minus 1
  std::vector<std::vector<int>> neighbor_mol_id;  // each site's neighbours, in file order
};

void write_site_energies(const SiteEnergies& e) {
  std::FILE* out = std::fopen(kSiteEnergyFile, "w");
  if (out == nullptr) FAIL("Failed to open output file %s\n", kSiteEnergyFile);
  std::fprintf(out, "%d\n", static_cast<int>(e.U_nM.size()));
  for (std::size_t j = 0; j < e.U_nM.size(); ++j) {
    std::fprintf(out, "%20.6f %20.6f %20.6f\n", e.U_cC_e[j], e.U_cC_h[j], e.U_nM[j]);
  }
  // The heading comes last: readers take the count from line 1 and the rows after it.
  std::fputs("#       U_cC (anion)        U_cC (cation)       U_nN (neutral)  in meV\n", out);
  std::fclose(out);
}

// Reads the next line of the neighbour table as an integer. At the end of the file the
// buffer keeps the last line read, so its number repeats.
int read_number(std::FILE* in, char (&line)[256]) {
  (void)std::fgets(line, sizeof line, in);
  return std::atoi(line);
}

// Reads "neighbor.dat": two free lines, the number of sites, then per site its number, its
// neighbour count and one neighbour number per line. The number of sites must be
// `site_count`, and every neighbour must be one of those sites.
NeighborTable read_neighbor_table(int site_count, const std::string& batch_name) {
  std::FILE* in = std::fopen(kNeighborFile, "r");
  if (in == nullptr) FAIL("Failed to open input file: %s\n", kNeighborFile);
  char line[256] = "";
  read_number(in, line);
  read_number(in, line);
  const int nmols_uc = read_number(in, line);
  if (nmols_uc != site_count) {
    FAIL("Number of molecules (%d:%d) is not compatible!\nPlease check files %s and %s\n", nmols_uc,
         site_count, kNeighborFile, batch_name.c_str());
  }
  NeighborTable table;
  table.root_mol_id.resize(array_length(nmols_uc));
  table.neighbor_mol_id.resize(array_length(nmols_uc));
  for (int s = 0; s < nmols_uc; ++s) {
    table.root_mol_id[s] = read_number(in, line) - 1;
    const int neighbor_mol_num = read_number(in, line);
    std::vector<int>& neighbors = table.neighbor_mol_id[s];
    neighbors.resize(array_length(neighbor_mol_num));
    for (int& neighbor : neighbors) {
      const int number = read_number(in, line);
      if (number < 1 || number > site_count) {
        FAIL("Neighbor %d of site %d is outside 1..%d in %s\n", number, s + 1, site_count,
             kNeighborFile);
      }
      neighbor = number - 1;
    }
  }
  std::fclose(in);
  return table;
}

// Writes PREFIXnn.dat for every site: its neighbour count, then for each neighbour the
// neighbour's charged-minus-neutral energy less the site's own, then "# in meV".
void write_difference_files(const char* prefix, const std::vector<double>& charged,
                            const std::vector<double>& neutral, const NeighborTable& table) {
  for (std::size_t i = 0; i < table.neighbor_mol_id.size(); ++i) {
    char name[32];
    std::snprintf(name, sizeof name, "%s%02d.dat", prefix, static_cast<int>(i + 1));
    if (bVerbose) std::printf("  Writting data file %s\n", name);
    std::FILE* out = std::fopen(name, "w");
    if (out == nullptr) {
      mmutil::print_error_header(REPORT_SITE);
      std::fprintf(stderr, "Failed to open output file %s\n", name);
      end_with_failure();
    }
    const std::vector<int>& neighbors = table.neighbor_mol_id[i];
    const double reference = charged[i] - neutral[i];
    std::fprintf(out, "%d\n", static_cast<int>(neighbors.size()));
    for (const int k : neighbors) {
      std::fprintf(out, "%-20.6f\n", (charged[k] - neutral[k]) - reference);
    }
    std::fputs("# in meV\n", out);
    std::fclose(out);
  }
}

}  // namespace

void write_site_tables(const SiteEnergies& energies, const std::string& batch_name) {
  write_site_energies(energies);
  std::printf("Write lattice site internal energies... \n");
  const NeighborTable table =
      read_neighbor_table(static_cast<int>(energies.U_nM.size()), batch_name);
  write_difference_files("EH", energies.U_cC_h, energies.U_nM, table);
  write_difference_files("EL", energies.U_cC_e, energies.U_nM, table);
}
