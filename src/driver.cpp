#include "driver.h"

#include <sys/stat.h>

#include <new>

bool bVerbose = false;

std::size_t array_length(int count) {
  if (count < 0) throw std::bad_array_new_length();
  return static_cast<std::size_t>(count);
}

std::FILE* open_input_file(const char* name) {
  std::FILE* file = std::fopen(name, "r");
  struct stat info {};
  if (file != nullptr && fstat(fileno(file), &info) == 0 && S_ISDIR(info.st_mode)) {
    std::fclose(file);
    return nullptr;
  }
  return file;
}
