// How segments are joined to subpaths.
#include "preview/path_builder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

using preview::Path;
using preview::PathBuilder;

namespace {

// "M 0,0 L 1,0 C 1,1 2,2 3,3 Z"
std::string Show(const Path& path) {
  std::string text;
  const preview::Point* next = path.points.data();
  const auto add = [&](char letter, int count) {
    if (!text.empty()) text += ' ';
    text += letter;
    for (; count > 0; --count, ++next) {
      text += ' ' + std::to_string(std::lround(next->x)) + ',' + std::to_string(std::lround(next->y));
    }
  };
  for (const Path::Verb verb : path.verbs) {
    switch (verb) {
      case Path::Verb::kMove:
        add('M', 1);
        break;
      case Path::Verb::kLine:
        add('L', 1);
        break;
      case Path::Verb::kCurve:
        add('C', 3);
        break;
      case Path::Verb::kClose:
        add('Z', 0);
        break;
    }
  }
  EXPECT_EQ(next, path.points.data() + path.points.size());
  return text;
}

class JoinedSegments : public testing::Test {
 protected:
  void Line(preview::Point a, preview::Point b) {
    const preview::Point points[] = {a, b};
    builder.AddSegment(points);
  }
  void Curve(preview::Point a, preview::Point b, preview::Point c, preview::Point d) {
    const preview::Point points[] = {a, b, c, d};
    builder.AddSegment(points);
  }
  std::string Finish() { return Show(builder.Finish()); }

  PathBuilder builder;
};

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

}  // namespace

TEST_F(JoinedSegments, ASegmentThatBeginsAtThePenGoesOnFromIt) {
  Line({0, 0}, {5, 0});
  Curve({5, 0}, {6, 0}, {7, 1}, {7, 2});
  EXPECT_EQ(Finish(), "M 0,0 L 5,0 C 6,0 7,1 7,2");
}

TEST_F(JoinedSegments, ASegmentThatEndsAtThePenIsWalkedBackwards) {
  Line({0, 0}, {5, 0});
  Line({9, 9}, {5, 0});
  Curve({3, 3}, {4, 4}, {6, 6}, {9, 9});
  EXPECT_EQ(Finish(), "M 0,0 L 5,0 L 9,9 C 6,6 4,4 3,3");
}

TEST_F(JoinedSegments, ASegmentThatTouchesNeitherEndBeginsASubpath) {
  Line({0, 0}, {5, 0});
  Line({5, 0}, {5, 5});
  Line({20, 0}, {30, 0});
  EXPECT_EQ(Finish(), "M 0,0 L 5,0 L 5,5 M 20,0 L 30,0");
}

TEST_F(JoinedSegments, ASubpathThatEndsWhereItBeganIsClosed) {
  Line({0, 0}, {5, 0});
  Line({5, 0}, {5, 5});
  Line({5, 5}, {0, 0});
  Line({20, 0}, {30, 0});
  Line({30, 0}, {30, 9});
  EXPECT_EQ(Finish(), "M 0,0 L 5,0 L 5,5 L 0,0 Z M 20,0 L 30,0 L 30,9");
}

TEST_F(JoinedSegments, TheFirstSegmentIsTurnedRoundWhenTheSecondTouchesItsStart) {
  // As a flattened curve comes: each sample joined back to the one before it, the last piece forward.
  Line({1, 5}, {0, 0});
  Line({3, 6}, {1, 5});
  Line({3, 6}, {9, 0});
  EXPECT_EQ(Finish(), "M 0,0 L 1,5 L 3,6 L 9,0");
  // Two pieces: the second goes forward at once.
  Line({1, 5}, {0, 0});
  Line({1, 5}, {9, 0});
  EXPECT_EQ(Finish(), "M 0,0 L 1,5 L 9,0");
}

TEST_F(JoinedSegments, AFirstCurveIsNotTurnedRound) {
  Curve({1, 5}, {2, 2}, {2, 1}, {0, 0});
  Line({1, 5}, {9, 0});
  EXPECT_EQ(Finish(), "M 1,5 C 2,2 2,1 0,0 M 1,5 L 9,0");
}

TEST_F(JoinedSegments, EndsThatDifferInTheirLastDigitsTouch) {
  Line({0, 0}, {5, 0});
  Line({5.0000005, -0.0000005}, {5, 5});
  Line({5.00001, 5}, {20, 5});
  EXPECT_EQ(Finish(), "M 0,0 L 5,0 L 5,5 M 5,5 L 20,5");
}

TEST_F(JoinedSegments, ASegmentThatIsNotFiniteIsPassedOver) {
  Line({0, 0}, {5, 0});
  Line({5, 0}, {kNan, 5});
  Curve({5, 0}, {kInfinity, 0}, {1, 1}, {2, 2});
  Line({5, 0}, {5, 5});
  EXPECT_EQ(Finish(), "M 0,0 L 5,0 L 5,5");
}

TEST_F(JoinedSegments, NothingLeavesAnEmptyPath) {
  EXPECT_TRUE(builder.Finish().IsEmpty());
  Line({kNan, 0}, {1, 1});
  EXPECT_TRUE(builder.Finish().IsEmpty());
}

TEST_F(JoinedSegments, AnOpenPolygonIsPartOfTheRun) {
  const PolygonSide arc[] = {{5, 0, 2}, {7, 1, 2}, {8, 3, 3}};
  Line({0, 0}, {5, 0});
  builder.AddPolygon(arc);
  Line({8, 3}, {0, 0});
  EXPECT_EQ(Finish(), "M 0,0 L 5,0 L 7,1 L 8,3 L 0,0 Z");
}

TEST_F(JoinedSegments, APolygonThatEndsAtThePenIsWalkedBackwards) {
  const PolygonSide arc[] = {{8, 3, 2}, {7, 1, 2}, {5, 0, 3}};
  Line({0, 0}, {5, 0});
  builder.AddPolygon(arc);
  EXPECT_EQ(Finish(), "M 0,0 L 5,0 L 7,1 L 8,3");
}

TEST_F(JoinedSegments, APolygonWithoutAClosingSideIsAFullTurn) {
  const PolygonSide ring[] = {{5, 0, 2}, {7, 1, 2}, {8, 3, 2}};
  Line({0, 0}, {5, 0});
  builder.AddPolygon(ring);
  Line({5, 0}, {9, 9});
  EXPECT_EQ(Finish(), "M 0,0 L 5,0 L 7,1 L 8,3 L 5,0 L 9,9");
}

TEST(PolygonByItself, IsClosedWhateverItsFlagsSay) {
  const PolygonSide sides[] = {{0, 0, 0}, {4, 0, 0}, {4, 4, 1}};
  EXPECT_EQ(Show(preview::PolygonPath(sides)), "M 0,0 L 4,0 L 4,4 Z");
}

TEST(PolygonByItself, LosesTheSidesThatAreNotFinite) {
  const PolygonSide sides[] = {{kNan, 0, 0}, {4, 0, 0}, {4, kInfinity, 0}, {5, 5, 0}};
  EXPECT_EQ(Show(preview::PolygonPath(sides)), "M 4,0 L 5,5 Z");
  EXPECT_TRUE(preview::PolygonPath(std::span(sides, 1)).IsEmpty());
}
