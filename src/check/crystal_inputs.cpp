#include "crystal_inputs.h"

#include <dirent.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>

#include "input_file.h"
#include "mmutil/text.h"
#include "output_text.h"
#include "text_format.h"

namespace {

// Summarises what the reader kept of an output (`scan`) into `row`: the whole text when head
// and tail cover it, else its two ends; the "SCF Done" lines as the reader counted them.
void fill_file_row(const LogScan& scan, FileRow& row) {
  row.read = scan.status;
  row.read_error = scan.error;
  if (scan.status != LogReadStatus::ok) return;
  const bool size_known = scan.whole_text || scan.text_size > 0;
  std::string joined;      // head and the rest of the tail, when they cover the text
  std::string_view whole;  // the whole text, when it is at hand
  if (scan.head.size() < kHeadBytes) {
    whole = scan.head;
    row.summary = summarize_log(whole, whole, true);
  } else if (size_known && scan.text_size <= scan.head.size() + scan.tail.size()) {
    const std::size_t rest = static_cast<std::size_t>(scan.text_size) - scan.head.size();
    joined = scan.head + scan.tail.substr(scan.tail.size() - rest);
    whole = joined;
    row.summary = summarize_log(whole, whole, true);
  } else {
    row.summary = summarize_log(scan.head, scan.tail, false);
  }
  // The "SCF Done" lines are Gaussian's SCF energies, and what the job reads of any output; the
  // other engines count their own.
  const Engine engine = row.summary.engine;
  if (engine == Engine::gaussian || engine == Engine::unknown) {
    if (scan.markers_counted) {
      row.summary.scf_count = static_cast<int>(scan.marker_count);
    } else if (!whole.empty() || scan.head.empty()) {
      row.summary.scf_count = static_cast<int>(count_energy_entries(whole, true));
    } else {
      // The whole lines of each end: the head up to its last newline, the tail from its first.
      const std::string_view head(scan.head.data(), scan.head.rfind('\n') + 1);
      const std::size_t first = scan.tail.find('\n');
      const std::string_view tail = std::string_view(scan.tail).substr(
          first == std::string::npos ? scan.tail.size() : first + 1);
      row.summary.scf_seen =
          static_cast<int>(count_energy_entries(head, true) + count_energy_entries(tail, false));
      row.unread_bytes = scan.text_size - scan.head.size() - scan.tail.size();
    }
  }
  if (scan.marker_found) {
    const SpEnerResult result = sp_ener_from_line(scan.energy_entry);
    row.energy = result.status;
    row.energy_line = scan.energy_entry;
    row.hartree = result.hartree;
    row.energy_is_number = result.status != SpEnerStatus::found || result.field_is_number;
  }
}

// An output of another engine whose final-energy line lies before the kept ends (an ORCA NMR
// job prints it some 400 KB before its end): its plain file is read further back, a tail's size
// at a time, until a block holds one or the file begins. A compressed output is not read again.
void read_final_energy_further_back(const LogScan& scan, FileRow& row) {
  LogSummary& s = row.summary;
  if (s.final_energy.found || s.engine == Engine::gaussian || s.engine == Engine::unknown ||
      scan.format != TextFormat::plain || scan.text_size <= scan.head.size() + scan.tail.size()) {
    return;
  }
  // From the first line that begins in the tail, back.
  std::uint64_t end = scan.text_size - scan.tail.size() + scan.tail.find('\n') + 1;
  std::string block;
  for (std::uint64_t begin = 0; end > 0; end = begin) {
    if (read_lines_before(row.file.c_str(), end, kTailBytes, block, begin) != LogReadStatus::ok) {
      return;
    }
    s.final_energy = read_final_energy(s.engine, block);
    if (!s.final_energy.found) continue;
    // Read again so that the block ends with that line: a level named just before it, maybe
    // in the block before, is then in it.
    const std::size_t line_end = block.find('\n', find_last(block, s.final_energy.line));
    if (line_end == std::string::npos) return;
    if (read_lines_before(row.file.c_str(), begin + line_end + 1, kTailBytes, block, begin) ==
        LogReadStatus::ok) {
      s.final_energy = read_final_energy(s.engine, block);
    }
    return;
  }
}

// What the reader is asked for each output.
LogScanOptions scan_options(OutputReading reading) {
  LogScanOptions options;
  options.head_bytes = kHeadBytes;
  options.tail_bytes = kTailBytes;
  // An exact SCF column: every byte is read once, forward; or only where that is done anyway.
  options.count_markers = reading == OutputReading::whole;
  options.count_markers_in_passing = true;
  return options;
}

// How many outputs ahead of the one being read the kernel is asked for their ends, so that
// their reads overlap on a cold disk, in a bounded part of the page cache.
constexpr std::size_t kPrefetchAhead = 16;

// The names in the working directory of site tables ("EHnn.dat", "ELnn.dat", as the energy job
// names them) of sites outside 1..site_count.
std::vector<std::string> stale_site_tables(int site_count) {
  std::vector<std::string> names;
  DIR* dir = opendir(".");
  if (dir == nullptr) return names;
  while (const dirent* entry = readdir(dir)) {
    const std::string name = entry->d_name;
    if (name.size() < 8 || name[0] != 'E' || (name[1] != 'H' && name[1] != 'L') ||
        !std::isdigit(static_cast<unsigned char>(name[2]))) {
      continue;
    }
    const int site = std::atoi(name.c_str() + 2);
    if (site >= 1 && site <= site_count) continue;
    if (name == format_text("E%c%02d.dat", name[1], site)) names.push_back(name);
  }
  closedir(dir);
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

void read_file_row(FileRow& row, OutputReading reading) {
  const LogScanOptions options = scan_options(reading);
  LogScan scan;
  scan_log_file(row.file.c_str(), options, scan);
  fill_file_row(scan, row);
  if (scan.status == LogReadStatus::ok) read_final_energy_further_back(scan, row);
}

CrystalInputs read_crystal(const std::string& batch_name, int engine_code, OutputReading reading) {
  CrystalInputs in;
  in.batch_name = batch_name;
  in.engine_code = engine_code;
  std::FILE* batch = open_input_file(batch_name.c_str());
  in.batch_opened = batch != nullptr;
  if (batch == nullptr) return in;
  in.batch_status = read_batch_list(batch, in.batch);
  if (in.batch_status == ListStatus::ok) in.batch_unread_lines = count_unread_lines(batch);
  std::fclose(batch);
  if (in.batch_status != ListStatus::ok) return in;
  in.stale_tables = stale_site_tables(in.batch.job_count);

  std::map<std::string, int> seen_lines, seen_files;
  std::vector<std::string> names;
  for (int j = 0; j < in.batch.job_count; ++j) {
    const std::string& line = in.batch.job_lines[j];
    const auto [earlier, is_new_line] = seen_lines.try_emplace(line, j);
    SiteJob& site = in.sites.emplace_back();
    site.site = j + 1;
    site.line = line;
    if (!is_new_line) {
      const SiteJob& first = in.sites[static_cast<std::size_t>(earlier->second)];
      std::copy(std::begin(first.rows), std::end(first.rows), site.rows);
      site.repeats = first.site;
      continue;
    }
    mmutil::tokenize(names, line.c_str(), " ");
    if (names.size() < 3) continue;
    for (int f = 0; f < 3; ++f) {
      const auto [at, is_new] = seen_files.try_emplace(names[f], static_cast<int>(in.rows.size()));
      site.rows[f] = at->second;
      if (!is_new) continue;
      FileRow& row = in.rows.emplace_back();
      row.site = site.site;
      row.role = f;
      row.file = names[f];
    }
  }
  // A whole reading goes through every byte of each file in turn, which the kernel reads ahead.
  const LogScanOptions options = scan_options(reading);
  std::size_t prefetched = 0;
  for (std::size_t r = 0; r < in.rows.size(); ++r) {
    for (; reading == OutputReading::ends &&
           prefetched < std::min(in.rows.size(), r + kPrefetchAhead);
         ++prefetched) {
      prefetch_file_ends(in.rows[prefetched].file.c_str(), options);
    }
    read_file_row(in.rows[r], reading);
  }

  in.neighbors_read = true;
  std::FILE* table = open_input_file(kNeighborFile);
  in.neighbors_opened = table != nullptr;
  if (table == nullptr) return in;
  in.neighbor_status =
      read_neighbor_list(table, in.batch.job_count, in.neighbors, in.neighbor_fault);
  if (in.neighbor_status == ListStatus::ok) in.neighbor_unread_lines = count_unread_lines(table);
  std::fclose(table);
  return in;
}
