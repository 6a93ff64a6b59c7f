#include "preview/clip_stack.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace preview {

std::vector<Item>& ClipStack::Target() {
  if (brackets_.empty()) return items_;
  Bracket& top = brackets_.back();
  return top.phase == Bracket::Phase::kGeometry ? top.clip.geometry : top.clip.content;
}

void ClipStack::Add(Item item) { Target().push_back(std::move(item)); }

void ClipStack::StartClipGroup() { brackets_.emplace_back(); }

void ClipStack::MarkClip(bool starts) {
  if (starts && IsIn(Bracket::Phase::kStarted)) {
    brackets_.back().phase = Bracket::Phase::kGeometry;
  } else if (!starts && IsIn(Bracket::Phase::kGeometry)) {
    brackets_.back().phase = Bracket::Phase::kBetween;
  }
}

void ClipStack::MarkContent(bool starts) {
  if (!starts) {
    if (IsIn(Bracket::Phase::kContent)) brackets_.back().phase = Bracket::Phase::kEnded;
    return;
  }
  if (!IsIn(Bracket::Phase::kBetween)) brackets_.push_back({.clips = false, .clip = {}});
  brackets_.back().phase = Bracket::Phase::kContent;
}

void ClipStack::EndClipGroup() {
  if (!IsIn(Bracket::Phase::kEnded)) return;
  if (!brackets_.back().clips) return Unwind(brackets_.size() - 1);
  Clip clip = std::move(brackets_.back().clip);
  brackets_.pop_back();
  Add({std::move(clip)});
}

void ClipStack::StartGroup() { groups_.push_back(brackets_.size()); }

void ClipStack::EndGroup() {
  if (groups_.empty()) return;
  Unwind(std::min(groups_.back(), brackets_.size()));
  groups_.pop_back();
}

void ClipStack::Unwind(std::size_t depth) {
  std::vector<Bracket> open(std::make_move_iterator(brackets_.begin() + static_cast<std::ptrdiff_t>(depth)),
                            std::make_move_iterator(brackets_.end()));
  brackets_.resize(depth);
  std::vector<Item>& target = Target();
  for (Bracket& bracket : open) {
    std::move(bracket.clip.content.begin(), bracket.clip.content.end(), std::back_inserter(target));
  }
}

std::vector<Item> ClipStack::Finish() {
  Unwind(0);
  groups_.clear();
  return std::exchange(items_, {});
}

}  // namespace preview
