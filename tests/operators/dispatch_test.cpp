// How an operator token finds its operator. Each operator leaves a trace of its own, made of the records it queues, the
// operands it leaves and the state it changes; a spelling is right when its trace is that of the operator's plain
// spelling, of a token that clears the operand stack, or of one that is ignored.
#include <map>
#include <set>

#include "operators/operator_machine.h"
#include "platform/narrow_text.h"
#include "tests/support/filter_test.h"
#include "tests/support/machine_state.h"

namespace {

constexpr const char* kClear = "clear";
constexpr const char* kIgnore = "ignore";

// The plain spelling of every operator. All their traces differ.
constexpr const char* kOperators[] = {
    "*u",  "*U",      "@",  "@c", "@k",    "@w", "@x", "@g", "@rax", "@rs",   "@sv",  "@sax",  "A",   "a",
    "B",   "Bg",      "BB", "Bm", "b",     "C",  "c",  "ci", "d",    "E",     "f",    "G",     "g",   "gs",
    "gr",  "get_csd", "H",  "h",  "image", "i",  "J",  "j",  "K",    "k",     "L",    "l",     "M",   "m",
    "N",   "n",       "O",  "P",  "Pq",    "pf", "Q",  "q",  "R",    "RG",    "rect", "S",     "Sc",  "sc",
    "Tp",  "tp",      "tr", "U",  "u",     "V",  "v",  "W",  "w",    "wclip", "wCp",  "wDocm", "wFt", "wPn",
    "wSg", "wSr",     "X",  "XX", "XXX",   "Xa", "Xh", "Xm", "Xx",   "x",     "Y",    "Z2",
};

class Dispatch : public FilterTest {
 protected:
  // What a token does in four settings, which between them tell all operators apart: an open path outside any frame; a
  // frame within a compound path, with eight tokens in the text; no operands; operands that are no numbers.
  std::string Trace(const std::u16string& token) {
    std::string trace;
    for (int setting = 0; setting < 4; ++setting) {
      ResetImportRun();
      StartMachine();
      Prepare(setting);
      const std::size_t messages = ShownMessages().size();
      const std::size_t dialogs = AskedFiles().size();
      const std::u16string numbers = setting == 0   ? u"0.5 0.6 0.9 0.8 0.7 1 1 0.2 0.3 "
                                     : setting == 1 ? u"0.9 0.8 0.7 1 1 0.2 0.3 "
                                                    : u"";
      FeedOperatorText(numbers + token, kExecute);
      for (const std::string& line : Drain()) trace += line + '\n';
      for (const std::string& line : Operands()) trace += line + '\n';
      trace += MachineState() + " messages " + std::to_string(ShownMessages().size() - messages) + " dialogs " +
               std::to_string(AskedFiles().size() - dialogs) + "\n\n";
    }
    return trace;
  }
  std::string Trace(std::string_view token) { return Trace(WideFromNarrow(token)); }

  struct Row {
    const char* token;
    const char* same;  // the operator's plain spelling, kClear or kIgnore
  };
  void ExpectMatches(std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
      SCOPED_TRACE(std::string(row.token) + " as " + row.same);
      EXPECT_EQ(Trace(row.token), TraceOf(row.same));
    }
  }

  // The trace of a plain spelling, or of one of the two outcomes, each from a token that no rule could take for more.
  const std::string& TraceOf(const std::string& same) {
    auto [entry, isNew] = traces_.try_emplace(same);
    if (isNew) entry->second = same == kClear ? Trace("D") : same == kIgnore ? Trace("T") : Trace(same);
    return entry->second;
  }

 private:
  void Prepare(int setting) {
    run.BaseDirectory = u"/nowhere/";
    run.namedGradients.push_back({u"", 1, 0, {}, {}});
    run.graphics.defaultMatrix = {2, 0, 0, 2, 3, 4};
    CurrentFrame().currentMatrix = {1, 0, 0, 1, 5, 6};
    Feed("0 0 M");
    if (setting == 1) {
      Feed(" *u gs f");
      CurrentFrame().fill.colour = 0x123456;
      run.clip.clipOpen = 1;
      run.clip.groupDepth = 1;
      run.path.deviceStart = {5.02, 6};  // near enough for Z2
    }
    if (setting == 3) {
      run.paint.GradientFillPending = 1;
      run.path.deviceStart = {5.02, 6};
      FeedPushOnly("[1 2 3 4 5 6] 8 9 (name) /7");
    } else if (setting != 2) {
      FeedPushOnly("0.5 0.6 0.45 0.35 0.25 0.15 0.05");
    }
    if (setting == 0) run.path.deviceCurrent = run.path.userCurrent = {3, 4};
    run.path.lastControl = {1, 2};
    Drain();
  }

