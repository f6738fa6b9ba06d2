#include "crystal_findings.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "chem_formula.h"
#include "command_line.h"
#include "text_format.h"

namespace {

// A message of the energy job as one line: its newlines become blanks.
std::string one_line(std::string message) {
  while (!message.empty() && message.back() == '\n') message.pop_back();
  std::replace(message.begin(), message.end(), '\n', ' ');
  return message;
}

std::string quoted(const std::string& message) { return "\"" + one_line(message) + "\""; }

// How the energy job ends on a list refused with `status` and `message`: a negative count
// aborts it without a message of its own.
std::string refusal(ListStatus status, const std::string& message) {
  return status == ListStatus::negative_count ? "get_inter_ener aborts: " + one_line(message)
                                              : "get_inter_ener stops with " + quoted(message);
}

struct Findings {
  std::vector<Finding> list;
  void add(const char* code, Severity severity, int site, const std::string& file,
           std::string message) {
    list.push_back({code, severity, site, file, std::move(message)});
  }
};

void check_lists(const CrystalInputs& in, Findings& out) {
  if (!in.batch_opened) {
    out.add("batch-list-missing", Severity::stop, 0, in.batch_name,
            "get_inter_ener stops with " + quoted(batch_open_message(in.batch_name)));
    return;
  }
  if (in.batch_status != ListStatus::ok) {
    out.add("batch-list-refused", Severity::stop, 0, in.batch_name,
            refusal(in.batch_status, batch_list_message(in.batch_status, in.batch, in.batch_name)));
    return;
  }
  if (in.engine_code > 4 && in.batch.job_count > 0) {
    out.add("unknown-engine-code", Severity::stop, 0, "",
            format_text("-qcflag %d is above 4: get_inter_ener stops at its first output with "
                        "\"Unknown compute engine: %d\"",
                        in.engine_code, in.engine_code));
  }
  if (!in.neighbors_read) return;
  if (!in.neighbors_opened) {
    out.add("neighbor-table-missing", Severity::stop, 0, kNeighborFile,
            "get_inter_ener writes uc_U.dat, then stops with " +
                quoted(input_open_message(kNeighborFile)));
  } else if (in.neighbor_status != ListStatus::ok) {
    out.add("neighbor-table-refused", Severity::stop, in.neighbor_fault.site, kNeighborFile,
            "uc_U.dat is written, then " +
                refusal(in.neighbor_status,
                        neighbor_list_message(in.neighbor_status, in.neighbors, in.neighbor_fault,
                                              in.batch.job_count, in.batch_name)));
  }
}

// The batch list's text against what the job reads of it: job lines it repeats because the
// file ended, job lines it never reads because the count is lower.
void check_batch_text(const CrystalInputs& in, Findings& out) {
  const BatchList& b = in.batch;
  if (b.lines_read < b.job_count) {
    const int first = b.lines_read + 1;
    const std::string sites = first < b.job_count
                                  ? format_text("sites %d to %d", first, b.job_count)
                                  : format_text("site %d", first);
    out.add("job-count-above-lines", Severity::wrong_number, first, in.batch_name,
            format_text("the job count %d on line 1 is above the %d job line(s) that follow: "
                        "get_inter_ener repeats the last line read for %s",
                        b.job_count, b.lines_read, sites.c_str()));
  }
  if (in.batch_unread_lines > 0) {
    out.add("job-count-below-lines", Severity::wrong_number, 0, in.batch_name,
            format_text("%d more line(s) follow the %d job(s) that the count on line 1 gives: "
                        "get_inter_ener never reads them, and the tables have %d site(s)",
                        in.batch_unread_lines, b.job_count, b.job_count));
  }
}

// Whether the sites' own numbers, as read, are 1..n in some order.
bool is_permutation_of_sites(const std::vector<int>& roots) {
  std::vector<int> sorted = roots;
  std::sort(sorted.begin(), sorted.end());
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    if (sorted[i] != static_cast<int>(i)) return false;
  }
  return true;
}

