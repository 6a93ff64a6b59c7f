#include "tools/temporary_folder.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "headless_host/file_access.h"

TemporaryFolder::TemporaryFolder() : path_(headless::SystemTemporaryFolder() + "/svgimport-XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) path_.clear();
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
}
