// The numbers and places of the stream that the host knows them by.

#include "run/import_command.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>

#include "host/polygon.h"

namespace {

template <class Value>
void Put(void* record, std::size_t offset, Value value) {
  std::memcpy(static_cast<unsigned char*>(record) + offset, &value, sizeof value);
}

}  // namespace

TEST(ImportCommandCodes, AreTheOnesThatTheHostKnows) {
  const std::pair<CommandKey, unsigned> codes[] = {
      {KEY_NULL, 0},   {KEY_BEZI, 3},   {KEY_CNST, 5},   {KEY_EGRP, 8},   {KEY_ELLI, 9},   {KEY_ENDF, 10},
      {KEY_ENDP, 11},  {KEY_FILL, 12},  {KEY_LINE, 17},  {KEY_LNST, 18},  {KEY_MLIM, 21},  {KEY_WRUL, 23},
      {KEY_OUTL, 24},  {KEY_PARA, 27},  {KEY_PATH, 28},  {KEY_PLYR, 29},  {KEY_SGRP, 36},  {KEY_WIDT, 43},
      {KEY_PFDF, 46},  {KEY_FDEF, 47},  {KEY_CLIP, 48},  {KEY_DOCP, 49},  {KEY_PAGN, 50},  {KEY_GNRC, 97},
      {KEY_THST, 104}, {KEY_NOTL, 110}, {KEY_NFIL, 111}, {KEY_SPFL, 114}, {KEY_QXON, 119}, {KEY_LYOT, 123},
      {KEY_LIOT, 124}, {KEY_PFOL, 127}, {KEY_ECGR, 135}, {KEY_SCGR, 136}, {KEY_TSPY, 155},
  };
  for (const auto& [code, number] : codes) EXPECT_EQ(static_cast<unsigned>(code), number);
}

TEST(ImportCommandCodes, OfFillTypesAreTheOnesThatTheHostKnows) {
  EXPECT_EQ(kFlatFill, 1u);
  EXPECT_EQ(kRadialFill, 5u);
  EXPECT_EQ(kPatternFill, 10u);
  EXPECT_EQ(kLinearFill, 15u);
}

// The class has a table of operations, so that its layout cannot be asserted where it is declared.
TEST(PolygonRecord, HasItsFieldsAtTheirOffsets) {
  POLYGON polygon;
  Put(&polygon, 16, std::uint32_t{7});
  Put(&polygon, 20, 1.5);
  Put(&polygon, 28, 2.5);
  EXPECT_EQ(std::uint32_t{polygon.flags}, 7u);
  EXPECT_EQ(double{polygon.scaleX}, 1.5);
  EXPECT_EQ(double{polygon.scaleY}, 2.5);
  polygon.add_side();
  PolygonSide* const sides = polygon.sides;
  PolygonSide* found;
  std::memcpy(&found, reinterpret_cast<const unsigned char*>(&polygon) + 44, sizeof found);
  EXPECT_EQ(found, sides);
}

TEST(PolygonRecord, HasSidesOfThreePackedFields) {
  PolygonSide side = {};
  Put(&side, 0, 1.5);
  Put(&side, 8, 2.5);
  Put(&side, 16, std::uint32_t{3});
  EXPECT_EQ(double{side.x}, 1.5);
  EXPECT_EQ(double{side.y}, 2.5);
  EXPECT_EQ(std::uint32_t{side.flags}, 3u);
}
