// Writing a crystal's tables so that a failure never leaves a set that mixes two runs.
#ifndef GET_INTER_ENER_TABLE_FILES_H
#define GET_INTER_ENER_TABLE_FILES_H

#include <string>
#include <vector>

#include "crystal_result.h"

// The file that holds a crystal's result as JSON, beside its tables.
constexpr const char* kResultFile = "site_energies.json";

// Writes, in the working directory, "uc_U.dat", "EHnn.dat" and "ELnn.dat" in get_inter_ener's
// formats and kResultFile for the written result `result`: each under "NAME.tmp.PID" first, all
// renamed once every one is complete; a file that already holds its text is left alone. Then
// removes the tables `stale` that an earlier, larger
// run left. Returns false, with the reason in `error`, when a file cannot be written: the
// temporary files are removed and the tables already there are left as they were.
//
//   a 4-site crystal  ->  uc_U.dat, EH01.dat..EH04.dat, EL01.dat..EL04.dat, site_energies.json
bool write_crystal_files(const CrystalResult& result, const std::vector<std::string>& stale,
                         std::string& error);

#endif  // GET_INTER_ENER_TABLE_FILES_H
