// ORCA's reader (engine_orca.cpp) on small texts in its layouts: the input's echo, the SCF
// settings, the coordinate table, endings, SCF failures, <S**2> and the job's final energy.
#include <gtest/gtest.h>

#include <string>

#include "engine_cases.h"

namespace {

const std::string kBanner = "                                 * O   R   C   A *\n\n";

// An echo of `keywords` and a molecule of charge and multiplicity `state` (water).
std::string input(const std::string& keywords, const std::string& state,
                  const std::string& more = "") {
  return kBanner + "|  1> ! " + keywords + "\n|  2> * xyz " + state +
         "\n|  3>   O  0.0 0.0 0.1\n|  4>   H  0.0 0.7 -0.4\n|  5>   H  0.0 -0.7 -0.4\n|  6> *\n" +
         more +
         "|  9>                          ****END OF INPUT****\n"
         "Your calculation utilizes the basis: def2-SVP\n";
}

const std::string kEnd = "\n                             ****ORCA TERMINATED NORMALLY****\n";

TEST(EngineOrca, StatementsAndLevels) {
  const struct {
    std::string text;
    const char* expect;  // charge mult atoms formula method basis job SCF final-level final
  } cases[] = {
      {input("UKS B3LYP def2-SVP TightSCF", "-1 2") +
           "Total Energy       :   -76.30 Eh\nExpectation value of <S**2>     :     0.7612\n"
           "FINAL SINGLE POINT ENERGY   -76.301\n" +
           kEnd,
       "-1 2 3 H2O B3LYP DEF2-SVP SP 1 SCF -76.301 s2 0.7612"},
      // The settings block (ORCA 4 to 6) outranks the echo; the last coordinate table counts.
      {input("B3LYP def2-SVP Opt", "0 1") +
           " Total Charge           Charge          ....    1\n"
           " Multiplicity           Mult            ....    2\n"
           "CARTESIAN COORDINATES (ANGSTROEM)\n---------------------------------\n"
           "  C  0.0 0.0 0.0\n  O  0.0 0.0 1.2\n\nTotal Energy       :   -113.1 Eh\n"
           "FINAL SINGLE POINT ENERGY   -113.2\n"
           "                    ***        THE OPTIMIZATION HAS CONVERGED     ***\n"
           "Total Energy       :   -113.25 Eh\nFINAL SINGLE POINT ENERGY   -113.25\n" +
           kEnd,
       "1 2 2 CO B3LYP DEF2-SVP Opt 2 SCF -113.25 converged"},
      // A correlated job: its level, not the SCF reference nor a scaled variant.
      {input("RI-MP2 def2-SVP def2-SVP/C Freq", "0 1") +
           "Total Energy       :   -76.0 Eh\nMP2 TOTAL ENERGY:      -76.2 Eh\n"
           "FINAL SINGLE POINT ENERGY   -76.2\n" +
           kEnd,
       "0 1 3 H2O RI-MP2 DEF2-SVP Freq 1 MP2 -76.2"},
      {input("HF def2-SVP", "0 1") +
           "   Total Energy        :  -75.9 Eh\n"
           "                    *           SCF NOT CONVERGED AFTER 125 CYCLES       *\n" +
           kEnd,
       "0 1 3 H2O HF DEF2-SVP SP 0 - 0 failed"},
      {input("PBE0 def2-SVP", "0 1",
             "|  7> %geom Scan B 0 1 = 1.0, 2.0, 5 end end\n|  8> %tddft nroots 5 end\n"),
       "0 1 3 H2O PBE0 DEF2-SVP Scan+ES 0 - 0"},
  };
  for (const auto& c : cases) expect_summary(Engine::orca, c.text, c.expect);
  // A coordinate table cut by the end of a head taken from a longer text is no count.
  const std::string head =
      input("B3LYP", "0 1") + "CARTESIAN COORDINATES (ANGSTROEM)\n---\n  C 0 0 0\n";
  EXPECT_EQ(summarize_log(head + "  O 0 0", "", false).atom_count, 3);  // the echo's atoms
}

}  // namespace
