#include "document/load.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "document/node_access.h"
#include "filter_limits.h"
#include "platform/narrow_text.h"
#include "tests/support/fake_document.h"
#include "tests/support/filter_test.h"

using namespace std::string_view_literals;

namespace {

std::string Blanked(std::string_view text) {
  std::string blanked(text);
  BlankDoctype(blanked.data(), blanked.size());
  return blanked;
}

bool InMillimetres(std::string_view text) {
  // In a block of its own size, so that a look past its end shows.
  const std::unique_ptr<char[]> block(new char[text.size()]);
  text.copy(block.get(), text.size());
  return IsInMillimetres(block.get(), text.size());
}

class FileRead : public FilterTest {
 protected:
  FileRead() : path_(folder + "drawing.svg"), wide_(WideFromUtf8(path_)) {}

  void Write(std::string_view text) { std::ofstream(path_, std::ios::binary) << text; }
  bool ReadFirst() { return ReadWholeFile(wide_.c_str()); }
  bool ReadAgain() { return ReadForLoading(wide_.c_str()); }
  // The buffer with its terminator.
  static std::string_view Buffer() { return {run.file.FileBuffer.get(), run.file.FileBufferSize}; }

  std::string path_;
  std::u16string wide_;
};

}  // namespace

// --- The first read

TEST_F(FileRead, KeepsTheTextWithANulBehindIt) {
  Write("<svg/>");
  ASSERT_TRUE(ReadFirst());
  EXPECT_EQ(Buffer(), "<svg/>\0"sv);
}

TEST_F(FileRead, KeepsTheTextAtFirstOnlyUpToANul) {
  Write("<svg/>\0abc"sv);
  ASSERT_TRUE(ReadFirst());
  EXPECT_EQ(Buffer(), "<svg/>\0"sv);
}

TEST_F(FileRead, FailsWithoutAPathAFileOrAByteAndKeepsWhatWasThere) {
  Write("old");
  ASSERT_TRUE(ReadFirst());
  EXPECT_FALSE(ReadWholeFile(nullptr));
  Write("");
  EXPECT_FALSE(ReadFirst());
  std::filesystem::remove(path_);
  EXPECT_FALSE(ReadFirst());
  std::filesystem::create_directory(path_);
  EXPECT_FALSE(ReadFirst());
  EXPECT_EQ(Buffer(), "old\0"sv);
}

// --- The second read

TEST_F(FileRead, HasTheWholeFileTheSecondTime) {
  Write("<svg/>\0abc"sv);
  ASSERT_TRUE(ReadFirst());
  ASSERT_TRUE(ReadAgain());
  EXPECT_EQ(Buffer(), "<svg/>\0abc\0"sv);
}

TEST_F(FileRead, BlanksAndSniffsTheSecondTime) {
  constexpr std::string_view kText = "<!DOCTYPE svg>\n<svg width='1mm'/>";
  Write(kText);
  ASSERT_TRUE(ReadFirst());
  EXPECT_EQ(Buffer().substr(0, kText.size()), kText);
  EXPECT_NE(run.UnitScale, 0.1);
  ASSERT_TRUE(ReadAgain());
  EXPECT_EQ(Buffer(), "             \n\n<svg width='1mm'/>\0"sv);
  EXPECT_EQ(run.UnitScale, 0.1);
}

TEST_F(FileRead, AFileThatIsGoneTheSecondTimeStaysAsItWasFirstRead) {
  constexpr std::string_view kText = "<!DOCTYPE svg><svg width='1mm'/>\0"sv;
  Write(kText.substr(0, kText.size() - 1));
  ASSERT_TRUE(ReadFirst());
  const double scale = run.UnitScale;
  std::filesystem::remove(path_);
  EXPECT_TRUE(ReadAgain());
  EXPECT_EQ(Buffer(), kText);
  EXPECT_EQ(run.UnitScale, scale);
}

TEST_F(FileRead, AFileThatIsEmptyTheSecondTimeFails) {
  Write("<svg/>");
  ASSERT_TRUE(ReadFirst());
  Write("");
  EXPECT_FALSE(ReadAgain());
}

TEST_F(FileRead, AFileThatHasChangedCountsAsItIsTheSecondTime) {
  Write("<svg/>");
  ASSERT_TRUE(ReadFirst());
  Write("<svg><g/></svg>");
  ASSERT_TRUE(ReadAgain());
  EXPECT_EQ(Buffer(), "<svg><g/></svg>\0"sv);
}

// --- Blanking the DOCTYPE

TEST(Doctype, IsBlankedUpToItsFirstBracketWhichBecomesALineFeed) {
  EXPECT_EQ(Blanked("<a><!DOCTYPE svg PUBLIC 'p' 's'><b>"), "<a>" + std::string(28, ' ') + "\n<b>");
}

TEST(Doctype, InternalSubsetStaysFromItsFirstBracketOn) {
  EXPECT_EQ(Blanked("<!DOCTYPE svg [<!ENTITY a 'b'>]><svg/>"), std::string(29, ' ') + "\n]><svg/>");
}

