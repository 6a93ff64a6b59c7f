// All the works that the import's speed is held against, with their targets, in one run.

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/drawings.h"
#include "bench/filter_instance.h"
#include "bench/floor.h"
#include "bench/in_child.h"
#include "bench/inputs.h"
#include "bench/rsvg_load.h"
#include "bench/table.h"
#include "bench/timing.h"

namespace {

constexpr char kHelp[] =
    "usage: svgimport-bench-suite [--quick] [--rows NAME,...] [--passes N] [--keep FOLDER]\n"
    "\n"
    "Measures whole imports (read, load, translate, drain and release every record) and prints two tables\n"
    "in Markdown: times with their ratios and targets, and peak memory. Times are the processor time of one\n"
    "thread, the best of all passes, and for twice the size those of the pass with the middle ratio; the\n"
    "passes alternate between the two things compared. The floor is libxml2's SAX2 parser with empty\n"
    "handlers and one reused context over the same bytes. Each work runs in a process of its own.\n"
    "\n"
    "  --quick        everything at a tenth of its size\n"
    "  --rows NAMES   these works alone, separated by commas: clipart (the drawings of Debian's openclipart-svg, also\n"
    "                 against librsvg), path, shapes, groups, gradients, texts, one-path, short-paths\n"
    "  --passes N     passes of each measurement, 10 by default\n"
    "  --keep FOLDER  leave the drawings that the benchmark makes there, for a profiler\n"
    "\n"
    "Exit status: 0 when everything was measured, whatever the verdicts; 1 when a measurement failed; 2 for wrong\n"
    "arguments.\n";

struct Work {
  const char* name;
  const char* title;
  std::string (*make)(std::size_t size);
  std::size_t size;
  double target;     // times the floor; 0 for none
  bool addNumbers;   // std::from_chars over all numbers of the paths counts with the floor
  bool againstHalf;  // held against half the size, otherwise twice the size against this one
};

constexpr Work kWorks[] = {
    {"path", "path data, all commands", MakePaths, 20'000'000, 2.0, true, false},
    {"shapes", "basic shapes, presentation attributes", MakeShapes, 200'000, 6.0, false, false},
    {"groups", "shapes in groups 60 deep, transforms, styles", MakeGroups, 100'000, 6.0, false, false},
    {"gradients", "gradient fills with links", MakeGradientFills, 20'000, 6.0, false, false},
    {"texts", "text elements", MakeTexts, 50'000, 6.0, false, false},
    {"one-path", "100 MB with one path", MakeOnePath, 100'000'000, 0.0, true, true},
    {"short-paths", "a million short paths", MakeShortPaths, 1'000'000, 0.0, true, true},
};

constexpr std::size_t kClipartFiles = 3000;
constexpr std::size_t kPiece = 25;  // drawings that are timed together
constexpr std::size_t kTurn = 10;   // pieces, before the other loader has its turn
constexpr double kMostFloors = 2.5;
constexpr double kLeastTimesFaster = 6.0;
constexpr double kMostLoadMilliseconds = 1.0;
constexpr double kMostWhenDoubled = 2.1;
constexpr double kMostMemory = 7.0;

struct Options {
  std::size_t divisor = 1;
  std::string rows;
  int passes = 10;
  std::string folder;
  bool keep = false;

  bool Wants(std::string_view name) const {
    return rows.empty() || (',' + rows + ',').find(',' + std::string(name) + ',') != std::string::npos;
  }
};

struct Tables {
  std::vector<TableRow> times;
  std::vector<TableRow> memory;
};

double ImportSeconds(const std::u16string& path) {
  FilterInstance filter;
  return SecondsOf([&] {
    if (!filter.Import(path).accepted) throw std::runtime_error("a drawing was refused");
  });
}

std::string Milliseconds(double seconds) { return Formatted("%.1f ms", seconds * 1e3); }
std::string Megabytes(double bytes) { return Formatted("%.1f MB", bytes / 1e6); }
std::string Ratio(double ratio) { return Formatted("%.2f", ratio); }

// --- The drawings of openclipart

void MeasureClipart(const Options& options, Tables& tables) {
  struct Result {
    TimePair floor;  // import, floor
    bool hasRsvg;
    TimePair rsvg;  // import, librsvg
    double load;    // of all files
    double bytes;
    std::size_t files;
  };
  const Result result = InChild([&] {
    const std::vector<DrawingFile> drawings = ReadDrawings(kClipartFiles / options.divisor);
    Result measured{};
    measured.files = drawings.size();
    for (const DrawingFile& drawing : drawings) measured.bytes += static_cast<double>(drawing.bytes.size());

    const std::size_t pieces = (drawings.size() + kPiece - 1) / kPiece;
    const auto forEachDrawing = [&](std::size_t piece, auto work) {
      for (std::size_t i = piece * kPiece; i < std::min(drawings.size(), (piece + 1) * kPiece); ++i) work(drawings[i]);
    };
    BestPieces loads(pieces);
    const auto import = [&](std::size_t piece) {
      double imported = 0.0;
      const double all = SecondsOf([&] {
        forEachDrawing(piece, [&](const DrawingFile& drawing) {
          FilterInstance filter;
          imported += SecondsOf([&] { filter.Import(drawing.path); });
        });
      });
      loads.Note(piece, all - imported);
      return imported;
    };
    const auto against = [&](auto other) {
      BestPieces imports(pieces), others(pieces);
      for (int pass = 0; pass < options.passes; ++pass) {
        for (std::size_t begin = 0; begin < pieces; begin += kTurn) {
          const std::size_t end = std::min(pieces, begin + kTurn);
          for (std::size_t i = begin; i < end; ++i) imports.Note(i, import(i));
          for (std::size_t i = begin; i < end; ++i) others.Note(i, SecondsOf([&] { forEachDrawing(i, other); }));
        }
      }
      return TimePair{imports.Sum(), others.Sum()};
    };
    XmlFloor floor;
    measured.floor = against([&](const DrawingFile& drawing) { floor.Parse(drawing.bytes); });
    if (RsvgLoad* const load = FindRsvg()) {
      measured.hasRsvg = true;
      measured.rsvg = against([load](const DrawingFile& drawing) { load(drawing.bytes.data(), drawing.bytes.size()); });
    }
    measured.load = loads.Sum();
    return measured;
  });
  if (result.files == 0) {
    std::printf("The drawings are left out: openclipart-svg is not installed.\n\n");
    return;
  }

  const std::string size = Megabytes(result.bytes);
  const auto files = static_cast<double>(result.files);
  const double floors = result.floor.first / result.floor.second;
  TableRow row = {Formatted("%zu drawings of openclipart-svg", result.files), size, Milliseconds(result.floor.first),
                  "floor " + Milliseconds(result.floor.second), Ratio(floors)};
  AddVerdict(row, floors, TargetKind::kAtMost, kMostFloors);
  tables.times.push_back(row);
  if (result.hasRsvg) {
    const double faster = result.rsvg.second / result.rsvg.first;
    row = {"the same against librsvg", size, Milliseconds(result.rsvg.first),
           "librsvg " + Milliseconds(result.rsvg.second), Ratio(faster)};
    AddVerdict(row, faster, TargetKind::kAtLeast, kLeastTimesFaster);
    tables.times.push_back(row);
  } else {
    std::printf("The comparison with librsvg is left out: librsvg2-dev was not there at build time.\n\n");
  }
  const double load = result.load / files * 1e3;
  row = {"load and unload the library", "", Formatted("%.3f ms", load), "", ""};
  AddVerdict(row, load, TargetKind::kAtMost, kMostLoadMilliseconds, " ms");
  tables.times.push_back(row);
}

// --- The drawings that are made here

std::string FileName(const Options& options, const char* name, std::size_t size) {
  return options.folder + '/' + name + '-' + std::to_string(size) + ".svg";
}

std::u16string ImportPath(const std::string& name) { return std::filesystem::path(name).u16string(); }

void WriteInput(const std::string& name, const std::string& text) {
  std::ofstream file(name, std::ios::binary);
  if (!file.write(text.data(), static_cast<std::streamsize>(text.size())).flush()) {
    throw std::runtime_error(name + ": cannot be written");
  }
}

// Keeps the conversions from being dropped.
volatile double sumOfNumbers;

double NumbersSeconds(const std::string& text, const std::vector<const char*>& numbers) {
  const char* end = text.data() + text.size();
  return SecondsOf([&] {
    double sum = 0.0;
    for (const char* number : numbers) {
      double value = 0.0;
      std::from_chars(number, end, value);
      sum += value;
    }
    sumOfNumbers = sum;
  });
}

void MeasureFloor(const Options& options, const Work& work, std::size_t size, Tables& tables) {
  struct Result {
    TimePair floor;  // import, floor
    double numbers;
    std::size_t numberCount;
    double bytes;
  };
  const Result result = InChild([&] {
    const std::string text = work.make(size);
    const std::u16string path = ImportPath(FileName(options, work.name, size));
    Result measured{};
    measured.bytes = static_cast<double>(text.size());
    XmlFloor floor;
    measured.floor = BestOfBoth(
        options.passes, [&] { return ImportSeconds(path); }, [&] { return SecondsOf([&] { floor.Parse(text); }); });
    if (work.addNumbers) {
      const std::vector<const char*> numbers = NumbersInPaths(text);
      measured.numberCount = numbers.size();
      measured.numbers = std::numeric_limits<double>::infinity();
      for (int pass = 0; pass < options.passes; ++pass) {
        measured.numbers = std::min(measured.numbers, NumbersSeconds(text, numbers));
      }
    }
    return measured;
  });
  const double against = result.floor.second + result.numbers;
  const double ratio = result.floor.first / against;
  std::string floorText = "floor " + Milliseconds(result.floor.second);
  if (work.addNumbers) {
    floorText +=
        Formatted(" + %.1f M numbers ", static_cast<double>(result.numberCount) / 1e6) + Milliseconds(result.numbers);
  }
  TableRow row = {work.title, Megabytes(result.bytes), Milliseconds(result.floor.first), floorText, Ratio(ratio)};
  if (work.target > 0.0) {
    AddVerdict(row, ratio, TargetKind::kAtMost, work.target);
  } else {
    row.insert(row.end(), {"", ""});
  }
  tables.times.push_back(row);
}

void MeasureDoubled(const Options& options, const Work& work, std::size_t size, std::size_t doubled, Tables& tables) {
  const std::string small = FileName(options, work.name, size);
  const std::string large = FileName(options, work.name, doubled);
  // A process for each import: one that is done again in the same process finds its memory warm as long as it is small.
  const auto fresh = [](const std::string& name) { return InChild([&] { return ImportSeconds(ImportPath(name)); }); };
  const TimePair middle = MiddleOfBoth(
      options.passes, [&] { return fresh(small); }, [&] { return fresh(large); });
  const double ratio = middle.second / middle.first;
  TableRow row = {work.againstHalf ? "- against half the size" : "- twice the size",
                  Megabytes(static_cast<double>(std::filesystem::file_size(large))), Milliseconds(middle.second),
                  Megabytes(static_cast<double>(std::filesystem::file_size(small))) + ' ' + Milliseconds(middle.first),
                  Ratio(ratio)};
  AddVerdict(row, ratio, TargetKind::kAtMost, kMostWhenDoubled);
  tables.times.push_back(row);
}

struct Memory {
  double peak;
  std::uint64_t records;
  std::uint64_t recordBytes;
};

Memory ImportMemory(const std::string& name) {
  double peak;
  Memory memory = InChild(
      [&] {
        FilterInstance filter;
        Memory used{};
        const FilterInstance::Result result = filter.Import(ImportPath(name), &used.recordBytes);
        if (!result.accepted) throw std::runtime_error(name + ": refused");
        used.records = result.records;
        return used;
      },
      &peak);
  memory.peak = peak;
  return memory;
}

void MeasureMemory(const Options& options, const Work& work, std::size_t size, double processBytes, Tables& tables) {
  const std::string name = FileName(options, work.name, size);
  const auto bytes = static_cast<double>(std::filesystem::file_size(name));
  const Memory memory = ImportMemory(name);
  const double peak = memory.peak - processBytes;
  const auto records = static_cast<double>(memory.records);
  const auto recordBytes = static_cast<double>(memory.recordBytes);
  const double ratio = (peak - recordBytes) / bytes;
  TableRow row = {work.title,
                  Megabytes(bytes),
                  Formatted("%llu", static_cast<unsigned long long>(memory.records)),
                  Megabytes(recordBytes),
                  Megabytes(peak),
                  Formatted("%.1f", peak / records),
                  Ratio(ratio)};
  AddVerdict(row, ratio, TargetKind::kAtMost, kMostMemory);
  tables.memory.push_back(row);
}

void MeasureWork(const Options& options, const Work& work, double processBytes, Tables& tables) {
  const std::size_t size = work.size / options.divisor;
  const std::size_t other = work.againstHalf ? size / 2 : size * 2;
  for (const std::size_t made : {size, other}) {
    InChild([&] {
      WriteInput(FileName(options, work.name, made), work.make(made));
      return true;
    });
  }
  MeasureFloor(options, work, size, tables);
  MeasureDoubled(options, work, std::min(size, other), std::max(size, other), tables);
  MeasureMemory(options, work, size, processBytes, tables);
  if (options.keep) return;
  for (const std::size_t made : {size, other}) std::filesystem::remove(FileName(options, work.name, made));
}

// What the process takes for a drawing with one path in it that has no points.
double ProcessBytes(const Options& options) {
  const std::string name = FileName(options, "empty", 0);
  WriteInput(name, "<svg xmlns=\"http://www.w3.org/2000/svg\" height=\"1\"><path d=\"\"/></svg>\n");
  const double bytes = ImportMemory(name).peak;
  std::filesystem::remove(name);
  return bytes;
}

// False for wrong arguments, which were told.
bool ReadArguments(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    const bool hasValue = i + 1 < argc;
    if (argument == "--quick") {
      options.divisor = 10;
    } else if (argument == "--rows" && hasValue) {
      options.rows = argv[++i];
    } else if (argument == "--passes" && hasValue) {
      options.passes = std::atoi(argv[++i]);
    } else if (argument == "--keep" && hasValue) {
      options.folder = std::filesystem::absolute(argv[++i]).string();
      options.keep = true;
    } else {
      std::fprintf(stderr, "svgimport-bench-suite: %s: unknown, or without its value; see --help\n", argv[i]);
      return false;
    }
  }
  std::string_view rows = options.rows;
  while (!rows.empty()) {
    const std::string_view name = rows.substr(0, rows.find(','));
    rows.remove_prefix(std::min(rows.size(), name.size() + 1));
    bool known = name == "clipart";
    for (const Work& work : kWorks) known = known || name == work.name;
    if (!known) {
      std::fprintf(stderr, "svgimport-bench-suite: --rows: no work is called '%s'; see --help\n",
                   std::string(name).c_str());
      return false;
    }
  }
  if (options.passes < 1) {
    std::fprintf(stderr, "svgimport-bench-suite: --passes: a number from 1 on is needed\n");
    return false;
  }
  return true;
}

// Removed with all that is in it at the end, unless it is kept.
class InputFolder {
 public:
  explicit InputFolder(Options& options) : options_(options) {
    if (options.keep) {
      std::filesystem::create_directories(options.folder);
      return;
    }
    std::string name = (std::filesystem::temp_directory_path() / "svgimport-bench-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error(name + ": cannot be made");
    options.folder = name;
  }
  ~InputFolder() {
    std::error_code ignored;
    if (!options_.keep) std::filesystem::remove_all(options_.folder, ignored);
  }
  InputFolder(const InputFolder&) = delete;
  InputFolder& operator=(const InputFolder&) = delete;

 private:
  const Options& options_;
};

}  // namespace

int main(int argc, char** argv) try {
  if (argc > 1 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
    std::fputs(kHelp, stdout);
    return 0;
  }
  Options options;
  if (!ReadArguments(argc, argv, options)) return 2;
  const InputFolder folder(options);
  Tables tables;
  if (options.Wants("clipart")) MeasureClipart(options, tables);
  const double processBytes = ProcessBytes(options);
  for (const Work& work : kWorks) {
    if (options.Wants(work.name)) MeasureWork(options, work, processBytes, tables);
  }
  PrintTable({"Work", "Size", "Import", "Against", "Ratio", "Target", ""}, tables.times);
  if (tables.memory.empty()) return 0;
  std::printf("\nMemory, without the %s that the process takes for an empty drawing:\n\n",
              Megabytes(processBytes).c_str());
  PrintTable(
      {"Work", "File", "Records", "Records take", "Peak", "Bytes a record", "(Peak - records) / file", "Target", ""},
      tables.memory);
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "svgimport-bench-suite: %s\n", error.what());
  return 1;
}
