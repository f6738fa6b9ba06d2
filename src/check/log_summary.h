// What a check of a crystal's outputs needs to know of one quantum-chemistry output, taken from
// the first and last bytes of its text: the engine that wrote it, how the run ended, the charge,
// multiplicity, atoms, formula, level of theory and kind of job, whether its SCF converged, its
// <S**2>, and the total energy of each level it prints. Each engine's text is read by its own
// reader (engine_format.h); what is shared by all of them (names, method kinds) is here.
#ifndef GET_INTER_ENER_LOG_SUMMARY_H
#define GET_INTER_ENER_LOG_SUMMARY_H

#include <string>
#include <string_view>
#include <vector>

enum class Engine { unknown, gaussian, orca, qchem, nwchem };
enum class Termination { none, normal, error };

// The engine's name as the check prints it.
//
//   Engine::qchem -> "Q-Chem";   Engine::unknown -> "unknown"
const char* engine_name(Engine engine);

// How a run ended, as the check prints it.
//
//   Termination::none -> "none"
const char* termination_name(Termination termination);

// An energy that an output prints for one level of theory: "CCSD(T)" -75.0177604, and the line
// that prints it, trimmed ("" for Gaussian's archive entry).
struct LevelEnergy {
  std::string label;
  double hartree = 0.0;
  std::string line;
};

// What Gaussian's closing archive entry states.
struct GaussianArchive {
  std::string job_type;  // "SP", "FOpt", "POpt", "Scan", "Freq", ...
  std::string method;    // as written: "UB3LYP", "RCCSD(T)-FC", "RB3LYP TD-FC"
  std::string basis;     // "6-31G(d)"
  std::string formula;   // without the charge and multiplicity: "C18H12"
  std::string route;     // "#P MP2/STO-3G"
  int charge = 0;
  int multiplicity = 0;
  int atom_count = 0;
  std::vector<LevelEnergy> levels;  // "HF" and the correlated levels, in the entry's order
};

// Reads the last complete archive entry of `text` (a line beginning " 1\1\", up to "\\@"),
// its lines joined, each without its one leading blank, before it is split at "\": the wrap at
// 70 columns may fall inside any field or inside the closing "\\@" ("...]\\" then " @", or
// "\" then " \@"). False when there is none or it is cut off. Values that are lists (a scan's
// energies) are not taken as levels.
//
//   " 1\1\G\SP\RMP2-FC\STO-3G\H2O1\U\D\0\\#P MP2/STO-3G\\Water\\0,1\O\H,1,0.99\H,1,0.99,2,106.
//   \\Version=X\HF=-74.96\MP2=-75.00\\@"  ->  SP, RMP2-FC, STO-3G, H2O1, 0, 1, 3 atoms,
//   {HF -74.96, MP2 -75.00}
bool read_gaussian_archive(std::string_view text, GaussianArchive& archive);

// The final energy of a run of another engine: the total energy of the level the job asked
// for, the line that prints it, and the level it is of.
struct FinalEnergyLine {
  bool found = false;
  std::string line;  // the line, trimmed
  double hartree = 0.0;
  std::string level;  // "SCF", "DFT", "MP2", "CCSD(T)", ... as the engine names it, upper case
};

// The final energy that a block `text` of an output of `engine` prints, by that engine's reader
// (EngineFormat::final_energy): not found for a block without one, for Gaussian (whose energies
// are its archive entry's) and for an unknown engine.
//
//   " Total SCF energy =  -76.02\n          Total MP2 energy     -76.22\n" (NWChem)
//   -> found, -76.22, level "MP2", line "Total MP2 energy     -76.22"
FinalEnergyLine read_final_energy(Engine engine, std::string_view text);

