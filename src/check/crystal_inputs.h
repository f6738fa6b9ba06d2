// The inputs of a run of the energy job as a check sees them: the batch list, the neighbour
// table and, once per distinct file, what its output says, read through the same list readers
// and the same output reader as the energy job, without ending the process on a failure.
#ifndef GET_INTER_ENER_CRYSTAL_INPUTS_H
#define GET_INTER_ENER_CRYSTAL_INPUTS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "input_lists.h"
#include "log_reader.h"
#include "log_summary.h"

// How much of an output's text is kept: its first 32 KiB hold Gaussian's route section, charge
// and multiplicity line and atom list (on the real outputs they end within 14 KB), its last
// 256 KiB the archive entry, the termination line and the other engines' final-energy line
// (which NWChem prints up to 113 KB before the end). Where that line lies further back (an
// ORCA NMR job), the file is read back in blocks of kTailBytes until one holds it.
constexpr std::size_t kHeadBytes = 32 * 1024;
constexpr std::size_t kTailBytes = 256 * 1024;

// How much of each output is read. `whole`: every byte once, forward, so that a Gaussian
// output's "SCF Done" lines are all counted (the check's SCF column). `ends`: the head, the tail
// and, backwards from the end, the text up to the energy line, as the energy job reads a plain
// regular file (site_energies); a Gaussian output's SCF energies are then counted where its text
// was read whole (a compressed stream, a pipe, a file no longer than head and tail), and
// otherwise only seen in its two ends.
enum class OutputReading { whole, ends };

// The three roles of a job line's files, in its order.
constexpr const char* kRoles[3] = {"anion", "cation", "neutral"};

// One distinct output file of the batch list.
struct FileRow {
  int site = 0;  // the first site (1-based) that names it
  int role = 0;  // its role there: an index into kRoles
  std::string file;
  LogReadStatus read = LogReadStatus::ok;
  std::string read_error;  // read_failed: why
  LogSummary summary;
  // Bytes of the text between its head and tail that were not read (OutputReading::ends), so
  // not looked at for SCF energies.
  std::uint64_t unread_bytes = 0;
  SpEnerStatus energy = SpEnerStatus::marker_not_found;  // the energy line the job takes
  std::string energy_line;
  double hartree = 0.0;
  bool energy_is_number = true;  // the energy field is a number as a whole (see SpEnerResult)
};

// A site of the batch list: its files as indices into the rows. A job line that repeats an
// earlier one is served from it by the energy job: its site has the earlier one's rows.
struct SiteJob {
  int site = 0;  // 1-based
  std::string line;
  int rows[3] = {-1, -1, -1};  // -1: the line names fewer than three files
  int repeats = 0;             // the earlier site (1-based) whose line this one repeats, or 0
};

struct CrystalInputs {
  std::vector<std::string> arguments;  // the command line after the program's name
  std::string batch_name;
  int engine_code = 1;
  bool batch_opened = false;
  ListStatus batch_status = ListStatus::ok;
  BatchList batch;
  int batch_unread_lines = 0;  // lines after the last job line, which are not read
  std::vector<SiteJob> sites;
  std::vector<FileRow> rows;
  bool neighbors_read = false;  // the table was read (the batch list was usable)
  bool neighbors_opened = false;
  ListStatus neighbor_status = ListStatus::ok;
  NeighborTable neighbors;
  ListFault neighbor_fault;
  int neighbor_unread_lines = 0;  // lines after the last site's block, which are not read
  // Site tables in the working directory that this batch list does not write ("EH05.dat"
  // beside 4 sites), in name order.
  std::vector<std::string> stale_tables;
};

// Reads the output `row.file` (its first kHeadBytes and last kTailBytes bytes, its energy line,
// and, as `reading` says, the number of its "SCF Done" lines) through the energy job's reader
// into `row`. The text counts as whole when the head is shorter than asked or head and tail
// together cover a text of known size.
//
//   a 2 KB output -> the summary of all its text;   a 1 MB output -> of its two ends, and its
//   exact summary.scf_count when read whole, else scf_seen in the two ends and unread_bytes
void read_file_row(FileRow& row, OutputReading reading = OutputReading::whole);

// Reads the batch list `batch_name` from the working directory, each distinct file it names,
// "neighbor.dat" (checked against the job count), and the names of the site tables already
// there. Nothing ends the process.
//
//   read_crystal("int_ener_files.dat", 1) on the example crystal -> 3 sites, 9 rows
CrystalInputs read_crystal(const std::string& batch_name, int engine_code,
                           OutputReading reading = OutputReading::whole);

#endif  // GET_INTER_ENER_CRYSTAL_INPUTS_H
