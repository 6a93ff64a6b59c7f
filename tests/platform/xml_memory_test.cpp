// A document that is loaded while the XML library is short of memory.

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include <libxml/xmlmemory.h>

#include "tests/platform/dom_reader.h"

namespace {

// Allocations that still go well; below 0 all do.
long allocationsLeft = -1;

bool Fails() { return allocationsLeft >= 0 && allocationsLeft-- == 0; }

void* Allocate(std::size_t size) { return Fails() ? nullptr : std::malloc(size); }
void* Reallocate(void* block, std::size_t size) { return Fails() ? nullptr : std::realloc(block, size); }
char* Duplicate(const char* text) { return Fails() ? nullptr : strdup(text); }

// Gives the library these functions for as long as it lives.
class ShortMemory {
 public:
  ShortMemory() {
    xmlMemGet(&free_, &malloc_, &realloc_, &strdup_);
    xmlMemSetup(free_, Allocate, Reallocate, Duplicate);
  }
  ~ShortMemory() {
    allocationsLeft = -1;
    xmlMemSetup(free_, malloc_, realloc_, strdup_);
  }
  ShortMemory(const ShortMemory&) = delete;
  ShortMemory& operator=(const ShortMemory&) = delete;

 private:
  xmlFreeFunc free_;
  xmlMallocFunc malloc_;
  xmlReallocFunc realloc_;
  xmlStrdupFunc strdup_;
};

}  // namespace

TEST(XmlMemory, ALackOfItAtAnyPointIsReportedAndLeavesNothingBehind) {
  std::u16string text = u"<?xml version='1.0'?><!--c--><svg xmlns='u' xmlns:p='v'>";
  for (int i = 0; i < 40; ++i) {
    const auto digit = static_cast<char16_t>(u'0' + i % 10);
    const auto tens = static_cast<char16_t>(u'0' + i / 10);
    text += std::u16string(u"<g") + tens + digit + u" p:a" + tens + digit +
            u"='1\n2' b='&lt;\u00E4\n'>t &amp;<?p q?></g" + tens + digit + u">";
  }
  text += u"<![CDATA[d]]></svg>";

  ::testing::internal::CaptureStderr();  // the library speaks up when it can't even begin
  {
    const ShortMemory memory;
    int reported = 0;
    for (long point = 0;; ++point) {
      Dom dom;
      allocationsLeft = point;
      const bool loaded = dom.Load(text);
      const bool failedOnce = allocationsLeft < 0;
      allocationsLeft = -1;
      if (!failedOnce) {
        EXPECT_TRUE(loaded);
        break;
      }
      if (loaded) continue;  // the library could do without
      EXPECT_EQ(dom.status, kOutOfMemory) << point;
      EXPECT_EQ(dom.Root(), nullptr) << point;
      ++reported;
    }
    EXPECT_GT(reported, 50);
  }
  ::testing::internal::GetCapturedStderr();
}
