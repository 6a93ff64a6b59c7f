// The files of a batch one after the other: what the operands name, what lies in folders, and what a list on standard
// input names. Only the folders on the way to the current file and one block of the list are kept.
#pragma once

#include <string>
#include <vector>

class FileNames {
 public:
  // An operand "-" stands for the list on standard input, whose names end with `separator`.
  FileNames(std::vector<std::string> operands, char separator);

  enum class Next {
    kFile,  // `file` is the next one
    kWait,  // the list has nothing complete yet; ReadList is to be called
    kEnd
  };
  // Folders are walked: their files whose names end in .svg, in any case, in the order of their bytes. What is neither
  // a folder nor there is given as it stands.
  Next Take(std::string& file);

  // Reads a block of the list if there is one, without waiting for it.
  void ReadList();

  // Why the list could not be read to its end; empty when it could.
  const std::string& Failure() const { return failure_; }

 private:
  bool TakeFromList(std::string& name);
  bool OpenFolder(const std::string& folder);

  std::vector<std::string> operands_;  // the next one last
  std::vector<std::string> pending_;   // the same, of folders
  char separator_;
  bool inList_ = false, listEnded_ = false;
  std::string list_;  // read and not yet taken
  std::size_t listAt_ = 0;
  std::string failure_;
};
