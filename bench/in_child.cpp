#include "bench/in_child.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>

#include "headless_host/headless_host.h"

double RunInChild(void* result, std::size_t size, const std::function<void()>& work) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("no child process");
  if (child == 0) {
    int status = 1;
    try {
      ResetHost();  // the allocator is found under the process's number
      work();
      // A result is smaller than what a pipe takes at once.
      if (write(ends[1], result, size) == static_cast<ssize_t>(size)) status = 0;
    } catch (const std::exception& error) {
      std::fprintf(stderr, "%s\n", error.what());
    }
    _exit(status);
  }
  close(ends[1]);
  const bool whole = read(ends[0], result, size) == static_cast<ssize_t>(size);
  close(ends[0]);
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child || status != 0 || !whole) {
    throw std::runtime_error(WIFSIGNALED(status)
                                 ? std::string("the measurement was ended by: ") + strsignal(WTERMSIG(status))
                                 : "the measurement failed");
  }
  return static_cast<double>(usage.ru_maxrss) * 1024.0;
}