TEST(Doctype, IsFoundOnlyInUpperCase) {
  for (const char* text : {"<!doctype svg>", "<!Doctype svg>", "<! DOCTYPE svg>", "<DOCTYPE>"}) {
    EXPECT_EQ(Blanked(text), text);
  }
}

TEST(Doctype, IsFoundOnceAndAnywhere) {
  EXPECT_EQ(Blanked("<!DOCTYPE a><!DOCTYPE b>"), std::string(11, ' ') + "\n<!DOCTYPE b>");
  EXPECT_EQ(Blanked("<!-- <x !DOCTYPE --> c>"), "<!-- " + std::string(14, ' ') + "\n c>");
}

TEST(Doctype, BlankingEndsAtTheEndOfTheTextOrAtANul) {
  EXPECT_EQ(Blanked("<!DOCTYPE svg"), std::string(13, ' '));
  EXPECT_EQ(Blanked("<!DOCTYPE\0a>"sv), std::string(9, ' ') + std::string("\0a>"sv));
  EXPECT_EQ(Blanked("a\0<!DOCTYPE b>"sv), "a\0<!DOCTYPE b>"sv);
}

// --- Sniffing the unit

TEST(UnitSniffing, FindsAnMBehindTheFirstNumberBehindTheFirstWidth) {
  struct Row {
    std::string_view text;
    bool found;
  };
  const Row rows[] = {
      {"<svg width='210mm'>", true},
      {"<svg width='210 mm'>", true},
      {"<svg width='210   m'>", true},
      {"<svg width='10min'>", true},
      {"<svg width=\"1.2.3m\">", true},
      {"<svg width='.5mm'>", true},
      {"<svg width='-5mm'>", true},
      {"<svg width='5.mm'>", true},
      {"width5m", true},
      {"<!-- width 5 m --><svg width='5px'>", true},
      {"<svg stroke-width='2 m' width='5px'>", true},
      {"<svg width='' height='210mm'>", true},  // any byte up to the first digit is passed over
      {"<svg width='auto' x1='3mm'>", false},   // the 1 of x1
      {"<svg width='210px'>", false},
      {"<svg width='210cm'>", false},
      {"<svg width='210'>", false},
      {"<svg width='210MM'>", false},
      {"<svg width='210\tmm'>", false},
      {"<svg width='210\nmm'>", false},
      {"<svg width='1e3mm'>", false},
      {"<svg width='1,5mm'>", false},
      {"<svg width='100%' stroke-width='1mm'>", false},
      {"<svg Width='210mm'>", false},
      {"<svg height='210mm'>", false},
      {"<svg width='mm'>", false},
      {"width", false},
      {"width5", false},
      {"width5 ", false},
      {"", false},
      {"wid\0th='5mm'"sv, false},
      {"\0width='5mm'"sv, false},
      {"width='\0005mm'"sv, false},
      {"width='5\0mm'"sv, false},
  };
  for (const Row& row : rows) EXPECT_EQ(InMillimetres(row.text), row.found) << row.text;
}

// --- Whole documents

namespace {

class DocumentLoad : public FilterTest {};

}  // namespace

TEST_F(DocumentLoad, TakesADoctypeWithADtdReferenceWithoutAChangeInLength) {
  const std::string text =
      "<?xml version='1.0'?><!DOCTYPE svg PUBLIC '-//W3C//DTD SVG 1.1//EN' 'http://example.org/svg11.dtd'>"
      "<svg height='5'><g/></svg>";
  EXPECT_EQ(Check(text), 1);
  EXPECT_EQ(run.file.FileBufferSize, text.size() + 1);
  EXPECT_EQ(run.DocHeight, 5.0);
}

TEST_F(DocumentLoad, RefusesADoctypeWithAnInternalSubset) {
  EXPECT_EQ(Check("<!DOCTYPE svg [<!ENTITY a 'b'>]><svg><g/></svg>"), 0);
}

TEST_F(DocumentLoad, RefusesADoctypeInLowerCase) { EXPECT_EQ(Check("<!doctype svg><svg><g/></svg>"), 0); }

TEST_F(DocumentLoad, TakesACommentWithADoctypeInIt) {
  EXPECT_EQ(Check("<!-- !DOCTYPE --><svg height='5'><g/></svg>"), 1);
  EXPECT_EQ(run.DocHeight, 5.0);
}

TEST_F(DocumentLoad, ReadsEachByteAsOneCharacterOfTheNarrowCodePage) {
  // U+00E9 in UTF-8 is C3 A9, and U+20AC is E2 82 AC, of which 82 is U+201A in the code page.
  ASSERT_EQ(Check("<svg id='\xC3\xA9\xE2\x82\xAC'><g/></svg>"), 1);
  EXPECT_EQ(GetNodeAttribute(run.RootNode, u"id"), u"\u00C3\u00A9\u00E2\u201A\u00AC");
}

TEST_F(DocumentLoad, HonoursNoEncodingDeclaration) {
  for (const char* encoding : {"UTF-8", "UTF-16", "ISO-8859-5", "x-unknown"}) {
    SCOPED_TRACE(encoding);
    ResetImportRun();
    ASSERT_EQ(Check("<?xml version='1.0' encoding='" + std::string(encoding) + "'?><svg id='\xE9'><g/></svg>"), 1);
    EXPECT_EQ(GetNodeAttribute(run.RootNode, u"id"), u"\u00E9");
  }
}

