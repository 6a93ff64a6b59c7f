#include "tools/record_json.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

#include "headless_host/inspection.h"
#include "headless_host/text.h"
#include "tests/headless_host/host_fixture.h"
#include "tests/headless_host/sample_images.h"

using namespace host_tests;

namespace {

class RecordJsonTest : public HostTest {
 protected:
  std::string Line(std::uint32_t key, std::uint32_t size, void* data) {
    ImportCommand command = {key, size, {}};
    command.data = data;
    return std::string(json_.Line(command));
  }

  std::string ValueLine(std::uint32_t key, std::uint32_t size, std::int32_t value) {
    ImportCommand command = {key, size, {}};
    command.value = value;
    return std::string(json_.Line(command));
  }

  std::string Fill(const FillDefinition& fill) {
    FillDefinition copy = fill;
    return Line(KEY_FDEF, 1216, &copy);
  }

  static FillDefinition BlankFill() {
    FillDefinition fill;
    std::memset(&fill, 0, sizeof fill);
    fill.inverseMatrix = {1, 0, 0, 1, 0, 0};
    fill.forwardMatrix = {1, 2, 3, 4, 5, 6};
    return fill;
  }

 private:
  RecordJson json_;
};

constexpr char kBlankFillHead[] = "\"inverseMatrix\":[1,0,0,1,0,0],\"forwardMatrix\":[1,2,3,4,5,6],";

}  // namespace

TEST_F(RecordJsonTest, CommandsWithoutAPayloadHaveNoFurtherMember) {
  EXPECT_EQ(Line(KEY_NULL, 0, nullptr), R"({"key":0,"name":"KEY_NULL","size":0})");
  EXPECT_EQ(Line(KEY_PATH, 0, nullptr), R"({"key":28,"name":"KEY_PATH","size":0})");
  EXPECT_EQ(Line(KEY_ENDP, 0, nullptr), R"({"key":11,"name":"KEY_ENDP","size":0})");
  EXPECT_EQ(Line(KEY_ENDF, 0, nullptr), R"({"key":10,"name":"KEY_ENDF","size":0})");
}

TEST_F(RecordJsonTest, AValueIsPrintedUnsigned) {
  EXPECT_EQ(ValueLine(KEY_FILL, 0, -1), R"({"key":12,"name":"KEY_FILL","size":0,"value":4294967295})");
  EXPECT_EQ(ValueLine(KEY_CLIP, 4, 1), R"({"key":48,"name":"KEY_CLIP","size":4,"value":1})");
}

TEST_F(RecordJsonTest, EveryCommandOfTheFormValueIsNamed) {
  const std::pair<std::uint32_t, const char*> commands[] = {
      {5, "KEY_CNST"},   {8, "KEY_EGRP"},   {12, "KEY_FILL"}, {18, "KEY_LNST"}, {21, "KEY_MLIM"},
      {23, "KEY_WRUL"},  {24, "KEY_OUTL"},  {36, "KEY_SGRP"}, {48, "KEY_CLIP"}, {49, "KEY_DOCP"},
      {104, "KEY_THST"}, {135, "KEY_ECGR"}, {136, "KEY_SCGR"}};
  for (const auto& [key, name] : commands) {
    const std::string number = std::to_string(key);
    EXPECT_EQ(ValueLine(key, 0, 7), "{\"key\":" + number + ",\"name\":\"" + name + "\",\"size\":0,\"value\":7}");
  }
}

TEST_F(RecordJsonTest, AnUnknownKeyIsPrintedWithoutAPayload) {
  int something = 0;
  EXPECT_EQ(Line(9999, 4, &something), R"({"key":9999,"name":"KEY_UNKNOWN","size":4})");
}

TEST_F(RecordJsonTest, NumbersAreTheShortestThatReadBackAndSpecialOnesAreTexts) {
  const std::pair<double, const char*> numbers[] = {{0.1, "0.1"},
                                                    {-0.0, "-0"},
                                                    {1e-5, "1e-05"},
                                                    {0.035277777777777776, "0.035277777777777776"},
                                                    {1e300, "1e+300"},
                                                    {100.0, "100"},
                                                    {std::nan(""), "\"NaN\""},
                                                    {std::numeric_limits<double>::infinity(), "\"Infinity\""},
                                                    {-std::numeric_limits<double>::infinity(), "\"-Infinity\""}};
  for (auto [number, text] : numbers) {
    EXPECT_EQ(Line(KEY_WIDT, 8, &number),
              std::string("{\"key\":43,\"name\":\"KEY_WIDT\",\"size\":8,\"width\":") + text + "}");
  }
}