  std::map<std::string, std::string> traces_;
};

TEST_F(Dispatch, EveryOperatorLeavesATraceOfItsOwn) {
  std::map<std::string, std::string> seen = {{TraceOf(kClear), kClear}};
  ASSERT_TRUE(seen.emplace(TraceOf(kIgnore), kIgnore).second);
  for (const char* token : kOperators) {
    const auto [entry, isNew] = seen.emplace(Trace(token), token);
    EXPECT_TRUE(isNew) << token << " is like " << entry->second;
  }
}

// An unknown token destroys the whole stack, or touches nothing at all.
TEST_F(Dispatch, UnknownTokenClearsTheStackOrLeavesItAlone) {
  EXPECT_EQ(Run("0 0 M 1 (two) [3] /four five"), Lines({"PATH"}));
  EXPECT_EQ(Operands(), Lines());
  EXPECT_EQ(Run("1 (two) [3] /four T"), Lines());
  EXPECT_EQ(Operands(), Lines({"LiteralName four", "Array 3", "String two", "Number 1"}));
}

TEST_F(Dispatch, TheTextGoesOnBehindAnUnknownToken) {
  EXPECT_EQ(Run("1 2 D 3 4 M 5 rects 6 L"), Lines({"PATH", "LINE 3,96 5,94"}));
  EXPECT_EQ(Operands(), Lines());
}

// --- One test for each first unit

TEST_F(Dispatch, Star) {
  ExpectMatches(
      {{"*u", "*u"}, {"*U", "*U"}, {"*", kClear}, {"**", kClear}, {"*uu", kClear}, {"*Ux", kClear}, {"*s", kClear}});
}

TEST_F(Dispatch, At) {
  ExpectMatches({
      {"@", "@"},       {"@B", "B"},       {"@b", "b"},      {"@c", "@c"},     {"@k", "@k"},     {"@w", "@w"},
      {"@x", "@x"},     {"@g", "@g"},      {"@gx", "@g"},    {"@grx", "@g"},   {"@rax", "@rax"}, {"@raxy", "@rax"},
      {"@rs", "@rs"},   {"@sv", "@sv"},    {"@sax", "@sax"}, {"@BB", kIgnore}, {"@Bx", kIgnore}, {"@bb", kClear},
      {"@cc", kClear},  {"@kk", kClear},   {"@k1", kClear},  {"@ww", kClear},  {"@xx", kClear},  {"@rsx", kClear},
      {"@svx", kClear}, {"@saxx", kClear}, {"@ra", kClear},  {"@r", kClear},   {"@s", kClear},   {"@sa", kClear},
      {"@C", kClear},   {"@G", kClear},    {"@K", kClear},   {"@RAX", kClear}, {"@@", kClear},   {"@u", kClear},
      {"@Sax", kClear},
  });
}

TEST_F(Dispatch, LettersWithAFreeSuffix) {
  for (const char* letter : {"A", "a", "C", "E", "H", "h", "L", "l", "M", "m", "Q", "q", "V", "v"}) {
    for (const char* suffix : {"x", "2", "foo", "*", "i", "p", "{", "\xFF"}) {
      SCOPED_TRACE(std::string(letter) + suffix);
      EXPECT_EQ(Trace(std::string(letter) + suffix), TraceOf(letter));
    }
  }
  ExpectMatches({{"Qx", "Q"}, {"Mfoo", "M"}, {"E", "E"}, {"Ellipse", "E"}});
}

TEST_F(Dispatch, CapitalB) {
  ExpectMatches({
      {"B", "B"},
      {"Bg", "Bg"},
      {"Bgx", "Bg"},
      {"BB", "BB"},
      {"BBB", "BB"},
      {"Bm", "Bm"},
      {"Bmx", "Bm"},
      {"Bx", kIgnore},
      {"BG", kIgnore},
      {"BM", kIgnore},
      {"Bb", kIgnore},
      {"B*", kIgnore},
  });
}

TEST_F(Dispatch, SmallB) {
  ExpectMatches({{"b", "b"}, {"bx", kIgnore}, {"bb", kIgnore}, {"bg", kIgnore}, {"b*", kIgnore}});
}

