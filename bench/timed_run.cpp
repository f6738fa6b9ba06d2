#include "timed_run.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

// Starts `args` with standard output sent to `out_path`.
pid_t start(const std::vector<std::string>& args, const std::string& out_path) {
  std::vector<char*> argv;
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  const pid_t pid = fork();
  if (pid == 0) {
    const int out = open(out_path.c_str(), O_WRONLY);
    dup2(out, STDOUT_FILENO);
    execvp(argv[0], argv.data());
    _exit(127);
  }
  return pid;
}

}  // namespace

RunResult run(const std::vector<std::string>& args, int max_status,
              const std::vector<Feeder>& feeders) {
  const auto begin = std::chrono::steady_clock::now();
  std::vector<pid_t> fed;
  for (const auto& [file, fifo] : feeders) fed.push_back(start({"cat", file}, fifo));
  const pid_t pid = start(args, "/dev/null");
  int status = 0;
  struct rusage usage {};
  wait4(pid, &status, 0, &usage);
  for (const pid_t f : fed) waitpid(f, nullptr, 0);
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
  if (!WIFEXITED(status) || WEXITSTATUS(status) > max_status) {
    std::fprintf(stderr, "%s failed with status %d\n", args[0].c_str(), status);
    std::exit(1);
  }
  const auto cpu = [](const timeval& t) { return static_cast<double>(t.tv_sec) + t.tv_usec / 1e6; };
  return {elapsed.count(), cpu(usage.ru_utime) + cpu(usage.ru_stime), usage.ru_maxrss};
}

void evict(const std::vector<std::string>& files) {
  for (const std::string& name : files) {
    const int fd = open(name.c_str(), O_RDONLY);
    if (fd < 0) continue;
    fdatasync(fd);
    posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
    close(fd);
  }
}

double median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  const std::size_t n = v.size();
  return n % 2 == 1 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2;
}