TEST_F(DocumentLoad, RefusesAByteOrderMark) { EXPECT_EQ(Check("\xEF\xBB\xBF<svg><g/></svg>"), 0); }

TEST_F(DocumentLoad, RefusesUtf16) {
  std::string text;
  for (char c : std::string_view("<svg><g/></svg>")) {
    text += c;
    text += '\0';
  }
  EXPECT_EQ(Check(text), 0);
  EXPECT_EQ(Check("\xFF\xFE" + text), 0);
}

TEST_F(DocumentLoad, EndsAtANul) {
  EXPECT_EQ(Check("<svg><g/></svg>\0<"sv), 1);
  ResetImportRun();
  EXPECT_EQ(Check("<svg><g/>\0</svg>"sv), 0);
}

TEST_F(DocumentLoad, KeepsTheDocumentBehindCloseFile) {
  ASSERT_EQ(Check("<svg id='a'><g/></svg>"), 1);
  const std::u16string_view id = GetNodeAttribute(run.RootNode, u"id");
  CloseFile();
  EXPECT_NE(run.DomDocument, nullptr);
  EXPECT_EQ(id, u"a");
}

// One unit more than the conversion counts. The text is one small piece of memory, mapped over and over.
TEST_F(DocumentLoad, RefusesATextOfMoreThan31BitsOfBytesAsAnInvalidArgument) {
  constexpr std::size_t kPiece = 1 << 21, kPieces = (kMaxDocumentBytes + 1) / kPiece;
  static_assert(kPieces * kPiece == 0x80000000);
  const int piece = memfd_create("piece", 0);
  ASSERT_EQ(ftruncate(piece, kPiece), 0);
  void* const block =
      mmap(nullptr, (kPieces + 1) * kPiece, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(block, MAP_FAILED);
  char* const text = static_cast<char*>(block);
  for (std::size_t i = 0; i < kPieces; ++i) {
    ASSERT_NE(mmap(text + i * kPiece, kPiece, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, piece, 0), MAP_FAILED);
  }
  std::memset(text, 'x', kPiece);

  FakeDocument document;
  run.file.FileBuffer.reset(text);
  try {
    LoadDocument();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const DocumentError& error) {
    EXPECT_EQ(error.status, static_cast<HRESULT>(0x80070057));
  }
  EXPECT_EQ(document.calls, std::vector<std::string>());
  run.file.FileBuffer.release();
  munmap(block, (kPieces + 1) * kPiece);
  close(piece);
}

// --- What the document is asked

TEST_F(DocumentLoad, SetsValidationAndReadsTwoPropertiesBeforeTheLoad) {
  FakeDocument document;
  document.root.Add(u"g");
  ASSERT_EQ(Check("abc"), 1);
  EXPECT_EQ(document.source, u"abc");
  ASSERT_EQ(document.calls.size(), 6u);
  EXPECT_EQ(document.calls[4], "loadXML");
  EXPECT_EQ(document.calls[5], "get_documentElement");
  const std::set<std::string> before(document.calls.begin(), document.calls.begin() + 4);
  EXPECT_EQ(before, (std::set<std::string>{"get_validateOnParse", "put_validateOnParse true", "put_async false",
                                           "get_doctype"}));
  EXPECT_EQ(run.DomDocument, &document);
}

TEST_F(DocumentLoad, AsksARefusedTextForItsErrorAndShowsNothing) {
  FakeDocument document;
  document.loads = false;
  EXPECT_EQ(Check("abc"), 0);
  ASSERT_EQ(document.calls.size(), 9u);
  EXPECT_EQ(document.calls[5], "get_parseError");
  const std::set<std::string> read(document.calls.begin() + 6, document.calls.end());
  EXPECT_EQ(read, (std::set<std::string>{"get_srcText", "get_reason", "get_errorCode"}));
  EXPECT_EQ(document.parseErrorReferences, 0);
  EXPECT_EQ(document.references, 0);
  EXPECT_EQ(run.DomDocument, nullptr);
  EXPECT_TRUE(ShownMessages().empty());
}

TEST_F(DocumentLoad, ADocumentWithoutAnElementIsRefused) {
  FakeDocument document;
  document.hasElement = false;
  document.elementStatus = kFalse;
  EXPECT_EQ(Check("abc"), 0);
  EXPECT_EQ(run.RootNode, nullptr);
}

TEST_F(DocumentLoad, ReadsTheRootsHeightAndGivesEverythingBack) {
  FakeDocument document;
  document.root.Set(u"svg:height", u"1").Set(u"height", u"7.5in").Add(u"g");
  ASSERT_EQ(Check("abc"), 1);
  EXPECT_EQ(run.DocHeight, 7.5);
  EXPECT_EQ(document.root.mapReferences, 0);
  EXPECT_EQ(document.root.listReferences, 0);
  EXPECT_EQ(document.root.references, 1);
}
