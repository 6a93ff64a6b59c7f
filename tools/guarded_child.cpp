#include "tools/guarded_child.h"

#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>

#include "headless_host/sanitizer.h"
#include "tools/option_values.h"

// What the child tells its parent, in memory that outlives it.
struct GuardedChild::Answer {
  bool finished, outOfMemory;
  int status;
};

namespace {

constexpr int kEndingSignals[] = {SIGINT, SIGTERM, SIGHUP};
constexpr int kMillisecondsPerStep = static_cast<int>(HeldSignals::kStepSeconds * 1000.0);
// While the whole tool is stopped, time passes that no child has used.
constexpr double kMostSecondsPerLook = 5.0 * HeldSignals::kStepSeconds;

void LowerLimit(__rlimit_resource_t resource, rlim_t most) {
  rlimit limit;
  if (getrlimit(resource, &limit) != 0) return;
  limit.rlim_cur = std::min(limit.rlim_cur, most);
  limit.rlim_max = std::min(limit.rlim_max, most);
  setrlimit(resource, &limit);
}

void SetLimits(const Limits& limits) {
  // AddressSanitizer reserves terabytes of address space.
  if (limits.megabytes > 0 && !HEADLESS_HOST_ADDRESS_SANITIZER) {
    LowerLimit(RLIMIT_AS, static_cast<rlim_t>(std::min<std::uint64_t>(limits.megabytes, RLIM_INFINITY >> 21) << 20));
  }
  // The parent watches the clock; this holds where the parent itself has been stopped.
  if (limits.seconds > 0.0) LowerLimit(RLIMIT_CPU, static_cast<rlim_t>(std::min(limits.seconds, 1e9)) + 2);
}

std::string Shown(double number) {
  char digits[32];
  std::snprintf(digits, sizeof digits, "%g", number);
  return digits;
}

bool NobodyReadsStandardOutput() {
  pollfd output = {STDOUT_FILENO, POLLOUT, 0};
  return poll(&output, 1, 0) == 0;
}

void Complain(const std::string& shownName, const std::string& text) {
  std::fprintf(stderr, "svgimport: %s: %s\n", shownName.c_str(), text.c_str());
}

}  // namespace

void AddLimitOptions(CLI::App& command, Limits& limits) {
  const auto notNegative = [](const std::string& text) {
    return text.starts_with('-') ? "'" + text + "' is less than 0" : std::string();
  };
  AddNumberOption(
      command, "--time-limit", limits.seconds,
      "Ends an import that takes longer; 0 is no limit; the time in which nobody reads standard output does "
      "not count")
      ->type_name("SECONDS")
      ->default_str(Shown(limits.seconds))
      ->check(notNegative);
  command.add_option("--memory-limit", limits.megabytes, "Ends an import that needs more address space; 0 is no limit")
      ->type_name("MB")
      ->check(notNegative)
      ->capture_default_str();
}

HeldSignals::HeldSignals() {
  // A child's end must be told even if whoever started the tool does not care for its own children.
  signal(SIGCHLD, SIG_DFL);
  sigset_t held;
  sigemptyset(&held);
  sigaddset(&held, SIGCHLD);
  for (const int number : kEndingSignals) {
    struct sigaction action;
    if (sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) sigaddset(&held, number);
  }
  sigprocmask(SIG_BLOCK, &held, &before_);
  descriptor_ = signalfd(-1, &held, SFD_CLOEXEC | SFD_NONBLOCK);
}

HeldSignals::~HeldSignals() {
  if (descriptor_ >= 0) close(descriptor_);
  sigprocmask(SIG_SETMASK, &before_, nullptr);
}

int HeldSignals::Wait(int descriptor) {
  pollfd watched[] = {{descriptor_, POLLIN, 0}, {descriptor, POLLIN, 0}};
  poll(watched, 2, kMillisecondsPerStep);
  signalfd_siginfo came;
  int ending = 0;
  while (read(descriptor_, &came, sizeof came) == static_cast<ssize_t>(sizeof came)) {
    if (came.ssi_signo != SIGCHLD) ending = static_cast<int>(came.ssi_signo);
  }
  return ending;
}

