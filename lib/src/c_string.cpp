// C-string tokenizing and trimming routines of mmutil.
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "mmutil/text.h"
#include "words.h"

namespace mmutil {
namespace {

bool is_left_trim_blank(char c) { return c == '\t' || c == ' '; }
bool is_right_trim_blank(char c) { return c == '\t' || c == '\n' || c == '\r' || c == ' '; }
bool is_word_gap(char c) { return c == '\t' || c == '\n' || c == ' '; }
// Space and the control characters backspace, tab, line feed, vertical tab, form feed and
// carriage return (codes 8 to 13).
bool is_remainder_blank(char c) { return c == ' ' || (c >= 8 && c <= 13); }

}  // namespace

bool tokenize(std::vector<std::string>& tokens, const char* text, const char* delimiters) {
  tokens.clear();
  if (text == nullptr || delimiters == nullptr) return false;
  // An empty delimiter set never ends a token, so it yields none at all.
  if (*delimiters != '\0') append_words(tokens, text, delimiters);
  return true;
}

bool tokenize(std::vector<std::string>& tokens, const std::string& text, const char* delimiters) {
  tokens.clear();
  if (text.empty() || delimiters == nullptr) return false;
  if (*delimiters != '\0') append_words(tokens, text, delimiters);
  return true;
}

void c_triml(char* s) {
  if (s == nullptr) return;
  const char* first = s;
  while (is_left_trim_blank(*first)) ++first;
  std::memmove(s, first, std::strlen(first) + 1);
}

void c_trimr(char* s) {
  if (s == nullptr) return;
  // Position 0 is never cleared: a string of blanks keeps its first character.
  for (std::size_t i = std::strlen(s); i > 1 && is_right_trim_blank(s[i - 1]); --i) s[i - 1] = '\0';
}

void c_trim(char* s) {
  c_triml(s);
  c_trimr(s);
}

char* strhed(char** cursor) {
  char* p = *cursor;
  while (is_word_gap(*p)) ++p;
  char* const head = p;
  if (*p == '\0') {
    *cursor = p;
    return head;
  }
  while (*p != '\0' && !is_word_gap(*p)) ++p;
  char* rest = p;
  if (*p != '\0') {
    *p = '\0';
    rest = p + 1;
  }
  while (is_remainder_blank(*rest)) ++rest;
  char* end = rest + std::strlen(rest);
  while (end > rest && is_remainder_blank(end[-1])) --end;
  *end = '\0';
  *cursor = rest;
  return head;
}

int count_lines(const char* file_name) {
  std::FILE* file = std::fopen(file_name, "r");
  if (file == nullptr) {
    std::printf("ERROR: Failed to open input file %s\n", file_name);
    std::fflush(stdout);
    std::exit(-1);
  }
  int count = 0;
  char buffer[1024];
  while (std::fgets(buffer, sizeof buffer, file) != nullptr) {
    for (const char* c = buffer; *c != '\0'; ++c) count += (*c == '\n' || *c == '\r');
  }
  std::fclose(file);
  return count;
}

int my_strcasestr(const char* a, const char* b, int n) {
  for (int i = 0; i < n; ++i) {
    const int ca = std::tolower(static_cast<unsigned char>(a[i]));
    if (ca != std::tolower(static_cast<unsigned char>(b[i]))) return 0;
    if (ca == '\0') return 1;  // both strings ended together: nothing left to compare
  }
  return 1;
}

char* morphNumericString(char* number, int digits) {
  char* const point = std::strchr(number, '.');
  if (point == nullptr) return nullptr;
  char* last;  // last kept character
  if (digits >= 0) {
    last = point;
    while (last - point < digits && last[1] != '\0') ++last;
    last[1] = '\0';
  } else {
    *point = '\0';
    last = point > number ? point - 1 : number;
  }
  while (*last == '0' && last > number) *last-- = '\0';
  if (*last == '.') *last = '\0';
  return last;
}

}  // namespace mmutil
