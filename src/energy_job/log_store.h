// The energy job's line store and extraction: what the driver keeps of the one output file it
// is reading, and the reports that end the run when a file cannot be read or holds no energy.
// The reading itself is the reader's (log_reader.h); this layer adds the -verbose lines and
// turns each status other than success into the error report.
#ifndef GET_INTER_ENER_LOG_STORE_H
#define GET_INTER_ENER_LOG_STORE_H

#include <cstdint>

#include "log_reader.h"

// The process-wide store: what the driver keeps of the one file it is reading.
extern LogScan g_log_data;

// Number of entries of the process-wide store (counted only with -verbose).
inline std::uint64_t g_data_nlen() { return g_log_data.entry_count; }

// Reads `file_name` into the process-wide store; with -verbose counts its entries and prints
// "INFO: number of lines in NAME is COUNT". A file that cannot be opened is reported as
// "Failed to open input file: NAME", one that cannot be read as
// "Failed to read input file: NAME: REASON", with the error header, and ends the process.
const LogScan& load_log_file(const char* file_name);

// Empties the process-wide store before the next file is loaded.
void release_log_store();

// The energy, in hartree, of the file in the process-wide store; `file_name` names it in
// messages. With -verbose prints "INFO: string 'MARKER' found in NAME". An unknown engine, a
// missing marker or an energy line of fewer than five fields is reported with the error
// header and ends the process.
double find_sp_ener(const char* file_name, int engine_code);

#endif  // GET_INTER_ENER_LOG_STORE_H
