// get_inter_ener: lattice-site internal energies of a molecular crystal for charge-transport
// simulations. Reads the batch job list, takes the final SCF energy of each listed anion,
// cation and neutral output file, and writes the site-energy tables.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "command_line.h"
#include "driver.h"
#include "error_report.h"
#include "input_file.h"
#include "input_lists.h"

namespace {

// The banner's version line. VERSION_TEXT, such as "2019B (2.1.2)", comes from the build
// (the project version); the frame holds a text of 13 characters.
constexpr char kVersionLine[] =
    "*   KORVA Transport Calculation Utility, Version " VERSION_TEXT "    *\n";
static_assert(sizeof kVersionLine == 67 + 2,
              "a banner line is 67 characters: fit the blanks to the version");

// The banner: four lines of 67 characters.
void print_KORVO_title() {
  std::printf(
      "*******************************************************************\n"
      "%s"
      "*   Transport Group, Dept. of Chemistry, Example University       *\n"
      "*******************************************************************\n",
      kVersionLine);
}

void print_usage(const std::string& prog) {
  print_KORVO_title();
  const char* const p = prog.c_str();
  std::printf(
      "Usage: %s [opts]\n"
      "  -batch int_ener_files.dat : batch file treatment\n"
      "  -neighbor                 : use NEIGHBOR.dat file\n"
      "  -qcflag [1 | 2 | 3 | 4]   : 1 - Gaussian, 2 - Orca, 3 - Qchem, \n"
      "                              4 - NWchem (default to 1)\n"
      "\n"
      "e.g.:\n"
      "    %s -batch int_ener_files.dat -neighbor\n"
      "    %s -batch int_ener_files.dat -neighbor -qcflag 1\n"
      "\n",
      p, p, p);
}

// The argument after option argv[i], which it consumes whatever it is.
const char* option_value(int argc, char** argv, int& i) {
  if (i + 1 >= argc) FAIL("Option %s expects a value as the next argument\n", argv[i]);
  return argv[++i];
}

}  // namespace

int main(int argc, char** argv) {
  // A closed standard output or a file-size limit fails the write that meets it, which is
  // then reported, instead of killing the run with no word.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  // Every informative line reaches the terminal or log as soon as it is printed.
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  std::string batch_name = "int_ener_files.dat";
  int engine_code = 1;
  const std::string prog = program_name(argc > 0 ? argv[0] : "");

  if (argc < 2) {
    print_usage(prog);
    return kFailureStatus;
  }
  for (int i = 1; i < argc; ++i) {
    switch (match_option(argv[i], false)) {
      case Option::verbose:
        bVerbose = true;
        break;
      case Option::batch:
        batch_name = option_value(argc, argv, i);
        if (bVerbose) std::printf("  -batch %s\n", batch_name.c_str());
        break;
      case Option::neighbor:
        if (bVerbose) std::printf("  Set to treat neighbor.dat for site energies\n");
        break;
      case Option::qcflag:
        engine_code = read_int(option_value(argc, argv, i));
        if (bVerbose) std::printf("  -qcflag %d\n", engine_code);
        break;
      case Option::help:
        print_usage(prog);
        return kFailureStatus;
      case Option::json:
      case Option::version:
      case Option::none:
        break;
    }
  }

  std::FILE* batch = open_input_file(batch_name.c_str());
  if (batch == nullptr) FAIL("%s", batch_open_message(batch_name).c_str());
  std::printf("Treating batch file: %s...\n", batch_name.c_str());
  const SiteEnergies energies = read_batch_jobs(batch, batch_name, engine_code);
  std::fclose(batch);
  write_site_tables(energies, batch_name);
  // A run whose report was lost (standard output on a full disk) does not end as a success.
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::fprintf(stderr, "Failed to write standard output: %s\n", std::strerror(errno));
    return kFailureStatus;
  }
  return 0;
}