TEST_F(RecordJsonTest, TheSizeIsPrintedAsItStandsInTheRecord) {
  double width = 2.5;
  EXPECT_EQ(Line(KEY_WIDT, 0, &width), R"({"key":43,"name":"KEY_WIDT","size":0,"width":2.5})");
}

TEST_F(RecordJsonTest, LinesAndCurvesArePoints) {
  LineRecord line = {{}, 1, 2, 3, 4.5};
  EXPECT_EQ(Line(KEY_LINE, 48, &line), R"({"key":17,"name":"KEY_LINE","size":48,"points":[[1,2],[3,4.5]]})");
  BezierRecord curve = {{}, 1, 2, 3, 4, 5, 6, 7, 8, {}};
  EXPECT_EQ(Line(KEY_BEZI, 108, &curve),
            R"({"key":3,"name":"KEY_BEZI","size":108,"points":[[1,2],[3,4],[5,6],[7,8]]})");
}

TEST_F(RecordJsonTest, APolygonIsItsFlagsScaleAndSides) {
  POLYGON polygon;
  polygon.flags = 3;
  polygon.scaleX = 0.5;
  polygon.scaleY = 0.25;
  polygon.add_side();
  polygon.add_side();
  polygon.sides[1] = {1.5, -2, 3};
  EXPECT_EQ(Line(KEY_PLYR, 84, &polygon),
            R"({"key":29,"name":"KEY_PLYR","size":84,"flags":3,"scale":[0.5,0.25],"sides":[[0,0,0],[1.5,-2,3]]})");
}

TEST_F(RecordJsonTest, AFlatFillHasTheFiveFieldsOfEveryFill) {
  FillDefinition fill = BlankFill();
  fill.fillType = kFlatFill;
  fill.fillScale = 1.0;
  EXPECT_EQ(Fill(fill), std::string(R"({"key":47,"name":"KEY_FDEF","size":1216,"fill":{"fillClass":0,)") +
                            kBlankFillHead + R"("fillType":1,"fillScale":1}})");
}

TEST_F(RecordJsonTest, AGradientOfTwoColours) {
  FillDefinition fill = BlankFill();
  fill.fillClass = 4;
  fill.fillType = kLinearFill;
  fill.fillScale = -2.0;
  fill.gradient.gradientForm = 3;
  fill.gradient.gradientFlag = 1;
  fill.gradient.midPoint = 0.5;
  fill.gradient.angle = 45.0;
  const double a[3] = {1, 2, 3}, b[3] = {4, 5, 6};
  std::memcpy(fill.gradient.colourA, a, sizeof a);
  std::memcpy(fill.gradient.colourB, b, sizeof b);
  EXPECT_EQ(Fill(fill), std::string(R"({"key":47,"name":"KEY_FDEF","size":1216,"fill":{"fillClass":4,)") +
                            kBlankFillHead +
                            R"("fillType":15,"fillScale":-2,"gradientForm":3,"gradientFlag":1,"stopListFlag":0,)"
                            R"("midPoint":0.5,"angle":45,"colourA":[1,2,3],"colourB":[4,5,6]}})");
}