TEST_F(Dispatch, SmallC) {
  ExpectMatches({
      {"c", "c"},
      {"cx", "c"},
      {"cc", "c"},
      {"cI", "c"},
      {"c1", "c"},
      {"ci", "ci"},
      {"cir", "ci"},
      {"cix", "ci"},
      {"circle", "ci"},
      {"circles", "ci"},
  });
}

TEST_F(Dispatch, LettersThatStandAlone) {
  for (const char* letter : {"d", "G", "J", "j", "K", "k", "N", "O", "U", "u", "x"}) {
    SCOPED_TRACE(letter);
    EXPECT_EQ(Trace(letter), TraceOf(letter));
    for (const char* suffix : {"x", "q", "2", "*", "y"}) {
      SCOPED_TRACE(suffix);
      EXPECT_EQ(Trace(std::string(letter) + suffix), TraceOf(kClear));
    }
  }
  ExpectMatches(
      {{"xy", kClear}, {"Gq", kClear}, {"newpathN", "n"}, {"Newpath", kClear}, {"dd", kClear}, {"UU", kClear}});
}

TEST_F(Dispatch, BothY) { ExpectMatches({{"Y", "Y"}, {"y", "Y"}, {"Yy", kClear}, {"yx", kClear}, {"YY", kClear}}); }

TEST_F(Dispatch, CapitalF) {
  ExpectMatches({{"F", "f"},
                 {"Fillp", "f"},
                 {"Fill", kClear},
                 {"Fillpp", kClear},
                 {"Filly", kClear},
                 {"FF", kClear},
                 {"Fi", kClear},
                 {"FILLP", kClear}});
}

TEST_F(Dispatch, SmallF) {
  ExpectMatches({{"f", "f"},
                 {"fill", "f"},
                 {"fillet", "f"},
                 {"fillp", "f"},
                 {"fil", kClear},
                 {"fi", kClear},
                 {"ff", kClear},
                 {"filL", kClear},
                 {"f*", kClear}});
}

TEST_F(Dispatch, SmallG) {
  ExpectMatches({
      {"g", "g"},
      {"gs", "gs"},
      {"gsave", "gs"},
      {"gr", "gr"},
      {"grestore", "gr"},
      {"gray", "gr"},
      {"get_csd", "get_csd"},
      {"get_csdx", "get_csd"},
      {"get_cs", kClear},
      {"get", kClear},
      {"ge", kClear},
      {"gg", kClear},
      {"gS", kClear},
      {"get_cSd", kClear},
      {"gq", kClear},
  });
}

TEST_F(Dispatch, SmallI) {
  ExpectMatches({{"i", "i"},
                 {"image", "image"},
                 {"images", "image"},
                 {"imagex", "image"},
                 {"imag", kClear},
                 {"im", kClear},
                 {"ii", kClear},
                 {"iMage", kClear},
                 {"imagE", kClear}});
}

TEST_F(Dispatch, SmallN) {
  ExpectMatches({{"n", "n"},
                 {"newpath", "n"},
                 {"newpaths", "n"},
                 {"newpat", kIgnore},
                 {"new", kIgnore},
                 {"nn", kIgnore},
                 {"nx", kIgnore},
                 {"newPath", kIgnore}});
}

TEST_F(Dispatch, CapitalP) {
  ExpectMatches({{"P", "P"},
                 {"Pa", "B"},
                 {"Pax", "B"},
                 {"Path", "B"},
                 {"Pq", "Pq"},
                 {"PP", "Pq"},
                 {"Pnx", "Pq"},
                 {"PA", "Pq"},
                 {"P*", "Pq"}});
}

TEST_F(Dispatch, SmallP) {
  ExpectMatches(
      {{"pf", "pf"}, {"pfimg", "pf"}, {"pfx", "pf"}, {"p", kClear}, {"pF", kClear}, {"path", kClear}, {"pp", kClear}});
}

TEST_F(Dispatch, CapitalR) {
  ExpectMatches(
      {{"R", "R"}, {"RG", "RG"}, {"RGB", "RG"}, {"RGx", "RG"}, {"Rg", kClear}, {"RR", kClear}, {"Rect", kClear}});
}

TEST_F(Dispatch, SmallR) {
  ExpectMatches({{"rect", "rect"},
                 {"rec", kIgnore},
                 {"rects", kIgnore},
                 {"r", kIgnore},
                 {"rr", kIgnore},
                 {"rG", kIgnore},
                 {"rEct", kIgnore}});
}