// The neighbour table's text against what the job reads of it. The job reads one number a
// line, block after block, in file order; the site's own number that opens each block takes
// no part in the tables, so a block out of place goes unnoticed by the job. True when a finding
// says that the table is misread.
bool check_neighbor_text(const CrystalInputs& in, Findings& out) {
  if (!in.neighbors_opened || in.neighbor_status != ListStatus::ok) return false;
  const NeighborTable& t = in.neighbors;
  bool misread = false;
  if (t.site_past_end > 0) {
    misread = true;
    out.add("neighbor-table-cut-short", Severity::wrong_number, t.site_past_end, kNeighborFile,
            format_text("the table ends inside the block of site %d: get_inter_ener repeats the "
                        "last number read for every number after it",
                        t.site_past_end));
  }
  if (t.several_numbers_site > 0) {
    misread = true;
    out.add("neighbor-several-numbers", Severity::wrong_number, t.several_numbers_site,
            kNeighborFile,
            format_text("the line \"%s\" in the block of site %d holds several numbers: "
                        "get_inter_ener reads one number a line, the first, and takes the next "
                        "from the next line",
                        t.several_numbers_line.c_str(), t.several_numbers_site));
  }
  // The first block whose own number is not its place in the file.
  int site = 0;
  for (std::size_t i = 0; i < t.root_mol_id.size() && site == 0; ++i) {
    if (t.root_mol_id[i] != static_cast<int>(i)) site = static_cast<int>(i) + 1;
  }
  if (site > 0) {
    const long long written = static_cast<long long>(t.root_mol_id[site - 1]) + 1;
    if (!misread && in.neighbor_unread_lines == 0 && is_permutation_of_sites(t.root_mol_id)) {
      out.add("neighbor-blocks-out-of-order", Severity::wrong_number, site, kNeighborFile,
              format_text("the block read as site %d is written for site %lld: get_inter_ener "
                          "takes the blocks in file order, so site %d gets the neighbours "
                          "written for site %lld",
                          site, written, site, written));
    } else if (site == 1) {
      out.add("neighbor-count-mismatch", Severity::wrong_number, site, kNeighborFile,
              format_text("the first block begins with %lld where the site number 1 stands: "
                          "every block is read shifted",
                          written));
    } else {
      out.add("neighbor-count-mismatch", Severity::wrong_number, site, kNeighborFile,
              format_text("the block read as site %d begins with %lld where its site number "
                          "stands: site %d's neighbour count, %zu, is likely not the number of "
                          "neighbours listed, and every block after it is read shifted",
                          site, written, site - 1, t.neighbor_mol_id[site - 2].size()));
    }
    misread = true;
  }
  if (!misread && in.neighbor_unread_lines > 0) {
    out.add("neighbor-table-extra-lines", Severity::wrong_number, 0, kNeighborFile,
            format_text("%d more line(s) follow the block of the last site: get_inter_ener never "
                        "reads them (is the last site's neighbour count below the neighbours "
                        "listed?)",
                        in.neighbor_unread_lines));
    misread = true;
  }
  return misread;
}

// Site tables that the run leaves in place beside the ones it writes.
void check_stale_tables(const CrystalInputs& in, Findings& out) {
  if (in.stale_tables.empty()) return;
  std::string names;
  const std::size_t shown = std::min<std::size_t>(in.stale_tables.size(), 4);
  for (std::size_t i = 0; i < shown; ++i) names += (i > 0 ? ", " : "") + in.stale_tables[i];
  if (shown < in.stale_tables.size()) names += ", ...";
  out.add("stale-site-tables", Severity::wrong_number, 0, in.stale_tables[0],
          format_text("%zu site table(s) in the directory are not of this crystal's %d site(s) "
                      "(%s): get_inter_ener leaves them, and a later stage that reads every "
                      "EH*.dat and EL*.dat takes their numbers",
                      in.stale_tables.size(), in.batch.job_count, names.c_str()));
}

// The distance between two short words: insertions, deletions and substitutions.
std::size_t edit_distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t above = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
      diagonal = above;
    }
  }
  return row[b.size()];
}

// An option of the energy job as its usage text writes it.
struct JobOption {
  const char* name;
  Option option;
};

// The option of the energy job that a skipped argument most likely meant: the same word with
// other dashes ("--batch"), or a word of four letters or more at most two letters away
// ("-qcflg"); nullptr otherwise.
const JobOption* meant_option(const std::string& arg) {
  static const JobOption kOptions[] = {{"-verbose", Option::verbose},
                                       {"-batch", Option::batch},
                                       {"-neighbor", Option::neighbor},
                                       {"-qcflag", Option::qcflag},
                                       {"-help", Option::help}};
  const std::size_t dashes = arg.find_first_not_of('-');
  if (dashes == 0 || dashes == std::string::npos) return nullptr;
  const std::string word = arg.substr(dashes);
  for (const JobOption& o : kOptions) {
    const std::string name = o.name + 1;
    if (word == name || (word.size() >= 4 && edit_distance(word, name) <= 2)) return &o;
  }
  return nullptr;
}