TEST_F(RecordJsonTest, AGradientWithAStopListPrintsAsManyStopsAsItCounts) {
  FillDefinition fill = BlankFill();
  fill.fillClass = 4;
  fill.fillType = kRadialFill;
  fill.fillScale = -2.0;
  fill.gradient.gradientForm = 1;
  fill.gradient.gradientFlag = 1;
  fill.gradient.stopListFlag = 1;
  fill.gradient.stopListOn = 1;
  fill.gradient.midPoint = 0.5;
  fill.gradient.stopCount = 2;
  fill.gradient.stopColours[0] = 0x00FF00;
  fill.gradient.stopColours[1] = 0xFF;
  fill.gradient.stopPositions[1] = -5;
  EXPECT_EQ(Fill(fill),
            std::string(R"({"key":47,"name":"KEY_FDEF","size":1216,"fill":{"fillClass":4,)") + kBlankFillHead +
                R"("fillType":5,"fillScale":-2,"gradientForm":1,"gradientFlag":1,"stopListFlag":1,)"
                R"("midPoint":0.5,"angle":0,"stopListStart":0,"stopListOn":1,"stops":[[65280,0],[255,-5]]}})");
}

TEST_F(RecordJsonTest, NoMoreStopsArePrintedThanTheListHasRoomFor) {
  FillDefinition fill = BlankFill();
  fill.fillType = kRadialFill;
  fill.gradient.gradientForm = 1;
  auto stops = [&](std::uint32_t count) {
    fill.gradient.stopCount = count;
    const std::string line = Fill(fill);
    std::size_t found = 0;
    for (std::size_t at = line.find("[0,0]"); at != line.npos; at = line.find("[0,0]", at + 1)) ++found;
    return found;
  };
  EXPECT_EQ(stops(100), 100u);
  EXPECT_EQ(stops(101), 101u);
  EXPECT_EQ(stops(102), 101u);
  EXPECT_EQ(stops(0xFFFFFFFF), 101u);
}

TEST_F(RecordJsonTest, APatternHasItsTile) {
  FillDefinition fill = BlankFill();
  fill.fillClass = 4;
  fill.fillType = kPatternFill;
  fill.fillScale = -1.0;
  fill.tileHeight = 2.5;
  const char16_t path[] = u"/d/\u00E9.png";
  std::memcpy(fill.pattern.tilePath, path, sizeof path);
  fill.pattern.tileColour = 0xFFFFFF;
  fill.pattern.tileColourOn = 1;
  fill.pattern.tileScaleX = 1.0;
  fill.pattern.tileScaleY = 1.0;
  for (const std::uint32_t key : {KEY_PFDF, KEY_PFOL}) {
    const std::string name = key == KEY_PFDF ? "KEY_PFDF" : "KEY_PFOL";
    EXPECT_EQ(Line(key, 1216, &fill), "{\"key\":" + std::to_string(key) + ",\"name\":\"" + name +
                                          "\",\"size\":1216,\"fill\":{\"fillClass\":4," + kBlankFillHead +
                                          R"("fillType":10,"fillScale":-1,"tilePath":"/d/é.png","tileColour":16777215,)"
                                          R"("tileColourOn":1,"tileScaleX":1,"tileScaleY":1,"tileHeight":2.5}})");
  }
}

TEST_F(RecordJsonTest, ATilePathThatFillsItsFieldEndsWithIt) {
  FillDefinition fill = BlankFill();
  fill.fillType = kPatternFill;
  const std::u16string path(kTilePathUnits, u'x');
  std::memcpy(fill.pattern.tilePath, path.data(), sizeof fill.pattern.tilePath);
  fill.pattern.tileColour = 7;
  EXPECT_NE(Fill(fill).find("\"tilePath\":\"" + std::string(128, 'x') + "\",\"tileColour\":7"), std::string::npos);
}

TEST_F(RecordJsonTest, ARecordAtAnOddAddressIsRead) {
  alignas(8) unsigned char bytes[sizeof(FillDefinition) + 1];
  FillDefinition fill = BlankFill();
  fill.fillType = kFlatFill;
  std::memcpy(bytes + 1, &fill, sizeof fill);
  EXPECT_EQ(Line(KEY_FDEF, 1216, bytes + 1), Fill(fill));
}

TEST_F(RecordJsonTest, AUniformTransparencyIsItsOpacity) {
  CQXUniformTransparency uniform;
  uniform.opacity = 127;
  EXPECT_EQ(Line(KEY_TSPY, 0, &uniform),
            R"({"key":155,"name":"KEY_TSPY","size":0,"transparency":{"type":1,"opacity":127}})");
}

