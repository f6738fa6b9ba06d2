#include "text_format.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

std::string format_text(const char* format, ...) {
  std::va_list args;
  va_start(args, format);
  char buffer[1024];
  const int length = std::vsnprintf(buffer, sizeof buffer, format, args);
  va_end(args);
  std::string text(buffer, static_cast<std::size_t>(std::clamp<int>(length, 0, sizeof buffer - 1)));
  if (length >= static_cast<int>(sizeof buffer)) {  // too long for the buffer: format it again
    text.resize(static_cast<std::size_t>(length));
    va_start(args, format);
    std::vsnprintf(text.data(), text.size() + 1, format, args);
    va_end(args);
  }
  return text;
}
