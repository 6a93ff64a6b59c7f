#include "host/transparency.h"

#include "headless_host/host_state.h"
#include "headless_host/inspection.h"
#include "headless_host/journal.h"

using headless::JournalCall;
using headless::journaling;
using headless::liveCounts;

constexpr std::size_t kFirstMarkers = 4;  // room for the stops of most gradients

struct TransparencyAccess {
  static const TM& WorldToFill(const CQXShapeTransparency& shape) { return shape.worldToFill_; }
  static const std::vector<CTransMarker>& Markers(const CQXShapeTransparency& shape) { return shape.markers_; }
};

TransparencyView ViewTransparency(const CQXTransparency& transparency) {
  const headless::JournalPause pause;
  TransparencyView view = {static_cast<TransparencyType>(transparency.Type()), 0, {}, 0.0, 0.0, {}};
  if (view.type == kUniformTransparency) {
    view.opacity = static_cast<const CQXUniformTransparency&>(transparency).opacity;
  } else {
    const auto& shape = static_cast<const CQXShapeTransparency&>(transparency);
    view.worldToFill = TransparencyAccess::WorldToFill(shape);
    view.length = shape.length;
    view.angle = shape.angle;
    view.markers = TransparencyAccess::Markers(shape);
  }
  return view;
}

CQXTransparency* CQXTransparency::CreateTransparency(int type) {
  if (journaling) JournalCall("CQXTransparency::CreateTransparency", type);
  CQXTransparency* created = nullptr;
  switch (type) {
    case kUniformTransparency:
      created = new CQXUniformTransparency;
      break;
    case kLinearTransparency:
      created = new CQXLinearTransparency;
      break;
    case kRadialTransparency:
      created = new CQXRadialTransparency;
      break;
    default:
      return nullptr;
  }
  ++liveCounts.transparencies;
  return created;
}

CQXTransparency::~CQXTransparency() { --liveCounts.transparencies; }

CQXUniformTransparency::~CQXUniformTransparency() {
  if (journaling) JournalCall("CQXUniformTransparency::~CQXUniformTransparency");
}

int CQXUniformTransparency::Type() const {
  if (journaling) JournalCall("CQXUniformTransparency::Type").Result(static_cast<int>(kUniformTransparency));
  return kUniformTransparency;
}

CQXShapeTransparency::~CQXShapeTransparency() = default;

void CQXShapeTransparency::ChangeWorldToFillTm(TM matrix) {
  if (journaling) JournalCall("CQXShapeTransparency::ChangeWorldToFillTm", matrix);
  worldToFill_ = matrix;
}

int CQXShapeTransparency::AddOpacityMarker(CTransMarker marker) {
  if (markers_.empty()) markers_.reserve(kFirstMarkers);
  markers_.push_back(marker);
  const int count = static_cast<int>(markers_.size());
  if (journaling) JournalCall("CQXShapeTransparency::AddOpacityMarker", marker).Result(count);
  return count;
}

CQXLinearTransparency::~CQXLinearTransparency() {
  if (journaling) JournalCall("CQXLinearTransparency::~CQXLinearTransparency");
}

int CQXLinearTransparency::Type() const {
  if (journaling) JournalCall("CQXLinearTransparency::Type").Result(static_cast<int>(kLinearTransparency));
  return kLinearTransparency;
}

CQXRadialTransparency::~CQXRadialTransparency() {
  if (journaling) JournalCall("CQXRadialTransparency::~CQXRadialTransparency");
}

int CQXRadialTransparency::Type() const {
  if (journaling) JournalCall("CQXRadialTransparency::Type").Result(static_cast<int>(kRadialTransparency));
  return kRadialTransparency;
}
