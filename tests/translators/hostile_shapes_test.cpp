// Shapes that no drawing needs and a file may hold all the same. Each must end, within a bound of records.
#include "filter_limits.h"
#include "operators/graphics_state.h"
#include "tests/translators/translator_fixture.h"
#include "translators/element_dispatch.h"

namespace {

// A sampled turn of 37 sides is the most that one arc, ellipse or circle makes; a rect has four corners of at most nine
// samples each, beside its own sides.
constexpr std::size_t kMostSides = 4 * 9 + 9;

class HostileShapes : public TranslatorTest {
 protected:
  // Imports the elements, checks every polygon's size, and leaves the lines behind.
  const Lines& Bounded(std::string_view elements, std::size_t most) {
    SCOPED_TRACE(elements);
    lines = Fresh(elements);
    CheckBounds(most);
    return lines;
  }
  // Translates the elements one after the other in one run. Null records count too.
  void EachBounded(const std::vector<std::string>& elements, std::size_t least, std::size_t most) {
    std::string all;
    for (const std::string& element : elements) all += element;
    Load(all);
    for (std::size_t i = 0; i < elements.size(); ++i) {
      SCOPED_TRACE(elements[i]);
      TranslateTopLevelElement(run.NodeList.At(static_cast<std::int32_t>(i)));
      lines = Drain();
      EXPECT_GE(lines.size(), least);
      CheckBounds(most);
    }
  }
  const Lines& Path(const std::string& d, std::size_t most) { return Bounded("<path d='" + d + "'/>", most); }

  Lines lines;

 private:
  void CheckBounds(std::size_t most) {
    EXPECT_LE(lines.size(), most);
    for (const ImportCommand& command : commands) {
      if (command.key != KEY_PLYR) continue;
      const std::size_t sides = ViewSides(*static_cast<const POLYGON*>(command.data)).size();
      EXPECT_GE(sides, 2u);
      EXPECT_LE(sides, kMostSides);
    }
    EXPECT_EQ(run.graphics.frameIndex, 0);
    EXPECT_EQ(run.graphics.saveDepth, 0);
    EXPECT_TRUE(run.operands.empty());
  }
};

const char* const kNumbers[] = {"0",      "-0",    "-5",     "1e-320", "1e-300", "-1e-300", "1e300",
                                "-1e300", "1e308", "-1e308", "1e999",  "-1e999", "1e-999"};

template <class Use>
void ForAllPairs(Use use) {
  for (const char* a : kNumbers) {
    for (const char* b : kNumbers) use(std::string(a), std::string(b));
  }
}

// The replay and the polygon.
constexpr std::size_t kOneShape = 8;

}  // namespace

// --- Sizes and radii

TEST_F(HostileShapes, ARectOfNoSizeIsAPointOfFourSides) {
  EXPECT_EQ(Bounded("<rect x='10' y='20' width='0' height='0'/>", kOneShape),
            Replay() + Records("PLYR 1 : 1,8 1,8 1,8 1,8"));
}

TEST_F(HostileShapes, ARectOfNegativeWidthHalvesItsRadius) {
  // Twice the radius 0 is above the width -10, so that rx is -5. R is -10, R - rx is -5, x + rx is -5.
  EXPECT_EQ(Bounded("<rect width='-10' height='20'/>", kOneShape),
            Replay() + Records("PLYR 1 : -0.5,8 -1,10 -0.5,10 0,8"));
}

TEST_F(HostileShapes, ARectOfNegativeRadiusIsNotRound) {
  // Both 0: no; rx -3 moves the corners out: R - rx is 13, x + rx is -3, and B - ry is 22, y + ry is -2.
  EXPECT_EQ(Bounded("<rect width='10' height='20' rx='-3' ry='-2'/>", kOneShape),
            Replay() + Records("PLYR 1 : 1.3,8 1,10.2 -0.3,10 0,7.8"));
}

TEST_F(HostileShapes, ARadiusLargerThanTheRectIsHalved) {
  Bounded("<rect width='10' height='20' rx='1e308'/>", kOneShape);
  EXPECT_EQ(CountOf(lines, "PLYR 3"), 1u);
}

