// Dates and fixed-width numeric tables of mmutil.
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "mmutil/text.h"

namespace mmutil {
namespace {

// The table writers end the process with status 1 when they cannot write.
constexpr int kTableFailureStatus = 1;

std::FILE* create_table(const char* path, int line) {
  std::FILE* file = std::fopen(path, "w");
  if (file == nullptr)
    fail_with_status(kTableFailureStatus, "mmutil", line, "Failed to create file %s\n", path);
  return file;
}

std::tm local_now() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  // localtime_r() need not look at TZ again; tzset() does, so a changed zone is followed.
  tzset();
  localtime_r(&now, &local);
  return local;
}

// One block of output_matrix(): the heading line and every row, for columns first to last-1.
void write_matrix_block(std::FILE* out, const double* const* m, int n, int first, int last) {
  std::fprintf(out, "%8s", "");
  for (int j = first; j < last; ++j) std::fprintf(out, "%13d", j);
  std::fputc('\n', out);
  for (int i = 0; i < n; ++i) {
    std::fprintf(out, "%7d    ", i);
    for (int j = first; j < last; ++j) std::fprintf(out, "%13.8f", m[i][j]);
    std::fputc('\n', out);
  }
}

}  // namespace

void print_error_header(const char* unit, int line) {
  std::printf("\nERROR  transport : %s : line %i : \n", unit, line);
}

void fail_with_status(int status, const char* unit, int line, const char* format, ...) {
  print_error_header(unit, line);
  va_list args;
  va_start(args, format);
  std::vprintf(format, args);
  va_end(args);
  std::fflush(stdout);
  std::fflush(stderr);
  std::exit(status);
}

void get_date(int* month, int* day, int* year) {
  const std::tm now = local_now();
  *month = now.tm_mon + 1;
  *day = now.tm_mday;
  *year = now.tm_year + 1900;
}

int format_date_time(const std::tm& t, char* buffer) {
  static const char* const kWeekdays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  static const char* const kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const bool valid_names = t.tm_wday >= 0 && t.tm_wday < 7 && t.tm_mon >= 0 && t.tm_mon < 12;
  return std::snprintf(buffer, 32, "%s %s %d %02d:%02d:%02d %4d",
                       valid_names ? kWeekdays[t.tm_wday] : "???",
                       valid_names ? kMonths[t.tm_mon] : "???", t.tm_mday, t.tm_hour, t.tm_min,
                       t.tm_sec, t.tm_year + 1900);
}

int get_now_date_time(char* buffer) { return format_date_time(local_now(), buffer); }

char* get_now_date_time() {
  static char outstr[128];
  get_now_date_time(outstr);
  return outstr;
}

int output_matrix(const double* const* m, int n, int w, const char* path) {
  if (w < 1) {
    fail_with_status(kTableFailureStatus, "mmutil", __LINE__,
                     "Columns per block must be at least 1, not %d, for %s\n", w, path);
  }
  std::FILE* out = create_table(path, __LINE__);
  const int full_blocks = n / w;
  for (int b = 0; b < full_blocks; ++b) write_matrix_block(out, m, n, b * w, b * w + w);
  if (n % w != 0) write_matrix_block(out, m, n, n - n % w, n);
  return std::fclose(out);
}

int output_vector(const double* v, int n, int w, const char* path) {
  if (w < 1) {
    fail_with_status(kTableFailureStatus, "mmutil", __LINE__,
                     "Values per line must be at least 1, not %d, for %s\n", w, path);
  }
  std::FILE* out = create_table(path, __LINE__);
  if (n >= 1) {
    std::fprintf(out, "%14.7f", v[0]);
    for (int k = 1;; ++k) {
      if (k % w == 0) std::fputc('\n', out);
      if (k == n) break;
      std::fprintf(out, "%14.7f", v[k]);
    }
  }
  std::fputc('\n', out);
  return std::fclose(out);
}

int output_vvector(const std::vector<std::vector<double>>& columns, const char* path) {
  std::FILE* out = create_table(path, __LINE__);
  std::size_t nrows = columns.empty() ? 0 : columns.front().size();
  for (const std::vector<double>& column : columns) nrows = std::min(nrows, column.size());
  std::printf("ncols = %d\n", static_cast<int>(columns.size()));
  std::fflush(stdout);
  std::printf("nrows = %d\n", static_cast<int>(nrows));
  std::fflush(stdout);
  for (std::size_t r = 0; r < nrows; ++r) {
    for (const std::vector<double>& column : columns) std::fprintf(out, " %14.7f", column[r]);
    std::fputc('\n', out);
  }
  return std::fclose(out);
}

}  // namespace mmutil
