#include "fuzz/support/fuzz_run.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <new>
#include <stdexcept>
#include <vector>

#include "headless_host/headless_host.h"
#include "images/download.h"
#include "platform/narrow_text.h"
#include "platform/xml_document.h"
#include "run/command_queue.h"
#include "run/entry_points.h"
#include "run/import_run.h"

// The linker leads the calls of these two functions here (see CMakeLists.txt).
#define WRAPPED_ROLL_BACK __wrap__Z12RollBackPathv
#define REAL_ROLL_BACK __real__Z12RollBackPathv
#define WRAPPED_DOWNLOAD __wrap__Z14DownloadToFileiSt17basic_string_viewIDsSt11char_traitsIDsEERK10HttpLimits
extern "C" {
void WRAPPED_ROLL_BACK();
void REAL_ROLL_BACK();
bool WRAPPED_DOWNLOAD(int file, std::u16string_view url, const HttpLimits& limits);
}

// Gives back what a roll-back drops: the filter leaves it to nobody, which would hide all other leaks.
void WRAPPED_ROLL_BACK() {
  const CommandQueue& queue = run.commands;
  std::vector<ImportCommand> before;
  for (std::size_t i = 0; i < queue.count; ++i) before.push_back(*queue.slots[(queue.head + i) & (queue.capacity - 1)]);
  REAL_ROLL_BACK();
  for (std::size_t i = queue.count; i < before.size(); ++i) ReleaseCommand(before[i]);
}

// Takes every server for one that does not answer.
bool WRAPPED_DOWNLOAD(int, std::u16string_view, const HttpLimits&) { return false; }

namespace {

// In memory, so that millions of inputs cost no disk.
class Folder {
 public:
  Folder() {
    char name[] = "/dev/shm/svgimport-fuzz-XXXXXX";
    if (!mkdtemp(name)) std::abort();
    path = std::string(name) + "/";
    setenv("TMPDIR", name, 1);
  }
  ~Folder() { std::filesystem::remove_all(path); }
  void Empty() const {
    for (const auto& entry : std::filesystem::directory_iterator(path)) std::filesystem::remove(entry.path());
  }

  std::string path;
};

const Folder& OwnFolder() {
  static const Folder folder;
  return folder;
}

void PullAll() {
  for (;;) {
    const ImportCommand command = GetImportCommand();
    ReleaseCommand(command);
    if (command.key == KEY_ENDF) return;
  }
}

}  // namespace

void StartFresh() {
  OwnFolder().Empty();
  ResetHost();
  SetHostBaseDir(WideFromUtf8(OwnFolder().path));
  ResetImportRun();
}

void ReleaseQueue() {
  while (run.commands.count > 0) ReleaseCommand(PopCommand(run.commands));
}

void ImportDocument(std::string_view text) {
  const std::string path = OwnFolder().path + "drawing.svg";
  std::ofstream(path, std::ios::binary).write(text.data(), static_cast<std::streamsize>(text.size()));
  try {
    if (CheckFile(0, 0, WideFromUtf8(path).c_str()) == 1) PullAll();
  } catch (const std::bad_alloc&) {
  } catch (const std::length_error&) {
  } catch (const std::out_of_range&) {
  } catch (const DocumentError&) {
  }
  ReleaseQueue();
  CloseFile();
}

std::u16string TextOfInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  return WideFromNarrow(bytes.substr(0, bytes.find('\0')));
}

std::string AttributeValue(std::string_view text) {
  std::string value;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '<' || c == '&') {
      value += "&#" + std::to_string(byte) + ";";
    } else if (byte >= 0x20 || c == '\t' || c == '\n' || c == '\r') {
      value += c;
    }
  }
  return value;
}

std::string DocumentOf(std::string_view elements) {
  return "<svg xmlns='http://www.w3.org/2000/svg' xmlns:svg='http://www.w3.org/2000/svg' "
         "xmlns:xlink='http://www.w3.org/1999/xlink' width='1mm' height='100'>" +
         std::string(elements) + "</svg>";
}
