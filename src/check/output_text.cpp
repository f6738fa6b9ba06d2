#include "output_text.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>

std::string upper(std::string_view text) {
  std::string s(text);
  for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}

bool starts_with(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

bool contains(std::string_view text, std::string_view what) { return text.find(what) != npos; }

std::size_t find_last(std::string_view text, std::string_view what, std::size_t before) {
  if (what.size() > text.size()) return npos;
  const std::size_t latest = std::min(before, text.size() - what.size());
  if (what.empty()) return latest;
  for (std::size_t end = latest + 1; end > 0;) {
    const void* hit = memrchr(text.data(), what[0], end);
    if (hit == nullptr) return npos;
    const auto at = static_cast<std::size_t>(static_cast<const char*>(hit) - text.data());
    if (text.compare(at, what.size(), what) == 0) return at;
    end = at;
  }
  return npos;
}

std::string_view trim(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t\r\n");
  if (begin == npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1);
}

std::vector<std::string_view> split(std::string_view text, std::string_view separator) {
  std::vector<std::string_view> parts;
  for (std::size_t begin = 0;;) {
    const std::size_t end = text.find(separator, begin);
    parts.push_back(text.substr(begin, end == npos ? npos : end - begin));
    if (end == npos) return parts;
    begin = end + separator.size();
  }
}

std::vector<std::string_view> lines_of(std::string_view text) {
  std::vector<std::string_view> lines = split(text, "\n");
  for (std::string_view& line : lines) {
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  }
  return lines;
}

bool next_line(std::string_view text, std::size_t& pos, std::string_view& line) {
  if (pos >= text.size()) return false;
  const std::size_t end = text.find('\n', pos);
  line = text.substr(pos, end == npos ? npos : end - pos);
  pos = end == npos ? text.size() : end + 1;
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return true;
}

std::string_view line_at(std::string_view text, std::size_t at) {
  const std::size_t begin = at == 0 ? npos : text.rfind('\n', at - 1);
  const std::size_t start = begin == npos ? 0 : begin + 1;
  const std::size_t end = text.find('\n', at);
  std::string_view line = text.substr(start, end == npos ? npos : end - start);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

std::string_view last_line_with(std::string_view text, std::string_view marker) {
  const std::size_t at = find_last(text, marker);
  return at == npos ? std::string_view() : line_at(text, at);
}

std::vector<std::string_view> words_of(std::string_view line) {
  std::vector<std::string_view> words;
  for (std::size_t at = 0;;) {
    const std::size_t begin = line.find_first_not_of(" \t\r", at);
    if (begin == npos) return words;
    at = std::min(line.find_first_of(" \t\r", begin), line.size());
    words.push_back(line.substr(begin, at - begin));
  }
}

bool read_number(std::string_view text, double& value) {
  std::string s(trim(text));
  const std::size_t d = s.find_first_of("dD");
  if (d != npos && d > 0 && std::isdigit(static_cast<unsigned char>(s[d - 1]))) s[d] = 'E';
  if (s.empty() || s.size() > 64) return false;
  char* end = nullptr;
  value = std::strtod(s.c_str(), &end);
  return end == s.c_str() + s.size();
}

bool number_after(std::string_view text, std::size_t from, double& value) {
  if (from > text.size()) return false;
  for (const std::string_view word : words_of(text.substr(from))) {
    if (read_number(word, value)) return true;
  }
  return false;
}

bool is_word(std::string_view word, std::string_view name) {
  if (!word.empty() && word.back() == ':') word.remove_suffix(1);
  return upper(word) == upper(name);
}

std::string_view whole_lines(std::string_view text) {
  const std::size_t last = text.rfind('\n');
  return last == npos ? std::string_view() : text.substr(0, last + 1);
}