GuardedChild::GuardedChild() {
  void* shared = mmap(nullptr, sizeof(Answer), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  answer_ = shared == MAP_FAILED ? nullptr : static_cast<Answer*>(shared);
}

GuardedChild::~GuardedChild() {
  Kill();
  if (answer_ != nullptr) munmap(answer_, sizeof(Answer));
}

bool GuardedChild::Start(const Limits& limits, const std::function<int()>& work) {
  if (answer_ == nullptr) {
    errno = ENOMEM;
    return false;
  }
  *answer_ = {};
  limits_ = limits;
  seconds_ = 0.0;
  late_ = false;
  status_ = 0;
  failure_.clear();
  lastLook_ = Clock::now();
  std::fflush(nullptr);  // or the child would write what is in the buffers once more
  const pid_t parent = getpid();
  pid_ = fork();
  if (pid_ != 0) return pid_ > 0;

  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(kExitError);
  SetLimits(limits);
  try {
    answer_->status = work();
    answer_->finished = true;
  } catch (const std::bad_alloc&) {
    answer_->outOfMemory = true;
  }
  // Not _exit: the buffers are to be written, and leaks to be found.
  std::exit(answer_->finished ? answer_->status : kExitError);
}

bool GuardedChild::HasEnded(bool timeCounts) {
  if (pid_ <= 0) return true;
  int waitStatus = 0;
  if (waitpid(pid_, &waitStatus, WNOHANG) == pid_) {
    Judge(waitStatus);
    return true;
  }
  const Clock::time_point now = Clock::now();
  if (timeCounts) {
    seconds_ += std::min(std::chrono::duration<double>(now - lastLook_).count(), kMostSecondsPerLook);
  }
  lastLook_ = now;
  if (!late_ && limits_.seconds > 0.0 && seconds_ > limits_.seconds) {
    late_ = true;
    kill(pid_, SIGKILL);
  }
  return false;
}

void GuardedChild::Kill() {
  if (pid_ <= 0) return;
  kill(pid_, SIGKILL);
  int waitStatus = 0;
  while (waitpid(pid_, &waitStatus, 0) < 0 && errno == EINTR) {
  }
  Judge(waitStatus);
}

void GuardedChild::Judge(int waitStatus) {
  pid_ = 0;
  if (answer_->finished && WIFEXITED(waitStatus) && WEXITSTATUS(waitStatus) == answer_->status) {
    status_ = answer_->status;
    return;
  }
  status_ = kExitError;
  const int number = WIFSIGNALED(waitStatus) ? WTERMSIG(waitStatus) : 0;
  if (late_ || number == SIGXCPU) {
    failure_ = "it took more than " + Shown(limits_.seconds) + " s";
  } else if (answer_->outOfMemory) {
    failure_ = limits_.megabytes > 0 ? "it used more than " + std::to_string(limits_.megabytes) + " MB"
                                     : "it ran out of memory";
  } else if (number == SIGKILL) {
    failure_ = "it was killed (signal " + std::to_string(number) + ")";
  } else if (number != 0) {
    failure_ = "it crashed (signal " + std::to_string(number) + ")";
  } else {
    failure_ = "it ended with exit status " + std::to_string(WEXITSTATUS(waitStatus));
  }
}

int RunGuarded(const Limits& limits, const std::string& shownName, const std::function<int()>& work) {
  HeldSignals signals;
  GuardedChild child;
  const bool started = child.Start(limits, [&] {
    try {
      return work();
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception& error) {
      Complain(shownName, error.what());
      return kExitError;
    }
  });
  if (!started) {
    Complain(shownName, std::string("no process for the import: ") + std::strerror(errno));
    return kExitError;
  }
  while (!child.HasEnded(!NobodyReadsStandardOutput())) {
    const int signal = signals.Wait();
    if (signal == 0) continue;
    child.Kill();
    return kExitSignal + signal;
  }
  if (!child.Failure().empty()) Complain(shownName, "the import was ended: " + child.Failure());
  return child.Status();
}