// The arguments that the energy job skips without a word, and what it does instead: it
// matches its options by prefix and passes over anything else.
void check_arguments(const CrystalInputs& in, Findings& out) {
  const std::vector<std::string>& args = in.arguments;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const Option option = match_option(args[i].c_str(), false);
    if (option != Option::none) {
      i += takes_value(option);
      continue;
    }
    if (match_option(args[i].c_str(), true) != Option::none) continue;  // the check's own
    const JobOption* meant = meant_option(args[i]);
    const Option meant_as = meant != nullptr ? meant->option : Option::none;
    std::string skipped = "\"" + args[i] + "\"";
    // The value after a misspelt option is skipped too, unless it is an option itself.
    if (takes_value(meant_as) && i + 1 < args.size() &&
        match_option(args[i + 1].c_str(), false) == Option::none) {
      skipped += " and \"" + args[++i] + "\"";
    }
    std::string effect = "and runs on";
    if (meant_as == Option::batch) effect = "and reads " + in.batch_name;
    if (meant_as == Option::qcflag)
      effect = format_text("and takes engine code %d", in.engine_code);
    const std::string hint =
        meant != nullptr ? format_text(" (%s was likely meant)", meant->name) : "";
    out.add("skipped-argument", Severity::wrong_number, 0, "",
            "get_inter_ener skips " + skipped + " without a word " + effect + hint);
  }
}

// What stops the energy job at this file, or "" when it takes an energy from it.
void check_energy_line(const FileRow& row, Findings& out) {
  const LogSummary& s = row.summary;
  if (row.read == LogReadStatus::cannot_open) {
    out.add("missing-file", Severity::stop, row.site, row.file,
            "get_inter_ener stops with " + quoted(input_open_message(row.file)));
  } else if (row.read == LogReadStatus::read_failed) {
    out.add("unreadable-file", Severity::stop, row.site, row.file,
            "a read fails (" + row.read_error + "): get_inter_ener stops at this file");
  } else if (row.energy == SpEnerStatus::marker_not_found) {
    std::string message =
        "no \"SCF Done\" line: get_inter_ener stops with \"string 'SCF Done' "
        "NOT found in " +
        row.file + "\"";
    if (s.engine != Engine::gaussian && s.engine != Engine::unknown) {
      message += std::string("; this ") + engine_name(s.engine) + " output ";
      message += s.final_energy.found
                     ? format_text("prints its final energy, %s, %.15g hartree as \"%s\"",
                                   s.final_energy.level.c_str(), s.final_energy.hartree,
                                   s.final_energy.line.c_str())
                     : std::string("holds no final-energy line in what was read");
    }
    out.add("no-energy-line", Severity::stop, row.site, row.file, message);
  } else if (row.energy == SpEnerStatus::too_few_fields) {
    out.add("energy-line-too-short", Severity::stop, row.site, row.file,
            "the last \"SCF Done\" line has fewer than five fields: get_inter_ener stops (" +
                quoted(row.energy_line) + ")");
  } else if (!row.energy_is_number) {
    out.add("energy-not-a-number", Severity::wrong_number, row.site, row.file,
            format_text("the energy field of the last \"SCF Done\" line is not a number as a "
                        "whole: get_inter_ener takes %.9f hartree from it (%s)",
                        row.hartree, quoted(row.energy_line).c_str()));
  } else if (!std::isfinite(row.hartree)) {
    out.add("energy-not-finite", Severity::wrong_number, row.site, row.file,
            format_text("the energy of the last \"SCF Done\" line reads as %g: the tables get "
                        "values that are no numbers (%s)",
                        row.hartree, quoted(row.energy_line).c_str()));
  }
}

// An open-shell state whose <S**2> lies more than 10 % above S(S+1): another spin state mixed in.
void check_spin(const FileRow& row, Findings& out) {
  const LogSummary& s = row.summary;
  if (!s.has_s2 || !s.has_charge || s.multiplicity < 2) return;
  const double spin = (s.multiplicity - 1) / 2.0;
  const double exact = spin * (spin + 1.0);
  if (!(s.s2 > 1.1 * exact)) return;
  out.add("spin-contamination", Severity::worth_knowing, row.site, row.file,
          format_text("<S**2> is %.4f where S(S+1) is %.4f for multiplicity %d (%.0f %% above): "
                      "other spin states are mixed into this state and its energy",
                      s.s2, exact, s.multiplicity, 100.0 * (s.s2 - exact) / exact));
}

