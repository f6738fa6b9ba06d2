// Reading one output file in bounded memory: a plain regular file from its end backwards,
// everything else forward in blocks. Both hand runs of whole entries to one search
// (find_energy_entry), so the entry rules live in one place.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <vector>

#include "input_file.h"
#include "log_reader.h"

namespace {

// The window in which the backward reading looks for the start of a line: what it reads
// before the energy line's own line is at most this.
constexpr std::size_t kBackwardWindow = 64 * 1024;

// Room in front of a block for the start of an entry carried from the previous block, rounded
// up so that blocks start on a page boundary: the kernel copies whole pages fastest.
constexpr std::size_t kCarryRoom = 4096;
static_assert(kCarryRoom >= kMaxEntryLength - 1);

// The forward scanner. A block is read into `buffer` at kCarryRoom, just after the start of an
// entry that was not yet complete in the previous block (at most kMaxEntryLength - 1 bytes).
// Only whole entries are searched and counted; the rest is carried to the next block.
struct ForwardScan {
  std::vector<char> buffer;
  char* block = nullptr;    // where the next block is read: a page boundary within `buffer`
  std::size_t carried = 0;  // the bytes just before `block` that start an entry
  std::size_t block_bytes = 0;
  bool starts_file = true;  // the carried bytes, or else the block, begin the text
  bool count_entries = false;
  bool count_markers = false;
};

void start_forward_scan(ForwardScan& scan, bool starts_file, const LogScanOptions& options) {
  scan.block_bytes = options.block_bytes;
  scan.buffer.resize(2 * kCarryRoom + scan.block_bytes);
  const auto address = reinterpret_cast<std::uintptr_t>(scan.buffer.data()) + kCarryRoom;
  scan.block = scan.buffer.data() + kCarryRoom + (kCarryRoom - address % kCarryRoom) % kCarryRoom;
  scan.carried = 0;
  scan.starts_file = starts_file;
  scan.count_entries = options.count_entries;
  scan.count_markers = options.count_markers;
}

// Where the next block goes, and how much room it has.
char* block_space(ForwardScan& scan) { return scan.block; }
std::size_t block_room(const ForwardScan& scan) { return scan.block_bytes; }

// End of the whole entries among the first `length` bytes of a buffer that begins an entry:
// past the last newline, the pieces of 1023 characters that are complete.
std::size_t whole_entries_end(const char* p, std::size_t length) {
  const void* newline = memrchr(p, '\n', length);
  const std::size_t line = newline != nullptr ? static_cast<const char*>(newline) - p + 1 : 0;
  return line + (length - line) / kMaxEntryLength * kMaxEntryLength;
}

// Takes the `added` bytes just written at block_space(): searches and counts the whole
// entries, and carries the rest. At the end of the text the last entry is whole too.
void scan_block(ForwardScan& scan, std::size_t added, bool at_end, LogScan& result) {
  const char* const p = scan.block - scan.carried;
  const std::size_t length = scan.carried + added;
  const std::size_t whole = at_end ? length : whole_entries_end(p, length);
  const std::string_view entries(p, whole);
  if (scan.count_entries) result.entry_count += count_log_entries(entries);
  if (scan.count_markers) result.marker_count += count_energy_entries(entries, scan.starts_file);
  std::string_view entry;
  if (find_energy_entry(entries, scan.starts_file, entry)) {
    result.marker_found = true;
    result.energy_entry.assign(entry);
  }
  scan.carried = length - whole;
  std::memmove(scan.block - scan.carried, p + whole, scan.carried);
  scan.starts_file = scan.starts_file && whole == 0;
}

// Keeps the first head_bytes and the last tail_bytes of the text that goes by.
void keep_ends(const char* p, std::size_t n, const LogScanOptions& options, LogScan& result) {
  if (result.head.size() < options.head_bytes) {
    result.head.append(p, std::min(n, options.head_bytes - result.head.size()));
  }
  if (options.tail_bytes == 0) return;
  if (n >= options.tail_bytes) {
    result.tail.assign(p + n - options.tail_bytes, options.tail_bytes);
  } else {
    result.tail.append(p, n);
    if (result.tail.size() > options.tail_bytes) {
      result.tail.erase(0, result.tail.size() - options.tail_bytes);
    }
  }
}

// A file that cannot be read whole gives no energy line, whatever was read of it.
void fail(LogScan& result, const std::string& why) {
  result.status = LogReadStatus::read_failed;
  result.error = why;
  result.marker_found = false;
  result.energy_entry.clear();
}

// Reads the whole text of `source` forward, block by block.
void scan_forward(ByteSource& source, const LogScanOptions& options, LogScan& result) {
  ForwardScan scan;
  start_forward_scan(scan, true, options);
  result.counted = options.count_entries;
  result.markers_counted = options.count_markers;
  for (;;) {
    char* const space = block_space(scan);
    const long got = read_text(source, space, block_room(scan));
    if (got < 0) return fail(result, source.error);
    const auto added = static_cast<std::size_t>(got);
    keep_ends(space, added, options, result);
    result.text_size += added;
    scan_block(scan, added, got == 0, result);
    if (got == 0) break;
  }
  result.whole_text = true;
}

// What a read of the backward reading met.
enum class ReadAt {
  done,
  failed,  // the system's reason is in the result
  ended,   // the file ends before the size it stated: sysfs files state 4096 bytes and hold a
           // few, and a file may be truncated while it is read
};

// Reads exactly `n` bytes at `offset`, or says that the file ends before them.
ReadAt read_at(int fd, char* out, std::size_t n, std::uint64_t offset, LogScan& result) {
  while (n > 0) {
    const ssize_t got = pread(fd, out, n, static_cast<off_t>(offset));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      fail(result, std::strerror(errno));
      return ReadAt::failed;
    }
    if (got == 0) return ReadAt::ended;
    out += got;
    n -= static_cast<std::size_t>(got);
    offset += static_cast<std::uint64_t>(got);
  }
  return ReadAt::done;
}