TEST_F(Dispatch, BothS) {
  ExpectMatches({{"S", "S"},
                 {"s", "@"},
                 {"Sc", "Sc"},
                 {"S1", "Sc"},
                 {"SS", "Sc"},
                 {"Sav", "Sc"},
                 {"sc", "sc"},
                 {"s1", "sc"},
                 {"ss", "sc"},
                 {"stroke", "sc"}});
}

TEST_F(Dispatch, CapitalT) {
  ExpectMatches({{"Tp", "Tp"}, {"Tpx", "Tp"}, {"T", kIgnore}, {"Tq", kIgnore}, {"TP", kIgnore}, {"Tr", kIgnore}});
}

TEST_F(Dispatch, SmallT) {
  ExpectMatches({{"tp", "tp"},
                 {"tpx", "tp"},
                 {"tr", "tr"},
                 {"translate", "tr"},
                 {"t", kClear},
                 {"tq", kClear},
                 {"tP", kClear},
                 {"tR", kClear}});
}

TEST_F(Dispatch, CapitalW) {
  ExpectMatches({{"W", "W"}, {"W*", "W"}, {"W*x", "W"}, {"W1", kIgnore}, {"WW", kIgnore}, {"Wn", kIgnore}});
}

TEST_F(Dispatch, SmallW) {
  ExpectMatches({
      {"w", "w"},        {"wCM", "k"},       {"wCMx", "k"},      {"wCp", "wCp"},     {"wCpx", "wCp"},  {"wCto", "C"},
      {"wCtox", "C"},    {"wDocm", "wDocm"}, {"wE", "E"},        {"wFt", "wFt"},     {"wFtx", "wFt"},  {"wLt", "L"},
      {"wLtx", "L"},     {"wMt", "M"},       {"wMtx", "M"},      {"wPn", "wPn"},     {"wPnx", "wPn"},  {"wRe", "@rs"},
      {"wRex", "@rs"},   {"wSg", "wSg"},     {"wSgx", "wSg"},    {"wSr", "wSr"},     {"wSrx", "wSr"},  {"wTl", "tr"},
      {"wTlx", "tr"},    {"wSav", "@sv"},    {"wclip", "wclip"}, {"wDocmx", kClear}, {"wDoc", kClear}, {"wEx", kClear},
      {"wSavx", kClear}, {"wSa", kClear},    {"wclipx", kClear}, {"wcli", kClear},   {"wc", kClear},   {"wC", kClear},
      {"wCt", kClear},   {"wCmp", kClear},   {"wF", kClear},     {"wL", kClear},     {"wM", kClear},   {"wP", kClear},
      {"wR", kClear},    {"wS", kClear},     {"wT", kClear},     {"wA", kClear},     {"wB", kClear},   {"wZ", kClear},
      {"wa", kClear},    {"wd", kClear},     {"ww", kClear},     {"w1", kClear},     {"wcm", kClear},  {"wCP", kClear},
      {"wMT", kClear},   {"wft", kClear},
  });
}

TEST_F(Dispatch, CapitalX) {
  ExpectMatches({
      {"X", "X"},     {"XX", "XX"},   {"XXX", "XXX"}, {"XXXX", "XXX"}, {"XXXa", "XXX"}, {"Xa", "Xa"},
      {"Xab", "Xa"},  {"XA", "RG"},   {"XAB", "RG"},  {"Xm", "Xm"},    {"Xmx", "Xm"},   {"Xh", "Xh"},
      {"Xhx", "Xh"},  {"Xx", "Xx"},   {"Xxx", "Xx"},  {"XxX", "Xx"},   {"XXx", kClear}, {"XXa", kClear},
      {"Xb", kClear}, {"XM", kClear}, {"XH", kClear}, {"X1", kClear},
  });
}

TEST_F(Dispatch, BothZ) {
  ExpectMatches({{"Z", "wCp"},
                 {"z", "wCp"},
                 {"zz", "wCp"},
                 {"ZZ", "wCp"},
                 {"Z1", "wCp"},
                 {"Zx2", "wCp"},
                 {"Z2", "Z2"},
                 {"z2", "Z2"},
                 {"Z2x", "Z2"},
                 {"z22", "Z2"}});
}

TEST_F(Dispatch, UnassignedFirstUnitsClear) {
  for (const char* letter : {",", ":", ";", "=", ">", "?", "D", "I", "\\", "^", "_", "`", "e", "o"}) {
    for (const char* suffix : {"", "x", "X"}) {
      SCOPED_TRACE(std::string(letter) + suffix);
      EXPECT_EQ(Trace(std::string(letter) + suffix), TraceOf(kClear));
    }
  }
}

