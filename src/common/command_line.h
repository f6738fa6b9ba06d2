// The command line shared by the programs of the suite: the options of the energy job, matched
// by prefix in one fixed order, so that a command line means the same to every program.
#ifndef GET_INTER_ENER_COMMAND_LINE_H
#define GET_INTER_ENER_COMMAND_LINE_H

#include <string>

// The option an argument names, or `none` for an argument that is no option.
enum class Option { verbose, batch, neighbor, qcflag, help, json, version, none };

// The option that `arg` names: an argument names an option of the energy job when it begins
// with the option's text. They are tried in the order -verbose, -batch, -neighbor, -qcflag, -h,
// --help; the first that matches wins. With `check_options` set, the check's own follow: -json
// (by its beginning too), and exactly --json and --version. Anything else is `none`.
//
//   "-batchfile" -> batch;   "-hello" -> help;   "--json" -> none unless check_options
Option match_option(const char* arg, bool check_options);

// Whether `option` takes the next argument as its value (-batch and -qcflag do).
//
//   Option::batch -> true;   Option::neighbor -> false
bool takes_value(Option option);

// The invocation name from the character after its last "/" or "\" on; the whole name when
// it has neither.
//
//   "/opt/suite/bin/tool" -> "tool";   "C:\suite\tool" -> "tool"
std::string program_name(const char* argv0);

#endif  // GET_INTER_ENER_COMMAND_LINE_H
