#include "input_lists.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdlib>

#include "mmutil/text.h"
#include "text_format.h"

namespace {

// Reads the next line into `line`. At the end of the file the buffer keeps the last line
// read, so it repeats: returns false then.
bool read_line(std::FILE* in, char (&line)[256]) {
  return std::fgets(line, sizeof line, in) != nullptr;
}

int read_number(std::FILE* in, char (&line)[256]) {
  read_line(in, line);
  return read_int(line);
}

// Whether `line` holds a second number after the one read_int() takes: "2 3", "2,3".
bool holds_several_numbers(const char* line) {
  char* end = nullptr;
  (void)std::strtoll(line, &end, 10);
  if (end == line) return false;
  for (; *end != '\0'; ++end) {
    if (std::isdigit(static_cast<unsigned char>(*end))) return true;
  }
  return false;
}

// Reads one number of a site's block as read_number() does, and notes for the check where the
// text says more than is read: a number past the end of the file, a line of several numbers.
int read_site_number(std::FILE* in, char (&line)[256], int site, NeighborTable& table) {
  if (!read_line(in, line)) {
    if (table.site_past_end == 0) table.site_past_end = site;
  } else if (table.several_numbers_site == 0 && holds_several_numbers(line)) {
    table.several_numbers_site = site;
    table.several_numbers_line = line;
    mmutil::trim(table.several_numbers_line);
  }
  return read_int(line);
}

ListStatus check_count(int count) {
  return count < 0           ? ListStatus::negative_count
         : count > kMaxCount ? ListStatus::count_above_limit
                             : ListStatus::ok;
}

}  // namespace

int read_int(const char* text) {
  const long long value = std::strtoll(text, nullptr, 10);  // saturates beyond its own range
  return static_cast<int>(std::clamp<long long>(value, INT_MIN, INT_MAX));
}

ListStatus read_batch_list(std::FILE* batch, BatchList& list) {
  char line[256] = "";
  list.job_count = read_number(batch, line);
  list.job_lines.clear();
  const ListStatus status = check_count(list.job_count);
  if (status != ListStatus::ok) return status;
  list.lines_read = 0;
  for (int j = 0; j < list.job_count; ++j) {
    list.lines_read += read_line(batch, line);
    mmutil::c_trim(line);
    list.job_lines.emplace_back(line);
  }
  return ListStatus::ok;
}

ListStatus read_neighbor_list(std::FILE* in, int site_count, NeighborTable& table,
                              ListFault& fault) {
  char line[256] = "";
  read_number(in, line);  // two free lines
  read_number(in, line);
  table.nmols_uc = read_number(in, line);
  table.root_mol_id.clear();
  table.neighbor_mol_id.clear();
  table.site_past_end = table.several_numbers_site = 0;
  table.several_numbers_line.clear();
  if (table.nmols_uc != site_count) return ListStatus::site_count_mismatch;
  int listed = 0;  // neighbours of the sites before this one
  for (int s = 1; s <= site_count; ++s) {
    fault.site = s;
    // The site's own number takes no part in the tables; the lowest int has no predecessor.
    const int root = read_site_number(in, line, s, table);
    table.root_mol_id.push_back(root > INT_MIN ? root - 1 : root);
    fault.value = read_site_number(in, line, s, table);  // the neighbour count
    const ListStatus status = check_count(fault.value);
    if (status != ListStatus::ok) return status;
    if (fault.value > kMaxCount - listed) return ListStatus::count_above_limit;
    listed += fault.value;
    std::vector<int>& neighbors = table.neighbor_mol_id.emplace_back();
    neighbors.reserve(static_cast<std::size_t>(fault.value));
    for (int k = fault.value; k > 0; --k) {
      const int number = read_site_number(in, line, s, table);
      if (number < 1 || number > site_count) {
        fault.value = number;
        return ListStatus::neighbor_out_of_range;
      }
      neighbors.push_back(number - 1);
    }
  }
  return ListStatus::ok;
}

int count_unread_lines(std::FILE* in) {
  int count = 0;
  bool blank = true;  // the line so far holds only blanks
  for (int c = std::getc(in); c != EOF; c = std::getc(in)) {
    if (c == '\n') {
      count += !blank;
      blank = true;
    } else if (!std::isspace(c)) {
      blank = false;
    }
  }
  return count + !blank;
}

std::string batch_open_message(const std::string& batch_name) {
  return format_text("Failed to open batch input file %s\n", batch_name.c_str());
}

std::string input_open_message(const std::string& name) {
  return format_text("Failed to open input file: %s\n", name.c_str());
}

std::string batch_list_message(ListStatus status, const BatchList& list,
                               const std::string& batch_name) {
  if (status == ListStatus::count_above_limit) {
    return format_text("Job count %d of batch file %s is above the limit of %d\n", list.job_count,
                       batch_name.c_str(), kMaxCount);
  }
  return format_text("Job count %d of batch file %s is negative: the run ends abnormally\n",
                     list.job_count, batch_name.c_str());
}

std::string short_job_line_message(int job, const std::string& batch_name,
                                   const std::string& line) {
  return format_text(
      "Job %d of batch file %s names fewer than three files (anion cation neutral): %s\n", job,
      batch_name.c_str(), line.c_str());
}

std::string neighbor_list_message(ListStatus status, const NeighborTable& table,
                                  const ListFault& fault, int site_count,
                                  const std::string& batch_name) {
  switch (status) {
    case ListStatus::site_count_mismatch:
      return format_text(
          "Number of molecules (%d:%d) is not compatible!\nPlease check files %s and %s\n",
          table.nmols_uc, site_count, kNeighborFile, batch_name.c_str());
    case ListStatus::count_above_limit:
      return format_text(
          "Neighbor count %d of site %d takes the table above the limit of %d neighbors in %s\n",
          fault.value, fault.site, kMaxCount, kNeighborFile);
    case ListStatus::neighbor_out_of_range:
      return format_text("Neighbor %d of site %d is outside 1..%d in %s\n", fault.value, fault.site,
                         site_count, kNeighborFile);
    case ListStatus::negative_count:
    case ListStatus::ok:
      break;
  }
  return format_text("Neighbor count %d of site %d is negative in %s: the run ends abnormally\n",
                     fault.value, fault.site, kNeighborFile);
}
