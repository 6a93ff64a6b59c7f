// The import command stream: the record, the command codes and the payload records. A binary contract with the host.
//
// Coordinates in payloads are in host units, centimetres, with y pointing up. Colours are 0x00BBGGRR, and 0xFFFFFFFF in
// KEY_FILL and KEY_OUTL means that nothing is painted. A payload belongs to the host as soon as the record has been
// returned; records and doubles are freed to the host allocator, objects through their classes. KEY_PFDF and KEY_PFOL
// of a pair carry one and the same payload.
//
// Packed records have fields at odd offsets: read and write members as values, never bind a reference or take an
// address.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host/matrix.h"

#include "host/export.h"

class CQXBitmap;
struct ComposedParagraph;

enum CommandKey : std::uint32_t {
  KEY_NULL = 0,    // no fact; GetImportCommand drops it
  KEY_BEZI = 3,    // BezierRecord: one cubic segment
  KEY_CNST = 5,    // value, line join: 0 round, 1 bevel, 2 miter
  KEY_EGRP = 8,    // value 1: end of a group
  KEY_ELLI = 9,    // known to the trace and to the roll-back, never sent
  KEY_ENDF = 10,   // end of the file
  KEY_ENDP = 11,   // end of the open path
  KEY_FILL = 12,   // value: fill colour
  KEY_LINE = 17,   // LineRecord: one straight segment
  KEY_LNST = 18,   // value, line cap: 0 butt, 1 square, 2 round
  KEY_MLIM = 21,   // value: miter limit times 100
  KEY_WRUL = 23,   // value, winding rule: 1 non-zero, 0 even-odd
  KEY_OUTL = 24,   // value: outline colour
  KEY_PARA = 27,   // ParagraphRecord: a composed text block
  KEY_PATH = 28,   // start of a path
  KEY_PLYR = 29,   // POLYGON: a finished polygon
  KEY_SGRP = 36,   // value 1: start of a group
  KEY_WIDT = 43,   // a double, line width in host units; size 8 or 0
  KEY_PFDF = 46,   // FillDefinition of a pattern, first of the pair
  KEY_FDEF = 47,   // FillDefinition of a flat layer colour or a gradient
  KEY_CLIP = 48,   // value: 1 starts clip geometry, 0 ends it
  KEY_DOCP = 49,   // value: 1 clipped content begins, 0 it has ended
  KEY_PAGN = 50,   // value, page number; known to the trace, never sent
  KEY_GNRC = 97,   // GenericRecord: an image
  KEY_THST = 104,  // value, thickness state: 1 none, 2 hairline, 3 thick
  KEY_NOTL = 110,  // CQXFullColor: outline colour of the path just ended
  KEY_NFIL = 111,  // CQXFullColor: fill colour of the path just ended
  KEY_SPFL = 114,  // CQXLinearSpotFill
  KEY_QXON = 119,  // known to the trace, never sent
  KEY_LYOT = 123,  // CQXOverPrint of the fill
  KEY_LIOT = 124,  // CQXOverPrint of the stroke
  KEY_PFOL = 127,  // the FillDefinition of the KEY_PFDF before it
  KEY_ECGR = 135,  // value 1: end of a clip group
  KEY_SCGR = 136,  // value 1: start of a clip group
  KEY_TSPY = 155,  // CQXTransparency
};

struct ImportCommand {
  std::uint32_t key;
  std::uint32_t size;  // bytes of what `data` points to; 0 for a value and for an object
  union {
    std::int32_t value;
    void* data;
    unsigned char bytes[24];
  };
};
static_assert(sizeof(ImportCommand) == 32);
static_assert(offsetof(ImportCommand, size) == 4 && offsetof(ImportCommand, value) == 8);
static_assert(offsetof(ImportCommand, data) == 8);

#pragma pack(push, 1)

struct LineRecord {
  unsigned char reserved[16];  // not written
  double x0, y0;
  double x1, y1;
};
static_assert(sizeof(LineRecord) == 48);
static_assert(offsetof(LineRecord, x0) == 16 && offsetof(LineRecord, y1) == 40);

struct BezierRecord {
  unsigned char reserved0[16];
  double x0, y0;  // start
  double x1, y1;  // first control
  double x2, y2;  // second control
  double x3, y3;  // end
  unsigned char reserved1[28];
};
static_assert(sizeof(BezierRecord) == 108);
static_assert(offsetof(BezierRecord, x0) == 16 && offsetof(BezierRecord, y3) == 72);

struct ParagraphRecord {
  unsigned char reserved[16];  // not written
  std::uint32_t paragraphTag;
  ComposedParagraph* paragraph;
};
static_assert(sizeof(ParagraphRecord) == 28);
static_assert(offsetof(ParagraphRecord, paragraphTag) == 16 && offsetof(ParagraphRecord, paragraph) == 20);

struct GenericRecord {
  unsigned char reserved[16];  // not written
  CQXBitmap* bitmap;
};
static_assert(sizeof(GenericRecord) == 24);
static_assert(offsetof(GenericRecord, bitmap) == 16);