// The last tail_bytes of the text_size bytes that a forward reading of a plain file went
// through, read again from the file (where the page cache still holds them): keeping them
// from block after block copied half of every byte read. A file cut shorter meanwhile fails.
void read_tail(int fd, const LogScanOptions& options, LogScan& result) {
  const auto n =
      static_cast<std::size_t>(std::min<std::uint64_t>(options.tail_bytes, result.text_size));
  result.tail.resize(n);
  if (read_at(fd, result.tail.data(), n, result.text_size - n, result) == ReadAt::ended) {
    fail(result, "the file was cut short while it was read");
  }
}

// The start of the line that holds the byte at `at`: just after the last newline before it,
// however far back, or 0.
ReadAt line_start(int fd, std::uint64_t at, std::vector<char>& buffer, std::uint64_t& start,
                  LogScan& result) {
  for (std::uint64_t high = at; high > 0;) {
    const std::uint64_t low = high > buffer.size() ? high - buffer.size() : 0;
    const auto n = static_cast<std::size_t>(high - low);
    if (const ReadAt read = read_at(fd, buffer.data(), n, low, result); read != ReadAt::done) {
      return read;
    }
    const void* newline = memrchr(buffer.data(), '\n', n);
    if (newline != nullptr) {
      start =
          low + static_cast<std::uint64_t>(static_cast<const char*>(newline) - buffer.data()) + 1;
      return ReadAt::done;
    }
    high = low;
  }
  start = 0;
  return ReadAt::done;
}

// Scans the run [begin, end) of whole entries forward.
ReadAt scan_run(int fd, std::uint64_t begin, std::uint64_t end, const LogScanOptions& options,
                ForwardScan& scan, LogScan& result) {
  start_forward_scan(scan, begin == 0, options);
  for (std::uint64_t at = begin; at < end;) {
    const auto n = static_cast<std::size_t>(std::min<std::uint64_t>(block_room(scan), end - at));
    if (const ReadAt read = read_at(fd, block_space(scan), n, at, result); read != ReadAt::done) {
      return read;
    }
    at += n;
    scan_block(scan, n, at == end, result);
  }
  return ReadAt::done;
}

