// Imports every file of a list in one process, a fresh instance of the filter each, and holds the time against the
// floor: the XML library alone over the same bytes, in the same run.

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "bench/filter_instance.h"
#include "bench/floor.h"
#include "bench/timing.h"

namespace {

constexpr char kHelp[] =
    "usage: import-list [--passes N] [FILE...]\n"
    "\n"
    "Imports the files, or those named line by line on standard input, in one process with a fresh instance of the\n"
    "filter each. Prints MB/s, records/s and peak memory beside the floor: libxml2's SAX2 parser with empty handlers\n"
    "and one reused context over the same bytes. The passes alternate between both, and the best of each counts.\n"
    "Loading and unloading the library is told apart from the import.\n";

std::string ReadFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

struct Times {
  double import = 0.0;
  double load = 0.0;
  std::uint64_t records = 0;
  std::size_t accepted = 0;
};

Times ImportAll(const std::vector<std::u16string>& paths) {
  Times times;
  for (const std::u16string& path : paths) {
    const double before = ThreadSeconds();
    double loaded, imported;
    {
      FilterInstance filter;
      loaded = ThreadSeconds();
      const FilterInstance::Result result = filter.Import(path);
      imported = ThreadSeconds();
      times.records += result.records;
      times.accepted += result.accepted;
    }
    times.import += imported - loaded;
    times.load += (loaded - before) + (ThreadSeconds() - imported);
  }
  return times;
}

}  // namespace

int main(int argc, char** argv) try {
  int passes = 3;
  std::vector<std::string> names;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
      std::fputs(kHelp, stdout);
      return 0;
    }
    if (std::strcmp(argv[i], "--passes") == 0 && i + 1 < argc) {
      passes = std::max(1, std::atoi(argv[++i]));
    } else {
      names.emplace_back(argv[i]);
    }
  }
  if (names.empty()) {
    for (std::string line; std::getline(std::cin, line);) names.push_back(line);
  }

  std::size_t bytes = 0;
  std::size_t largest = 0;
  std::vector<std::u16string> paths;
  for (const std::string& name : names) {
    paths.push_back(std::filesystem::absolute(name).u16string());
    const auto size = static_cast<std::size_t>(std::filesystem::file_size(name));
    bytes += size;
    largest = std::max(largest, size);
  }

  // Peak memory before the texts for the floor are held.
  Times best = ImportAll(paths);
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const long peak = usage.ru_maxrss;

  std::vector<std::string> texts;
  for (const std::string& name : names) texts.push_back(ReadFile(name));
  XmlFloor floor;
  double bestFloor = 1e300;
  for (int pass = 0; pass < passes; ++pass) {
    const double before = ThreadSeconds();
    for (const std::string& text : texts) floor.Parse(text);
    bestFloor = std::min(bestFloor, ThreadSeconds() - before);
    const Times times = ImportAll(paths);
    if (times.import < best.import) best.import = times.import;
    if (times.load < best.load) best.load = times.load;
  }

  const double megabytes = static_cast<double>(bytes) / 1e6;
  const auto files = static_cast<double>(names.size());
  std::printf("%zu files, %.1f MB, %zu accepted, %llu records\n", names.size(), megabytes, best.accepted,
              static_cast<unsigned long long>(best.records));
  std::printf("import        %9.1f MB/s %12.0f records/s %8.3f ms/file\n", megabytes / best.import,
              static_cast<double>(best.records) / best.import, best.import / files * 1e3);
  std::printf("floor         %9.1f MB/s\n", megabytes / bestFloor);
  std::printf("ratio         %9.2f\n", best.import / bestFloor);
  std::printf("load, unload  %9.3f ms/file\n", best.load / files * 1e3);
  std::printf("peak memory   %9.1f MB (largest file %.1f MB)\n", static_cast<double>(peak) / 1e3,
              static_cast<double>(largest) / 1e6);
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "import-list: %s\n", error.what());
  return 1;
}
