#include "driver.h"

#include <new>

bool bVerbose = false;

std::size_t array_length(int count) {
  if (count < 0) throw std::bad_array_new_length();
  return static_cast<std::size_t>(count);
}
