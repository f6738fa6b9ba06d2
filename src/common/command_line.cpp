#include "command_line.h"

#include <cstring>

namespace {

// Options match every argument that begins with them: -batchfile acts as -batch.
bool matches(const char* arg, const char* option) {
  return std::strncmp(arg, option, std::strlen(option)) == 0;
}

}  // namespace

Option match_option(const char* arg, bool check_options) {
  if (matches(arg, "-verbose")) return Option::verbose;
  if (matches(arg, "-batch")) return Option::batch;
  if (matches(arg, "-neighbor")) return Option::neighbor;
  if (matches(arg, "-qcflag")) return Option::qcflag;
  if (matches(arg, "-h") || matches(arg, "--help")) return Option::help;
  if (!check_options) return Option::none;
  if (matches(arg, "-json") || std::strcmp(arg, "--json") == 0) return Option::json;
  if (std::strcmp(arg, "--version") == 0) return Option::version;
  return Option::none;
}

bool takes_value(Option option) { return option == Option::batch || option == Option::qcflag; }

std::string program_name(const char* argv0) {
  const char* name = argv0;
  for (const char* c = argv0; *c != '\0'; ++c) {
    if (*c == '/' || *c == '\\') name = c + 1;
  }
  return name;
}
