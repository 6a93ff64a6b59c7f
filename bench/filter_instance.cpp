#include "bench/filter_instance.h"

#include <dlfcn.h>
#include <malloc.h>

#include <stdexcept>

#include "headless_host/headless_host.h"
#include "headless_host/inspection.h"
#include "host/polygon.h"

namespace {

template <class Function>
Function* Find(void* library, const char* name) {
  void* symbol = dlsym(library, name);
  if (!symbol) throw std::runtime_error(dlerror());
  return reinterpret_cast<Function*>(symbol);
}

// Of a record as it comes from the filter. A pattern's definition counts once, with the second record of its pair.
std::uint64_t MemoryOf(const ImportCommand& command) {
  constexpr std::uint64_t kRecord = sizeof(ImportCommand);
  switch (command.key) {
    case KEY_BEZI:
    case KEY_LINE:
    case KEY_WIDT:
    case KEY_FDEF:
    case KEY_PFOL:
    case KEY_GNRC:
      return kRecord + DefaultHostAllocator()->BlockSize(command.data);
    case KEY_PLYR:
      return kRecord + DefaultHostAllocator()->BlockSize(command.data) +
             malloc_usable_size(static_cast<POLYGON*>(command.data)->sides);
    case KEY_PARA:
      return kRecord + DefaultHostAllocator()->BlockSize(command.data) +
             ParagraphBytes(static_cast<ParagraphRecord*>(command.data)->paragraph);
    case KEY_NFIL:
    case KEY_NOTL:
    case KEY_LYOT:
    case KEY_LIOT:
    case KEY_SPFL:
    case KEY_TSPY:
      return kRecord + malloc_usable_size(command.data);
    default:
      return kRecord;
  }
}

}  // namespace

FilterInstance::FilterInstance() : library_(dlopen(SVGIMPORT_FILTER, RTLD_NOW | RTLD_LOCAL)) {
  if (!library_) throw std::runtime_error(dlerror());
  checkFile_ = Find<CheckFileFunction>(library_, "CheckFile");
  getImportCommand_ = Find<GetImportCommandFunction>(library_, "GetImportCommand");
  closeFile_ = Find<CloseFileFunction>(library_, "CloseFile");
}

FilterInstance::~FilterInstance() { dlclose(library_); }

FilterInstance::Result FilterInstance::Import(const std::u16string& path, std::uint64_t* recordBytes) {
  Result result;
  result.accepted = checkFile_(0, 0, path.c_str()) == 1;
  while (result.accepted) {
    const ImportCommand command = getImportCommand_();
    if (recordBytes) *recordBytes += MemoryOf(command);
    ReleaseCommand(command);
    ++result.records;
    if (command.key == KEY_ENDF) break;
  }
  closeFile_();
  return result;
}