TEST_F(HostileShapes, RectsOfAnyNumbersAreOnePolygon) {
  std::vector<std::string> rects;
  ForAllPairs([&](const std::string& a, const std::string& b) {
    rects.push_back("<rect width='" + a + "' height='" + b + "' rx='" + b + "' ry='" + a + "'/>");
    rects.push_back("<rect width='10' height='" + b + "' x='" + a + "' y='" + b + "' rx='" + a + "'/>");
  });
  EachBounded(rects, kOneShape, kOneShape);
}

TEST_F(HostileShapes, CirclesOfNegativeRadiusHaveAllTheirSides) {
  EXPECT_EQ(
      ViewSides(*static_cast<const POLYGON*>((Bounded("<circle r='-5'/>", kOneShape), commands.at(7).data))).size(),
      37u);
}

TEST_F(HostileShapes, EllipsesAndCirclesOfAnyNumbersAreOnePolygon) {
  std::vector<std::string> rounds;
  ForAllPairs([&](const std::string& a, const std::string& b) {
    rounds.push_back("<ellipse cx='" + a + "' cy='" + b + "' rx='" + b + "' ry='" + a + "'/>");
    rounds.push_back("<circle cx='" + a + "' r='" + b + "'/>");
  });
  EachBounded(rounds, kOneShape, kOneShape);
}

TEST_F(HostileShapes, AnEllipseOfNoSizeIsStillAPolygon) {
  Bounded("<ellipse rx='0' ry='0'/><circle r='0'/>", 2 * kOneShape);
  EXPECT_EQ(CountOf(lines, "PLYR"), 2u);
}

// --- Arcs

TEST_F(HostileShapes, AnArcOfNoRadiusIsALine) {
  const Lines line = Records("PATH", "LINE 0,10 1,10", "ENDP", "FDEF flat 1");
  EXPECT_EQ(Path("M0 0A0 5 0 0 1 10 0", 4), line);
  EXPECT_EQ(Path("M0 0A5 0 0 0 1 10 0", 4), line);
  EXPECT_EQ(Path("M0 0A0 0 0 1 0 10 0", 4), line);
}

TEST_F(HostileShapes, AnArcOntoItsOwnStartIsNothing) {
  EXPECT_EQ(Path("M10 10A5 5 0 0 1 10 10", 4), Records("PATH", "ENDP", "FDEF flat 1"));
  EXPECT_EQ(Path("M10 10a5 5 0 1 1 0 0", 4), Records("PATH", "ENDP", "FDEF flat 1"));
  EXPECT_EQ(Path("M10 10a0 0 0 1 1 0 0", 4), Records("PATH", "ENDP", "FDEF flat 1"));
}

TEST_F(HostileShapes, AnArcOfNegativeRadiiIsItsPositiveTwin) {
  const Lines positive = Path("M0 0A5 6 7 0 1 8 9", 5);
  EXPECT_EQ(CountOf(positive, "PLYR"), 1u);
  EXPECT_EQ(Path("M0 0A-5-6 7 0 1 8 9", 5), positive);
}

TEST_F(HostileShapes, ArcsOfAnyNumbersAreAtMostOnePolygonOrLine) {
  std::vector<std::string> arcs;
  ForAllPairs([&](const std::string& a, const std::string& b) {
    for (const char* flags : {" 0 0 ", " 1 0 ", " 0 1 ", " 1 1 "}) {
      arcs.push_back("<path d='M1 1A" + a + " " + b + " " + a + flags + b + " " + a + "'/>");
      arcs.push_back("<path d='M1 1a5 5 " + b + flags + a + " " + b + "'/>");
      arcs.push_back("<path d='M" + a + " " + b + "A5 " + a + " 30" + flags + b + " 7'/>");
    }
  });
  // The path, the arc and its null record, a step back to the start where that is near, the path's end and its fill.
  EachBounded(arcs, 3, 6);
}