// The kind of run and how it ended: what the taken energy really is.
void check_run(const FileRow& row, Findings& out) {
  const LogSummary& s = row.summary;
  if (row.read != LogReadStatus::ok) return;
  if (s.engine == Engine::unknown) {
    out.add("unrecognised-output", Severity::worth_knowing, row.site, row.file,
            "no engine recognised in its text: termination, charge and level of theory are not "
            "checked");
    return;
  }
  if (s.termination == Termination::none) {
    out.add("not-normal-termination", Severity::wrong_number, row.site, row.file,
            "no normal termination (cut off, or still running): the last SCF energy it reached "
            "is taken");
  } else if (s.termination == Termination::error) {
    out.add("error-termination", Severity::wrong_number, row.site, row.file,
            "the run ended in an error: the last SCF energy it reached is taken");
  }
  if (s.scf_failed) {
    out.add("scf-not-converged", Severity::wrong_number, row.site, row.file,
            std::string(engine_name(s.engine)) +
                " says that its last SCF did not converge: its energy is not a converged one");
  }
  if (!s.not_scf.empty()) {
    std::string message = s.method + " (" + s.not_scf + "): ";
    if (s.engine == Engine::gaussian) {
      message += "get_inter_ener takes the SCF energy";
      if (row.energy == SpEnerStatus::found) message += format_text(" %.10g", row.hartree);
    } else {
      message += "its SCF energy";
    }
    message += ", not the method's total energy";
    const LevelEnergy top = s.engine == Engine::gaussian || !s.final_energy.found
                                ? (s.levels.empty() ? LevelEnergy{} : s.levels.back())
                                : LevelEnergy{s.final_energy.level, s.final_energy.hartree, ""};
    if (!top.label.empty() && top.label != "HF" && top.label != "SCF") {
      message += format_text("; the output prints %s=%.10g", top.label.c_str(), top.hartree);
    }
    out.add("not-scf-energy", Severity::wrong_number, row.site, row.file, message);
  }
  if (s.has_charge && !s.formula.empty()) {
    const int electrons = formula_electrons(s.formula) - s.charge;
    if (electrons >= 0 && (electrons + s.multiplicity - 1) % 2 != 0) {
      out.add("multiplicity-parity", Severity::wrong_number, row.site, row.file,
              format_text("multiplicity %d does not fit %d electrons (%s, charge %d)",
                          s.multiplicity, electrons, s.formula.c_str(), s.charge));
    }
  }
  check_spin(row, out);
  if (s.optimisation && !s.scan && !s.converged) {
    out.add("optimisation-not-converged", Severity::worth_knowing, row.site, row.file,
            "the optimisation did not reach its stationary point: the energy of its last step "
            "is taken");
  } else if (s.scan || s.dynamics || (!s.optimisation && (s.scf_count > 1 || s.scf_seen > 1))) {
    const std::string kind = s.scan ? "a scan" : s.dynamics ? "a dynamics run" : "a run";
    // Where the middle of the text was not read, the SCF energies of its two ends.
    const std::string count = s.scf_count > 0 ? std::to_string(s.scf_count) + " SCF energies"
                              : s.scf_seen > 1
                                  ? format_text(
                                        "at least %d SCF energies (seen in its first %zu KiB and "
                                        "last %zu KiB; the %.1f MiB between were not read)",
                                        s.scf_seen, kHeadBytes / 1024, kTailBytes / 1024,
                                        static_cast<double>(row.unread_bytes) / (1 << 20))
                                  : "several SCF energies";
    out.add("several-scf-energies", Severity::worth_knowing, row.site, row.file,
            kind + " with " + count + ": the last one is taken, not a chosen or lowest point");
  }
  if (s.frequency) {
    out.add("frequency-job", Severity::worth_knowing, row.site, row.file,
            "a frequency job: the electronic energy is taken, without zero-point or thermal "
            "corrections");
  }
}

