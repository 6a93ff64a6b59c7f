#include "host/colour.h"

#include <algorithm>
#include <cmath>

#include "headless_host/colour_data.h"
#include "headless_host/host_state.h"
#include "headless_host/journal.h"

using headless::ColourData;
using headless::JournalCall;
using headless::journaling;
using headless::JournalPause;
using headless::liveCounts;
using headless::OverPrintData;

static_assert(sizeof(ColourData) <= 424 && alignof(ColourData) <= 8);
static_assert(sizeof(OverPrintData) <= 40);

namespace {

constexpr std::uint32_t kInvisible = 0xFFFFFFFF;

bool IsInvisible(const ColourData& data) {
  return data.space == kRgbSpace && data.id == kInvisible && data.componentCount == 0;
}

bool IsNamed(const ColourData& data) { return data.correction == kNamedColourCorrection && !IsInvisible(data); }

}  // namespace

namespace headless {

ColourView ViewColourData(const ColourData& data) {
  ColourView view = {data.id, data.space, data.correction, data.reflectivity, data.componentCount, {}, {}, {}, {}};
  std::copy_n(data.components, data.componentCount, view.components);
  if (data.hasTint) view.tint = data.tint;
  if (data.hasCartridge) view.cartridge = data.cartridge;
  return view;
}

}  // namespace headless

ColourView ViewColour(const CQXColor& colour) { return headless::ViewColourData(ColourAccess::Data(colour)); }

ColourView ViewColour(const CQXFullColor& colour) {
  ColourView view = headless::ViewColourData(ColourAccess::Data(colour));
  if (const std::u16string* name = ColourAccess::Name(colour)) view.name = *name;
  return view;
}

OverPrintView ViewOverPrint(const CQXOverPrint& overPrint) {
  const OverPrintData& data = ColourAccess::Data(overPrint);
  return {data.type, data.flag};
}

CQXColor::CQXColor(unsigned long value, COLORSPACE space, CORRECTION_MODE correction, REFLECTIVITY reflectivity) {
  if (journaling) {
    JournalCall("CQXColor::CQXColor", value, static_cast<int>(space), static_cast<int>(correction),
                static_cast<int>(reflectivity));
  }
  new (hostData_) ColourData{
      static_cast<std::uint32_t>(value), space, correction, reflectivity, 0, {}, 0.0, 0, false, false, false};
  ++liveCounts.colours;
}

CQXColor::CQXColor(const CQXColor& other) {
  if (journaling) JournalCall("CQXColor::CQXColor");
  auto* data = new (hostData_) ColourData(ColourAccess::Data(other));
  data->insideFullColour = false;
  ++liveCounts.colours;
}

CQXColor& CQXColor::operator=(const CQXColor& other) {
  if (journaling) JournalCall("CQXColor::operator=");
  ColourData& data = ColourAccess::Data(*this);
  const bool insideFullColour = data.insideFullColour;
  data = ColourAccess::Data(other);
  data.insideFullColour = insideFullColour;
  return *this;
}

CQXColor::~CQXColor() {
  if (journaling && !ColourAccess::Data(*this).insideFullColour) JournalCall("CQXColor::~CQXColor");
  --liveCounts.colours;
}

void CQXColor::SetColor(const double& red, const double& green, const double& blue, COLORSPACE space) {
  if (journaling) JournalCall("CQXColor::SetColor", red, green, blue, static_cast<int>(space));
  ColourData& data = ColourAccess::Data(*this);
  data.space = space;
  data.componentCount = 3;
  data.components[0] = red;
  data.components[1] = green;
  data.components[2] = blue;
}

void CQXColor::SetColor(const double& cyan, const double& magenta, const double& yellow, const double& black,
                        COLORSPACE space) {
  if (journaling) JournalCall("CQXColor::SetColor", cyan, magenta, yellow, black, static_cast<int>(space));
  ColourData& data = ColourAccess::Data(*this);
  data.space = space;
  data.componentCount = 4;
  data.components[0] = cyan;
  data.components[1] = magenta;
  data.components[2] = yellow;
  data.components[3] = black;
}

void CQXColor::SetTint(double percent) {
  if (journaling) JournalCall("CQXColor::SetTint", percent);
  ColourData& data = ColourAccess::Data(*this);
  data.tint = percent;
  data.hasTint = true;
}

void CQXColor::SetCartridge(int cartridge) {
  if (journaling) JournalCall("CQXColor::SetCartridge", cartridge);
  ColourData& data = ColourAccess::Data(*this);
  data.cartridge = cartridge;
  data.hasCartridge = true;
}

void CQXColor::SetCorrectionMode(CORRECTION_MODE correction) {
  if (journaling) JournalCall("CQXColor::SetCorrectionMode", static_cast<int>(correction));
  ColourAccess::Data(*this).correction = correction;
}

int CQXColor::IsInvisibleColor() const {
  const int result = IsInvisible(ColourAccess::Data(*this)) ? 1 : 0;
  if (journaling) JournalCall("CQXColor::IsInvisibleColor").Result(result);
  return result;
}

int CQXColor::IsProcessColor() const {
  const ColourData& data = ColourAccess::Data(*this);
  const int result = !IsInvisible(data) && !IsNamed(data) ? 1 : 0;
  if (journaling) JournalCall("CQXColor::IsProcessColor").Result(result);
  return result;
}

int CQXColor::IsSpotColor() const {
  const ColourData& data = ColourAccess::Data(*this);
  const int result = IsNamed(data) && !data.hasCartridge ? 1 : 0;
  if (journaling) JournalCall("CQXColor::IsSpotColor").Result(result);
  return result;
}

