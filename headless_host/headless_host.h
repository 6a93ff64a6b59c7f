// The controls of the reference host: what it answers, what it makes fail, what it has been asked, and how a record
// that the filter returned is given back.
//
// There is one host in a process and one thread that uses it. Nothing here is written to the call journal: that holds
// the filter's calls alone. What the payload objects hold is told by inspection.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/allocator.h"
#include "host/polygon.h"
#include "run/import_command.h"

// Back to the state of a fresh process: no settings, units 300, the system's temporary folder as base folder, no image
// folder, the default allocator in the window registry and nothing else, every font found, a compression of 0, no
// failures, no messages, no journal. Paragraphs that were never released are freed. Live allocator blocks and font
// records stay valid.
void ResetHost();

// --- Settings store, units, base folder

void SetHostSetting(std::u16string_view section, std::u16string_view key, int value);
// The stored value; nothing when neither SetHostSetting nor the filter has stored one.
std::optional<int> HostSetting(std::u16string_view section, std::u16string_view key);

void SetHostUnits(int units);
int HostUnits();

// Answered by LoadBaseDir, cut to 259 units.
void SetHostBaseDir(std::u16string_view folder);

// --- Windows and the allocator

// Registers or replaces the window with this class and title. Null unregisters it.
void RegisterHostWindow(std::u16string_view className, std::u16string_view title, void* pointer);

// The class and the title under which the default allocator is registered; the title holds the process id.
inline constexpr std::u16string_view kAllocatorWindowClass = u"MemAllocClass";
std::u16string AllocatorWindowTitle();

// The host's own allocator, the same object for the life of the process.
HostAllocator* DefaultHostAllocator();

// Makes one allocation of the default allocator return null: the n-th from here on, 1 being the next. 0 cancels.
void FailAllocation(std::size_t n);

// --- Fonts

enum class HostFontMode {
  kAny,     // every name is found
  kSystem,  // the families that fontconfig knows; the replacement is fontconfig's best match
  kNone,    // no font is found and no replacement offered
  kListed,  // the names given to SetListedFonts alone
};
void SetHostFontMode(HostFontMode mode);

// For kListed: the names that AddFont finds with kind 2 (with kinds 1 and 3 it finds every name, which a font manager
// has just activated), and the font offered as replacement or by force, none if empty.
void SetListedFonts(std::vector<std::u16string> names, std::u16string replacement);

// Answered by edCalcCompression.
void SetHostCompression(int compression);

// --- Files

// Where GetOpenFileName looks for a file of the name asked, in the encoding of the operating system. Empty: it cancels.
void SetHostImageFolder(std::string folder);

// --- Failures on demand. Each lasts until it is switched off.

struct HostFailures {
  bool openParagraph = false;          // OpenParagraph answers -1 and opens nothing
  bool closeParagraph = false;         // CloseParagraph(1) answers -1 and leaves the paragraph open
  bool addFont = false;                // AddFont gives null
  bool chooseReplacementFont = false;  // ChooseReplacementFont gives null
  bool listFlag = false;               // a paragraph opens with listFlag 1
  bool usedRecords = false;            // a paragraph opens with 0xA5 in every byte that is no address and no listFlag
  bool skipText = false;               // a CFontReplacement is made with skipText 1
  bool newBitmap = false;              // NewQXBitmap gives null
  bool createBitmap = false;           // CQXBitmap::Create answers false
};
HostFailures& HostFailureSwitches();

// --- What the user would have seen

struct ShownMessage {
  std::u16string text;
  std::u16string caption;  // empty when there was none
  unsigned flags;
};
const std::vector<ShownMessage>& ShownMessages();

struct AskedFile {
  std::u16string file;  // as it stood in the dialog before the answer
  std::u16string filter, defaultExtension, title;
  int fileSize;
  unsigned flags;
  bool picked;
};
const std::vector<AskedFile>& AskedFiles();

struct HostUserInterface {
  bool hourGlass = false;
  int hourGlassCalls = 0;
  bool redrawsAfterPaste = true;  // ShowPasteStringChanges
  int clipGroupCollapses = 0;
};
const HostUserInterface& HostInterfaceState();

// --- The call journal

// From now on every call that reaches the host is written to `file` as one line of JSON. The file stays the caller's
// and must stay open until StopJournal.
void StartJournal(std::FILE* file);
void StopJournal();

// --- Generated names

// While on, the random part of a temporary name that the filter made up is shown as XXXXXX, in the journal and by
// ShownPath. Off at the start.
void HideGeneratedNames(bool hide);
// A folder whose name ends in six random characters, hidden likewise wherever a path begins with it.
void AddGeneratedFolder(std::u16string_view folder);
// The path as it is to be shown.
std::u16string ShownPath(std::u16string_view path);

// --- Releasing

// Frees the payload of a record that the filter returned. A KEY_PFDF keeps its payload until the KEY_PFOL behind it,
// which carries the same one, is released. Records and doubles go to the allocator that is registered; when none is,
// they came from the filter's fallback, which heads each block with a word of 0 on the ordinary heap.
void ReleaseCommand(const ImportCommand& command);

// The same, and the number of sides of a polygon, for programs in other languages; svgimport/stream.h is their header.
extern "C" void ReleaseImportCommand(const ImportCommand* command);
extern "C" std::int64_t CountPolygonSides(const POLYGON* polygon);

// What is alive, for tests of leaks.
struct HostLiveCounts {
  std::size_t blocks = 0;  // of the default allocator
  std::size_t polygons = 0;
  std::size_t colours = 0;  // full colours included
  std::size_t overPrints = 0;
  std::size_t gradientFills = 0;
  std::size_t transparencies = 0;
  std::size_t bitmaps = 0;
  std::size_t paragraphs = 0;
  std::size_t fontReplacements = 0;

#if __cplusplus >= 202002L
  bool operator==(const HostLiveCounts&) const = default;
#endif
};
const HostLiveCounts& LiveCounts();