// Looks for the energy line among the whole lines of `n` bytes read at `low`, which end where
// the previous run began (or the file ends): the run starts after their first newline, or at
// the file's start. Sets `begin` to where the run starts; false when the bytes hold no line
// start (a line longer than them, not at the file's start).
bool search_run(const char* p, std::size_t n, std::uint64_t low, std::uint64_t& begin,
                LogScan& result) {
  // The newline at the last byte ends the run; the first one before it starts its first line.
  const void* newline = n > 0 ? std::memchr(p, '\n', n - 1) : nullptr;
  if (newline == nullptr && low > 0) return false;
  const std::size_t skip = newline != nullptr ? static_cast<const char*>(newline) - p + 1 : 0;
  begin = low + skip;
  std::string_view entry;
  if (find_energy_entry({p + skip, n - skip}, begin == 0, entry)) {
    result.marker_found = true;
    result.energy_entry.assign(entry);
  }
  return true;
}

// Reads the file backward from `size`, as scan_regular_file_backward says, until the file
// ends early.
ReadAt read_backward(int fd, std::uint64_t size, const LogScanOptions& options, LogScan& result) {
  result.text_size = size;
  result.head.resize(static_cast<std::size_t>(std::min<std::uint64_t>(size, options.head_bytes)));
  result.tail.resize(static_cast<std::size_t>(std::min<std::uint64_t>(size, options.tail_bytes)));
  ReadAt read = read_at(fd, result.head.data(), result.head.size(), 0, result);
  const std::uint64_t tail_start = size - result.tail.size();
  if (read == ReadAt::done && size <= result.head.size()) {
    result.tail.assign(result.head, static_cast<std::size_t>(tail_start));  // a short file
  } else if (read == ReadAt::done) {
    read = read_at(fd, result.tail.data(), result.tail.size(), tail_start, result);
  }
  // Runs of whole lines, from the last back: the last run that holds an energy line holds the
  // file's last one. The tail kept is the first run, searched where it lies; then each run is
  // the lines that start in a window of the file before the previous run, searched where it
  // was read. Nothing is read twice but the start of a line longer than a window.
  std::uint64_t end = size;
  if (read == ReadAt::done && !result.tail.empty()) {
    search_run(result.tail.data(), result.tail.size(), tail_start, end, result);
  }
  std::vector<char> window;  // allocated when the tail is not enough
  ForwardScan scan;
  while (read == ReadAt::done && end > 0 && !result.marker_found) {
    window.resize(std::min(options.block_bytes, kBackwardWindow));
    const std::uint64_t low = end > window.size() ? end - window.size() : 0;
    const auto n = static_cast<std::size_t>(end - low);
    read = read_at(fd, window.data(), n, low, result);
    if (read != ReadAt::done) break;
    std::uint64_t begin = 0;
    if (!search_run(window.data(), n, low, begin, result)) {  // a line longer than the window
      read = line_start(fd, low, window, begin, result);
      if (read == ReadAt::done) read = scan_run(fd, begin, end, options, scan, result);
      if (read != ReadAt::done) break;
    }
    end = begin;
  }
  result.whole_text = end == 0;
  return read;
}

// Starts the kernel's reads of what the backward reading of a file of `size` bytes reads
// first: the tail kept or the last window, and the head kept.
void fetch_ends(int fd, off_t size, const LogScanOptions& options) {
  if (size <= 0) return;
  const off_t last = static_cast<off_t>(
      std::max(options.tail_bytes, std::min(options.block_bytes, kBackwardWindow)));
  posix_fadvise(fd, std::max<off_t>(0, size - last), last, POSIX_FADV_WILLNEED);
  if (options.head_bytes > 0) {
    posix_fadvise(fd, 0, static_cast<off_t>(options.head_bytes), POSIX_FADV_WILLNEED);
  }
}

}  // namespace

