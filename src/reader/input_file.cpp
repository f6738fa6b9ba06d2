#include "input_file.h"

#include <fcntl.h>
#include <unistd.h>

int open_input_fd(const char* name, struct stat& info) {
  const int fd = open(name, O_RDONLY | O_CLOEXEC);
  if (fd < 0) return -1;
  if (fstat(fd, &info) != 0) info = {};
  if (S_ISDIR(info.st_mode)) {
    close(fd);
    return -1;
  }
  return fd;
}

std::FILE* open_input_file(const char* name) {
  struct stat info {};
  const int fd = open_input_fd(name, info);
  if (fd < 0) return nullptr;
  std::FILE* file = fdopen(fd, "r");
  if (file == nullptr) close(fd);
  return file;
}
