#include "tools/filter_library.h"

#include <dlfcn.h>
#include <filesystem>
#include <system_error>
#include <vector>

namespace {

constexpr const char* kFilterName = "libsvgimport.so";

// Where the filter lies beside the program, in the build tree or installed.
std::vector<std::filesystem::path> PlacesBesideProgram() {
  std::error_code failed;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failed);
  if (failed) return {};
  const std::filesystem::path prefix = program.parent_path().parent_path();
  return {prefix / "lib" / kFilterName, prefix / SVGIMPORT_INSTALL_LIBDIR / kFilterName};
}

template <class Function>
bool Resolve(void* handle, const char* name, Function*& function) {
  function = reinterpret_cast<Function*>(dlsym(handle, name));
  return function != nullptr;
}

}  // namespace

FilterLibrary::FilterLibrary(const std::string& path) {
  if (!path.empty()) {
    // Without a separator the loader would search its own folders instead of the file that was named.
    Open(path.find('/') == path.npos ? "./" + path : path);
    return;
  }
  failure_ = std::string("no ") + kFilterName + " beside the program";
  for (const std::filesystem::path& place : PlacesBesideProgram()) {
    std::error_code ignored;
    if (!std::filesystem::exists(place, ignored)) continue;
    Open(place.string());
    return;
  }
}

void FilterLibrary::Open(const std::string& path) {
  failure_.clear();
  handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_ == nullptr || !Resolve(handle_, "CheckFile", checkFile) ||
      !Resolve(handle_, "GetImportCommand", getImportCommand) || !Resolve(handle_, "CloseFile", closeFile)) {
    const char* reason = dlerror();
    failure_ = reason == nullptr ? path + ": an entry point is missing" : reason;
  }
}

FilterLibrary::~FilterLibrary() {
  if (handle_ != nullptr) dlclose(handle_);
}
