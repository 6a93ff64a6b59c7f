// Sorts objects into clips while the brackets of the stream come in, which need not balance.
#pragma once

#include <cstddef>
#include <vector>

#include "preview/drawing.h"

namespace preview {

// A clip is KEY_SCGR, KEY_CLIP 1, geometry, KEY_CLIP 0, KEY_DOCP 1, content, KEY_DOCP 0, KEY_ECGR. What lies between
// brackets of which one is missing is drawn without a clip, and geometry without content is dropped. A clip does not
// reach beyond the end of the group in which it began.
class ClipStack {
 public:
  void Add(Item item);

  void StartClipGroup();          // KEY_SCGR
  void MarkClip(bool starts);     // KEY_CLIP
  void MarkContent(bool starts);  // KEY_DOCP
  void EndClipGroup();            // KEY_ECGR
  void StartGroup();              // KEY_SGRP
  void EndGroup();                // KEY_EGRP

  // Everything, with what is still open drawn unclipped; the stack is empty behind it.
  std::vector<Item> Finish();

 private:
  struct Bracket {
    enum class Phase { kStarted, kGeometry, kBetween, kContent, kEnded } phase = Phase::kStarted;
    bool clips = true;  // false for content whose KEY_SCGR was missing
    Clip clip;
  };

  bool IsIn(Bracket::Phase phase) const { return !brackets_.empty() && brackets_.back().phase == phase; }
  // Where the next object goes.
  std::vector<Item>& Target();
  // Takes the brackets above `depth` away, keeping their content.
  void Unwind(std::size_t depth);

  std::vector<Item> items_;
  std::vector<Bracket> brackets_;
  std::vector<std::size_t> groups_;  // the number of brackets at the start of each open group
};

}  // namespace preview
