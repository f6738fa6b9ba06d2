// Opening the input files of a run. A directory is not taken for an empty file: it cannot be
// opened as an input, as a file that does not exist cannot.
#ifndef GET_INTER_ENER_INPUT_FILE_H
#define GET_INTER_ENER_INPUT_FILE_H

#include <sys/stat.h>

#include <cstdio>

// Opens `name` for reading and fills `info` with what it is. Returns -1 if it cannot be
// opened or is a directory.
int open_input_fd(const char* name, struct stat& info);

// The same as a stream, or nullptr.
std::FILE* open_input_file(const char* name);

#endif  // GET_INTER_ENER_INPUT_FILE_H