TEST_F(HostileShapes, ArcsUnderAMatrixThatCannotBeInvertedEnd) {
  for (const char* matrix : {"scale(0)", "matrix(0 0 0 0 0 0)", "scale(1 0)", "matrix(1 2 2 4 0 0)", "scale(1e-200)",
                             "scale(1e200)", "scale(1e308)", "translate(1e308) scale(1e308)"}) {
    Bounded("<path transform='" + std::string(matrix) + "' d='M0 0A5 5 0 0 1 10 10 5 5 0 1 0 20 0a0 0 0 0 0 3 3z'/>",
            8);
  }
}

TEST_F(HostileShapes, AThousandArcsAreAThousandRecords) {
  std::string d = "M0 0";
  for (int i = 0; i < 1000; ++i) d += "a5 5 0 0 1 10 0";
  Path(d, 1004);
  EXPECT_EQ(CountOf(lines, "PLYR"), 1000u);
}

// --- Curves

TEST_F(HostileShapes, AQuadraticOfAnyLengthHasABoundOfSamples) {
  static_assert(kMaxQuadraticSamples == 1'000'000);
  // The step of 10 units vanishes against the parameter from a length of about 1e17 on.
  for (const char* d : {"M1 1Q1e300 2 3 1e300", "M1 1Q1e999 2 3 4"}) {
    Load("<path d='" + std::string(d) + "'/>");
    ReleaseCommand(GetImportCommand());
    std::size_t records = 1;
    while (run.commands.count > 0) ReleaseCommand(PopCommand(run.commands)), ++records;
    EXPECT_LE(records, kMaxQuadraticSamples + std::size_t{6}) << d;
  }
}

TEST_F(HostileShapes, AQuadraticOfNoLengthIsOneLine) {
  EXPECT_EQ(Path("M10 10Q10 10 10 10", 4), Records("PATH", "LINE 1,9 1,9", "ENDP", "FDEF flat 1"));
}

TEST_F(HostileShapes, AQuadraticOfNumbersThatAreTooSmallIsOneLine) {
  // The second is the step back to the start, which is near.
  Path("M0 0Q1e-320 1e-320 1e-310 0", 5);
  EXPECT_EQ(CountOf(lines, "LINE"), 2u);
}

TEST_F(HostileShapes, CommandsOfAnyNumbersAreOneRecordEach) {
  std::vector<std::string> paths;
  ForAllPairs([&](const std::string& a, const std::string& b) {
    const std::string p = a + " " + b + " ";
    paths.push_back("<path d='M" + p + "l" + p + "h" + a + " V" + b + " c" + p + p + p + "s" + p + p + "t" + p + "T" +
                    p + "C" + p + "1 1 " + p + "z'/>");
    paths.push_back("<path d='m" + p + "m" + p + "L" + p + "H" + b + " v" + a + " S" + p + p + "Z" + p + p + "'/>");
  });
  EachBounded(paths, 3, 14);
}

// --- Coordinates and matrices

TEST_F(HostileShapes, PointsAtTheEndsOfTheNumbersStayPoints) {
  Bounded(
      "<polygon points='1e308,1e308 -1e308,-1e308 1e308,-1e308'/>"
      "<polyline points='1e308,1e308 -1e308,-1e308 1e308,-1e308'/><line x1='1e308' y2='-1e308' y1='1e999'/>",
      7 + 6 + 4);
  EXPECT_EQ(CountOf(lines, "LINE"), 3u + 2u + 1u);
}

TEST_F(HostileShapes, AMatrixOfZerosLeavesOnePoint) {
  // All points fall together, so that no line has a length.
  EXPECT_EQ(Bounded("<path transform='matrix(0 0 0 0 0 0)' d='M1 2L3 4 5 6z'/>", 4),
            Records("PATH", "ENDP", "FDEF flat 1"));
  EXPECT_EQ(Bounded("<rect transform='scale(0)' width='10' height='10'/>", kOneShape),
            Replay() + Records("PLYR 1 : 0,10 0,10 0,10 0,10"));
  Bounded("<g transform='scale(0)'><circle r='5'/><ellipse rx='1' ry='2'/><rect width='5' height='6' rx='1'/></g>", 26);
  EXPECT_EQ(CountOf(lines, "PLYR"), 3u);
}

