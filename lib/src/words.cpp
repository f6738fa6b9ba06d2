#include "words.h"

namespace mmutil {

void append_words(std::vector<std::string>& words, std::string_view text,
                  std::string_view delimiters) {
  for (std::size_t start = text.find_first_not_of(delimiters); start != std::string_view::npos;) {
    std::size_t end = text.find_first_of(delimiters, start);
    if (end == std::string_view::npos) end = text.size();
    words.emplace_back(text.substr(start, end - start));
    start = text.find_first_not_of(delimiters, end);
  }
}

}  // namespace mmutil
