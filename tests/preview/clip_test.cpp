// Clips, whole and in pieces.
#include "tests/preview/preview_bench.h"

using namespace preview_tests;

namespace {

class Clips : public PreviewTest {
 protected:
  // The brackets of a clip whose geometry is the square at (4, 4).
  void OpenClip() {
    TakeValue(KEY_SCGR, 1);
    TakeValue(KEY_CLIP, 1);
    TakeSquare(4, 4);
    TakeValue(KEY_CLIP, 0);
    TakeValue(KEY_DOCP, 1);
  }
  void CloseClip() {
    TakeValue(KEY_DOCP, 0);
    TakeValue(KEY_ECGR, 1);
  }
  // Two squares, of which a clip shows the first.
  void TakeContent() {
    TakeValue(KEY_FILL, 0x0000FF);
    TakeSquare(4, 4);
    TakeSquare(7, 4);
  }
  // Pixels of the two.
  static constexpr int kInside = 50, kOutside = 80;
};

constexpr char kRedSheet[] = R"svg(<rect width="100" height="100" clip-path="url(#c)" style="fill:#ff0000"/>)svg";

}  // namespace

TEST_F(Clips, ContentIsDrawnWithinTheGeometryAlone) {
  const Picture picture = DrawBody(
      std::string(R"svg(<defs><clipPath id="c"><rect x="20" y="30" width="40" height="20"/></clipPath></defs>)svg") +
      kRedSheet);
  const InkBox ink = picture.Ink();
  EXPECT_EQ(ink.left, 20);
  EXPECT_EQ(ink.right, 59);
  EXPECT_EQ(ink.top, 30);
  EXPECT_EQ(ink.bottom, 49);
  EXPECT_EQ(picture.At(40, 40), kRed);
}

TEST_F(Clips, WhatFollowsIsNotClipped) {
  const Picture picture = DrawBody(
      std::string(R"svg(<defs><clipPath id="c"><rect x="20" y="30" width="40" height="20"/></clipPath></defs>)svg") +
      kRedSheet + R"svg(<rect y="80" width="100" height="10" style="fill:#0000ff"/>)svg");
  EXPECT_EQ(picture.At(90, 40), kNothing);
  EXPECT_EQ(picture.At(90, 85), kBlue);
}

TEST_F(Clips, SeveralShapesClipToAllThatTheyCover) {
  // The second goes the other way round, so that winding numbers would cancel where they overlap.
  const Picture picture = DrawBody(std::string(R"svg(<defs><clipPath id="c">
      <path d="M10 10H60V60H10Z"/><path d="M40 40V90H90V40Z"/></clipPath></defs>)svg") +
                                   kRedSheet);
  EXPECT_EQ(picture.At(20, 20), kRed);
  EXPECT_EQ(picture.At(50, 50), kRed);
  EXPECT_EQ(picture.At(80, 80), kRed);
  EXPECT_EQ(picture.At(80, 20), kNothing);
}

TEST_F(Clips, AClipWithinTheGeometryOfAnotherCutsThat) {
  const Picture picture = DrawBody(std::string(R"svg(<defs>
      <clipPath id="d"><rect width="50" height="100"/></clipPath>
      <clipPath id="c"><rect x="30" y="30" width="40" height="40" clip-path="url(#d)"/></clipPath></defs>)svg") +
                                   kRedSheet);
  EXPECT_EQ(picture.At(40, 40), kRed);
  EXPECT_EQ(picture.At(60, 40), kNothing);
  EXPECT_EQ(picture.At(20, 40), kNothing);
}

TEST_F(Clips, AClipWithoutGeometryShowsNothing) {
  const Picture picture = DrawBody(
      std::string(R"svg(<defs><clipPath id="c"><circle cx="50" cy="50" r="40"/></clipPath></defs>)svg") + kRedSheet);
  EXPECT_EQ(picture.Ink().right, -1);
}

TEST_F(Clips, AnUnknownClipIsNone) { EXPECT_EQ(DrawBody(std::string("<defs/>") + kRedSheet).At(5, 5), kRed); }

TEST_F(Clips, OneOfAGroupIsNeverClosedAndPassedOver) {
  const Picture picture =
      DrawBody(R"svg(<defs><clipPath id="c"><rect x="20" y="30" width="40" height="20"/></clipPath></defs>
      <g clip-path="url(#c)"><rect width="100" height="100" style="fill:#ff0000"/></g>)svg");
  EXPECT_EQ(picture.At(5, 5), kRed);
}

TEST_F(Clips, OneWithinAnUnclosedOneStillHolds) {
  const Picture picture = DrawBody(R"svg(<defs>
      <clipPath id="c"><rect x="20" y="30" width="40" height="20"/></clipPath>
      <clipPath id="d"><rect width="10" height="10"/></clipPath></defs>
      <g clip-path="url(#d)"><rect width="100" height="100" clip-path="url(#c)" style="fill:#ff0000"/></g>)svg");
  EXPECT_EQ(picture.At(40, 40), kRed);
  EXPECT_EQ(picture.At(5, 5), kNothing);
}

TEST_F(Clips, WholeBracketsClip) {
  OpenClip();
  TakeContent();
  CloseClip();
  const Picture picture(drawer);
  EXPECT_EQ(picture.At(kInside, kInside), kRed);
  EXPECT_EQ(picture.At(kOutside, kInside), kNothing);
}

TEST_F(Clips, WithoutItsLastBracketOneIsPassedOver) {
  OpenClip();
  TakeContent();
  TakeValue(KEY_DOCP, 0);
  EXPECT_EQ(Picture(drawer).At(kOutside, kInside), kRed);
}

TEST_F(Clips, WithoutTheEndOfItsContentOneIsPassedOver) {
  OpenClip();
  TakeContent();
  TakeValue(KEY_ECGR, 1);
  EXPECT_EQ(Picture(drawer).At(kOutside, kInside), kRed);
}

TEST_F(Clips, WithoutItsFirstBracketOneIsPassedOver) {
  TakeValue(KEY_CLIP, 0);
  TakeValue(KEY_DOCP, 1);
  TakeContent();
  CloseClip();
  EXPECT_EQ(Picture(drawer).At(kOutside, kInside), kRed);
}

TEST_F(Clips, BracketsThatCloseNothingArePassedOver) {
  CloseClip();
  TakeValue(KEY_EGRP, 1);
  TakeValue(KEY_CLIP, 0);
  TakeContent();
  EXPECT_EQ(Picture(drawer).At(kOutside, kInside), kRed);
}

TEST_F(Clips, GeometryWithoutContentIsDropped) {
  TakeValue(KEY_SCGR, 1);
  TakeValue(KEY_CLIP, 1);
  TakeContent();
  EXPECT_EQ(Picture(drawer).Ink().right, -1);
}

TEST_F(Clips, OneThatBeganInAGroupEndsWithIt) {
  TakeValue(KEY_SGRP, 1);
  OpenClip();
  TakeValue(KEY_EGRP, 1);
  TakeContent();
  CloseClip();
  EXPECT_EQ(Picture(drawer).At(kOutside, kInside), kRed);
}

TEST_F(Clips, TheDrawingCoversOnlyWhatAClipLeaves) {
  DrawBody(
      std::string(R"svg(<defs><clipPath id="c"><rect x="20" y="30" width="40" height="20"/></clipPath></defs>)svg") +
      kRedSheet);
  const preview::Box box = drawer.Bounds();
  EXPECT_NEAR(box.left, 2.0, 1e-9);
  EXPECT_NEAR(box.right, 6.0, 1e-9);
  EXPECT_NEAR(box.top, 7.0, 1e-9);
  EXPECT_NEAR(box.bottom, 5.0, 1e-9);
}
