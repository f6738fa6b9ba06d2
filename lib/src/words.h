// Splitting text into words at runs of delimiter bytes, shared by the tokenizer and the
// splitters of mmutil.
#ifndef MMUTIL_WORDS_H
#define MMUTIL_WORDS_H

#include <string>
#include <string_view>
#include <vector>

namespace mmutil {

// Appends to `words` every maximal run of bytes of `text` that are not in `delimiters`, in
// order. An empty delimiter set gives a non-empty text whole.
void append_words(std::vector<std::string>& words, std::string_view text,
                  std::string_view delimiters);

}  // namespace mmutil

#endif  // MMUTIL_WORDS_H