inline constexpr std::uint32_t kMaxStops = 101;
inline constexpr std::uint32_t kTilePathUnits = 128;  // terminator included

// Values of FillDefinition::fillType.
enum FillType : std::uint32_t {
  kFlatFill = 1,
  kRadialFill = 5,
  kPatternFill = 10,
  kLinearFill = 15,
};

// The part of a FillDefinition behind its type, offset 104 on, of a gradient.
struct GradientPart {
  std::uint32_t gradientForm;  // 3 two colours, 1 stop list
  std::uint32_t gradientFlag;  // 1
  std::uint32_t stopListFlag;  // 0 two colours, 1 stop list
  unsigned char reserved0[4];
  double colourA[3];  // two colours only: red, green, blue, 0 to 255
  unsigned char reserved1[24];
  double colourB[3];
  unsigned char reserved2[24];
  std::uint16_t stopListStart;  // 0
  unsigned char reserved3[6];
  double midPoint;           // 0.5
  std::uint16_t stopListOn;  // 1 with a stop list
  unsigned char reserved4[2];
  std::uint32_t stopCount;
  std::uint32_t stopColours[kMaxStops];
  std::int32_t stopPositions[kMaxStops];  // percent
  double angle;                           // degrees
};

// The same of a pattern.
struct PatternPart {
  unsigned char reserved0[8];
  char16_t tilePath[kTilePathUnits];  // NUL-terminated
  std::uint32_t tileColour;           // 0xFFFFFF
  std::uint32_t tileColourOn;         // 1
  double tileScaleX;                  // 1.0
  double tileScaleY;                  // 1.0
};

struct FillDefinition {
  std::uint32_t fillClass;  // 0 flat layer colour, 4 gradient or pattern
  TM inverseMatrix;         // host space to fill space
  TM forwardMatrix;         // fill space to host space
  std::uint32_t fillType;   // FillType
  union {
    GradientPart gradient;
    PatternPart pattern;
    unsigned char part[1048];
  };
  double fillScale;  // see below
  unsigned char reserved0[40];
  double tileHeight;  // pattern only
  unsigned char reserved1[8];
};
// fillScale is 1.0 for the flat colour at the end of a path, 0.0 for the one of the BB operator, -1.0 for a pattern,
// and minus the length in host units for a gradient.
static_assert(sizeof(FillDefinition) == 1216);
static_assert(offsetof(FillDefinition, inverseMatrix) == 4 && offsetof(FillDefinition, forwardMatrix) == 52);
static_assert(offsetof(FillDefinition, fillType) == 100 && offsetof(FillDefinition, gradient.gradientForm) == 104);
static_assert(offsetof(FillDefinition, gradient.gradientFlag) == 108);
static_assert(offsetof(FillDefinition, gradient.stopListFlag) == 112);
static_assert(offsetof(FillDefinition, gradient.colourA) == 120 && offsetof(FillDefinition, gradient.colourB) == 168);
static_assert(offsetof(FillDefinition, gradient.stopListStart) == 216);
static_assert(offsetof(FillDefinition, gradient.midPoint) == 224);
static_assert(offsetof(FillDefinition, gradient.stopListOn) == 232);
static_assert(offsetof(FillDefinition, gradient.stopCount) == 236);
static_assert(offsetof(FillDefinition, gradient.stopColours) == 240);
static_assert(offsetof(FillDefinition, gradient.stopPositions) == 644);
static_assert(offsetof(FillDefinition, gradient.angle) == 1048);
static_assert(offsetof(FillDefinition, pattern.tilePath) == 112 && offsetof(FillDefinition, pattern.tileColour) == 368);
static_assert(offsetof(FillDefinition, pattern.tileColourOn) == 372);
static_assert(offsetof(FillDefinition, pattern.tileScaleX) == 376 &&
              offsetof(FillDefinition, pattern.tileScaleY) == 384);
static_assert(offsetof(FillDefinition, fillScale) == 1152 && offsetof(FillDefinition, tileHeight) == 1200);

#pragma pack(pop)

// The four entry points of the filter, in the order in which a host calls them. They are not re-entrant, and one loaded
// instance serves one import: a host loads the library afresh for each file.
extern "C" {

// Reads the file at `path` (NUL-terminated, a full path) and prepares the import. 1: go on; 0: the file cannot be read
// or is not a document with content. A failed call of the document interface leaves as DocumentError, an inconsistent
// list of nodes as std::out_of_range.
using CheckFileFunction = int(std::uintptr_t reserved1, std::uintptr_t reserved2, const char16_t* path);
HOST_VISIBLE int CheckFile(std::uintptr_t reserved1, std::uintptr_t reserved2, const char16_t* path);

// The next record of the drawing; KEY_ENDF at its end and ever after. Fails as CheckFile does.
using GetImportCommandFunction = ImportCommand();
HOST_VISIBLE ImportCommand GetImportCommand();

// Always 0: the filter reads its input by path.
using GetFileHandleFunction = std::intptr_t();
HOST_VISIBLE std::intptr_t GetFileHandle();

// Ends the import, also one whose CheckFile failed. Always 0.
using CloseFileFunction = int();
HOST_VISIBLE int CloseFile();
}
