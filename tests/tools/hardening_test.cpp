// What the shipped files were built with: the checks of the C library, guards of the stack, and a table of addresses
// that is read-only once the file is loaded.

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "headless_host/sanitizer.h"

namespace {

// What readelf says of a file.
std::string ReadElf(const std::string& options, const std::string& file) {
  std::string text;
  std::FILE* pipe = popen(("readelf --wide " + options + " '" + file + "'").c_str(), "r");
  if (!pipe) return text;
  char block[4096];
  for (std::size_t count; (count = std::fread(block, 1, sizeof block, pipe)) > 0;) text.append(block, count);
  EXPECT_EQ(pclose(pipe), 0);
  return text;
}

bool Has(const std::string& text, const char* part) { return text.find(part) != text.npos; }

class Hardening : public testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    if (HEADLESS_HOST_ADDRESS_SANITIZER) GTEST_SKIP() << "a watched build is not shipped";
  }
};

}  // namespace

TEST_P(Hardening, GuardsTheStack) { EXPECT_TRUE(Has(ReadElf("--dyn-syms", GetParam()), "__stack_chk_fail")); }

TEST_P(Hardening, BindsAllSymbolsAtLoadAndMakesTheirTableReadOnly) {
  EXPECT_TRUE(Has(ReadElf("--program-headers", GetParam()), "GNU_RELRO"));
  EXPECT_TRUE(Has(ReadElf("--dynamic", GetParam()), "NOW"));
}

TEST_P(Hardening, MayBeLoadedAtAnyAddress) {
  EXPECT_TRUE(Has(ReadElf("--file-header", GetParam()), "DYN"));
  EXPECT_FALSE(Has(ReadElf("--dynamic", GetParam()), "TEXTREL"));
}

TEST_P(Hardening, HasNoStackThatCanBeExecuted) {
  const std::string headers = ReadElf("--program-headers", GetParam());
  const std::size_t stack = headers.find("GNU_STACK");
  ASSERT_NE(stack, headers.npos);
  EXPECT_FALSE(Has(headers.substr(stack, headers.find('\n', stack) - stack), "RWE"));
}

INSTANTIATE_TEST_SUITE_P(Files, Hardening,
                         testing::Values(SVGIMPORT_LIB_DIR "/libsvgimport.so",
                                         SVGIMPORT_LIB_DIR "/libsvgimport-host.so", SVGIMPORT_BIN_DIR "/svgimport",
                                         SVGIMPORT_BIN_DIR "/svgimport-ops"),
                         [](const auto& file) {
                           std::string name = file.param.substr(file.param.rfind('/') + 1);
                           for (char& c : name) c = c == '.' || c == '-' ? '_' : c;
                           return name;
                         });

// Of the functions that the C library checks, the filter's and the host's code calls some.
TEST(FortifiedFunctions, AreCalledInTheirCheckedForms) {
  if (HEADLESS_HOST_ADDRESS_SANITIZER) GTEST_SKIP() << "a watched build is not shipped";
  std::string symbols;
  for (const char* file : {SVGIMPORT_LIB_DIR "/libsvgimport.so", SVGIMPORT_LIB_DIR "/libsvgimport-host.so"})
    symbols += ReadElf("--dyn-syms", file);
  EXPECT_TRUE(Has(symbols, "_chk@GLIBC")) << symbols;
}