int CQXColor::IsSpotFoil() const {
  const ColourData& data = ColourAccess::Data(*this);
  const int result = IsNamed(data) && data.hasCartridge ? 1 : 0;
  if (journaling) JournalCall("CQXColor::IsSpotFoil").Result(result);
  return result;
}

// Inks as they were set, otherwise what the value says; red, green and blue become the inks that take them from white.
void CQXColor::GetCMYKcolor(double* cyan, double* magenta, double* yellow, double* black) const {
  if (journaling) JournalCall("CQXColor::GetCMYKcolor");
  const ColourData& data = ColourAccess::Data(*this);
  auto byteOfId = [&](int index) { return static_cast<double>((data.id >> (8 * index)) & 0xFF); };
  double inks[4] = {};
  if (data.componentCount == 4) {
    std::copy_n(data.components, 4, inks);
  } else if (data.componentCount == 3) {
    for (int i = 0; i < 3; ++i) inks[i] = 1.0 - data.components[i] / 255.0;
  } else if (data.space == kCmykSpace) {
    for (int i = 0; i < 4; ++i) inks[i] = byteOfId(i) / 255.0;
  } else if (!IsInvisible(data)) {
    for (int i = 0; i < 3; ++i) inks[i] = 1.0 - byteOfId(i) / 255.0;
  }
  *cyan = inks[0];
  *magenta = inks[1];
  *yellow = inks[2];
  *black = inks[3];
}

// The base of a full colour is made with the journal paused, so that one call of the filter is one line.

namespace {

bool journalingBefore = false;

template <class Argument>
Argument WithoutJournal(Argument argument) {
  journalingBefore = journaling;
  journaling = false;
  return argument;
}

}  // namespace

CQXFullColor::CQXFullColor(unsigned long value, COLORSPACE space, CORRECTION_MODE correction, REFLECTIVITY reflectivity)
    : CQXColor(WithoutJournal(value), space, correction, reflectivity) {
  journaling = journalingBefore;
  if (journaling) {
    JournalCall("CQXFullColor::CQXFullColor", value, static_cast<int>(space), static_cast<int>(correction),
                static_cast<int>(reflectivity));
  }
  ColourAccess::Data(*this).insideFullColour = true;
  new (hostName_) std::u16string*(nullptr);
}

CQXFullColor::CQXFullColor(const CQXFullColor& other) : CQXColor(*WithoutJournal(&other)) {
  journaling = journalingBefore;
  if (journaling) JournalCall("CQXFullColor::CQXFullColor");
  ColourAccess::Data(*this).insideFullColour = true;
  const std::u16string* name = ColourAccess::Name(other);
  new (hostName_) std::u16string*(name == nullptr ? nullptr : new std::u16string(*name));
}

CQXFullColor& CQXFullColor::operator=(const CQXFullColor& other) {
  if (journaling) JournalCall("CQXFullColor::operator=");
  if (this == &other) return *this;
  const JournalPause pause;
  CQXColor::operator=(other);
  const std::u16string* name = ColourAccess::Name(other);
  std::u16string* copy = name == nullptr ? nullptr : new std::u16string(*name);
  delete ColourAccess::Name(*this);
  ColourAccess::Name(*this) = copy;
  return *this;
}

CQXFullColor::~CQXFullColor() {
  if (journaling) JournalCall("CQXFullColor::~CQXFullColor");
  delete ColourAccess::Name(*this);
}

void CQXFullColor::SetColorName(const char16_t* name) const {
  if (journaling) JournalCall("CQXFullColor::SetColorName", name);
  std::u16string*& kept = ColourAccess::Name(*this);
  if (kept == nullptr) kept = new std::u16string;
  *kept = name;
}

CQXOverPrint::CQXOverPrint() {
  if (journaling) JournalCall("CQXOverPrint::CQXOverPrint");
  new (hostData_) OverPrintData{kNoOverlay, false};
  ++liveCounts.overPrints;
}

CQXOverPrint::~CQXOverPrint() {
  if (journaling) JournalCall("CQXOverPrint::~CQXOverPrint");
  --liveCounts.overPrints;
}

void CQXOverPrint::SetOverlayType(OVERLAY_TYPE type, bool flag) {
  if (journaling) JournalCall("CQXOverPrint::SetOverlayType", static_cast<int>(type), flag);
  OverPrintData& data = ColourAccess::Data(*this);
  data.type = type;
  data.flag = flag;
}

namespace {

// One byte of a colour left when its own ink and black have been taken from white.
unsigned char WithoutInks(float ink, float black) {
  const float left = std::max(255.0f - ink - black, 0.0f);
  return static_cast<unsigned char>(std::min(left, 255.0f));
}

}  // namespace

void BmpCMYKtoRGB(float cyan, float magenta, float yellow, float black, unsigned char* red, unsigned char* green,
                  unsigned char* blue) {
  if (journaling) JournalCall("BmpCMYKtoRGB", cyan, magenta, yellow, black);
  *red = WithoutInks(cyan, black);
  *green = WithoutInks(magenta, black);
  *blue = WithoutInks(yellow, black);
}

int VectorCMYKtoRGB(float cyan, float magenta, float yellow, float black, unsigned char*, unsigned char*,
                    unsigned char*) {
  if (journaling) JournalCall("VectorCMYKtoRGB", cyan, magenta, yellow, black).Result(0);
  return 0;
}
