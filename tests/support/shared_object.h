// A shared object that a test loads, unloaded at the end of the scope.
#pragma once

#include <dlfcn.h>

#include <stdexcept>
#include <string>

class SharedObject {
 public:
  explicit SharedObject(const std::string& path) : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!handle_) throw std::runtime_error(dlerror());
  }
  ~SharedObject() { Unload(); }
  SharedObject(const SharedObject&) = delete;
  SharedObject& operator=(const SharedObject&) = delete;

  // Gives this reference back. Somebody else's may keep the library loaded.
  void Unload() {
    if (handle_) dlclose(handle_);
    handle_ = nullptr;
  }

  template <class Symbol>
  Symbol* Find(const char* name) const {
    return reinterpret_cast<Symbol*>(dlsym(handle_, name));
  }

  // Whether anybody has the library with this path or name loaded.
  static bool IsLoaded(const std::string& name) {
    void* handle = dlopen(name.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle) dlclose(handle);
    return handle != nullptr;
  }

 private:
  void* handle_;
};
