// check_inter_ener: tells, before a run of get_inter_ener with the same options, what is wrong
// with the outputs that run would read: files that would stop it, energies that are likely not
// the ones the tables need, and what is worth knowing about how they are taken.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "check_report.h"
#include "command_line.h"
#include "crystal_findings.h"
#include "crystal_inputs.h"

namespace {

// Exit status of a command line that names an option without its value.
constexpr int kUsageStatus = 2;

void print_usage(const std::string& prog) {
  const char* const p = prog.c_str();
  std::printf(
      "Usage: %s [opts]\n"
      "Checks the inputs of a get_inter_ener run with the same options, before it is run.\n"
      "  -batch int_ener_files.dat : batch file to check\n"
      "  -neighbor                 : accepted; neighbor.dat is always checked\n"
      "  -qcflag [1 | 2 | 3 | 4]   : the engine code get_inter_ener would be given\n"
      "  -verbose                  : accepted; changes nothing\n"
      "  -json, --json             : one JSON document instead of the table\n"
      "  --version                 : prints the version\n"
      "\n"
      "Exit status: 0 nothing found, 1 findings that do not stop the run, 2 the run would stop.\n"
      "e.g.:\n"
      "    %s -batch int_ener_files.dat -neighbor\n"
      "    %s -batch int_ener_files.dat -json\n",
      p, p, p);
}

}  // namespace

int main(int argc, char** argv) {
  std::string batch_name = "int_ener_files.dat";
  int engine_code = 1;
  bool json = false;
  const std::string prog = program_name(argc > 0 ? argv[0] : "");
  for (int i = 1; i < argc; ++i) {
    const Option option = match_option(argv[i], true);
    if (takes_value(option) && i + 1 >= argc) {
      std::fprintf(stderr, "Option %s expects a value as the next argument\n", argv[i]);
      return kUsageStatus;
    }
    switch (option) {
      case Option::batch:
        batch_name = argv[++i];
        break;
      case Option::qcflag:
        engine_code = read_int(argv[++i]);
        break;
      case Option::json:
        json = true;
        break;
      case Option::help:
        print_usage(prog);
        return 0;
      case Option::version:
        std::printf("check_inter_ener %s\n", VERSION_TEXT);
        return 0;
      case Option::verbose:
      case Option::neighbor:
      case Option::none:
        break;
    }
  }
  CrystalInputs inputs = read_crystal(batch_name, engine_code);
  inputs.arguments.assign(argv + std::min(argc, 1), argv + argc);
  const std::vector<Finding> findings = check_crystal(inputs);
  if (json) {
    print_check_json(stdout, inputs, findings);
  } else {
    print_check_table(stdout, inputs, findings);
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::fprintf(stderr, "Failed to write standard output: %s\n", std::strerror(errno));
    return kUsageStatus;
  }
  return check_status(findings);
}