TEST_F(Dispatch, FirstUnitsOutsideTheRangeClear) {
  for (const char16_t* token :
       {u"!", u"\"", u"#", u"$", u"%", u"%x", u"&", u"'", u")", u")M", u"|", u"~", u"\u007F", u"\u00C0", u"\uFFFF"}) {
    SCOPED_TRACE(Utf8FromWide(token));
    EXPECT_EQ(Trace(std::u16string(token)), TraceOf(kClear));
  }
}

// Units are compared as a whole: the low byte of these is a letter of an operator.
TEST_F(Dispatch, WideUnitsAreNoLetters) {
  for (const char16_t* token :
       {u"\u014D", u"\u4E4D", u"\uFF2D", u"B\u0167", u"ci\u4E00rcle", u"rec\u0174", u"\u0162"}) {
    SCOPED_TRACE(Utf8FromWide(token));
    const char* same = token[0] == u'B' || token[0] == u'r' ? kIgnore : token[0] == u'c' ? "ci" : kClear;
    EXPECT_EQ(Trace(std::u16string(token)), TraceOf(same));
  }
}

// Whatever the scanner would make of it: given to the dispatch, each single unit that is no operator clears, but for
// those that are ignored.
TEST_F(Dispatch, EverySingleUnitIsAnOperatorOrClearsOrIsIgnored) {
  const std::set<char16_t> operators = {u'@', u'A', u'a', u'B', u'b', u'C', u'c', u'd', u'E', u'F', u'f', u'G',
                                        u'g', u'H', u'h', u'i', u'J', u'j', u'K', u'k', u'L', u'l', u'M', u'm',
                                        u'N', u'n', u'O', u'P', u'Q', u'q', u'R', u'S', u's', u'U', u'u', u'V',
                                        u'v', u'W', u'w', u'X', u'x', u'Y', u'y', u'Z', u'z'};
  const std::set<char16_t> ignored = {u'T', u'r'};
  StartMachine();
  for (unsigned unit = 1; unit <= 0xFFFF; ++unit) {
    const char16_t token[] = {static_cast<char16_t>(unit)};
    if (operators.contains(token[0])) continue;
    FeedPushOnly("1 2");
    ExecuteOperator({{token, 1}, 3});
    ASSERT_EQ(run.operands.size(), ignored.contains(token[0]) ? 2u : 0u) << unit;
    ClearOperands();
  }
  EXPECT_EQ(Drain(), Lines());
}

// --- What depends on the count of tokens

TEST_F(Dispatch, DocumentMatrixIsRestoredOnlyByATextOfItsOwn) {
  StartMachine();
  const auto restored = [](double e) { return CurrentFrame().currentMatrix.e == e; };
  run.graphics.defaultMatrix.e = 7.0;
  FeedPushOnly("1 2");
  Feed("wDocm");
  EXPECT_TRUE(restored(7.0));
  EXPECT_EQ(run.operands.size(), 2u);

  run.graphics.defaultMatrix.e = 8.0;
  Feed("3 wDocm");
  EXPECT_TRUE(restored(7.0));
  EXPECT_EQ(run.operands.size(), 0u);
  // The first operator counts for the second.
  FeedPushOnly("1 2");
  Feed("u wDocm");
  EXPECT_TRUE(restored(7.0));
  EXPECT_EQ(run.operands.size(), 0u);
  Drain();
}

TEST_F(Dispatch, PWithASuffixDropsWhatItsTextPushed) {
  FeedPushOnly("1 2 3");
  Feed("4 5 6 Pn");
  EXPECT_EQ(Operands(), Lines({"Number 3", "Number 2", "Number 1"}));
  Feed(" Pn");
  EXPECT_EQ(run.operands.size(), 3u);
  // More than there are: the tokens T, T, T and T push nothing and count.
  Feed("T T T T Pn");
  EXPECT_EQ(run.operands.size(), 0u);
}

TEST_F(Dispatch, PDropsUpToEleven) {
  Feed("1 2 3 4 5 6 7 8 9 10 11 12 13 P");
  EXPECT_EQ(Operands(), Lines({"Number 2", "Number 1"}));
  Feed(" P");
  EXPECT_EQ(Operands(), Lines());
  Feed(" P");
  EXPECT_EQ(Operands(), Lines());
}

}  // namespace
