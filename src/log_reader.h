// Reading quantum-chemistry output files: the line store that holds one file in memory, and
// the extraction of the final single-point (SCF) energy from it.
//
// The store holds a file's bytes as one read-only text: a regular file is mapped into memory,
// anything else (a pipe, a device) is read whole. Its entries are what a line read through a
// 1024-byte buffer yields: at most 1023 characters, so a longer physical line becomes several
// consecutive entries, the last ending where the line ends. An entry's text stops at its first
// NUL byte and loses its trailing newline, except that an entry made of a newline alone (an
// empty line) keeps it and reads "\n". Carriage returns and leading blanks stay.
//
// Entries are never listed: the energy is searched from the end of the text backwards, and the
// entry count is computed only when it is printed, so a run that needs only the last energy
// line reads only the end of the file.
#ifndef GET_INTER_ENER_LOG_READER_H
#define GET_INTER_ENER_LOG_READER_H

#include <cstddef>
#include <string>
#include <string_view>

// Longest entry, in characters: one line read through a 1024-byte buffer.
constexpr std::size_t kMaxEntryLength = 1023;

// One output file in memory. `text` views either the mapping or `buffer`.
struct LogStore {
  std::string_view text;
  void* mapping = nullptr;  // the mapped file, unmapped by clear_log_store
  std::size_t mapped_length = 0;
  std::string buffer;  // the bytes of a file that cannot be mapped
};

// Replaces the store's contents with the whole file `file_name`. Returns false, leaving the
// store untouched, if the file cannot be opened or is a directory. A read error ends the text where
// it happened, as an end of file would.
bool read_log_store(const char* file_name, LogStore& store);

// Gives back the store's memory; the store is then empty.
void clear_log_store(LogStore& store);

// Number of entries of `text`: each physical line (its newline included, the last one
// perhaps without) counts one entry per started 1023 characters. An empty text has none.
//
//   "a\n\nb"  ->  3;   1023 'x' + "\n"  ->  2
std::size_t count_log_entries(std::string_view text);

// The process-wide store: the driver loads one file, takes its energy and releases it before
// the next file.
extern LogStore g_log_data;

// Number of entries of the process-wide store (counted when asked).
inline std::size_t g_data_nlen() { return count_log_entries(g_log_data.text); }

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
  std::string_view line;  // the matched entry's text, if any (views the store)
  double hartree;         // the energy, if found
};

// The text that marks the energy line of engine `engine_code`: "SCF Done" for every engine.
const char* sp_ener_marker(int engine_code);

// Finds the last entry of `text`, never the first entry, whose text contains the marker of
// `engine_code`, and converts its fifth blank-separated field as atof() does (0.0 for text
// that is no number). Engine codes above 4 are unknown; codes of 0 and below are taken as 1.
//
//   " SCF Done:  E(RB3LYP) =  -693.291234567     A.U. after   12 cycles"  ->  -693.291234567
SpEnerResult scan_sp_ener(std::string_view text, int engine_code);

// The energy, in hartree, of the file in the process-wide store; `file_name` names it in
// messages. With -verbose prints "INFO: string 'MARKER' found in NAME". An unknown engine, a
// missing marker or an energy line of fewer than five fields is reported with the error
// header and ends the process.
double find_sp_ener(const char* file_name, int engine_code);

#endif  // GET_INTER_ENER_LOG_READER_H
