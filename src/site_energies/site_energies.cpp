// site_energies: the site-energy tables of one or many crystals from the outputs of any of the
// four engines, each crystal checked first, with the figures of energetic disorder.
#include <fcntl.h>
#include <getopt.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "check_report.h"
#include "crystal_findings.h"
#include "crystal_inputs.h"
#include "crystal_result.h"
#include "table_files.h"

namespace {

// Exit statuses: every crystal written and clean; written with findings; some crystal refused
// or not written; a command line that cannot be used.
constexpr int kWritten = 0, kWrittenWithFindings = 1, kRefused = 2, kUsage = 64;

void print_usage() {
  std::printf(
      "Usage: site_energies [OPTION]... [CRYSTAL_DIR]...\n"
      "Writes the site-energy tables (uc_U.dat, EHnn.dat, ELnn.dat) and site_energies.json of\n"
      "each crystal directory (default: the current one), from the outputs of any engine,\n"
      "after checking them as check_inter_ener does.\n"
      "\n"
      "  -b, --batch NAME     the batch job list of each crystal (default int_ener_files.dat)\n"
      "  -e, --engine ENGINE  auto (each file's own, the default), gaussian, orca, qchem, nwchem\n"
      "  -l, --level LEVEL    scf (the SCF/DFT energy, the default) or final (the job's level)\n"
      "  -f, --force          write despite wrong-number findings\n"
      "  -j, --json           one JSON document per crystal on standard output\n"
      "  -h, --help           this text\n"
      "  -V, --version        the version\n"
      "\n"
      "Exit status: 0 all written, no findings; 1 all written, some findings; 2 some crystal\n"
      "refused or not written; 64 a command line that cannot be used.\n");
}

int usage_error(const std::string& message) {
  std::fprintf(stderr, "site_energies: %s\nTry 'site_energies --help'.\n", message.c_str());
  return kUsage;
}

bool parse_engine(const char* text, Engine& engine) {
  const struct {
    const char* name;
    Engine engine;
  } engines[] = {{"auto", Engine::unknown},
                 {"gaussian", Engine::gaussian},
                 {"orca", Engine::orca},
                 {"qchem", Engine::qchem},
                 {"nwchem", Engine::nwchem}};
  for (const auto& e : engines) {
    if (std::strcmp(text, e.name) == 0) {
      engine = e.engine;
      return true;
    }
  }
  return false;
}

// Prints what became of the crystal (its JSON line, or its summary line and findings) and, for
// a refused one, the refusal on standard error. Returns the crystal's exit status.
int report_crystal(const CrystalResult& result, bool json) {
  const std::string& crystal = result.crystal;
  if (json) {
    // One line per crystal, each out as soon as it is done: a reader of the stream (a campaign
    // watching for a crystal that blocks) sees every crystal end.
    std::printf("%s\n", result_json(result).c_str());
    std::fflush(stdout);
  } else if (result.refused.empty()) {
    std::printf("%s: %zu site(s) written; hole sigma_site %.3f meV, electron sigma_site %.3f meV\n",
                crystal.c_str(), result.energies.U_nM.size(), result.hole.sigma_site,
                result.electron.sigma_site);
  } else {
    std::printf("%s: not written\n", crystal.c_str());
  }
  if (!json) {
    for (const Finding& f : result.findings) std::printf("  %s\n", finding_line(f).c_str());
  }
  if (!result.refused.empty()) {
    std::fprintf(stderr, "site_energies: %s: refused: %s\n", crystal.c_str(),
                 result.refused.c_str());
    return kRefused;
  }
  return result.findings.empty() ? kWritten : kWrittenWithFindings;
}

// Checks and writes the crystal in the working directory, named `crystal` in what is printed.
CrystalResult run_crystal(const std::string& crystal, const std::string& batch,
                          const ReadingChoice& choice) {
  const CrystalInputs inputs = read_crystal(batch, 1, OutputReading::ends);
  CrystalResult result = evaluate_crystal(crystal, inputs, check_crystal(inputs), choice);
  std::string error;
  if (result.refused.empty() && !write_crystal_files(result, inputs.stale_tables, error)) {
    result.refused = error;
  }
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  const option options[] = {
      {"batch", required_argument, nullptr, 'b'}, {"engine", required_argument, nullptr, 'e'},
      {"level", required_argument, nullptr, 'l'}, {"force", no_argument, nullptr, 'f'},
      {"json", no_argument, nullptr, 'j'},        {"help", no_argument, nullptr, 'h'},
      {"version", no_argument, nullptr, 'V'},     {nullptr, 0, nullptr, 0}};
  std::string batch = "int_ener_files.dat";
  ReadingChoice choice;
  bool json = false;
  opterr = 0;  // the messages are ours
  for (int c; (c = getopt_long(argc, argv, "b:e:l:fjhV", options, nullptr)) != -1;) {
    switch (c) {
      case 'b':
        batch = optarg;
        break;
      case 'e':
        if (!parse_engine(optarg, choice.engine)) {
          return usage_error(std::string("unknown engine '") + optarg +
                             "' (auto, gaussian, orca, qchem, nwchem)");
        }
        break;
      case 'l':
        if (std::strcmp(optarg, "scf") != 0 && std::strcmp(optarg, "final") != 0) {
          return usage_error(std::string("unknown level '") + optarg + "' (scf, final)");
        }
        choice.level = optarg[0] == 's' ? EnergyLevel::scf : EnergyLevel::final;
        break;
      case 'f':
        choice.force = true;
        break;
      case 'j':
        json = true;
        break;
      case 'h':
        print_usage();
        return 0;
      case 'V':
        std::printf("site_energies %s\n", VERSION_TEXT);
        return 0;
      default:
        return usage_error(optopt != 0 ? std::string("option '-") + static_cast<char>(optopt) +
                                             "' is unknown or lacks its value"
                                       : std::string("option '") + argv[optind - 1] +
                                             "' is unknown or lacks its value");
    }
  }
  std::vector<std::string> crystals(argv + optind, argv + argc);
  if (crystals.empty()) crystals.push_back(".");

  // Each crystal is read from its own directory; the names on the command line are relative
  // to the directory the program started in.
  const int home = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (home < 0) {
    std::fprintf(stderr, "site_energies: cannot open the working directory: %s\n",
                 std::strerror(errno));
    return kRefused;
  }
  int status = kWritten;
  for (const std::string& crystal : crystals) {
    CrystalResult result;
    if (fchdir(home) != 0 || chdir(crystal.c_str()) != 0) {
      const int error = errno;
      // Still a crystal of the run: its line in the JSON stream says why it was not read.
      result.crystal = crystal;
      result.batch = batch;
      result.level = choice.level;
      result.refused = std::string("cannot enter the directory: ") + std::strerror(error);
    } else {
      result = run_crystal(crystal, batch, choice);
    }
    status = std::max(status, report_crystal(result, json));
  }
  close(home);
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::fprintf(stderr, "site_energies: cannot write standard output: %s\n", std::strerror(errno));
    return kRefused;
  }
  return status;
}
