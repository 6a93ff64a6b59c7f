// Imports one drawing with the filter that is linked in, so that its ways are counted. A process each: the filter
// imports once.

#include <cstdio>
#include <filesystem>

#include "headless_host/headless_host.h"
#include "run/import_command.h"

int main(int argc, char** argv) {
  if (argc != 2) return std::fputs("usage: svgimport-training FILE\n", stderr), 2;
  const std::u16string path = std::filesystem::absolute(argv[1]).u16string();
  if (CheckFile(0, 0, path.c_str()) != 1) return std::fprintf(stderr, "%s is no drawing\n", argv[1]), 1;
  int key;
  do {
    const ImportCommand command = GetImportCommand();
    key = command.key;
    ReleaseCommand(command);
  } while (key != KEY_ENDF);
  CloseFile();
}
