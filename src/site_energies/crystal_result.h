// One crystal as site_energies sees it: the energy it takes from each output (the engine's own
// final-energy line, at the level asked), the findings of the check that apply to that reading,
// the site energies, the site-to-neighbour differences and the figures of energetic disorder,
// and the result as one JSON document.
#ifndef GET_INTER_ENER_CRYSTAL_RESULT_H
#define GET_INTER_ENER_CRYSTAL_RESULT_H

#include <string>
#include <vector>

#include "crystal_findings.h"
#include "crystal_inputs.h"
#include "driver.h"

// Which total energy of an output is taken: the SCF (or DFT) one, for Gaussian the last
// "SCF Done" line as get_inter_ener takes it; or the final one: the job's own level's.
enum class EnergyLevel { scf, final };

// How a crystal is read: the engine every file must be of (unknown: each file's own, as the
// check recognises it), the level, and whether wrong-number findings are written through.
struct ReadingChoice {
  Engine engine = Engine::unknown;
  EnergyLevel level = EnergyLevel::scf;
  bool force = false;
};

// The energy taken from one output.
struct FileEnergy {
  int site = 0;  // the first site (1-based) and role that name it
  int role = 0;
  std::string file;
  Engine engine = Engine::unknown;
  std::string level;  // "SCF", "DFT", "MP2", "CCSD(T)", ...
  double hartree = 0.0;
};

// The spread of one carrier's site energies E_i (holes: cation - neutral; electrons: anion -
// neutral), in meV: sigma_site, the population standard deviation of the N values; sigma_delta,
// the root mean square of every listed site-neighbour difference E_k - E_i (the values of the
// EH or EL tables); the ratio sigma_delta^2 / (2 sigma_site^2), 1 for uncorrelated neighbours,
// unknown when sigma_site is 0.
//
//   E = {0, 10}, 1 lists 2 and 2 lists 1  ->  sigma_site 5, sigma_delta 10, ratio 2
struct Disorder {
  double sigma_site = 0.0;
  double sigma_delta = 0.0;
  bool has_ratio = false;
  double ratio = 0.0;
  int sites = 0;
  long pairs = 0;  // listed site-neighbour entries
};

// The disorder of site energies `site_energy` over the neighbour lists `neighbors` (0-based).
// No sites or no entries give zeros.
Disorder disorder_of(const std::vector<double>& site_energy,
                     const std::vector<std::vector<int>>& neighbors);

struct CrystalResult {
  std::string crystal;  // the directory as given
  std::string batch;
  EnergyLevel level = EnergyLevel::scf;
  std::string refused;  // why the crystal is not written, or "" when it is
  std::vector<FileEnergy> files;
  SiteEnergies energies;  // per site, in meV
  std::vector<std::vector<int>> neighbors;
  Disorder hole, electron;
  std::vector<Finding> findings;  // those that apply to this reading
};

// The result of crystal `crystal` from what the check read (`in`) and found (`found`): the
// energies as `choice` asks, or the reason it is refused (a stop finding, a wrong-number one
// without force, a file of another or no engine, an energy the level does not have).
//
//   a clean Gaussian crystal  ->  refused "", energies as get_inter_ener's
CrystalResult evaluate_crystal(const std::string& crystal, const CrystalInputs& in,
                               const std::vector<Finding>& found, const ReadingChoice& choice);

// The result as one line of JSON (no line feed), the document site_energies.json holds.
std::string result_json(const CrystalResult& result);

#endif  // GET_INTER_ENER_CRYSTAL_RESULT_H
