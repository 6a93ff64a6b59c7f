#include "tools/batch/batch_job.h"

#include <fcntl.h>
#include <rapidjson/document.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "headless_host/headless_host.h"
#include "headless_host/text.h"
#include "tools/json_values.h"
#include "tools/option_values.h"
#include "tools/output_file.h"
#include "tools/record_json.h"
#include "tools/render_document.h"
#include "tools/report/report.h"

namespace {

constexpr off_t kSharedTextBytes = 1 << 16;

// Empty when the file can be read; otherwise why not. Its size goes to `bytes`.
std::string WhyUnreadable(const std::string& file, std::uint64_t& bytes) {
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return errno == ENOENT ? "the file does not exist" : std::strerror(errno);
  struct stat status;
  std::string reason;
  if (fstat(descriptor, &status) != 0) {
    reason = std::strerror(errno);
  } else if (S_ISDIR(status.st_mode)) {
    reason = "it is a directory";
  } else if (!S_ISREG(status.st_mode)) {
    reason = "it is not a regular file";
  } else {
    bytes = static_cast<std::uint64_t>(status.st_size);
  }
  close(descriptor);
  return reason;
}

std::string PartOf(const std::string& file, pid_t child) { return file + "." + std::to_string(child) + ".part"; }

// Writes a file under another name until it is whole.
class PartFile {
 public:
  bool Open(const std::string& name) {
    name_ = name;
    std::error_code failed;
    std::filesystem::create_directories(std::filesystem::path(name).parent_path(), failed);
    if (failed) {
      errno = failed.value();
      return false;
    }
    return output_.Open(PartOf(name, getpid()));
  }
  void WriteLine(std::string_view line) { output_.WriteLine(line); }
  std::FILE* Stream() { return output_.Stream(); }
  bool Finish() { return output_.Close() && std::rename(PartOf(name_, getpid()).c_str(), name_.c_str()) == 0; }

 private:
  std::string name_;
  OutputFile output_;
};

// Empty on success; otherwise what is wrong.
std::string WritePicture(const ImportedDocument& document, preview::StreamDrawer& drawer, const std::string& name) {
  PartFile picture;
  if (!picture.Open(name)) return std::strerror(errno);
  std::string failure = WriteDocumentImage(document, drawer, {}, picture.Stream());
  if (!failure.empty()) return failure;
  return picture.Finish() ? std::string() : std::strerror(errno);
}

void WriteCounts(JsonWriter& writer, const char* name, const std::map<std::string, std::uint64_t>& counts) {
  writer.Key(name);
  writer.StartObject();
  for (const auto& [key, count] : counts) {
    writer.Key(key.c_str());
    writer.Uint64(count);
  }
  writer.EndObject();
}

// What WriteCounts wrote under this name; empty when it is not there.
std::map<std::string, std::uint64_t> ReadCounts(const rapidjson::Document& answer, const char* name) {
  std::map<std::string, std::uint64_t> counts;
  const auto member = answer.FindMember(name);
  if (member == answer.MemberEnd()) return counts;
  for (const auto& count : member->value.GetObject()) counts[count.name.GetString()] = count.value.GetUint64();
  return counts;
}

}  // namespace

SharedText::SharedText() : descriptor_(memfd_create("svgimport", MFD_CLOEXEC | MFD_ALLOW_SEALING)) {
  // Sealed, so that nothing that a child prints takes more memory than that.
  if (descriptor_ < 0) return;
  if (ftruncate(descriptor_, kSharedTextBytes) == 0 && fcntl(descriptor_, F_ADD_SEALS, F_SEAL_GROW) == 0) return;
  close(descriptor_);
  descriptor_ = -1;
}

SharedText::~SharedText() {
  if (descriptor_ >= 0) close(descriptor_);
}

void SharedText::Clear() { lseek(descriptor_, 0, SEEK_SET); }

