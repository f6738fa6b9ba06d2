// What the engine tests compare of an output's summary, on one line.
#ifndef GET_INTER_ENER_ENGINE_CASES_H
#define GET_INTER_ENER_ENGINE_CASES_H

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "log_summary.h"

// Charge, multiplicity, atoms, formula, method, basis, job kind, SCF count, the final energy's
// level and value ("-" for what is unknown), then "s2 X", "converged", "failed" when they hold.
//
//   "-1 2 3 H2O B3LYP DEF2-SVP SP 1 SCF -76.301 s2 0.7612"
inline std::string summary_line(const LogSummary& s) {
  const auto known = [](const std::string& text) { return text.empty() ? "-" : text.c_str(); };
  char line[512];
  std::snprintf(line, sizeof line, "%d %d %d %s %s %s %s %s %s %.15g", s.charge, s.multiplicity,
                s.atom_count, known(s.formula), known(s.method), known(s.basis), known(s.job_type),
                s.scf_count < 0 ? "-" : std::to_string(s.scf_count).c_str(),
                s.final_energy.found ? s.final_energy.level.c_str() : "-", s.final_energy.hartree);
  std::string text = line;
  if (s.has_s2) text += " s2 " + std::to_string(s.s2).substr(0, 6);
  if (s.converged) text += " converged";
  if (s.scf_failed) text += " failed";
  return text;
}

// Checks the summary of the whole `text` (its engine, and summary_line()), and that a block
// read further back gives the same final energy.
inline void expect_summary(Engine engine, const std::string& text, const std::string& expect) {
  SCOPED_TRACE(text);
  const LogSummary s = summarize_log(text, text, true);
  EXPECT_EQ(s.engine, engine);
  EXPECT_EQ(summary_line(s), expect);
  const FinalEnergyLine back = read_final_energy(engine, text);
  EXPECT_EQ(back.level, s.final_energy.level);
  EXPECT_EQ(back.hartree, s.final_energy.hartree);
}

#endif  // GET_INTER_ENER_ENGINE_CASES_H
