#include "run/exports.h"

#include <cxxabi.h>

#include <cstdio>
#include <memory>
#include <set>
#include <string>

#include "tests/support/host_journal.h"

namespace {

class FloatErrors : public FilterTest {};

std::string Demangled(const std::string& name) {
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> text(abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status),
                                                    std::free);
  return status == 0 ? text.get() : name;
}

// The symbols that the built library defines for others, as "NAME TYPE".
std::set<std::string> DefinedSymbols(bool demangle) {
  std::set<std::string> symbols;
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> nm(
      popen("nm --dynamic --defined-only --format=posix " SVGIMPORT_LIB_DIR "/libsvgimport.so", "r"), pclose);
  char name[512], type[8];
  while (std::fscanf(nm.get(), "%511s %7s%*[^\n]", name, type) == 2) {
    symbols.insert(demangle ? Demangled(name) : std::string(name) + ' ' + type);
  }
  return symbols;
}

// Where the loader looks for what the built library asks for: the entries of its own search path, one after the other.
std::string SearchPath() {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> readelf(
      popen("readelf --dynamic --wide " SVGIMPORT_LIB_DIR "/libsvgimport.so", "r"), pclose);
  char line[1024];
  while (std::fgets(line, sizeof line, readelf.get()) != nullptr) {
    const std::string text = line;
    const std::size_t open = text.find("Library runpath: [");
    if (open != text.npos) return text.substr(text.find('[') + 1, text.find(']') - text.find('[') - 1);
  }
  return {};
}

}  // namespace

// --- What the library shows

// An empty entry would be the current folder, from which anybody's gTypeHub.dll would be loaded.
TEST(FilterLibrarySymbols, TheLoaderLooksForServicesBesideTheLibraryAndNotInTheCurrentFolder) {
  EXPECT_EQ(SearchPath(), "$ORIGIN");
}

TEST(FilterLibrarySymbols, AreTheEntryPointsAndWhatComesWithTheHostsHeaders) {
  EXPECT_EQ(
      DefinedSymbols(true),
      (std::set<std::string>{
          "CheckFile",
          "GetImportCommand",
          "GetFileHandle",
          "CloseFile",
          "FloatErrorMsg(int, int)",
          "translate_point(double*, double*, TM const*)",
          "GetFontManager()",
          "UsingFontManager()",
          "DynamicLinkBase<FontManagerSupportDefault>::operator->() const",
          "CBaseDir::CBaseDir(CBaseDir const&)",
          "CBaseDir::operator=(CBaseDir const&)",
          "CBaseDir::operator char const*() const",
          "CBaseDir::operator char16_t const*() const",
          "CBaseDir::operator std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >() const",
          "CBaseDir::operator std::__cxx11::basic_string<char16_t, std::char_traits<char16_t>, "
          "std::allocator<char16_t> >() const",
          "CBaseDir::GetType() const",
      }));
}

// One would keep the library loaded for good.
TEST(FilterLibrarySymbols, HoldNoUniqueOnes) {
  for (const std::string& symbol : DefinedSymbols(false)) EXPECT_FALSE(symbol.ends_with(" u")) << symbol;
}

// --- The reporter of math errors

TEST_F(FloatErrors, AreNotShownByDefaultAndTheStoreIsAskedOnce) {
  HostJournal journal;
  FloatErrorMsg(1, 2);
  FloatErrorMsg(3, 4);
  EXPECT_EQ(journal.Take(), (Lines{"GetIntTavlor(Preferences,LogMathErrors,0,1)=0"}));
}

TEST_F(FloatErrors, AreShownWithTheirNumbersWhenTheSettingIsNotZero) {
  SetHostSetting(u"Preferences", u"LogMathErrors", 2);
  FloatErrorMsg(3, -4);
  SetHostSetting(u"Preferences", u"LogMathErrors", 0);  // too late: it has been read
  FloatErrorMsg(-2147483647 - 1, 0);
  ASSERT_EQ(ShownMessages().size(), 2u);
  EXPECT_EQ(ShownMessages()[0].text, u"Float Error 3 -4");
  EXPECT_EQ(ShownMessages()[0].caption, u"");
  EXPECT_EQ(ShownMessages()[0].flags, 0x2030u);
  EXPECT_EQ(ShownMessages()[1].text, u"Float Error -2147483648 0");
}

TEST_F(FloatErrors, AreDroppedWhileOneIsBeingShown) {
  SetHostSetting(u"Preferences", u"LogMathErrors", 1);
  run.floatErrorNesting = 1;
  FloatErrorMsg(1, 2);
  EXPECT_TRUE(ShownMessages().empty());
  EXPECT_EQ(run.floatErrorNesting, 1);
  run.floatErrorNesting = 0;
  FloatErrorMsg(1, 2);
  EXPECT_EQ(ShownMessages().size(), 1u);
  EXPECT_EQ(run.floatErrorNesting, 0);
}

// --- Points

TEST(TranslatePoint, TakesXAndYThroughTheMatrix) {
  const TM matrix = {2.0, 3.0, 5.0, 7.0, 11.0, 13.0};
  double x = 17.0, y = 19.0;
  translate_point(&x, &y, &matrix);
  EXPECT_EQ(x, 140.0);  // 2*17 + 5*19 + 11
  EXPECT_EQ(y, 197.0);  // 3*17 + 7*19 + 13
}
