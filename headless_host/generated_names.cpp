// Hiding the random part of the names that the filter makes up for temporary files: IMG or DEMO, six letters or digits,
// and an extension, in the folder for temporary files or the base folder.

#include <algorithm>
#include <cstddef>

#include "headless_host/file_access.h"
#include "headless_host/headless_host.h"
#include "headless_host/host_state.h"
#include "headless_host/text.h"

namespace headless {
namespace {

constexpr std::size_t kRandomUnits = 6;

bool IsSeparator(char16_t unit) { return unit == u'/' || unit == u'\\'; }

bool IsLetterOrDigit(char16_t unit) {
  return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || (unit >= u'0' && unit <= u'9');
}

std::u16string_view WithoutFinalSeparators(std::u16string_view folder) {
  while (!folder.empty() && IsSeparator(folder.back())) folder.remove_suffix(1);
  return folder;
}

// True when the path begins with the folder, which is not empty, and goes on with a separator or ends. Either separator
// stands for the other, since the filter turns one into the other.
bool LiesIn(std::u16string_view path, std::u16string_view folder) {
  if (path.size() < folder.size()) return false;
  for (std::size_t i = 0; i < folder.size(); ++i) {
    if (path[i] != folder[i] && !(IsSeparator(path[i]) && IsSeparator(folder[i]))) return false;
  }
  return path.size() == folder.size() || IsSeparator(path[folder.size()]);
}

// True when the folder part of the path, its final separators removed, is exactly this folder.
bool IsFolder(std::u16string_view folderPart, std::u16string_view folder) {
  folder = WithoutFinalSeparators(folder);
  return !folder.empty() && folderPart.size() == folder.size() && LiesIn(folderPart, folder);
}

// Where the random part of a generated file name begins, the length of the name if it is not a generated one. A path
// that was cut to its field can end within the random part.
std::size_t RandomPart(std::u16string_view name, std::size_t& length) {
  for (const std::u16string_view prefix : {std::u16string_view(u"IMG"), std::u16string_view(u"DEMO")}) {
    if (!name.starts_with(prefix)) continue;
    std::size_t end = prefix.size();
    while (end < name.size() && end < prefix.size() + kRandomUnits && IsLetterOrDigit(name[end])) ++end;
    length = end - prefix.size();
    const bool whole = length == kRandomUnits && end < name.size() && name[end] == u'.';
    const bool cut = end == name.size() && length > 0;
    if (whole || cut) return prefix.size();
  }
  return name.size();
}

}  // namespace
}  // namespace headless

void HideGeneratedNames(bool hide) { headless::host.hidesGeneratedNames = hide; }

void AddGeneratedFolder(std::u16string_view folder) {
  folder = headless::WithoutFinalSeparators(folder);
  if (folder.size() > headless::kRandomUnits) headless::host.generatedFolders.emplace_back(folder);
}

std::u16string ShownPath(std::u16string_view path) {
  using namespace headless;
  std::u16string shown(path);
  if (!host.hidesGeneratedNames) return shown;

  const std::u16string_view name = LastPathComponent(path);
  const std::u16string_view folderPart = WithoutFinalSeparators(path.substr(0, path.size() - name.size()));
  std::size_t length = 0;
  const std::size_t at = RandomPart(name, length);
  if (at < name.size() &&
      (IsFolder(folderPart, host.baseDir) || IsFolder(folderPart, TextFromNativePath(SystemTemporaryFolder())))) {
    std::fill_n(shown.begin() + static_cast<std::ptrdiff_t>(path.size() - name.size() + at), length, u'X');
  }
  for (const std::u16string& folder : host.generatedFolders) {
    if (!LiesIn(path, folder)) continue;
    std::fill_n(shown.begin() + static_cast<std::ptrdiff_t>(folder.size() - kRandomUnits), kRandomUnits, u'X');
  }
  return shown;
}
