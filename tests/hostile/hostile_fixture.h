// The bench of hostile documents: whole imports whose records are counted and given back one by one, so that a drawing
// of a million of them needs no text for each.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include "headless_host/sanitizer.h"
#include "run/entry_points.h"
#include "tests/support/filter_test.h"

// Each block is watched under AddressSanitizer, which makes large documents take ten times as long and as much memory.
inline constexpr bool kWatchedBuild = HEADLESS_HOST_ADDRESS_SANITIZER != 0;

// The full number, or a smaller one in a watched build.
constexpr std::size_t Many(std::size_t full, std::size_t watched) { return kWatchedBuild ? watched : full; }

inline std::string Repeated(std::string_view piece, std::size_t count) {
  std::string text;
  text.reserve(piece.size() * count);
  for (std::size_t i = 0; i < count; ++i) text += piece;
  return text;
}

class HostileTest : public FilterTest {
 protected:
  // The records that every import has: the five opening ones and KEY_ENDF.
  static constexpr std::size_t kFrameRecords = 6;

  ~HostileTest() override {
    EXPECT_EQ(run.graphics.frameIndex, 0);
    EXPECT_EQ(run.graphics.saveDepth, 0);
    EXPECT_TRUE(run.operands.empty());
    EXPECT_TRUE(run.definitionGuard.entered.empty());
    EXPECT_EQ(run.definitionGuard.nestedElements, 0u);
    CloseFile();
  }

  // Imports a whole file text. Returns the number of records, 0 when the file is refused.
  std::size_t CountRecords(std::string_view document) {
    if (Check(document) != 1) return 0;
    std::size_t records = 0;
    ImportCommand command;
    do {
      command = GetImportCommand();
      ++records;
      ++keys[command.key];
      ReleaseCommand(command);
    } while (command.key != KEY_ENDF);
    return records;
  }

  // The same for elements in a root, without the records that every import has.
  std::size_t CountBodyRecords(std::string_view elements) {
    const std::size_t records = CountRecords(Document(elements));
    EXPECT_GE(records, kFrameRecords);
    return records - kFrameRecords;
  }

  // Starts anew within one test.
  static void Anew() {
    CloseFile();
    ResetImportRun();
  }

  std::map<std::uint32_t, std::size_t> keys;  // how many records of each
};
