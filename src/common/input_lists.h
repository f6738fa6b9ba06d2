// The two list files of a run, read without ending the process: the batch job list and the
// neighbour table. The driver turns a status other than `ok` into its error report.
#ifndef GET_INTER_ENER_INPUT_LISTS_H
#define GET_INTER_ENER_INPUT_LISTS_H

#include <cstdio>
#include <string>
#include <vector>

// Largest job count, and largest number of neighbours of all sites together, that a run takes:
// far above any unit cell, and low enough that a corrupt count (or a truncated table whose
// last number repeats) fails at once instead of filling memory and disk.
constexpr int kMaxCount = 100000;

// The batch job list: its count and its job lines, trimmed.
struct BatchList {
  int job_count = 0;
  std::vector<std::string> job_lines;
  // Job lines read from the file; those after them repeat the last line read, because the
  // file ended. The energy job does not look at it; the check does.
  int lines_read = 0;
};

enum class ListStatus {
  ok,
  negative_count,     // a count below 0 (the job count, or a site's neighbour count)
  count_above_limit,  // a count above kMaxCount
  site_count_mismatch,
  neighbor_out_of_range,
};

// A number as atoi() reads it (leading blanks, a sign, digits; no digits gives 0), but judged
// as the number written: one beyond the range of int gives the nearest int instead of the
// wrapped value.
//
//   " 12 jobs" -> 12;   "4294967297" -> 2147483647;   "-99999999999" -> -2147483648
int read_int(const char* text);

// Reads the job count (line 1, as atoi() reads it) and the next job_count lines, through a
// 256-byte buffer: a longer line is split, and at the end of the file every missing line
// repeats the last one read. Stops before reading any job line if the count is negative or
// above kMaxCount.
//
//   "2\na b c\n"  ->  job_count 2, job_lines {"a b c", "a b c"}
ListStatus read_batch_list(std::FILE* batch, BatchList& list);

// The neighbour lists of the unit cell's sites, as 0-based site numbers.
struct NeighborTable {
  int nmols_uc = 0;                               // the number of sites the file states
  std::vector<int> root_mol_id;                   // each site's own number as written, minus 1
  std::vector<std::vector<int>> neighbor_mol_id;  // each site's neighbours, in file order
  // Where the text says something other than what is read, for the check (the energy job
  // does not look): the first site (1-based) at which a number was read after the end of the
  // file, so that it repeats the last one, or 0; and the first line that held more than one
  // number, of which only the first is read, with its site, or 0 and "".
  int site_past_end = 0;
  int several_numbers_site = 0;
  std::string several_numbers_line;
};

// Where reading the neighbour table stopped: the 1-based site and the number at fault.
struct ListFault {
  int site = 0;
  int value = 0;
};

// Reads a neighbour table: two free lines, the number of sites (which must be `site_count`),
// then per site its number, its neighbour count and one neighbour number (1..site_count) per
// line. Numbers are read as atoi() reads a line; at the end of the file the last number read
// repeats. Stops at the first fault, described in `fault`: a site count other than
// `site_count`, a negative neighbour count, more than kMaxCount neighbours in all, or a
// neighbour outside the sites.
ListStatus read_neighbor_list(std::FILE* in, int site_count, NeighborTable& table,
                              ListFault& fault);

// The number of lines left in `in` that hold more than blanks: what a list holds after the
// part that is read. Reads to the end of the file.
//
//   "\n 7\n\n8\n"  ->  2
int count_unread_lines(std::FILE* in);

// The messages with which the energy job refuses its lists, so that every program of the suite
// quotes them in the same words. Each ends with a newline.

// The message for a batch list that cannot be opened.
//
//   "jobs.dat"  ->  "Failed to open batch input file jobs.dat\n"
std::string batch_open_message(const std::string& batch_name);

// The message for another input file (the neighbour table, an output) that cannot be opened.
//
//   "neighbor.dat"  ->  "Failed to open input file: neighbor.dat\n"
std::string input_open_message(const std::string& name);

// The message for a batch list that read_batch_list() returned `status` (not ok) for.
// A negative job count has no message of the energy job's own (it ends abnormally, as an
// array of negative length does): the text says so.
//
//   count_above_limit, job_count 100001  ->
//     "Job count 100001 of batch file jobs.dat is above the limit of 100000\n"
std::string batch_list_message(ListStatus status, const BatchList& list,
                               const std::string& batch_name);

// The message for job `job` (1-based) whose trimmed line `line` names fewer than three files.
//
//   2, "jobs.dat", "a.log b.log"  ->
//     "Job 2 of batch file jobs.dat names fewer than three files (anion cation neutral): a.log
//     b.log\n"
std::string short_job_line_message(int job, const std::string& batch_name, const std::string& line);

// The neighbour table's fixed name, read from the working directory.
constexpr const char* kNeighborFile = "neighbor.dat";

// The message for a neighbour table that read_neighbor_list() returned `status` (not ok) for,
// read against `site_count` sites of the batch list `batch_name`. A negative neighbour count
// has no message of the energy job's own (it ends abnormally): the text says so.
//
//   neighbor_out_of_range, site 2, value 0, 2 sites  ->
//     "Neighbor 0 of site 2 is outside 1..2 in neighbor.dat\n"
std::string neighbor_list_message(ListStatus status, const NeighborTable& table,
                                  const ListFault& fault, int site_count,
                                  const std::string& batch_name);

#endif  // GET_INTER_ENER_INPUT_LISTS_H