TEST_F(RecordJsonTest, AShapeTransparencyIsItsGeometryAndMarkers) {
  CQXRadialTransparency radial;
  radial.ChangeWorldToFillTm({1, 2, 3, 4, 5, 6});
  radial.length = -2;
  radial.angle = -90;
  radial.AddOpacityMarker({0, 100});
  radial.AddOpacityMarker({99, 50});
  EXPECT_EQ(Line(KEY_TSPY, 0, &radial),
            R"({"key":155,"name":"KEY_TSPY","size":0,"transparency":{"type":4,"matrix":[1,2,3,4,5,6],"length":-2,)"
            R"("angle":-90,"markers":[[0,100],[99,50]]}})");
}

TEST_F(RecordJsonTest, AColourSaysWhatWasNeverSet) {
  CQXFullColor colour(0xFFFFFFFF, kRgbSpace, kNoCorrection, kMatt);
  EXPECT_EQ(Line(KEY_NFIL, 0, &colour),
            R"({"key":111,"name":"KEY_NFIL","size":0,"colour":{"id":4294967295,"space":1,"correction":0,)"
            R"("reflectivity":0,"components":[],"tint":null,"name":null}})");
}

TEST_F(RecordJsonTest, AColourWithEverythingSet) {
  CQXFullColor colour(5, kCmykSpace, kNoCorrection, kMatt);
  colour.SetColor(0.25, 0.5, 0.75, 1.0, kCmykSpace);
  colour.SetCorrectionMode(kNamedColourCorrection);
  colour.SetTint(50.0);
  colour.SetColorName(u"\"Gold\"");
  EXPECT_EQ(Line(KEY_NOTL, 0, &colour),
            R"({"key":110,"name":"KEY_NOTL","size":0,"colour":{"id":5,"space":3,"correction":5,"reflectivity":0,)"
            R"("components":[0.25,0.5,0.75,1],"tint":50,"name":"\"Gold\""}})");
}

TEST_F(RecordJsonTest, AnOverprint) {
  CQXOverPrint overPrint;
  overPrint.SetOverlayType(kOverlay, false);
  EXPECT_EQ(Line(KEY_LYOT, 0, &overPrint),
            R"({"key":123,"name":"KEY_LYOT","size":0,"overprint":{"type":1,"flag":false}})");
  EXPECT_EQ(Line(KEY_LIOT, 0, &overPrint),
            R"({"key":124,"name":"KEY_LIOT","size":0,"overprint":{"type":1,"flag":false}})");
}

TEST_F(RecordJsonTest, ASpotFillHasTwoColoursAndACartridgeWhereOneWasSet) {
  const std::unique_ptr<CQXLinearSpotFill> fill(new CQXLinearSpotFill);
  CQXColor base(1, kCmykSpace, kNamedColourCorrection, kMatt);
  base.SetCartridge(0);
  base.SetTint(100.0);
  fill->ChangeFillAngle(90);
  fill->ChangeXOffset(1);
  fill->ChangeYOffset(2);
  fill->ChangeWorldToFillTm({1, 2, 3, 4, 5, 6});
  fill->ChangeFromColor(base);
  fill->ChangeToColor(CQXColor(0xFFFFFFFF, kRgbSpace, kNoCorrection, kMatt));
  fill->ChangeDuotone(0);
  fill->ChangeFillLengthRatio(-3);
  fill->AddFromColorMarker({10, 70});
  EXPECT_EQ(Line(KEY_SPFL, 0, fill.get()),
            R"({"key":114,"name":"KEY_SPFL","size":0,"spotFill":{"angle":90,"xOffset":1,"yOffset":2,)"
            R"("matrix":[1,2,3,4,5,6],"from":{"id":1,"space":3,"correction":5,"reflectivity":0,"components":[],)"
            R"("tint":100,"name":null,"cartridge":0},"to":{"id":4294967295,"space":1,"correction":0,"reflectivity":0,)"
            R"("components":[],"tint":null,"name":null},"duotone":0,"lengthRatio":-3,"markers":[[10,70]]}})");
}

