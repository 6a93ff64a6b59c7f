#include "host/polygon.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "headless_host/host_state.h"
#include "headless_host/inspection.h"
#include "headless_host/journal.h"

using headless::JournalCall;
using headless::journaling;

namespace {

constexpr std::int64_t kFirstCapacity = 8;

// The host's own bytes: the number of sides in the first eight, the room of the array in the second eight.
std::int64_t Count(const POLYGON& polygon) {
  std::int64_t count;
  std::memcpy(&count, polygon.hostData0, sizeof count);
  return count;
}

void SetCount(POLYGON& polygon, std::int64_t count) { std::memcpy(polygon.hostData0, &count, sizeof count); }

std::int64_t Capacity(const POLYGON& polygon) {
  std::int64_t capacity;
  std::memcpy(&capacity, polygon.hostData1, sizeof capacity);
  return capacity;
}

void SetCapacity(POLYGON& polygon, std::int64_t capacity) {
  std::memcpy(polygon.hostData1, &capacity, sizeof capacity);
}

[[gnu::noinline, gnu::cold]] void WriteSideCount(std::int64_t count) {
  JournalCall("POLYGON::get_sides").Result(count);
}

}  // namespace

ArrayView<PolygonSide> ViewSides(const POLYGON& polygon) {
  return {polygon.sides, static_cast<std::size_t>(Count(polygon))};
}

std::int64_t CountPolygonSides(const POLYGON* polygon) { return Count(*polygon); }

POLYGON::POLYGON() : hostData0{}, flags(0), scaleX(1.0), scaleY(1.0), hostData1{}, sides(nullptr), hostData2{} {
  if (journaling) JournalCall("POLYGON::POLYGON");
  ++headless::liveCounts.polygons;
}

POLYGON::~POLYGON() {
  if (journaling) JournalCall("POLYGON::~POLYGON");
  std::free(sides);
  --headless::liveCounts.polygons;
}

void POLYGON::add_side() {
  if (journaling) headless::WriteCall("POLYGON::add_side");
  const std::int64_t count = Count(*this);
  const std::int64_t capacity = Capacity(*this);
  if (count == capacity) {
    const std::int64_t larger = capacity == 0 ? kFirstCapacity : capacity * 2;
    auto* moved =
        static_cast<PolygonSide*>(std::realloc(sides, static_cast<std::size_t>(larger) * sizeof(PolygonSide)));
    if (moved == nullptr) throw std::bad_alloc();
    sides = moved;
    SetCapacity(*this, larger);
  }
  sides[count] = PolygonSide{};
  SetCount(*this, count + 1);
}

void POLYGON::del_side() {
  if (journaling) JournalCall("POLYGON::del_side");
  const std::int64_t count = Count(*this);
  if (count > 0) SetCount(*this, count - 1);
}

std::int64_t POLYGON::get_sides() const {
  const std::int64_t count = Count(*this);
  if (journaling) WriteSideCount(count);
  return count;
}
