#include "table_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>

namespace {

// One file of the set: its name and its whole text.
struct TableFile {
  std::string name;
  std::string text;
  bool unchanged = false;  // the file already holds the text: it is left as it is
};

// The text that `print` writes.
std::string printed(const std::function<void(std::FILE*)>& print) {
  char* data = nullptr;
  std::size_t size = 0;
  std::FILE* out = open_memstream(&data, &size);
  if (out == nullptr) throw std::bad_alloc();
  print(out);
  std::fclose(out);
  std::string text(data, size);
  std::free(data);
  return text;
}

// Whether the regular file `name` holds exactly `text`.
bool holds(const std::string& name, const std::string& text) {
  const int fd = open(name.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  struct stat info {};
  std::string held;
  if (fstat(fd, &info) == 0 && S_ISREG(info.st_mode) &&
      static_cast<std::uint64_t>(info.st_size) == text.size()) {
    held.resize(text.size());
    std::size_t got = 0;
    for (ssize_t n = 1; got < held.size() && n > 0; got += static_cast<std::size_t>(n)) {
      n = read(fd, held.data() + got, held.size() - got);
      if (n <= 0) break;
    }
    held.resize(got);
  }
  close(fd);
  return held.size() == text.size() && held == text;
}

// Writes `file` under `temporary`; false, with the reason, when it cannot be written whole.
bool write_temporary(const TableFile& file, const std::string& temporary, std::string& error) {
  std::FILE* out = std::fopen(temporary.c_str(), "w");
  if (out == nullptr) {
    error = "cannot write " + file.name + ": " + std::strerror(errno);
    return false;
  }
  std::fwrite(file.text.data(), 1, file.text.size(), out);
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
  files.push_back({kSiteEnergyFile, printed([&](std::FILE* out) { print_site_table(out, e); })});
  for (const char* prefix : {"EH", "EL"}) {
    const std::vector<double>& charged = prefix[1] == 'H' ? e.U_cC_h : e.U_cC_e;
    for (std::size_t i = 0; i < result.neighbors.size(); ++i) {
      files.push_back({difference_table_name(prefix, i), printed([&](std::FILE* out) {
                         print_difference_table(out, charged, e.U_nM, result.neighbors[i], i);
                       })});
    }
  }
  files.push_back({kResultFile, result_json(result) + "\n"});

  // A name taken by a directory would stop the renaming half-way: it refuses the set first. A
  // file that already holds its text is left alone (a rerun rewrites nothing, and its time
  // stays that of the run that wrote it).
  for (TableFile& file : files) {
    struct stat info {};
    if (stat(file.name.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
      error = "cannot write " + file.name + ": it is a directory";
      return false;
    }
    file.unchanged = holds(file.name, file.text);
  }
  const std::string suffix = ".tmp." + std::to_string(getpid());
  const auto remove_from = [&](std::size_t first, std::size_t end) {
    for (std::size_t k = first; k < end; ++k) {
      if (!files[k].unchanged) std::remove((files[k].name + suffix).c_str());
    }
  };
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (!files[i].unchanged && !write_temporary(files[i], files[i].name + suffix, error)) {
      remove_from(0, i + 1);
      return false;
    }
  }
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (files[i].unchanged) continue;
    if (std::rename((files[i].name + suffix).c_str(), files[i].name.c_str()) != 0) {
      error = "cannot rename " + files[i].name + suffix + ": " + std::strerror(errno);
      remove_from(i, files.size());
      return false;
    }
  }
  for (const std::string& name : stale) std::remove(name.c_str());
  return true;
}
