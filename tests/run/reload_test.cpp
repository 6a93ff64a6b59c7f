// The filter as a host has it: a library that is loaded for one import and unloaded behind it.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>

#include "platform/narrow_text.h"
#include "tests/support/host_journal.h"
#include "tests/support/shared_object.h"

namespace {

constexpr char kFilter[] = SVGIMPORT_LIB_DIR "/libsvgimport.so";

class Reload : public FilterTest {
 protected:
  void Load() {
    library_.emplace(kFilter);
    checkFile = library_->Find<CheckFileFunction>("CheckFile");
    getImportCommand = library_->Find<GetImportCommandFunction>("GetImportCommand");
    closeFile = library_->Find<CloseFileFunction>("CloseFile");
  }
  void Unload() { library_.reset(); }
  static bool IsLoaded() { return SharedObject::IsLoaded(kFilter); }

  int CheckDocument(std::string_view document) {
    const std::string path = folder + "drawing.svg";
    std::ofstream(path, std::ios::binary) << document;
    return checkFile(0, 0, WideFromUtf8(path).c_str());
  }
  // One whole import in the library as it is loaded.
  Lines ImportHere(std::string_view document) {
    Lines lines;
    EXPECT_EQ(CheckDocument(document), 1);
    ImportCommand record;
    do {
      record = getImportCommand();
      lines.push_back(Describe(record));
      ReleaseCommand(record);
    } while (record.key != KEY_ENDF);
    EXPECT_EQ(closeFile(), 0);
    return lines;
  }
  // One whole import in a library loaded for it.
  Lines ImportAfresh(std::string_view document) {
    Load();
    const Lines lines = ImportHere(document);
    Unload();
    return lines;
  }

  CheckFileFunction* checkFile = nullptr;
  GetImportCommandFunction* getImportCommand = nullptr;
  CloseFileFunction* closeFile = nullptr;

 private:
  std::optional<SharedObject> library_;
};

// Leaves a scale, a clip flag, definitions, a cursor and a font size behind.
constexpr char kLeavingTraces[] =
    "<svg xmlns:xlink='http://www.w3.org/1999/xlink' width='10mm' height='10'>"
    "<defs><clipPath id='c'><rect width='1' height='1'/></clipPath>"
    "<linearGradient id='g'><stop style='stop-color:red'/><stop offset='1'/></linearGradient></defs>"
    "<g font-size='33'><path clip-path='url(#c)' style='fill:url(#g)' d='M0,0 L5,5 L5,0'/></g>"
    "<text x='1' y='1'>abc</text><rect width='1' height='1'/></svg>";

constexpr char kPlain[] =
    "<svg width='100' height='10'><path style='fill:red' d='M0,0 L5,5 L5,0'/><path style='fill:url(#g)' d='M0,0 "
    "L5,5'/></svg>";

}  // namespace

TEST_F(Reload, TheLibraryIsReallyGoneBehindAnImport) {
  ASSERT_FALSE(IsLoaded());
  Load();
  EXPECT_TRUE(IsLoaded());
  ImportHere(kLeavingTraces);
  EXPECT_TRUE(IsLoaded());
  Unload();
  EXPECT_FALSE(IsLoaded());
}

TEST_F(Reload, ALibraryLoadedAgainStartsFromNothing) {
  SetHostSetting(u"ZENTAL", u"Units", 0);
  const Lines plain = ImportAfresh(kPlain);
  // The scale is a point and no clip is pending. 10 - 5 = 5 user units are 5 * 2.54 / 72 centimetres.
  EXPECT_EQ(CountOf(plain, "LINE 0,0.3527777778 0.1763888889,0.1763888889"), 2u);
  EXPECT_EQ(CountOf(plain, "FDEF flat"), 2u);
  const Lines traces = ImportAfresh(kLeavingTraces);
  EXPECT_EQ(CountOf(traces, "LINE 0,1 0.5,0.5"), 1u);
  EXPECT_EQ(CountOf(traces, "FDEF flat"), 0u);
  EXPECT_EQ(ImportAfresh(kPlain), plain);
  EXPECT_EQ(ImportAfresh(kLeavingTraces), traces);
}

TEST_F(Reload, AnImportThatIsBrokenOffGoesWithTheLibrary) {
  Load();
  ASSERT_EQ(CheckDocument(kPlain), 1);
  ReleaseCommand(getImportCommand());
  Unload();
  EXPECT_FALSE(IsLoaded());
  EXPECT_EQ(HostInterfaceState().clipGroupCollapses, 0);
}

TEST_F(Reload, LoadingLooksForTheAllocatorAndAsksForNothingElse) {
  HostJournal journal;
  Load();
  const Lines loading = journal.Take();
  EXPECT_EQ(loading.size(), 1u);
  EXPECT_EQ(CountOf(loading, "FindWindowPointer(MemAllocClass,MemAllocWnd"), 1u);
  ImportHere(kPlain);
  EXPECT_EQ(Only(journal.Take(), "FindWindowPointer"), Lines());
  Unload();
}

TEST_F(Reload, ASecondImportInTheSameInstanceFails) {
  Load();
  ImportHere(kPlain);
  std::string text;
  try {
    CheckDocument(kPlain);
  } catch (const std::out_of_range& error) {
    text = error.what();
  }
  EXPECT_EQ(text, "invalid vector<T> subscript");
  EXPECT_EQ(closeFile(), 0);
  Unload();
  EXPECT_FALSE(IsLoaded());
}

TEST_F(Reload, AnImportStartsNoThread) {
  const auto threads = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), std::filesystem::directory_iterator());
  };
  const auto before = threads();
  Load();
  ImportHere(kLeavingTraces);
  EXPECT_EQ(threads(), before);
  Unload();
}
