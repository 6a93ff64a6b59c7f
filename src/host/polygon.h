// The host's old drawing record for a polygon, payload of KEY_PLYR.
//
// The filter allocates one with the host allocator, constructs it in place, and adds sides; the host destroys it and
// frees it. The layout is packed: no member may be bound to a reference or a pointer of its own type.
#pragma once

#include <cstddef>
#include <cstdint>

#pragma pack(push, 1)

// One corner of the outline, in host units, y up.
struct PolygonSide {
  double x;
  double y;
  std::uint32_t flags;
};
static_assert(sizeof(PolygonSide) == 20);

enum PolygonSideFlags : std::uint32_t {
  kSideCloses = 1u << 0,  // this side closes the outline
  kSideCurve = 1u << 1,   // a sample of a curve
  kSideMarked = 1u << 2,  // the host's; the filter clears it
};

enum PolygonFlags : std::uint32_t {
  kPolygonInUse = 1u << 0,
  kPolygonCurved = 1u << 1,  // at least one side is a curve side
};

class POLYGON {
 public:
  POLYGON();
  virtual ~POLYGON();
  POLYGON(const POLYGON&) = delete;
  POLYGON& operator=(const POLYGON&) = delete;

  // Appends a side of zeros. `sides` may move.
  void add_side();
  // Removes the last side, if there is one.
  void del_side();
  std::int64_t get_sides() const;

  unsigned char hostData0[8];
  std::uint32_t flags;
  double scaleX;
  double scaleY;
  unsigned char hostData1[8];
  PolygonSide* sides;
  unsigned char hostData2[32];
};

#pragma pack(pop)
static_assert(sizeof(POLYGON) == 84);
