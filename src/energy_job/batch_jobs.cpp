// The batch job list: a job count, then one line per job naming the anion, cation and neutral
// output files of one lattice site.
#include <cstdio>
#include <cstdlib>
#include <map>

#include "driver.h"
#include "error_report.h"
#include "input_lists.h"
#include "log_store.h"
#include "mmutil/text.h"

SiteEnergies read_batch_jobs(std::FILE* batch, const std::string& batch_name, int engine_code) {
  BatchList list;
  const ListStatus status = read_batch_list(batch, list);
  if (status == ListStatus::count_above_limit) {
    FAIL("%s", batch_list_message(status, list, batch_name).c_str());
  }
  const int job_count = list.job_count;
  const std::size_t n = array_length(job_count);  // a negative count fails here
  SiteEnergies e{std::vector<double>(n), std::vector<double>(n), std::vector<double>(n)};

  // Each distinct trimmed job line, with the first job that had it.
  std::map<std::string, int> job_line_index;
  std::vector<std::string> names;
  for (int j = 0; j < job_count; ++j) {
    const char* const line = list.job_lines[j].c_str();
    const auto [first, is_new] = job_line_index.try_emplace(line, j);
    if (!is_new) {
      const int k = first->second;
      e.U_cC_e[j] = e.U_cC_e[k];
      e.U_cC_h[j] = e.U_cC_h[k];
      e.U_nM[j] = e.U_nM[k];
      if (bVerbose) std::printf("  INFO: No. %d file uses data from No. %d file\n", j + 1, k + 1);
      continue;
    }
    mmutil::tokenize(names, line, " ");
    if (names.size() < 3) {
      FAIL("%s", short_job_line_message(j + 1, batch_name, line).c_str());
    }
    double hartree[3];
    for (int f = 0; f < 3; ++f) {
      const char* const file_name = names[f].c_str();
      if (bVerbose) std::printf("  Parsing file: %s\n", file_name);
      load_log_file(file_name);
      hartree[f] = find_sp_ener(file_name, engine_code);
      release_log_store();
    }
    e.U_cC_e[j] = hartree[0] * hartree_to_meV;
    e.U_cC_h[j] = hartree[1] * hartree_to_meV;
    e.U_nM[j] = hartree[2] * hartree_to_meV;
    if (bVerbose) {
      std::printf("  > U_cC_e U_cC_h U_nM = %10.5f %10.5f %10.5f meV\n", e.U_cC_e[j], e.U_cC_h[j],
                  e.U_nM[j]);
    }
  }
  return e;
}
