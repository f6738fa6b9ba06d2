// How each engine writes its output: one reader per engine, each in its own file
// (engine_gaussian.cpp, engine_orca.cpp, engine_qchem.cpp, engine_nwchem.cpp), the one home of
// that engine's text: how it announces itself, how it ends, its header statements (charge,
// multiplicity, atoms, method, basis, job kind), its SCF failures, its <S**2>, and its total
// energy per level. summarize_log() (log_summary.h) asks them in the order of engine_formats().
//
// Adding an engine: a value of Engine (log_summary.h), a file engine_NAME.cpp that defines its
// EngineFormat, and its line in engine_formats() (log_summary.cpp).
#ifndef GET_INTER_ENER_ENGINE_FORMAT_H
#define GET_INTER_ENER_ENGINE_FORMAT_H

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "log_summary.h"

// What was read of one output: its first bytes, its last bytes, and whether they are the whole
// text (then `head` and `tail` are both all of it). A head that is not the whole text ends at a
// line end: a line it would cut is left out.
struct OutputText {
  std::string_view head;
  std::string_view tail;
  bool whole = false;
};

struct EngineFormat {
  Engine engine;
  const char* name;  // as the check prints it: "Q-Chem"
  // Whether the output is this engine's: its banner in the head.
  bool (*announces)(std::string_view head);
  // A text of its own in the tail that names it when no engine's banner is in the head (an
  // output cut at its start), or nullptr.
  const char* tail_sign;
  // Everything the engine states, into `summary` (whose engine is set): termination, charge,
  // multiplicity, atoms, formula, method, basis, job kind, SCF failure, <S**2>, the last total
  // energy of each level in `levels` and the job's own level's in `final_energy`.
  void (*summarize)(const OutputText& text, LogSummary& summary);
  // The final energy that a block of this engine's text prints, of the job's level as far as the
  // block tells it; used to read further back from the end of a long output. Not found when the
  // block holds none.
  FinalEnergyLine (*final_energy)(std::string_view block);
};

extern const EngineFormat kGaussianFormat;
extern const EngineFormat kOrcaFormat;
extern const EngineFormat kQchemFormat;
extern const EngineFormat kNwchemFormat;

// Every engine's format, in the order their banners are looked for.
const EngineFormat* const* engine_formats(std::size_t& count);

// The format of `engine`, or nullptr for Engine::unknown.
const EngineFormat* format_of(Engine engine);

// The line (of `text`) on which an engine states a value, and the value that follows `label` on
// it, as the engines write a header statement: "Charge           :     1",
// "Multiplicity   Mult   ....    2". False when no line holds `label` or no number follows it.
//
//   "  Spin multiplicity:     2\n", "Spin multiplicity:" -> true, 2
bool stated_number(std::string_view text, std::string_view label, double& value);

// The job's own final energy among `summary.levels` (each level's last total, in the order the
// levels first appear), into `summary.final_energy`: that of the level `job_level`, or, when the
// output prints none of that level or the job's level is unknown (""), the last level printed
// that is no spin-component-scaled variant printed beside its level (SCS-, SOS-) and no excited
// state's total (TDDFT). Not found when there is no level.
//
//   {"SCF" -76.0, "MP2" -76.2, "SCS-MP2" -76.21}, "" -> MP2 -76.2
void choose_final_energy(const std::string& job_level, LogSummary& summary);

// Reads a charge and a multiplicity from `text` with the scanf format `format` (two %lld). A
// number beyond the range of int is taken as the nearest int, never wrapped, so that the range
// check of a summary sees it as the corrupt text it is.
//
//   "4294967296,1", "%lld,%lld" -> 2147483647, 1
bool read_charge_pair(const char* text, const char* format, int& charge, int& multiplicity);

// The element symbol that begins an atom line of an input echo or a coordinate table ("C   1
// B1", "C,0,1.2,0.,0.", "C1 -4.8 0.6 0.3", "Cl  0.0 0.0 1.2"), or "" for any other line.
std::string atom_symbol(std::string_view line);

// The words of a line of keywords in lower case, without a leading "#", "#p", "#n", "#t" or "!"
// (Gaussian's route, ORCA's simple input).
//
//   "#P MP2/STO-3G opt=(tight)" -> {"mp2/sto-3g", "opt=(tight)"}
std::vector<std::string> route_words(std::string_view route);

// The name of a keyword: "opt=(tight)" -> "opt", "td(nstates=5)" -> "td".
std::string keyword_name(std::string_view word);

// Adds the total energy `hartree` of level `label`, printed on `line`, to `levels`: a level
// printed again replaces its value (the last one counts) and keeps its place.
void note_level(std::vector<LevelEnergy>& levels, const std::string& label, double hartree,
                std::string_view line);

// How a run ended, from the last of its engine's normal endings `normal` and error endings
// `error` in `tail`: the later of the two counts; none found gives Termination::none.
//
//   "...aborting the run\n...ORCA TERMINATED NORMALLY", {"ORCA TERMINATED NORMALLY"},
//   {"aborting the run"} -> normal
Termination last_ending(std::string_view tail, std::initializer_list<std::string_view> normal,
                        std::initializer_list<std::string_view> error);

// A level of theory as an archive entry or a total-energy line names it, upper case: HF or a
// correlated or composite level ("MP2", "CCSD(T)", "QCISD", "CBSQB3", "G4"); not the SCF.
//
//   "MP4SDQ" -> true;   "SCF" -> false;   "B3LYP" -> false
bool is_level_label(std::string_view label);

// A level of theory as the engines name it in their total-energy lines, in any letter case: the
// SCF ("SCF", "DFT", "HF") or a correlated level ("MP2", "MBPT(2)", "RI-MP2", "CCSD(T)",
// "QCISD", "SCS-MP2").
bool is_level_name(std::string_view word);

// The number that follows a label in the words `w` from word `value` on: after "=", ":", "...",
// "/ hartree" or nothing. False when another word comes first.
//
//   {"Total", "MP2", "energy", "=", "-76.2"}, 3 -> true, -76.2
bool energy_after_label(const std::vector<std::string_view>& w, std::size_t value, double& hartree);

#endif  // GET_INTER_ENER_ENGINE_FORMAT_H
