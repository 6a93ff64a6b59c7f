// A filter that comes to no end of its own, for tests of what the tools do then: behind one record, a document whose
// name begins with "hang" never returns, "crash" ends by SIGSEGV, "abort" by SIGABRT, "quit" leaves the process, and
// "grow" takes memory until there is none. Any other name is refused if it begins with "refuse" and imported if not.

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

#include "run/import_command.h"

namespace {

std::u16string name;
int returned = 0;

}  // namespace

extern "C" [[gnu::visibility("default")]] int CheckFile(std::uintptr_t, std::uintptr_t, const char16_t* file) {
  name = file;
  name.erase(0, name.rfind(u'/') + 1);
  return name.starts_with(u"refuse") ? 0 : 1;
}

extern "C" [[gnu::visibility("default")]] ImportCommand GetImportCommand() {
  if (returned++ == 0) return {KEY_FILL, 0, {7}};
  while (name.starts_with(u"hang")) pause();
  if (name.starts_with(u"crash")) {
    // A sanitizer's handler would make an ordinary exit of it.
    std::signal(SIGSEGV, SIG_DFL);
    std::raise(SIGSEGV);
  }
  if (name.starts_with(u"abort")) std::abort();
  if (name.starts_with(u"quit")) _exit(0);
  std::vector<std::vector<char>> taken;
  while (name.starts_with(u"grow")) taken.emplace_back(std::size_t{1} << 24);
  return {KEY_ENDF, 0, {0}};
}

extern "C" [[gnu::visibility("default")]] std::intptr_t GetFileHandle() { return 0; }

extern "C" [[gnu::visibility("default")]] int CloseFile() { return 0; }
