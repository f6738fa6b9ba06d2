// A plain reading of an output file, kept as the reference that the line store and the energy
// search are checked against (by the tests and by the fuzzer): the entries a line reader with
// a 1024-byte buffer returns, and the last entry after the first that holds the marker.
#ifndef GET_INTER_ENER_REFERENCE_LINE_READER_H
#define GET_INTER_ENER_REFERENCE_LINE_READER_H

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "log_reader.h"
#include "mmutil/text.h"

// Reads a piece of at most 1023 characters, measures its text, and drops a newline found from
// its end backwards, never at position 0.
inline std::vector<std::string> line_reader_entries(const std::string& bytes) {
  std::vector<std::string> entries;
  std::FILE* file = fmemopen(const_cast<char*>(bytes.data()), bytes.size(), "r");
  if (file == nullptr) return entries;  // an empty buffer: no entry
  for (char buffer[1024]; std::fgets(buffer, sizeof buffer, file) != nullptr;) {
    for (std::size_t i = std::strlen(buffer); i-- > 1;) {
      if (buffer[i] == '\n') {
        buffer[i] = '\0';
        break;
      }
    }
    entries.emplace_back(buffer);
  }
  std::fclose(file);
  return entries;
}

// The energy search over listed entries: the last one after the first that holds the marker.
inline SpEnerResult reference_scan(const std::vector<std::string>& entries) {
  for (std::size_t i = entries.size(); i-- > 1;) {
    if (entries[i].find("SCF Done") == std::string::npos) continue;
    std::vector<std::string> fields;
    mmutil::tokenize(fields, entries[i].c_str(), " ");
    if (fields.size() < 5) return {SpEnerStatus::too_few_fields, entries[i], 0.0};
    return {SpEnerStatus::found, entries[i], std::atof(fields[4].c_str())};
  }
  return {SpEnerStatus::marker_not_found, {}, 0.0};
}

// Texts at the store's limits: an empty line, a last line without newline, a marker on the
// first line only, carriage returns, NULs, lines of 1023, 1024 and 1500 characters, a marker
// cut by the 1023-character limit or right after it, and an energy line too short.
inline std::vector<std::string> edge_texts() {
  using namespace std::string_literals;
  const std::string energy = " SCF Done:  E(X) =  -2.5  A.U.", x1023(1023, 'x');
  return {"",
          "a\n\nb",
          energy + "\n",
          "head\r\n" + energy + "\r\ntail\r\n",
          "a\n" + energy + "\0 SCF Done: E =  -1 \n"s + "b\0c\n"s,
          "a\n\0"s + energy + "\n",
          std::string(1500, 'x') + "\n",
          x1023 + "\n" + energy + "\n",
          x1023 + "x\n" + energy + "\n",
          x1023 + x1023,
          "a\n" + std::string(1020, 'x') + energy + "\n" + energy,
          x1023 + energy + "\n",
          "a\n SCF Done: E = \n"};
}

#endif  // GET_INTER_ENER_REFERENCE_LINE_READER_H
