// Reading quantum-chemistry output files: the entries of a file's text and the search for its
// final single-point (SCF) energy line. Every outcome is a returned status: nothing here prints
// or ends the process.
//
// A file's entries are what a line read through a 1024-byte buffer yields: at most 1023
// characters, so a longer physical line becomes several consecutive entries, the last ending
// where the line ends. An entry's text stops at its first NUL byte and loses its trailing
// newline, except that an entry made of a newline alone (an empty line) keeps it and reads
// "\n". Carriage returns and leading blanks stay.
//
// The energy line is the last entry, never the first, whose text holds the marker
// "SCF Done". A regular file is searched from its end backwards, reading only what lies after
// that line and little more; everything else (pipes, devices, compressed streams, and any file
// whose entries must be counted) is read forward once, in blocks, in bounded memory.
#ifndef GET_INTER_ENER_LOG_READER_H
#define GET_INTER_ENER_LOG_READER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "byte_source.h"

// Longest entry, in characters: one line read through a 1024-byte buffer.
constexpr std::size_t kMaxEntryLength = 1023;

// The text that marks the energy line, for every engine.
constexpr std::string_view kEnergyMarker = "SCF Done";

// What to take from a file besides its energy line.
struct LogScanOptions {
  bool count_entries = false;  // count every entry (reads the whole text)
  bool count_markers = false;  // count the entries that could be the energy line (whole text)
  // Count them too where the whole text is read forward anyway (a compressed stream, a pipe),
  // without reading a plain regular file whole for them.
  bool count_markers_in_passing = false;
  std::size_t head_bytes = 0;  // keep the text's first head_bytes bytes
  std::size_t tail_bytes = 0;  // keep the text's last tail_bytes bytes
  // Bytes asked of the file by each forward read (any size from 1; the backward reading uses
  // at most 64 KiB of it); the tests make it small to put block boundaries everywhere.
  std::size_t block_bytes = 512 * 1024;
};

enum class LogReadStatus {
  ok,
  cannot_open,  // missing, unreadable, or a directory
  read_failed,  // a read failed, or a compressed stream is damaged
};

// What was read of one file.
struct LogScan {
  LogReadStatus status = LogReadStatus::ok;
  std::string error;  // read_failed: why ("Input/output error", "unexpected end of xz data")
  TextFormat format = TextFormat::plain;
  bool counted = false;  // entry_count holds the number of entries
  std::uint64_t entry_count = 0;
  bool markers_counted = false;  // marker_count holds the number of entries with the marker
  std::uint64_t marker_count = 0;
  bool marker_found = false;
  std::string energy_entry;     // the text of the energy line's entry, if found
  std::string head;             // the first head_bytes bytes of the text (fewer if it is shorter)
  std::string tail;             // the last tail_bytes bytes of the text
  bool whole_text = false;      // every byte of the text was read
  std::uint64_t text_size = 0;  // bytes of text: known for a plain regular file, or whole_text
};

// Reads what `options` asks of the file `file_name` and its energy line into `scan`. A plain
// regular file is read from its end backwards unless its entries or markers are counted;
// anything else is read forward. Memory stays within two blocks and the head and tail asked
// for.
void scan_log_file(const char* file_name, const LogScanOptions& options, LogScan& scan);

// Asks the kernel to start reading what a backward reading of `file_name` reads first (the head
// and tail that `options` keep, or its last window), and returns at once: the reads of the next
// files then overlap the reading of this one on a cold disk. Only a regular file is opened (a
// FIFO would wait for a writer); nothing is reported.
//
//   prefetch_file_ends("mol1_anion.log", options)  ->  its first 32 KiB and last 256 KiB on their
//   way
void prefetch_file_ends(const char* file_name, const LogScanOptions& options);

// The backward reading of a plain regular file, open as `fd` and not yet read (pread alone
// keeps it at its start), of `size` bytes as it was found on opening. A file that ends before
// `size` (a sysfs file states 4096 bytes and holds a few; another program may truncate a log)
// is read again forward from its start, whole, to its real end, as a file of size 0 is.
//
//   /sys/devices/system/cpu/online, size 4096  ->  ok, text_size 4, whole_text, no energy line
void scan_regular_file_backward(int fd, std::uint64_t size, const LogScanOptions& options,
                                LogScan& scan);

// The run of whole lines of the plain regular file `file_name` that lies just before byte `end`
// (a line start, or the file's size), at most `bytes` long, into `text`, and where it begins
// into `begin`: for reading a file further back, block after block, in bounded memory. A line
// longer than `bytes` is cut at its start. cannot_open for a file that is missing or not a
// regular file (never waiting on a FIFO), read_failed for a failed or short read.
//
//   "ab\ncd\nef\n", end 9, bytes 5  ->  "ef\n", begin 6;   then end 6  ->  "cd\n", begin 3
LogReadStatus read_lines_before(const char* file_name, std::uint64_t end, std::size_t bytes,
                                std::string& text, std::uint64_t& begin);

// Number of entries of `text`: each physical line (its newline included, the last one
// perhaps without) counts one entry per started 1023 characters. An empty text has none.
//
//   "a\n\nb"  ->  3;   1023 'x' + "\n"  ->  2
std::size_t count_log_entries(std::string_view text);

// Outcome of the search for the energy line.
enum class SpEnerStatus { found, unknown_engine, marker_not_found, too_few_fields };

struct SpEnerResult {
  SpEnerStatus status;
  std::string_view line;  // the matched entry's text, if any
  double hartree;         // the energy, if found
  // The whole fifth field is a number: its conversion left nothing over ("-**********" and
  // "-1.5D+02" are not; "nan" and "1e999" are, though not finite).
  bool field_is_number = false;
};

// The text that marks the energy line of engine `engine_code`: "SCF Done" for every engine.
const char* sp_ener_marker(int engine_code);

// The energy of an energy line: its fifth blank-separated field converted as atof() does
// (0.0 for text that is no number; only the part before a "D" exponent), or too_few_fields.
//
//   " SCF Done:  E(RB3LYP) =  -693.291234567     A.U. after   12 cycles"  ->  -693.291234567
SpEnerResult sp_ener_from_line(std::string_view line);

// Finds the energy line's entry in `text`, a run of whole entries: it begins where an entry
// begins and ends where one ends. `starts_file` says whether its first entry is the file's
// first, which is never examined. Returns false if no entry holds the marker.
//
//   find_energy_entry("x\n SCF Done: E = -1 A.U.\n", true, e)  ->  e = " SCF Done: E = -1 A.U."
bool find_energy_entry(std::string_view text, bool starts_file, std::string_view& entry);

// Number of entries of `text`, a run of whole entries as for find_energy_entry(), that hold the
// marker where find_energy_entry() would take it: the "SCF Done" lines the job could take. An
// entry with several markers counts once; the file's first entry never counts.
//
//   count_energy_entries("x\n SCF Done 1\n SCF Done 2 SCF Done\n", true)  ->  2
std::size_t count_energy_entries(std::string_view text, bool starts_file);

// The energy line of a whole text held in memory, and its energy. Engine codes above 4 are
// unknown; codes of 0 and below are taken as 1.
SpEnerResult scan_sp_ener(std::string_view text, int engine_code);

#endif  // GET_INTER_ENER_LOG_READER_H
