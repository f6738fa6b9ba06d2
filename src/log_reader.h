// Reading quantum-chemistry output files: the line store that holds one file in memory, and
// the extraction of the final single-point (SCF) energy from it.
//
// The store reads a file once into one buffer and indexes its entries. An entry is what a
// line read through a 1024-byte buffer yields: at most 1023 characters, so a longer physical
// line becomes several consecutive entries, the last ending where the line ends. Its text
// stops at its first NUL byte and loses its trailing newline, except that an entry made of a
// newline alone (an empty line) keeps it and reads "\n". Carriage returns and leading blanks
// stay.
#ifndef GET_INTER_ENER_LOG_READER_H
#define GET_INTER_ENER_LOG_READER_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Longest entry, in characters: one line read through a 1024-byte buffer.
constexpr std::size_t kMaxEntryLength = 1023;

// One output file in memory: its bytes as read and the offset where each entry starts.
struct LogStore {
  std::string bytes;
  std::vector<std::size_t> entry_start;
};

// Replaces the store's contents with the whole file `file_name` and indexes its entries.
// Returns false, leaving the store untouched, if the file cannot be opened. A read error
// ends the text where it happened, as an end of file would.
bool read_log_store(const char* file_name, LogStore& store);

// Indexes the entries of `store.bytes`. An empty text has no entry.
//
//   "a\n\nb"  ->  entries "a", "\n", "b"
void index_log_entries(LogStore& store);

// The text of entry `i` (0-based, below the entry count), as described at the top of this file.
std::string_view log_entry(const LogStore& store, std::size_t i);

// The process-wide store: the driver loads one file, takes its energy and releases it before
// the next file.
extern LogStore g_log_data;

// Number of entries of the process-wide store.
inline int g_data_nlen() { return static_cast<int>(g_log_data.entry_start.size()); }

// Loads `file_name` into the process-wide store; with -verbose prints
// "INFO: number of lines in NAME is COUNT". If the file cannot be opened, reports
// "Failed to open input file: NAME" with the error header and ends the process.
const LogStore& load_log_file(const char* file_name);

// Frees the process-wide store's memory before the next file is loaded.
void release_log_store();

// Outcome of the search for the energy line.
enum class SpEnerStatus { found, unknown_engine, marker_not_found, too_few_fields };

struct SpEnerResult {
  SpEnerStatus status;
  std::size_t entry;  // index of the matched entry, if any
  double hartree;     // the energy, if found
};

// The text that marks the energy line of engine `engine_code`: "SCF Done" for every engine.
const char* sp_ener_marker(int engine_code);

// Finds the last entry, never entry 0, that contains the marker of `engine_code` and converts
// its fifth blank-separated field as atof() does (0.0 for text that is no number). Engine
// codes above 4 are unknown; codes of 0 and below are taken as 1.
//
//   " SCF Done:  E(RB3LYP) =  -693.291234567     A.U. after   12 cycles"  ->  -693.291234567
SpEnerResult scan_sp_ener(const LogStore& store, int engine_code);

// The energy, in hartree, of the file in the process-wide store; `file_name` names it in
// messages. With -verbose prints "INFO: string 'MARKER' found in NAME". An unknown engine, a
// missing marker or an energy line of fewer than five fields is reported with the error
// header and ends the process.
double find_sp_ener(const char* file_name, int engine_code);

#endif  // GET_INTER_ENER_LOG_READER_H
