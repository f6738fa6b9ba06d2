// Standard-string trims, comparison, classification and splitting of mmutil.
#include <algorithm>
#include <string_view>

#include "mmutil/text.h"
#include "words.h"

namespace mmutil {
namespace {

// Each side of each trim family has its own blank set.
constexpr std::string_view kLeftBlanks = "\t ";
constexpr std::string_view kRightBlanks = "\t\n\r ";
constexpr std::string_view kQuotedLeftBlanks = "\t \"'";
constexpr std::string_view kQuotedRightBlanks = "\t\n\r \"'";
// White space of the default locale.
constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

std::string& trim_front(std::string& s, std::string_view blanks) {
  s.erase(0, std::min(s.find_first_not_of(blanks), s.size()));
  return s;
}

std::string& trim_back(std::string& s, std::string_view blanks) {
  const std::size_t last = s.find_last_not_of(blanks);
  s.erase(last == std::string::npos ? 0 : last + 1);
  return s;
}

int ascii_upper(unsigned char c) { return c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c; }

}  // namespace

std::string& triml(std::string& s) { return trim_front(s, kLeftBlanks); }
std::string& trimr(std::string& s) { return trim_back(s, kRightBlanks); }
std::string& trim(std::string& s) { return trimr(triml(s)); }

std::string& sg_triml(std::string& s) { return trim_front(s, kQuotedLeftBlanks); }
std::string& sg_trimr(std::string& s) { return trim_back(s, kQuotedRightBlanks); }
std::string& sg_trim(std::string& s) {
  sg_trimr(sg_triml(s));
  s.erase(std::remove(s.begin(), s.end(), ' '), s.end());
  return s;
}

bool iequals(const std::string& a, const std::string& b) {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](unsigned char x, unsigned char y) {
           return ascii_upper(x) == ascii_upper(y);
         });
}

int isalpha(int c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

bool isAlphabetical(const std::string& s) {
  // Bytes above 127 arrive negative, as a signed char widens, and are no letters.
  return !s.empty() && std::all_of(s.begin(), s.end(), [](char c) { return isalpha(c) != 0; });
}

std::string RemoveWhiteSpaceUnderscore(const std::string& s) {
  std::string result = s;
  result.erase(
      std::remove_if(result.begin(), result.end(), [](char c) { return c == ' ' || c == '_'; }),
      result.end());
  return result;
}

std::vector<std::string> split_string(const std::string& text) {
  std::vector<std::string> words;
  append_words(words, text, kWhiteSpace);
  return words;
}

std::vector<std::string> split_string_dl(const std::string& text, char dl) {
  std::vector<std::string> words;
  append_words(words, text, std::string_view(&dl, 1));
  return words;
}

void split_to_words(const std::string& text, const std::string& delims,
                    std::vector<std::string>* out) {
  out->clear();
  append_words(*out, text, delims);
}

}  // namespace mmutil
