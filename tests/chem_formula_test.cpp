// Formulas and element symbols at their limits.
#include "chem_formula.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(ChemFormula, HillOrderAndElectrons) {
  EXPECT_EQ(hill_formula({"h", "C", "cl", "C"}), "C2HCl");  // counts of 1 unwritten, as archives do
  EXPECT_EQ(hill_formula({"O", "H", "H"}), "H2O");          // no carbon: alphabetical
  EXPECT_EQ(formula_electrons("C18H12"), 120);
  EXPECT_EQ(formula_electrons("C2Q4"), -1);
  EXPECT_EQ(formula_electrons("H2o"), -1);               // a symbol begins with a capital
  EXPECT_EQ(formula_electrons("Rn999999Xe999999"), -1);  // corrupt
  EXPECT_EQ(formula_electrons("H1000001"), -1);          // more than a million of one atom
  std::string most;  // the most electrons a formula may count: a hundred million
  for (int k = 0; k < 100; ++k) most += "H1000000";
  EXPECT_EQ(formula_electrons(most), 100000000);
  EXPECT_EQ(formula_electrons(most + "H"), -1);
  EXPECT_EQ(formula_electrons(""), -1);
  // One molecule in the notations of the archive entry and of the head's atoms.
  EXPECT_TRUE(same_formula("H2O1", "H2O"));
  EXPECT_TRUE(same_formula("C1O1", "OC"));
  EXPECT_TRUE(same_formula("CH2Cl2", "C1Cl2H2"));
  EXPECT_FALSE(same_formula("C2H4", "C2H6"));
  EXPECT_FALSE(same_formula("C2H4", "C2H4Cl"));
  EXPECT_FALSE(same_formula("CO", "Co"));  // carbon and oxygen, cobalt
  EXPECT_FALSE(same_formula("Xx", "Xx"));  // no formula: never the same
  EXPECT_EQ(atomic_number("Rn"), 86);
  EXPECT_EQ(atomic_number("Redundant"), 0);
}

}  // namespace
