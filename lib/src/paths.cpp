// Path and file-system routines of mmutil.
#include <glob.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "mmutil/text.h"

namespace mmutil {
namespace {

void replace_bytes(char* s, bool (*matches)(char), char replacement) {
  for (; *s != '\0'; ++s) {
    if (matches(*s)) *s = replacement;
  }
}

bool is_separator(char c) { return c == '/' || c == '\\'; }
bool is_backslash(char c) { return c == '\\'; }

// `path` as one shell word: in single quotes, each quote inside written as '\''. A name that
// begins with "-" is given as "./-..." so that mv does not take it for an option.
std::string shell_quoted(const char* path) {
  std::string quoted = path[0] == '-' ? "'./" : "'";
  for (const char* c = path; *c != '\0'; ++c) {
    if (*c == '\'') {
      quoted += "'\\''";
    } else {
      quoted += *c;
    }
  }
  return quoted + "'";
}

}  // namespace

std::string base_filename(const std::string& path) {
  const std::size_t separator = path.find_last_of("/\\");
  return separator == std::string::npos ? path : path.substr(separator + 1);
}

std::string remove_filename_extension(const std::string& name) {
  return name.substr(0, name.rfind('.'));
}

void ReplaceSlashWithUnderscore(char* s) { replace_bytes(s, is_separator, '_'); }
void ReplaceBackSlashWithSlash(char* s) { replace_bytes(s, is_backslash, '/'); }

int create_directory(const char* path) {
  struct stat info;
  if (stat(path, &info) == 0) return 0;  // whatever is there counts as success
  return mkdir(path, 0750);
}

int dir_exists(const char* path) {
  struct stat info;
  if (stat(path, &info) == 0) return (info.st_mode & 040000) != 0 ? 1 : 0;
  return errno == ENOENT || errno == ENOTDIR ? 0 : -1;
}

bool fileExist(const char* path) {
  struct stat info;
  return stat(path, &info) == 0;
}

int file_exists(const char* path) {
  if (path == nullptr) return 0;
  std::FILE* file = std::fopen(path, "r");
  if (file == nullptr) return 0;
  std::fclose(file);
  return 1;
}

int backup_file(const char* path) {
  if (file_exists(path) == 0) return 0;
  // The quoted name ends with its closing quote; the "#" after it joins the same shell word.
  const std::string name = shell_quoted(path);
  const std::string command = "mv " + name + " " + name + "#";
  return std::system(command.c_str());
}

void get_workdir(std::string& out) {
  char buffer[1024];
  if (getcwd(buffer, sizeof buffer) == nullptr) {
    std::printf("WARNING: getcwd failed!\n");
    std::fflush(stdout);
    buffer[0] = '\0';
  }
  ReplaceBackSlashWithSlash(buffer);
  out = buffer;
}

std::vector<std::string> globFileVector(const std::string& pattern) {
  glob_t matches{};
  glob(pattern.c_str(), GLOB_TILDE, nullptr, &matches);
  std::vector<std::string> paths(matches.gl_pathv, matches.gl_pathv + matches.gl_pathc);
  globfree(&matches);
  return paths;
}

}  // namespace mmutil
