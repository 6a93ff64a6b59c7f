// Clip groups and drawing groups.
//
// A clip reaches the host as a bracket: KEY_SCGR, the clip geometry between KEY_CLIP 1 and 0, KEY_DOCP 1, the clipped
// content, KEY_DOCP 0, KEY_ECGR. The translators build it from the blocks below; the W operators tie its end to a save
// level.
#pragma once

#include <cstdint>

#include "filter_limits.h"

struct OperatorCall;

struct ClipState {
  std::uint32_t clipOpen = 0;  // set by every opening block, cleared only where a pop closes a cut
  std::uint8_t clipPending =
      0;  // EndPath leaves KEY_FDEF out; once an element's clip resolved nothing clears it, as is meant
  std::int32_t clipDepth = 0;                         // W cuts that wait for their pop
  std::int32_t groupDepth = 0;                        // nesting of u
  std::uint32_t clipLevels[kMaxClipLevels + 1] = {};  // the saveDepth at which a cut was made; entry 0 is not used

  std::uint32_t Level(std::int32_t i) const { return i <= kMaxClipLevels ? clipLevels[i] : 0; }
  void SetLevel(std::int32_t i, std::uint32_t level) {
    if (i <= kMaxClipLevels) clipLevels[i] = level;
  }
};

void StartClipGroup();
void EndClipGeometry();
void EndClipGroup();
// Sends the frame's thickness (always thick), width, fill and outline again.
void RestorePaintAttributes();

// KEY_SGRP and KEY_EGRP, only with the setting DoGroups.
void StartGroup();
void EndGroup();

void OperatorClip(const OperatorCall&);
void OperatorEndClip(const OperatorCall&);
void OperatorBeginClipped(const OperatorCall&);
void OperatorStartGroup(const OperatorCall&);
void OperatorEndGroup(const OperatorCall&);