// Everything known of one output. Numbers that are unknown are 0 (counts) or flagged; a charge
// beyond +-1000 or a multiplicity outside 1..1000 counts as unknown.
struct LogSummary {
  Engine engine = Engine::unknown;
  Termination termination = Termination::none;
  bool from_archive = false;  // Gaussian: the archive entry was read
  bool has_charge = false;    // charge and multiplicity are known
  int charge = 0;
  int multiplicity = 0;
  int atom_count = 0;   // 0: unknown
  std::string formula;  // Hill order, every count written; "" unknown
  std::string method;   // "" unknown
  std::string basis;    // "" unknown
  // Gaussian: the archive's ("SP", "FOpt", "Freq"); the other engines: the kinds of job_kind()
  // ("SP", "Opt", "Opt+Freq", ...); "" unknown
  std::string job_type;
  std::string not_scf;  // the kind of method whose total energy is not the SCF energy, or ""
  // The total energy of each level the output prints, the last of each, in the order the levels
  // first appear (Gaussian: the archive's, then a TD job's total energy).
  std::vector<LevelEnergy> levels;
  // Gaussian: the "SCF Done" lines of the whole text, counted by the reader (see
  // read_file_row()); the other engines: their SCF totals in a text read whole. -1 when they
  // were not counted.
  int scf_count = -1;
  // Gaussian, when scf_count is -1: the "SCF Done" lines seen in the two ends of the text that
  // were read, a lower bound.
  int scf_seen = 0;
  bool optimisation = false;
  bool converged = false;  // an optimisation that found its stationary point
  bool scan = false;
  bool dynamics = false;
  bool frequency = false;
  bool excited_states = false;  // TD, CIS, EOM on top of the SCF (Gaussian: see not_scf)
  bool scf_failed = false;      // the engine says that its last SCF did not converge
  bool has_s2 = false;          // the last <S**2> printed of the SCF (before any annihilation)
  double s2 = 0.0;
  FinalEnergyLine final_energy;  // the other engines: the total of the job's own level
};

// The kind of job as the check prints it for an engine without an archive entry: "SP", "Opt",
// "Freq", "Scan", "ES" (excited states), "MD", joined by "+" ("Opt+Freq").
//
//   optimisation and frequency -> "Opt+Freq";   nothing -> "SP"
std::string job_kind(const LogSummary& summary);

// The summary of an output whose text begins with `head` and ends with `tail`. `whole_text`
// says that `head` is the whole text (and `tail` its end, or all of it too); otherwise what runs
// to the end of `head`, such as a long atom list, is taken as cut. Its "SCF Done" lines are not
// counted here: scf_count stays -1.
//
//   head " Entering Gaussian System ...", tail "... Normal termination of Gaussian 16 ..."
//   -> engine gaussian, termination normal
LogSummary summarize_log(std::string_view head, std::string_view tail, bool whole_text);

// A method as compared between files: the ground-state method (an excited-state treatment
// after a blank, "RB3LYP TD-FC", is left out: the energy taken is the ground state's), upper
// case, without the restricted, unrestricted or restricted-open prefix (R, U, RO) and without
// Gaussian's frozen-core suffix "-FC", which is its default.
//
//   "UB3LYP" -> "B3LYP";   "rmp2-fc" -> "MP2";   "ROHF" -> "HF";   "RB3LYP TD-FC" -> "B3LYP"
std::string method_key(std::string_view method);

// The kind of method, among those whose total energy is not the SCF energy, named by the
// method `method` or the route keywords `route` (lower or upper case), or "" when none is:
// "MPn", "coupled cluster", "CI", "TD", "EOM", "ONIOM", "counterpoise", "composite",
// "double hybrid".
//
//   "RCCSD(T)-FC", "" -> "coupled cluster";   "B3LYP", "#p b3lyp/sto-3g td(nstates=5)" -> "TD";
//   "RB3LYP TD-FC", "" -> "TD"
std::string not_scf_kind(std::string_view method, std::string_view route);

#endif  // GET_INTER_ENER_LOG_SUMMARY_H
