#include "text_format.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

// Measures the text first, then writes it into a string of that length: messages are few, and
// none is cut at a buffer's end.
std::string format_text(const char* format, ...) {
  std::va_list args, again;
  va_start(args, format);
  va_copy(again, args);
  const int length = std::vsnprintf(nullptr, 0, format, args);
  va_end(args);
  std::string text(static_cast<std::size_t>(std::max(length, 0)), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}