void prefetch_file_ends(const char* file_name, const LogScanOptions& options) {
  struct stat info {};
  if (stat(file_name, &info) != 0 || !S_ISREG(info.st_mode)) return;
  const int fd = open(file_name, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return;
  fetch_ends(fd, info.st_size, options);
  close(fd);
}

void scan_regular_file_backward(int fd, std::uint64_t size, const LogScanOptions& options,
                                LogScan& result) {
  if (read_backward(fd, size, options, result) != ReadAt::ended) return;
  // The file holds less than it stated: what was read may be a mix of two contents, so it
  // goes, and the file is read forward from its start to its real end, as one of size 0 is.
  result = LogScan{};
  ByteSource source;
  if (lseek(fd, 0, SEEK_SET) != 0 || !open_byte_source(fd, source)) {
    fail(result, source.error.empty() ? std::strerror(errno) : source.error);
  } else {
    result.format = source.format;
    scan_forward(source, options, result);
  }
  close_byte_source(source);
}

LogReadStatus read_lines_before(const char* file_name, std::uint64_t end, std::size_t bytes,
                                std::string& text, std::uint64_t& begin) {
  struct stat info {};
  // Only a regular file is read again: a FIFO would wait for a writer.
  if (stat(file_name, &info) != 0 || !S_ISREG(info.st_mode)) return LogReadStatus::cannot_open;
  const int fd = open_input_fd(file_name, info);
  if (fd < 0) return LogReadStatus::cannot_open;
  // One byte more than asked, when there is one: whether a line starts at end - bytes.
  const std::uint64_t low = end > bytes ? end - bytes - 1 : 0;
  text.resize(static_cast<std::size_t>(end - low));
  LogScan failure;
  // A file that ends before `end` has changed since it was first read: a failure too.
  const ReadAt read = read_at(fd, text.data(), text.size(), low, failure);
  close(fd);
  if (read != ReadAt::done) return LogReadStatus::read_failed;
  // The run starts after the first newline (the extra byte's own, when a line starts just after
  // it), unless it begins the file; a line longer than `bytes` is cut after the extra byte.
  std::size_t skip = 0;
  if (end > bytes) {
    const std::size_t newline = text.find('\n');
    skip = newline != std::string::npos && newline + 1 < text.size() ? newline + 1 : 1;
  }
  text.erase(0, skip);
  begin = low + skip;
  return LogReadStatus::ok;
}

void scan_log_file(const char* file_name, const LogScanOptions& options, LogScan& result) {
  result = LogScan{};
  struct stat info {};
  const int fd = open_input_fd(file_name, info);
  if (fd < 0) {
    result.status = LogReadStatus::cannot_open;
    return;
  }
  // Until the reading is known to go forward, the kernel reads only what is asked: the header
  // read below would otherwise pull in the file's first pages for nothing. A plain file will
  // be read from its end: that read starts now, beside the header's.
  posix_fadvise(fd, 0, 0, POSIX_FADV_RANDOM);
  const bool counts = options.count_entries || options.count_markers;
  if (S_ISREG(info.st_mode) && !counts) fetch_ends(fd, info.st_size, options);
  ByteSource source;
  if (!open_byte_source(fd, source)) {
    fail(result, source.error);
  } else {
    result.format = source.format;
    // A plain file of known length needs only its end; a count needs every byte anyway, and
    // pipes, devices, files of size 0 and compressed streams can only be read forward.
    const bool backward =
        source.format == TextFormat::plain && S_ISREG(info.st_mode) && info.st_size > 0 && !counts;
    if (backward) {
      scan_regular_file_backward(fd, static_cast<std::uint64_t>(info.st_size), options, result);
    } else {
      posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
      // A plain file smaller than a block is read into a buffer of its size: a small output's
      // buffer is not cleared for nothing (the check reads every output forward).
      LogScanOptions forward = options;
      forward.count_markers = options.count_markers || options.count_markers_in_passing;
      const bool plain_file = source.format == TextFormat::plain && S_ISREG(info.st_mode);
      if (plain_file) {
        forward.block_bytes = static_cast<std::size_t>(
            std::clamp<off_t>(info.st_size + 1, 1, static_cast<off_t>(options.block_bytes)));
        forward.tail_bytes = 0;  // read once at the end, below
      }
      scan_forward(source, forward, result);
      if (plain_file && result.status == LogReadStatus::ok) read_tail(fd, options, result);
    }
  }
  close_byte_source(source);
  close(fd);
}