TEST_F(RecordJsonTest, ABitmapIsItsPathAndPlacement) {
  CQXBitmap* bitmap = NewQXBitmap();
  EXPECT_FALSE(bitmap->Create(u"/missing/a.png", 0, 0, 0, nullptr, nullptr, false));
  const double width = 1, height = 2, x = 3;
  bitmap->SetPlacedWidth(&width);
  bitmap->SetPlacedHeight(&height);
  bitmap->SetPlacedX(&x);
  bitmap->placement = {1, 2, 3, 4, 5, 6};
  GenericRecord record = {{}, bitmap};
  EXPECT_EQ(Line(KEY_GNRC, 24, &record),
            R"({"key":97,"name":"KEY_GNRC","size":24,"bitmap":{"path":"/missing/a.png","placedWidth":1,)"
            R"("placedHeight":2,"placedX":3,"placement":[1,2,3,4,5,6]}})");
  DeleteQXBitmap(bitmap);
}

TEST_F(RecordJsonTest, AParagraphIsWhatTheComposerWasGiven) {
  ParagraphHandle handle;
  const ParagraphPosition position = {10, 20};
  SetOpenParagraphInfo(&handle, 0);
  OpenParagraph(4, &handle, &position, 0);
  ParagraphStatus* status = handle.status;
  ParagraphRecord record = {{}, handle.tag, handle.paragraph};
  status->character->height = 12;
  status->character->charScale = 1000;
  status->textLine->originX = 1;
  status->textLine->originY = 2;
  status->textLine->compression = 3;
  status->textLine->lineFlags = 4;
  status->textLine->lineMode = 256;
  status->lines->listMeasure = 1300;
  status->statusLimit = 1300;
  edPasteString(u"a\n", 2, 2, nullptr, false);
  status->character->font = AddFont(0, 2, u"Serif", 0, 0);
  status->character->fontCode = 9;
  status->character->replacedFontId = 0xFFFFFFFF;
  edPasteString(u"\U0001F600\xD800", 3, 2, nullptr, false);
  const std::string head = R"({"key":27,"name":"KEY_PARA","size":28,"paragraph":{"tag":1,"position":[10,20],)";
  const std::string rest =
      R"("origin":[1,2],"height":12,"charScale":1000,"fontCode":9,"replacedFontId":4294967295,"compression":3,)"
      R"("lineFlags":4,"lineMode":256,"listMeasure":1300,"statusLimit":1300,"paragraphOption":0,)"
      R"("placement":[1,0,0,1,0,0],"runs":[{"text":"a\n","font":null,"height":12},)"
      "{\"text\":\"\xF0\x9F\x98\x80\xEF\xBF\xBD\",\"font\":\"Serif\",\"height\":12}]}}";
  EXPECT_EQ(Line(KEY_PARA, 28, &record), head + R"("justification":null,)" + rest);
  SetTextLineJustification(status->paragraphInfo, status->lines, 1);
  EXPECT_EQ(Line(KEY_PARA, 28, &record), head + R"("justification":1,)" + rest);
}

TEST_F(RecordJsonTest, APayloadThatIsNotThereIsNull) {
  EXPECT_EQ(Line(KEY_WIDT, 8, nullptr), R"({"key":43,"name":"KEY_WIDT","size":8,"width":null})");
  EXPECT_EQ(Line(KEY_NFIL, 0, nullptr), R"({"key":111,"name":"KEY_NFIL","size":0,"colour":null})");
  EXPECT_EQ(Line(KEY_LINE, 48, nullptr), R"({"key":17,"name":"KEY_LINE","size":48})");
  GenericRecord record = {{}, nullptr};
  EXPECT_EQ(Line(KEY_GNRC, 24, &record), R"({"key":97,"name":"KEY_GNRC","size":24,"bitmap":null})");
}

TEST_F(RecordJsonTest, AGeneratedNameIsShownAsTheHostShowsIt) {
  HideGeneratedNames(true);
  SetHostBaseDir(u"/base");
  FillDefinition fill = BlankFill();
  fill.fillType = kPatternFill;
  const char16_t path[] = u"/base/DEMOa1B2c3.png";
  std::memcpy(fill.pattern.tilePath, path, sizeof path);
  EXPECT_NE(Fill(fill).find("\"tilePath\":\"/base/DEMOXXXXXX.png\""), std::string::npos);
}
