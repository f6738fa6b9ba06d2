// Fuzzes the text routines: the tokenizer, the trims, strhed, morphNumericString and the
// splitters. Input: one byte for the decimals of morphNumericString, one separator byte for
// split_string_dl, three bytes of delimiters (a NUL ends the set), then the text.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "mmutil/text.h"

namespace {

// No word is empty or holds a byte of the separator set.
void check_words(const std::vector<std::string>& words, const std::string& separators) {
  for (const std::string& w : words) {
    if (w.empty() || w.find_first_of(separators) != std::string::npos) __builtin_trap();
  }
}

void check_c_routines(const std::string& text, int digits) {
  std::vector<char> buffer(text.begin(), text.end());
  buffer.push_back('\0');
  std::vector<char> copy = buffer;
  mmutil::c_trim(copy.data());
  copy = buffer;
  mmutil::c_triml(copy.data());
  copy = buffer;
  mmutil::c_trimr(copy.data());
  copy = buffer;
  mmutil::morphNumericString(copy.data(), digits);
  copy = buffer;
  char* cursor = copy.data();
  // Every call takes at least one byte off the text, or ends it.
  for (std::size_t calls = 0; *cursor != '\0'; ++calls) {
    if (calls > text.size()) __builtin_trap();
    mmutil::strhed(&cursor);
  }
}

void check_string_routines(std::string text, char separator, const std::string& delimiters) {
  std::vector<std::string> words;
  mmutil::tokenize(words, text.c_str(), delimiters.c_str());
  check_words(words, delimiters);
  mmutil::tokenize(words, text, delimiters.c_str());
  check_words(words, delimiters);
  check_words(mmutil::split_string(text), std::string(" \t\n\v\f\r"));
  check_words(mmutil::split_string_dl(text, separator), std::string(1, separator));
  mmutil::split_to_words(text, delimiters, &words);
  if (!delimiters.empty()) check_words(words, delimiters);
  std::string copy = text;
  mmutil::trim(copy);
  copy = text;
  mmutil::sg_trim(copy);
  mmutil::RemoveWhiteSpaceUnderscore(text);
  mmutil::isAlphabetical(text);
  mmutil::iequals(text, copy);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 5) return 0;
  const int digits = static_cast<std::int8_t>(data[0]) % 16;
  const char separator = static_cast<char>(data[1]);
  const std::string delimiters(reinterpret_cast<const char*>(data + 2),
                               strnlen(reinterpret_cast<const char*>(data + 2), 3));
  const std::string text(reinterpret_cast<const char*>(data + 5), size - 5);
  check_c_routines(text, digits);
  check_string_routines(text, separator, delimiters);
  return 0;
}
