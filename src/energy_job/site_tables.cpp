// The site-energy tables: "uc_U.dat" with every site's three energies, and per site the
// hole ("EHnn.dat") and electron ("ELnn.dat") energy differences to each of its neighbours,
// as listed in "neighbor.dat".
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "driver.h"
#include "error_report.h"
#include "input_file.h"
#include "input_lists.h"

namespace {

// Closes an output table. A write that failed, at once or when the buffer was flushed (a full
// disk), is reported with the system's reason: a table is never left short silently.
void close_output(std::FILE* out, const char* name) {
  const bool written = std::fflush(out) == 0 && std::ferror(out) == 0;
  const int write_error = errno;
  const bool closed = std::fclose(out) == 0;
  if (!written || !closed) {
    FAIL("Failed to write output file %s: %s\n", name,
         std::strerror(written ? errno : write_error));
  }
}

void write_site_energies(const SiteEnergies& e) {
  std::FILE* out = std::fopen(kSiteEnergyFile, "w");
  if (out == nullptr) FAIL("Failed to open output file %s\n", kSiteEnergyFile);
  print_site_table(out, e);
  close_output(out, kSiteEnergyFile);
}

// Reads "neighbor.dat", whose number of sites must be `site_count` and whose neighbours must be
// among those sites.
NeighborTable read_neighbor_table(int site_count, const std::string& batch_name) {
  std::FILE* in = open_input_file(kNeighborFile);
  if (in == nullptr) FAIL("%s", input_open_message(kNeighborFile).c_str());
  NeighborTable table;
  ListFault fault;
  const ListStatus status = read_neighbor_list(in, site_count, table, fault);
  std::fclose(in);
  if (status == ListStatus::negative_count) {
    array_length(fault.value);  // fails as an array of negative length does
  } else if (status != ListStatus::ok) {
    FAIL("%s", neighbor_list_message(status, table, fault, site_count, batch_name).c_str());
  }
  return table;
}

// Writes PREFIXnn.dat for every site: its neighbour count, then for each neighbour the
// neighbour's charged-minus-neutral energy less the site's own, then "# in meV".
void write_difference_files(const char* prefix, const std::vector<double>& charged,
                            const std::vector<double>& neutral, const NeighborTable& table) {
  for (std::size_t i = 0; i < table.neighbor_mol_id.size(); ++i) {
    const std::string file = difference_table_name(prefix, i);
    const char* const name = file.c_str();
    if (bVerbose) std::printf("  Writting data file %s\n", name);
    std::FILE* out = std::fopen(name, "w");
    if (out == nullptr) {
      mmutil::print_error_header(REPORT_SITE);
      std::fprintf(stderr, "Failed to open output file %s\n", name);
      end_with_failure();
    }
    print_difference_table(out, charged, neutral, table.neighbor_mol_id[i], i);
    close_output(out, name);
  }
}

}  // namespace

void print_site_table(std::FILE* out, const SiteEnergies& e) {
  std::fprintf(out, "%d\n", static_cast<int>(e.U_nM.size()));
  for (std::size_t j = 0; j < e.U_nM.size(); ++j) {
    std::fprintf(out, "%20.6f %20.6f %20.6f\n", e.U_cC_e[j], e.U_cC_h[j], e.U_nM[j]);
  }
  // The heading comes last: readers take the count from line 1 and the rows after it.
  std::fputs("#       U_cC (anion)        U_cC (cation)       U_nN (neutral)  in meV\n", out);
}

std::string difference_table_name(const char* prefix, std::size_t site) {
  char name[32];
  std::snprintf(name, sizeof name, "%s%02d.dat", prefix, static_cast<int>(site + 1));
  return name;
}

void print_difference_table(std::FILE* out, const std::vector<double>& charged,
                            const std::vector<double>& neutral, const std::vector<int>& neighbors,
                            std::size_t site) {
  const double reference = charged[site] - neutral[site];
  std::fprintf(out, "%d\n", static_cast<int>(neighbors.size()));
  for (const int k : neighbors) {
    std::fprintf(out, "%-20.6f\n", (charged[k] - neutral[k]) - reference);
  }
  std::fputs("# in meV\n", out);
}

void write_site_tables(const SiteEnergies& energies, const std::string& batch_name) {
  write_site_energies(energies);
  std::printf("Write lattice site internal energies... \n");
  const NeighborTable table =
      read_neighbor_table(static_cast<int>(energies.U_nM.size()), batch_name);
  write_difference_files("EH", energies.U_cC_h, energies.U_nM, table);
  write_difference_files("EL", energies.U_cC_e, energies.U_nM, table);
}
