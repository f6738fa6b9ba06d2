#include "table_files.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <functional>

namespace {

// One file of the set: its name and what writes its text.
struct TableFile {
  std::string name;
  std::function<void(std::FILE*)> print;
};

// Writes `file` under `temporary`; false, with the reason, when it cannot be written whole.
bool write_temporary(const TableFile& file, const std::string& temporary, std::string& error) {
  std::FILE* out = std::fopen(temporary.c_str(), "w");
  if (out == nullptr) {
    error = "cannot write " + file.name + ": " + std::strerror(errno);
    return false;
  }
  file.print(out);
  const bool written = std::fflush(out) == 0 && std::ferror(out) == 0;
  const int write_error = errno;
  if (std::fclose(out) != 0 || !written) {
    error = "cannot write " + file.name + ": " + std::strerror(written ? errno : write_error);
    return false;
  }
  return true;
}

}  // namespace

bool write_crystal_files(const CrystalResult& result, const std::vector<std::string>& stale,
                         std::string& error) {
  const SiteEnergies& e = result.energies;
  std::vector<TableFile> files;
  files.push_back({kSiteEnergyFile, [&](std::FILE* out) { print_site_table(out, e); }});
  for (const char* prefix : {"EH", "EL"}) {
    const std::vector<double>& charged = prefix[1] == 'H' ? e.U_cC_h : e.U_cC_e;
    for (std::size_t i = 0; i < result.neighbors.size(); ++i) {
      files.push_back({difference_table_name(prefix, i), [&, i](std::FILE* out) {
                         print_difference_table(out, charged, e.U_nM, result.neighbors[i], i);
                       }});
    }
  }
  const std::string json = result_json(result) + "\n";
  files.push_back({kResultFile, [&](std::FILE* out) { std::fputs(json.c_str(), out); }});

  // A name taken by a directory would stop the renaming half-way: it refuses the set first.
  for (const TableFile& file : files) {
    struct stat info {};
    if (stat(file.name.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
      error = "cannot write " + file.name + ": it is a directory";
      return false;
    }
  }
  const std::string suffix = ".tmp." + std::to_string(getpid());
  const auto remove_from = [&](std::size_t first, std::size_t end) {
    for (std::size_t k = first; k < end; ++k) std::remove((files[k].name + suffix).c_str());
  };
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (!write_temporary(files[i], files[i].name + suffix, error)) {
      remove_from(0, i + 1);
      return false;
    }
  }
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (std::rename((files[i].name + suffix).c_str(), files[i].name.c_str()) != 0) {
      error = "cannot rename " + files[i].name + suffix + ": " + std::strerror(errno);
      remove_from(i, files.size());
      return false;
    }
  }
  for (const std::string& name : stale) std::remove(name.c_str());
  return true;
}
