// A document that is loaded while the XML library or the filter itself is short of memory.

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include <libxml/xmlmemory.h>

#include "platform/xml_plain.h"
#include "tests/platform/dom_reader.h"
#include "tests/support/short_memory.h"

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

std::u16string Number(int number) {
  std::u16string text;
  for (const char digit : std::to_string(number)) text.push_back(static_cast<char16_t>(digit));
  return text;
}

// A document with nodes of all kinds, and with so many attributes of its element and so many children.
std::u16string DocumentOf(int attributes, int children) {
  std::u16string text = u"<?xml version='1.0'?><!--c--><svg xmlns='u' xmlns:p='v' xmlns:q='w'";
  for (int i = 0; i < attributes; ++i) text += u" a" + Number(i) + u"=''";
  text += u">";
  for (int i = 0; i < children; ++i) {
    const std::u16string number = Number(i);
    text += u"<g" + number + u" p:a" + number + u"='1\n2' b='&lt;\u00E4\n'>t &amp;<?p q?></g" + number + u">";
  }
  return text + u"<![CDATA[d]]></svg>";
}

// The same with a character that the short way leaves to the library.
std::u16string DocumentForTheLibrary(int attributes, int children) {
  std::u16string text = DocumentOf(attributes, children);
  return text.insert(text.rfind(u'<'), u"\U0001F600");
}

// Loads the text again and again, with one allocation of the filter more going well each time. Returns how many failed.
int LoadShortOfMemory(std::u16string_view text) {
  for (int point = 0;; ++point) {
    Dom dom;
    bool success = true;
    LimitAllocations(point);
    const HRESULT status = dom->loadXML(text, &success);
    const bool failed = EndAllocationLimit();
    EXPECT_EQ(success, !failed) << point;
    EXPECT_EQ(status, failed ? kOutOfMemory : kOk) << point;
    EXPECT_EQ(dom.Root() == nullptr, failed) << point;
    if (!failed) return point;
  }
}

}  // namespace

TEST(XmlMemory, ALackOfItAtAnyPointIsReportedAndLeavesNothingBehind) {
  const std::u16string text = DocumentForTheLibrary(40, 40);
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

TEST(XmlMemory, ALackOfItInTheShortWayIsReportedAndNotTriedAgain) {
  const std::u16string text = DocumentOf(400, 400);
  XmlTree tree;
  ASSERT_TRUE(ReadPlainXml(text, &tree));
  EXPECT_GT(LoadShortOfMemory(text), 10);
}

TEST(XmlMemory, ALackOfItAroundTheLibraryIsReported) {
  const std::u16string text = DocumentForTheLibrary(400, 400);
  XmlTree tree;
  ASSERT_FALSE(ReadPlainXml(text, &tree));
  EXPECT_GT(LoadShortOfMemory(text), 20);
}
