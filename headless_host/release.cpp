#include <cstdlib>

#include "headless_host/headless_host.h"
#include "headless_host/host_state.h"
#include "headless_host/journal.h"
#include "host/bitmap.h"
#include "host/colour.h"
#include "host/fills.h"
#include "host/polygon.h"
#include "host/transparency.h"

using headless::host;

namespace {

void FreeBlock(void* block) {
  constexpr std::size_t kFallbackHeader = 8;
  if (block == nullptr) return;
  if (host.registeredAllocator != nullptr) {
    host.registeredAllocator->Free(block);
  } else {
    std::free(static_cast<unsigned char*>(block) - kFallbackHeader);
  }
}

void ReleaseParagraph(const ComposedParagraph* paragraph) {
  const headless::HostParagraph* known = host.paragraphs.Find(paragraph);
  if (known == nullptr) return;
  if (host.openParagraph == known) host.openParagraph = nullptr;
  host.paragraphs.Free(paragraph);
  --headless::liveCounts.paragraphs;
}

}  // namespace

void ReleaseCommand(const ImportCommand& command) {
  const headless::JournalPause pause;
  switch (command.key) {
    case KEY_BEZI:
    case KEY_LINE:
    case KEY_WIDT:
    case KEY_FDEF:
    case KEY_PFOL:
      FreeBlock(command.data);
      break;
    case KEY_PLYR:
      if (command.data != nullptr) static_cast<POLYGON*>(command.data)->~POLYGON();
      FreeBlock(command.data);
      break;
    case KEY_PARA:
      if (command.data != nullptr) ReleaseParagraph(static_cast<ParagraphRecord*>(command.data)->paragraph);
      FreeBlock(command.data);
      break;
    case KEY_GNRC:
      if (command.data != nullptr) DeleteQXBitmap(static_cast<GenericRecord*>(command.data)->bitmap);
      FreeBlock(command.data);
      break;
    case KEY_NFIL:
    case KEY_NOTL:
      delete static_cast<CQXFullColor*>(command.data);
      break;
    case KEY_LYOT:
    case KEY_LIOT:
      delete static_cast<CQXOverPrint*>(command.data);
      break;
    case KEY_SPFL:
      delete static_cast<CQXLinearSpotFill*>(command.data);
      break;
    case KEY_TSPY:
      delete static_cast<CQXTransparency*>(command.data);
      break;
    default:
      break;
  }
}

void ReleaseImportCommand(const ImportCommand* command) { ReleaseCommand(*command); }
