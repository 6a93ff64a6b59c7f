#include "host/fills.h"

#include <new>
#include <vector>

#include "headless_host/colour_data.h"
#include "headless_host/host_state.h"
#include "headless_host/journal.h"

using headless::ColourData;
using headless::JournalCall;
using headless::journaling;
using headless::liveCounts;

namespace {

struct GradientFillData {
  double angle = 0.0;
  double xOffset = 0.0, yOffset = 0.0;
  double lengthRatio = 0.0;
  TM worldToFill = {1.0, 0.0, 0.0, 1.0, 0.0, 0.0};
};
static_assert(sizeof(GradientFillData) <= 336 && alignof(GradientFillData) <= 8);

struct SpotFillData {
  ColourData from = {}, to = {};
  int duotone = 0;
  std::vector<CSpotMarker> markers;
};
static_assert(sizeof(SpotFillData) <= 344 && alignof(SpotFillData) <= 8);

}  // namespace

struct FillAccess {
  static GradientFillData& Gradient(CQXGradientFill& fill) {
    return *std::launder(reinterpret_cast<GradientFillData*>(fill.hostData_));
  }
  static const GradientFillData& Gradient(const CQXGradientFill& fill) {
    return *std::launder(reinterpret_cast<const GradientFillData*>(fill.hostData_));
  }
  static SpotFillData& Spot(CQXSpotFill& fill) {
    return *std::launder(reinterpret_cast<SpotFillData*>(fill.spotData_));
  }
  static const SpotFillData& Spot(const CQXSpotFill& fill) {
    return *std::launder(reinterpret_cast<const SpotFillData*>(fill.spotData_));
  }
};

SpotFillView ViewSpotFill(const CQXSpotFill& fill) {
  const GradientFillData& gradient = FillAccess::Gradient(fill);
  const SpotFillData& spot = FillAccess::Spot(fill);
  return {gradient.angle,
          gradient.xOffset,
          gradient.yOffset,
          gradient.lengthRatio,
          gradient.worldToFill,
          headless::ViewColourData(spot.from),
          headless::ViewColourData(spot.to),
          spot.duotone,
          spot.markers};
}

CQXGradientFill::CQXGradientFill() {
  new (hostData_) GradientFillData;
  ++liveCounts.gradientFills;
}

CQXGradientFill::~CQXGradientFill() { --liveCounts.gradientFills; }

void CQXGradientFill::ChangeFillAngle(double degrees) {
  if (journaling) JournalCall("CQXGradientFill::ChangeFillAngle", degrees);
  FillAccess::Gradient(*this).angle = degrees;
}

void CQXGradientFill::ChangeXOffset(double offset) {
  if (journaling) JournalCall("CQXGradientFill::ChangeXOffset", offset);
  FillAccess::Gradient(*this).xOffset = offset;
}

void CQXGradientFill::ChangeYOffset(double offset) {
  if (journaling) JournalCall("CQXGradientFill::ChangeYOffset", offset);
  FillAccess::Gradient(*this).yOffset = offset;
}

void CQXGradientFill::ChangeFillLengthRatio(double ratio) {
  if (journaling) JournalCall("CQXGradientFill::ChangeFillLengthRatio", ratio);
  FillAccess::Gradient(*this).lengthRatio = ratio;
}

void CQXGradientFill::ChangeWorldToFillTm(TM matrix) {
  if (journaling) JournalCall("CQXGradientFill::ChangeWorldToFillTm", matrix);
  FillAccess::Gradient(*this).worldToFill = matrix;
}

CQXSpotFill::CQXSpotFill() { new (spotData_) SpotFillData; }
CQXSpotFill::~CQXSpotFill() { FillAccess::Spot(*this).~SpotFillData(); }

void* CQXSpotFill::operator new(std::size_t size) {
  if (journaling) JournalCall("CQXSpotFill::operator new", size);
  return ::operator new(size);
}

void CQXSpotFill::operator delete(void* block) {
  if (journaling) JournalCall("CQXSpotFill::operator delete");
  ::operator delete(block);
}

void CQXSpotFill::ChangeFromColor(CQXColor colour) {
  if (journaling) JournalCall("CQXSpotFill::ChangeFromColor");
  FillAccess::Spot(*this).from = ColourAccess::Data(colour);
}

void CQXSpotFill::ChangeToColor(CQXColor colour) {
  if (journaling) JournalCall("CQXSpotFill::ChangeToColor");
  FillAccess::Spot(*this).to = ColourAccess::Data(colour);
}

void CQXSpotFill::ChangeDuotone(int duotone) {
  if (journaling) JournalCall("CQXSpotFill::ChangeDuotone", duotone);
  FillAccess::Spot(*this).duotone = duotone;
}

void CQXSpotFill::AddFromColorMarker(CSpotMarker marker) {
  if (journaling) JournalCall("CQXSpotFill::AddFromColorMarker", marker);
  FillAccess::Spot(*this).markers.push_back(marker);
}

CQXLinearSpotFill::CQXLinearSpotFill() {
  if (journaling) JournalCall("CQXLinearSpotFill::CQXLinearSpotFill");
}

CQXLinearSpotFill::~CQXLinearSpotFill() {
  if (journaling) JournalCall("CQXLinearSpotFill::~CQXLinearSpotFill");
}