std::string SharedText::Text() const {
  // The child writes through a copy of the descriptor, which has the same position.
  const off_t size = lseek(descriptor_, 0, SEEK_CUR);
  std::string text(static_cast<std::size_t>(std::max<off_t>(size, 0)), '\0');
  const ssize_t got = pread(descriptor_, text.data(), text.size(), 0);
  text.resize(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
  return text;
}

bool BatchJob::Start(const std::string& file) {
  result_ = {};
  result_.file = file;
  started_ = std::chrono::steady_clock::now();
  result_.reason = WhyUnreadable(file, result_.bytes);
  if (!result_.reason.empty()) return false;
  import_ = options_.import;
  import_.file = file;
  document_.emplace(import_);
  if (document_->Status() != kExitDone || answer_.Descriptor() < 0 || printed_.Descriptor() < 0) {
    result_.reason = "no temporary folder or memory for the import";
    return false;
  }
  if (!options_.renderFolder.empty()) result_.picture = MirroredPath(options_.renderFolder, file, ".png");
  if (!options_.dumpFolder.empty()) result_.dump = MirroredPath(options_.dumpFolder, file, ".jsonl");
  answer_.Clear();
  printed_.Clear();
  if (!child_.Start(options_.limits, [this] { return ImportInChild(); })) {
    result_.reason = std::string("no process for the import: ") + std::strerror(errno);
    return false;
  }
  childPid_ = child_.Pid();
  return true;
}

int BatchJob::ImportInChild() {
  dup2(printed_.Descriptor(), STDOUT_FILENO);
  dup2(printed_.Descriptor(), STDERR_FILENO);
  document_->PrepareHost();
  HideGeneratedNames(true);

  int status = kExitDone;
  std::string reason;
  const auto fail = [&](const std::string& file, const std::string& why) {
    reason = file + ": " + why;
    status = kExitError;
  };
  const bool dumps = !result_.dump.empty(), draws = !result_.picture.empty();
  PartFile dump;
  if (dumps && !dump.Open(result_.dump)) fail(result_.dump, std::strerror(errno));
  preview::StreamDrawer drawer;
  std::map<std::uint32_t, std::uint64_t> keys;
  if (status == kExitDone) {
    RecordJson json;
    status = document_->Import(
        [&](const ImportCommand& command) {
          ++keys[command.key];
          if (draws) drawer.Take(command);
          if (dumps) dump.WriteLine(json.Line(command));
          ReleaseCommand(command);
        },
        [&](int, const std::string& failure) {
          if (!reason.empty()) reason += "; ";
          reason += failure;
        });
  }
  // In front of the files, which are not to appear if it should come to no end.
  std::map<std::string, std::uint64_t> losses;
  if (options_.report) {
    for (const Finding& finding : ReportLosses(document_->Path()).findings) ++losses[std::string(finding.kind->name)];
  }
  if (draws && status == kExitDone) {
    const std::string failure = WritePicture(*document_, drawer, result_.picture);
    if (!failure.empty()) fail(result_.picture, failure);
  }
  if (dumps && status == kExitDone && !dump.Finish()) fail(result_.dump, std::strerror(errno));

  std::map<std::string, std::uint64_t> commands;
  for (const auto& [key, count] : keys) commands[std::string(CommandName(key))] += count;
  rapidjson::StringBuffer buffer;
  JsonWriter writer(buffer);
  writer.StartObject();
  writer.Key("reason");
  WriteText(writer, headless::TextFromUtf8(reason));
  WriteCounts(writer, "commands", commands);
  WriteCounts(writer, "losses", losses);
  writer.EndObject();
  const ssize_t written = write(answer_.Descriptor(), buffer.GetString(), buffer.GetSize());
  return written == static_cast<ssize_t>(buffer.GetSize()) ? status : kExitError;
}

BatchResult BatchJob::TakeResult() {
  result_.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started_).count();
  if (result_.reason.empty()) {
    rapidjson::Document answer;
    answer.Parse(answer_.Text().c_str());
    if (!answer.HasParseError()) {
      if (answer.HasMember("reason")) result_.reason = answer["reason"].GetString();
      result_.commands = ReadCounts(answer, "commands");
      for (const auto& [name, count] : result_.commands) result_.records += count;
      result_.losses = ReadCounts(answer, "losses");
    }
    if (!child_.Failure().empty()) {
      result_.reason = "the import was ended: " + child_.Failure();
    } else if (child_.Status() == kExitDone) {
      result_.status = BatchResult::kAccepted;
    } else if (child_.Status() == kExitNotImported) {
      result_.status = BatchResult::kRefused;
    }
    result_.printed = printed_.Text();
  }
  if (result_.status != BatchResult::kAccepted) {
    RemoveParts();
    result_.dump.clear();
    result_.picture.clear();
  }
  childPid_ = 0;
  document_.reset();
  return std::move(result_);
}

void BatchJob::RemoveParts() const {
  if (childPid_ <= 0) return;
  for (const std::string& file : {result_.dump, result_.picture}) {
    if (!file.empty()) unlink(PartOf(file, childPid_).c_str());
  }
}

void BatchJob::Abandon() {
  child_.Kill();
  RemoveParts();
  childPid_ = 0;
  document_.reset();
}

std::string MirroredPath(const std::string& folder, const std::string& file, const std::string& extension) {
  namespace fs = std::filesystem;
  std::error_code failed;
  const fs::path current = fs::current_path(failed);
  const fs::path full = (current / file).lexically_normal();
  const fs::path below = full.lexically_relative(current);
  const bool fromCurrent =
      !below.empty() && *below.begin() != ".." && access(("/" + below.native()).c_str(), F_OK) != 0;
  return (fs::path(folder) / (fromCurrent ? below : full.relative_path())).native() + extension;
}