// The three files of one site against each other: charges, atoms, formula.
void check_site(const CrystalInputs& in, const SiteJob& site, Findings& out) {
  const FileRow& anion = in.rows[site.rows[0]];
  const FileRow& cation = in.rows[site.rows[1]];
  const FileRow& neutral = in.rows[site.rows[2]];
  const LogSummary& n = neutral.summary;
  if (n.has_charge && anion.summary.has_charge && cation.summary.has_charge) {
    const int a = anion.summary.charge, c = cation.summary.charge;
    if (a == n.charge + 1 && c == n.charge - 1) {
      out.add("anion-cation-swapped", Severity::wrong_number, site.site, anion.file,
              format_text("the anion column holds charge %+d and the cation column %s charge "
                          "%+d: the site's electron and hole energies are exchanged",
                          a, cation.file.c_str(), c));
    } else {
      for (int f = 0; f < 2; ++f) {
        const FileRow& row = f == 0 ? anion : cation;
        const int expected = n.charge + (f == 0 ? -1 : 1);
        if (row.summary.charge == expected) continue;
        out.add("charge-mismatch", Severity::wrong_number, site.site, row.file,
                format_text("the %s holds charge %d; with the neutral's %d it should be %d",
                            kRoles[f], row.summary.charge, n.charge, expected));
      }
    }
  }
  for (const FileRow* row : {&anion, &cation}) {
    const LogSummary& s = row->summary;
    if (s.atom_count > 0 && n.atom_count > 0 && s.atom_count != n.atom_count) {
      out.add("atom-count-mismatch", Severity::wrong_number, site.site, row->file,
              format_text("%d atoms, the neutral %s has %d: not the same molecule", s.atom_count,
                          neutral.file.c_str(), n.atom_count));
    } else if (!s.formula.empty() && !n.formula.empty() && !same_formula(s.formula, n.formula)) {
      out.add("formula-mismatch", Severity::wrong_number, site.site, row->file,
              "formula " + s.formula + ", the neutral " + neutral.file + " has " + n.formula +
                  ": not the same molecule");
    }
  }
}

// The most common of the non-empty `keys`, the first of equals, or "".
std::size_t most_common(const std::vector<std::string>& keys) {
  std::map<std::string, int> counts;
  std::size_t best = keys.size();
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (keys[i].empty()) continue;
    if (++counts[keys[i]] > (best == keys.size() ? 0 : counts[keys[best]])) best = i;
  }
  return best;
}

// Every file whose engine, method or basis differs from the crystal's most common one.
void check_levels(const CrystalInputs& in, Findings& out) {
  std::vector<std::string> engines, methods, bases;
  for (const FileRow& row : in.rows) {
    const Engine engine = row.read == LogReadStatus::ok ? row.summary.engine : Engine::unknown;
    engines.push_back(engine == Engine::unknown ? "" : engine_name(engine));
    methods.push_back(row.summary.method.empty() ? "" : method_key(row.summary.method));
    std::string basis = row.summary.basis;
    for (char& c : basis) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    bases.push_back(basis);
  }
  const std::size_t engine = most_common(engines);
  const std::size_t method = most_common(methods), basis = most_common(bases);
  for (std::size_t i = 0; i < in.rows.size(); ++i) {
    const FileRow& row = in.rows[i];
    if (!engines[i].empty() && engines[i] != engines[engine]) {
      out.add("engine-mismatch", Severity::wrong_number, row.site, row.file,
              "an output of " + engines[i] + " where most files are of " + engines[engine] +
                  ": the total energies of different engines are not comparable");
    }
    if (!methods[i].empty() && methods[i] != methods[method]) {
      out.add("method-mismatch", Severity::wrong_number, row.site, row.file,
              "method " + row.summary.method + " where most files use " + methods[method] +
                  ": energies of different levels of theory are compared");
    }
    if (!bases[i].empty() && bases[i] != bases[basis]) {
      out.add("basis-mismatch", Severity::wrong_number, row.site, row.file,
              "basis " + row.summary.basis + " where most files use " +
                  in.rows[basis].summary.basis +
                  ": energies of different levels of theory are compared");
    }
  }
}

void check_roles(const CrystalInputs& in, Findings& out) {
  std::vector<std::set<int>> roles(in.rows.size());
  for (const SiteJob& site : in.sites) {
    for (int f = 0; f < 3; ++f) {
      if (site.rows[f] >= 0) roles[site.rows[f]].insert(f);
    }
  }
  for (std::size_t i = 0; i < in.rows.size(); ++i) {
    if (roles[i].size() < 2) continue;
    std::string names;
    int left = static_cast<int>(roles[i].size());
    for (const int f : roles[i]) {
      names += kRoles[f];
      --left;
      names += left > 1 ? ", " : left == 1 ? " and " : "";
    }
    out.add("same-file-two-roles", Severity::worth_knowing, in.rows[i].site, in.rows[i].file,
            "named as " + names + ": one energy stands for several states");
  }
}

