// What a check finds in the inputs of a run of the energy job, and what each finding means for
// the tables: every finding has a stable code, a severity, the site and file it concerns, and
// one line of explanation.
#ifndef GET_INTER_ENER_CRYSTAL_FINDINGS_H
#define GET_INTER_ENER_CRYSTAL_FINDINGS_H

#include <string>
#include <vector>

#include "crystal_inputs.h"

enum class Severity {
  stop,           // the energy job would stop on these inputs
  wrong_number,   // it would run, but a table value is likely wrong
  worth_knowing,  // it would run; the user should know how the value was taken
};

// The severity's name as the check prints it.
//
//   Severity::wrong_number -> "wrong-number"
const char* severity_name(Severity severity);

struct Finding {
  std::string code;  // "missing-file", "charge-mismatch", ...
  Severity severity = Severity::stop;
  int site = 0;      // 1-based; 0 when it concerns no one site
  std::string file;  // "" when it concerns no one file
  std::string message;
};

// The findings of one crystal's inputs, most severe first, in the order of the batch list
// within a severity. A clean crystal gives none.
//
//   a site whose cation file holds charge 0 while its neutral holds 0 -> {"charge-mismatch",
//   wrong_number, site, cation file, "..."}
std::vector<Finding> check_crystal(const CrystalInputs& in);

// Whether the energy job would complete: no finding stops it. No findings: true.
//
//   {worth_knowing finding} -> true
bool would_succeed(const std::vector<Finding>& findings);

// The check's exit status: 2 when a finding stops the run, 1 for any other finding, else 0.
//
//   {wrong_number, stop} -> 2;   {} -> 0
int check_status(const std::vector<Finding>& findings);

#endif  // GET_INTER_ENER_CRYSTAL_FINDINGS_H