TEST_F(HostileShapes, AMatrixOfZerosDoesNotShortenAQuadratic) {
  // Its samples are counted in user units: 40 long, four samples and the end.
  Bounded("<path transform='scale(0)' d='M1 1Q21 1 41 1'/>", 8);
  EXPECT_EQ(CountOf(lines, "LINE"), 4u);
}

TEST_F(HostileShapes, AnyMatrixLeavesTheNumberOfRecords) {
  for (const char* transform :
       {"scale(1e308) scale(1e308)", "translate(1e308) scale(-1e308)", "rotate(1e308)", "rotate(1e999)", "skewX(90)",
        "skewX(1e308)", "skewY(-90)", "matrix(1e999 -1e999 1e999 1e999 0 0)", "matrix(1e-320 0 0 1e-320 0 0)",
        "scale(1e999)"}) {
    Bounded(
        "<g transform='" + std::string(transform) +
            "'><path d='M1 2L3 4H5V6C1 2 3 4 5 6S1 2 3 4T5 6z'/><rect width='5' height='6' rx='1'/><circle r='3'/>"
            "<ellipse rx='3' ry='1'/><polygon points='1,2 3,4 5,6'/><polyline points='1,2 3,4 5,6'/><line x2='5'/></g>",
        2 + 11 + 3 * kOneShape + 7 + 6 + 4);
  }
}

TEST_F(HostileShapes, TransformsMultiplyUpWithoutEnd) {
  std::string open, close;
  for (int i = 0; i < 200; ++i) open += "<g transform='scale(1e9)'>", close += "</g>";
  Bounded(open + "<path d='M1 1A5 5 0 0 1 9 9L1 2C1 2 3 4 5 6z'/><circle r='1'/>" + close, 400 + 16);
  EXPECT_EQ(CountOf(lines, "EGRP"), 200u);
}

// --- Long texts

TEST_F(HostileShapes, NumbersOfManyDigitsAreNumbers) {
  const std::string many(100'000, '0');
  EXPECT_EQ(Fresh("<line x1='0" + many + "10' y1='0" + many + "20' x2='0." + many + "1' y2='10.0" + many + "'/>"),
            Records("PATH", "LINE 1,8 0,9", "ENDP", "FDEF flat 1"));
  Bounded("<line x1='1" + many + "'/>", 4);
}

TEST_F(HostileShapes, DataOfManyMegabytesIsReadOnce) {
  std::string d = "M0 0";
  for (int i = 0; i < 100'000; ++i) d += i % 2 ? " 0 0" : " 1 1";
  Load("<path d='" + d + "'/>");
  ReleaseCommand(GetImportCommand());
  std::size_t records = 1;
  while (run.commands.count > 0) ReleaseCommand(PopCommand(run.commands)), ++records;
  EXPECT_EQ(records, 100'000u + 4);  // KEY_PATH, the lines, KEY_ENDP, KEY_FDEF, KEY_ENDF
}

TEST_F(HostileShapes, SeparatorsWithoutNumbersAreNoWork) {
  Path(std::string(100'000, ' '), 4);
  Path("M" + std::string(100'000, ','), 4);
  Path("M0 0" + std::string(100'000, '-'), 4);
  Path("M0 0L" + std::string(100'000, '.'), 4);
  Bounded("<polygon points='" + std::string(100'000, ',') + "'/>", 4);
  Bounded("<polyline points='" + std::string(100'000, '-') + "'/>", 4);
}

TEST_F(HostileShapes, DataCutAtAnyCharacterEnds) {
  const std::string d = "M1,2 3-4L5 6h7v8C1 2 3 4 5 6s1 2 3 4q5 6 7 8t1 2a3,4 5 0 1 6 7 8 9 1 0 1 2 3z m1e-2 3";
  for (std::size_t length = 0; length <= d.size(); ++length) Path(d.substr(0, length), 20);
  for (std::size_t start = 0; start <= d.size(); ++start) Path(d.substr(start), 20);
}