// Every pair of sites that one lists as neighbours and the other does not: one finding per
// pair however often it is listed, in time that grows with the pairs (n log n), not their
// square. A site listed as its own neighbour is mutual with itself. A table of lists that are
// one direction throughout (each pair once) is how some write it: worth knowing. One such pair
// in a table whose other pairs are all mutual is what a neighbour count one above the numbers
// listed leaves when the shifted blocks still parse: a wrong number.
// `misread`: the table's text is already known to be misread, and the pairs say no more of it.
void check_neighbors(const CrystalInputs& in, bool misread, Findings& out) {
  if (!in.neighbors_opened || in.neighbor_status != ListStatus::ok) return;
  const auto& lists = in.neighbors.neighbor_mol_id;
  std::vector<std::pair<int, int>> pairs;
  for (std::size_t i = 0; i < lists.size(); ++i) {
    for (const int j : lists[i]) pairs.emplace_back(static_cast<int>(i), j);
  }
  std::sort(pairs.begin(), pairs.end());
  pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
  std::vector<std::pair<int, int>> one_way;
  bool some_mutual = false;
  for (const auto& [i, j] : pairs) {
    const bool mutual = std::binary_search(pairs.begin(), pairs.end(), std::make_pair(j, i));
    if (!mutual) one_way.emplace_back(i, j);
    some_mutual |= mutual && i != j;
  }
  if (one_way.size() == 1 && some_mutual && !misread) {
    const auto [i, j] = one_way[0];
    const std::vector<int>& list = lists[static_cast<std::size_t>(i)];
    // A count one above the numbers listed takes the next block's site number as its last
    // neighbour.
    const std::string cause =
        j == i + 1 && list.back() == j
            ? format_text(
                  "site %d's neighbour count, %zu, is likely one above the neighbours "
                  "listed: its last number, %d, is where the block of site %d begins, "
                  "and every block after it is read shifted",
                  i + 1, list.size(), j + 1, j + 1)
            : format_text(
                  "site %d's neighbour count likely runs over the neighbours listed, or "
                  "site %d omits site %d: the tables hold this pair's differences in one "
                  "direction only",
                  i + 1, j + 1, i + 1);
    out.add("neighbor-count-mismatch", Severity::wrong_number, i + 1, kNeighborFile,
            format_text("site %d lists site %d as a neighbour, site %d does not list %d, while "
                        "every other pair is mutual: ",
                        i + 1, j + 1, j + 1, i + 1) +
                cause);
    return;
  }
  for (const auto& [i, j] : one_way) {
    out.add("neighbor-not-mutual", Severity::worth_knowing, i + 1, kNeighborFile,
            format_text("site %d lists site %d as a neighbour, site %d does not list %d", i + 1,
                        j + 1, j + 1, i + 1));
  }
}

}  // namespace

const char* severity_name(Severity severity) {
  switch (severity) {
    case Severity::stop:
      return "stop";
    case Severity::wrong_number:
      return "wrong-number";
    case Severity::worth_knowing:
      break;
  }
  return "worth-knowing";
}

std::vector<Finding> check_crystal(const CrystalInputs& in) {
  Findings out;
  check_arguments(in, out);
  check_lists(in, out);
  bool misread = false;
  if (in.batch_opened && in.batch_status == ListStatus::ok) {
    check_batch_text(in, out);
    misread = check_neighbor_text(in, out);
    check_stale_tables(in, out);
  }
  for (const FileRow& row : in.rows) check_energy_line(row, out);
  for (const SiteJob& site : in.sites) {
    if (site.rows[0] < 0 && site.repeats == 0) {
      out.add("short-job-line", Severity::stop, site.site, "",
              "get_inter_ener stops with " +
                  quoted(short_job_line_message(site.site, in.batch_name, site.line)));
    }
  }
  for (const FileRow& row : in.rows) check_run(row, out);
  for (const SiteJob& site : in.sites) {
    if (site.rows[0] >= 0 && site.repeats == 0) check_site(in, site, out);
  }
  check_levels(in, out);
  check_roles(in, out);
  check_neighbors(in, misread, out);
  std::stable_sort(out.list.begin(), out.list.end(),
                   [](const Finding& a, const Finding& b) { return a.severity < b.severity; });
  return out.list;
}

bool would_succeed(const std::vector<Finding>& findings) {
  return std::none_of(findings.begin(), findings.end(),
                      [](const Finding& f) { return f.severity == Severity::stop; });
}

int check_status(const std::vector<Finding>& findings) {
  return !would_succeed(findings) ? 2 : findings.empty() ? 0 : 1;
}
