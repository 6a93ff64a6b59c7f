// What an element inherits from its ancestors, in a stack of frames. Every translator pushes a frame on entry and pops
// it on exit; a pushed frame starts as a copy of the one below, and there is no other inheritance.
//
// Coordinates come in three spaces. User space: the numbers of the operator text. Device space: user space through the
// frame's current matrix, y down, document units. Host space: device space times UnitScale, y flipped against
// DocHeight, centimetres; only payloads hold it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "filter_limits.h"
#include "host/matrix.h"

struct Point {
  double x, y;
  bool operator==(const Point&) const = default;
};

struct GradientStop {
  std::uint32_t rgb;  // 0x00BBGGRR
  double offset;      // as read: 0.5, and 50.0 for "50%"
  double opacity;     // as read, 1.0 by default
};

// The stops of a gradient, in one block from the host allocator. Frames that are copies of one another share it; the
// block goes when its last frame goes.
struct StopBlock {
  std::uint32_t references;
  std::uint32_t room;  // entries behind this header
  GradientStop* Stops() { return reinterpret_cast<GradientStop*>(this + 1); }
};

// The colour of one side, fill or outline.
struct PaintColour {
  char16_t name[kMaxColourNameUnits + 1];  // spot name, empty for none
  std::uint8_t kind;                       // 0 in every frame that the filter makes
  std::int32_t colour;                     // 0x00BBGGRR, -1 for none; the colour operators pack inks
  std::int32_t tint;                       // percent
  double cmyk[4];                          // 0 to 1
  double rgb[3];                           // 0 to 255, whole values
  std::uint32_t isRgb;                     // 1: rgb holds the value, 0: cmyk
};

struct GraphicsState {
  PaintColour fill;
  PaintColour outline;
  std::int32_t lineCap;           // of KEY_LNST
  std::int32_t lineJoin;          // of KEY_CNST
  std::int32_t miterLimit;        // times 100
  std::int32_t miterLimitActive;  // 2 when the j operator has set a limit
  std::int32_t thicknessState;    // of KEY_THST: 1 none, 2 hairline, 3 thick
  double lineWidth;               // host units
  TM currentMatrix;               // user space to device space
  TM gradientMatrix;
  double opacity;  // 1.0 in the first frame; the style parsers store 0 to 255
  std::int32_t stopCount;
  std::uint32_t stopsPartlyTransparent;
  StopBlock* stops;
};

class GraphicsStateStack {
 public:
  GraphicsStateStack() = default;
  ~GraphicsStateStack();  // gives the stop blocks of all frames back
  GraphicsStateStack(const GraphicsStateStack&) = delete;
  GraphicsStateStack& operator=(const GraphicsStateStack&) = delete;

  std::int32_t frameIndex = 0;  // the current frame
  std::int32_t saveDepth = 0;   // pushes not yet popped
  TM defaultMatrix = {1.0, 0.0, 0.0, 1.0, 0.0, 0.0};

  // Frames are zero until they are pushed, and never move. Throws std::bad_alloc when a frame finds no memory.
  GraphicsState& Frame(std::int32_t index);
  GraphicsState& Current() { return *current_; }
  void Select(std::int32_t index);

 private:
  std::vector<std::unique_ptr<GraphicsState[]>> blocks_;
  GraphicsState* current_ = nullptr;
};

// The frame at frameIndex.
GraphicsState& CurrentFrame();

// Sets the first frame up as an import begins: identity matrices, opacity 1.0, line join 1, fill colour 0.
void InitialiseGraphicsState();

inline constexpr TM kIdentity = {1.0, 0.0, 0.0, 1.0, 0.0, 0.0};

inline Point TransformPoint(const TM& m, Point p) { return {m.a * p.x + m.c * p.y + m.e, m.b * p.x + m.d * p.y + m.f}; }

// Applies `first`, then `second`.
TM ConcatMatrix(const TM& first, const TM& second);

void PushGraphicsState();
// Sends what differs between the popped frame and the one below, closes a clip group that was cut at this level, and,
// unless a cut is open, clears the operands. Nothing at all happens when no push is open.
void PopGraphicsState();

// Gives the frame's reference to its stop block back and clears it.
void ReleaseStops(GraphicsState& frame);

// Operators. Stack effects stand in the table of operators.
struct OperatorCall;
void OperatorPushState(const OperatorCall&);
void OperatorPopState(const OperatorCall&);
void OperatorReplaceTopFrame(const OperatorCall&);
void OperatorTranslate(const OperatorCall&);
void OperatorSaveMatrix(const OperatorCall&);
void OperatorRestoreMatrix(const OperatorCall&);
void OperatorRestoreDocumentMatrix(const OperatorCall&);
