// A private folder under the system's folder for temporary files, removed with its content when the object goes.
#pragma once

#include <string>

class TemporaryFolder {
 public:
  // The name ends in six random characters. Path() is empty when the folder could not be made.
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  // Without a separator at its end.
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};
