#include "host/application.h"

#include <unistd.h>
#include <algorithm>
#include <string_view>

#include "headless_host/file_access.h"
#include "headless_host/host_state.h"
#include "headless_host/journal.h"
#include "headless_host/text.h"

using headless::host;
using headless::JournalCall;
using headless::journaling;

namespace {

// The answer to every message box: the OK button.
constexpr int kOkPressed = 1;

std::u16string TextOrEmpty(const char16_t* text) { return text == nullptr ? std::u16string() : std::u16string(text); }

// Writes the full name of a file of this name in the image folder into the dialog. False when there is none, or no
// room.
bool PickFromImageFolder(OpenFileDialog& dialog) {
  if (host.imageFolder.empty() || dialog.file == nullptr || dialog.fileSize <= 0) return false;
  const std::u16string_view name = headless::LastPathComponent(dialog.file);
  for (const std::string& candidate : headless::NativeCandidates(name)) {
    const std::string fullName = host.imageFolder + "/" + candidate;
    if (access(fullName.c_str(), F_OK) != 0) continue;
    const std::u16string picked = headless::TextFromNativePath(fullName);
    if (picked.size() >= static_cast<std::size_t>(dialog.fileSize)) return false;
    *std::copy(picked.begin(), picked.end(), dialog.file) = u'\0';
    return true;
  }
  return false;
}

}  // namespace

void HourGlass(int on) {
  if (journaling) JournalCall("HourGlass", on);
  host.userInterface.hourGlass = on != 0;
  ++host.userInterface.hourGlassCalls;
}

int TMessageBox(void*, const char16_t* text, const char16_t* caption, unsigned flags) {
  if (journaling) JournalCall("TMessageBox", text, caption, flags).Result(kOkPressed);
  host.messages.push_back({TextOrEmpty(text), TextOrEmpty(caption), flags});
  return kOkPressed;
}

void TString(const char16_t* key, char16_t* buffer, int size) {
  if (journaling) JournalCall("TString", key, size);
  if (size <= 0) return;
  std::u16string_view text = key;
  constexpr std::u16string_view kMark = u"(*v*)";
  if (text.starts_with(kMark)) text.remove_prefix(kMark.size());
  text = text.substr(0, static_cast<std::size_t>(size) - 1);
  *std::copy(text.begin(), text.end(), buffer) = u'\0';
}

void* FindWindowPointer(const char16_t* className, const char16_t* title) {
  if (journaling) JournalCall("FindWindowPointer", className, title);
  const auto window = host.windows.find({TextOrEmpty(className), TextOrEmpty(title)});
  return window == host.windows.end() ? nullptr : window->second;
}

int GetOpenFileName(OpenFileDialog* dialog) {
  AskedFile asked{TextOrEmpty(dialog->file),
                  TextOrEmpty(dialog->filter),
                  TextOrEmpty(dialog->defaultExtension),
                  TextOrEmpty(dialog->title),
                  dialog->fileSize,
                  dialog->flags,
                  PickFromImageFolder(*dialog)};
  const int answer = asked.picked ? 1 : 0;
  host.askedFiles.push_back(std::move(asked));
  if (journaling) JournalCall("GetOpenFileName").Result(answer);
  return answer;
}

void DBCollapseClipGroup() {
  if (journaling) JournalCall("DBCollapseClipGroup");
  ++host.userInterface.clipGroupCollapses;
}

void ShowPasteStringChanges(int on) {
  if (journaling) JournalCall("ShowPasteStringChanges", on);
  host.userInterface.redrawsAfterPaste = on != 0;
}
