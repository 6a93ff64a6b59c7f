// What the reference host keeps in the opaque bytes of its colour objects. Internal to the host.
#pragma once

#include <cstdint>
#include <new>
#include <string>

#include "headless_host/inspection.h"
#include "host/colour.h"

namespace headless {

struct ColourData {
  std::uint32_t id;
  COLORSPACE space;
  CORRECTION_MODE correction;
  REFLECTIVITY reflectivity;
  int componentCount;
  double components[4];
  double tint;
  int cartridge;
  bool hasTint, hasCartridge;
  bool insideFullColour;  // the object is the base of a full colour, which answers for it in the journal
};

ColourView ViewColourData(const ColourData& data);

struct OverPrintData {
  OVERLAY_TYPE type;
  bool flag;
};

}  // namespace headless

struct ColourAccess {
  static headless::ColourData& Data(CQXColor& colour) {
    return *std::launder(reinterpret_cast<headless::ColourData*>(colour.hostData_));
  }
  static const headless::ColourData& Data(const CQXColor& colour) {
    return *std::launder(reinterpret_cast<const headless::ColourData*>(colour.hostData_));
  }
  // The name of a full colour; null where nothing has set it.
  static std::u16string*& Name(const CQXFullColor& colour) {
    return *std::launder(reinterpret_cast<std::u16string**>(colour.hostName_));
  }
  static headless::OverPrintData& Data(CQXOverPrint& overPrint) {
    return *std::launder(reinterpret_cast<headless::OverPrintData*>(overPrint.hostData_));
  }
  static const headless::OverPrintData& Data(const CQXOverPrint& overPrint) {
    return *std::launder(reinterpret_cast<const headless::OverPrintData*>(overPrint.hostData_));
  }
};
