#include "bench/filter_instance.h"

#include <dlfcn.h>

#include <stdexcept>

#include "headless_host/headless_host.h"

namespace {

template <class Function>
Function* Find(void* library, const char* name) {
  void* symbol = dlsym(library, name);
  if (!symbol) throw std::runtime_error(dlerror());
  return reinterpret_cast<Function*>(symbol);
}

}  // namespace

FilterInstance::FilterInstance() : library_(dlopen(SVGIMPORT_FILTER, RTLD_NOW | RTLD_LOCAL)) {
  if (!library_) throw std::runtime_error(dlerror());
  checkFile_ = Find<CheckFileFunction>(library_, "CheckFile");
  getImportCommand_ = Find<GetImportCommandFunction>(library_, "GetImportCommand");
  closeFile_ = Find<CloseFileFunction>(library_, "CloseFile");
}

FilterInstance::~FilterInstance() { dlclose(library_); }

FilterInstance::Result FilterInstance::Import(const std::u16string& path) {
  Result result;
  result.accepted = checkFile_(0, 0, path.c_str()) == 1;
  while (result.accepted) {
    const ImportCommand command = getImportCommand_();
    ReleaseCommand(command);
    ++result.records;
    if (command.key == KEY_ENDF) break;
  }
  closeFile_();
  return result;
}
