// The search for the final single-point energy line in a run of whole entries, from its end
// backwards, and the energy it holds.
#include <cstdlib>
#include <cstring>
#include <vector>

#include "byte_loops.h"
#include "log_reader.h"
#include "mmutil/text.h"

namespace {

constexpr std::size_t npos = std::string_view::npos;

// Start of the physical line that holds position `at`.
std::size_t line_start(std::string_view text, std::size_t at) {
  const void* newline = memrchr(text.data(), '\n', at);
  return newline != nullptr ? static_cast<const char*>(newline) - text.data() + 1 : 0;
}

// End of the entry that starts at `begin`: after its newline, or 1023 characters on, or at
// the end of the text.
std::size_t entry_end(std::string_view text, std::size_t begin) {
  const std::size_t length = std::min(kMaxEntryLength, text.size() - begin);
  const void* newline = std::memchr(text.data() + begin, '\n', length);
  return newline != nullptr ? static_cast<const char*>(newline) - text.data() + 1 : begin + length;
}

// The text of the entry that spans [begin, end) and holds the marker before any NUL: cut at its
// first NUL, its trailing newline dropped.
std::string_view entry_text(std::string_view text, std::size_t begin, std::size_t end) {
  std::string_view entry = text.substr(begin, end - begin);
  entry = entry.substr(0, entry.find('\0'));
  if (entry.back() == '\n') entry.remove_suffix(1);
  return entry;
}

}  // namespace

const char* sp_ener_marker(int engine_code) {
  switch (engine_code) {
    case 2:  // Orca
    case 3:  // Qchem
      return "SCF Done";
    default:  // Gaussian, NWchem, and codes of 0 and below
      return "SCF Done";
  }
}

SpEnerResult sp_ener_from_line(std::string_view line) {
  std::vector<std::string> fields;
  mmutil::tokenize(fields, std::string(line).c_str(), " ");
  if (fields.size() < 5) return {SpEnerStatus::too_few_fields, line, 0.0};
  const char* const field = fields[4].c_str();
  char* end = nullptr;
  const double hartree = std::strtod(field, &end);  // what atof() gives, and where it stopped
  return {SpEnerStatus::found, line, hartree, end != field && *end == '\0'};
}

namespace {

// The last entry of `text` whose text holds the marker at an occurrence that starts before
// `limit`: [begin, end). An occurrence counts if it lies in the text of an entry other than
// the first of the file: before the entry's first NUL and not across the 1023-character split
// of a long line. `limit` is left where the search may go on for an earlier entry.
bool last_energy_entry(std::string_view text, bool starts_file, std::size_t& limit,
                       std::size_t& begin, std::size_t& end) {
  const std::string_view marker = kEnergyMarker;
  // Occurrences are taken from the last one back.
  std::size_t line_begin = npos;  // start of the line of the previous occurrence; none: beyond all
  for (;;) {
    const std::size_t at = rfind_marker(text, marker, limit);
    if (at == npos) return false;
    // An earlier occurrence on the same line shares its start: each line is looked up once.
    if (at < line_begin) line_begin = line_start(text, at);
    begin = line_begin + (at - line_begin) / kMaxEntryLength * kMaxEntryLength;
    if (begin == 0 && starts_file) return false;  // the first entry is never examined
    const void* nul = std::memchr(text.data() + begin, '\0', at - begin);
    if (nul != nullptr) {  // the entry's text ends before this occurrence
      limit = static_cast<const char*>(nul) - text.data();
      continue;
    }
    end = entry_end(text, begin);
    if (at + marker.size() > end) {  // it runs into the next entry
      limit = at + marker.size() - 1;
      continue;
    }
    limit = begin;  // an earlier entry's occurrence lies wholly before this entry
    return true;
  }
}

}  // namespace

bool find_energy_entry(std::string_view text, bool starts_file, std::string_view& entry) {
  std::size_t limit = text.size(), begin = 0, end = 0;
  if (!last_energy_entry(text, starts_file, limit, begin, end)) return false;
  entry = entry_text(text, begin, end);
  return true;
}

std::size_t count_energy_entries(std::string_view text, bool starts_file) {
  std::size_t count = 0, limit = text.size(), begin = 0, end = 0;
  while (last_energy_entry(text, starts_file, limit, begin, end)) ++count;
  return count;
}

SpEnerResult scan_sp_ener(std::string_view text, int engine_code) {
  if (engine_code > 4) return {SpEnerStatus::unknown_engine, {}, 0.0};
  std::string_view entry;
  if (!find_energy_entry(text, true, entry)) return {SpEnerStatus::marker_not_found, {}, 0.0};
  return sp_ener_from_line(entry);
}
