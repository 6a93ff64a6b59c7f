#include "host/font_manager_link.h"

#include <cstdio>
#include <string>
#include <utility>

#include "tests/host/services/font_service.h"
#include "tests/support/host_journal.h"
#include "tests/support/shared_object.h"

namespace {

constexpr char kService[] = SVGIMPORT_SERVICES_DIR "/font/gTypeHub.dll";
constexpr char kUnnamedService[] = SVGIMPORT_SERVICES_DIR "/unnamed-font/gTypeHub.dll";
constexpr char kEmptyService[] = SVGIMPORT_SERVICES_DIR "/empty-font/gTypeHub.dll";

// Calls of the host and of the font service in one list.
class FontManagerLink : public FilterTest {
 protected:
  FontManagerLink() { log_ = journal_.File(); }
  ~FontManagerLink() override { log_ = nullptr; }

  // Makes the service write its calls down. `service` must stay loaded until they are done.
  static FontServiceState& Listen(const SharedObject& service) {
    FontServiceState& state = *service.Find<FontServiceState>("fontServiceState");
    state.note = [](const char* text) { std::fprintf(log_, "%s\n", text); };
    return state;
  }
  Lines Calls() { return journal_.Take(); }
  static bool ServiceIsLoaded() { return SharedObject::IsLoaded("gTypeHub.dll"); }

  // The link of `library_` and the default that it must have.
  void ExpectDefault() {
    ASSERT_NE(library_.link, nullptr);
    EXPECT_EQ(library_.link->loaded, 0u);
    EXPECT_EQ(library_.link->object, nullptr);
    EXPECT_NE(dynamic_cast<FontManagerSupportDefault*>(library_.link->iface), nullptr);
    EXPECT_EQ(library_.handle, nullptr);
    EXPECT_EQ(library_.create, nullptr);
    EXPECT_EQ(library_.destroy, nullptr);
  }

  FontManagerLibrary library_;

 private:
  static inline std::FILE* log_ = nullptr;
  HostJournal journal_;
};

const Lines kBusy = {"HourGlass(1)", "HourGlass(0)"};

}  // namespace

// --- Without a font manager

TEST_F(FontManagerLink, TakesTheDefaultWhenThereIsNoLibrary) {
  LinkFontManager(library_);
  ExpectDefault();
  EXPECT_EQ(library_.count, 1);
  EXPECT_EQ(Calls(), kBusy);
  UnlinkFontManager(library_);
  EXPECT_EQ(library_.link, nullptr);
  EXPECT_EQ(library_.count, 0);
  EXPECT_EQ(Calls(), Lines());
}

// The places count, since a host's caller knows no names: they are read from the class table.
TEST_F(FontManagerLink, TheDefaultAnswersInAllTwentyTwoPlaces) {
  using Operation = std::uint32_t (*)(FontManagerSupport*, std::uintptr_t);
  FontManagerSupportDefault fonts;
  FontManagerSupport* const iface = &fonts;
  Operation* const table = *reinterpret_cast<Operation**>(iface);
  for (int place = 0; place < 22; ++place) {
    const std::uint32_t answer = table[place](iface, 0);
    // Nothing comes back from these.
    if (place == 5 || place == 9 || place == 10 || place >= 19) continue;
    EXPECT_EQ(answer, place == 6 ? 1u : place == 14 ? 0x80000000u : 0u) << "place " << place;
  }
}

TEST_F(FontManagerLink, UnlinkingWithoutALinkDoesNothing) {
  UnlinkFontManager(library_);
  EXPECT_EQ(library_.count, 0);
  EXPECT_EQ(Calls(), Lines());
}

// --- With one

TEST_F(FontManagerLink, TakesTheLibrarysWhenItIsWilling) {
  SharedObject service(kService);
  Listen(service);
  LinkFontManager(library_);
  EXPECT_EQ(Calls(), (Lines{"create", "accept(1)", "HourGlass(1)", "operation14(0)", "HourGlass(0)"}));
  ASSERT_NE(library_.link, nullptr);
  EXPECT_EQ(library_.link->loaded, 1u);
  ASSERT_NE(library_.link->object, nullptr);
  EXPECT_EQ(library_.link->iface, library_.link->object->iface);
  EXPECT_EQ(library_.link->operator->(), library_.link->iface);
  EXPECT_EQ(library_.count, 1);
  (*library_.link)->Operation11(7);
  EXPECT_EQ(Calls(), (Lines{"operation11(7)"}));

  UnlinkFontManager(library_);
  EXPECT_EQ(Calls(), (Lines{"operation4", "destroy"}));
  EXPECT_EQ(library_.link, nullptr);
  EXPECT_EQ(library_.count, 0);
  EXPECT_EQ(library_.handle, nullptr);
  EXPECT_EQ(library_.create, nullptr);
  EXPECT_EQ(library_.destroy, nullptr);
  service.Unload();
  EXPECT_FALSE(ServiceIsLoaded());
}

TEST_F(FontManagerLink, KeepsTheLibraryLoadedUntilItIsUndone) {
  SharedObject service(kService);
  LinkFontManager(library_);
  service.Unload();
  EXPECT_TRUE(ServiceIsLoaded());
  UnlinkFontManager(library_);
  EXPECT_FALSE(ServiceIsLoaded());
}

TEST_F(FontManagerLink, IsNotMadeTwice) {
  SharedObject service(kService);
  Listen(service);
  LinkFontManager(library_);
  DynamicLink<FontManagerSupport>* const link = library_.link;
  Calls();
  LinkFontManager(library_);
  EXPECT_EQ(library_.link, link);
  EXPECT_EQ(library_.count, 1);
  EXPECT_EQ(Calls(), Lines());
  UnlinkFontManager(library_);
}

TEST_F(FontManagerLink, TakesTheDefaultWhenTheFontManagerRefuses) {
  SharedObject service(kService);
  Listen(service).accepts = false;
  LinkFontManager(library_);
  EXPECT_EQ(Calls(), (Lines{"create", "accept(1)", "destroy"}) + kBusy);
  ExpectDefault();
  EXPECT_EQ(library_.count, 1);
  service.Unload();
  EXPECT_FALSE(ServiceIsLoaded());
  UnlinkFontManager(library_);
  EXPECT_EQ(library_.count, 0);
}

TEST_F(FontManagerLink, DoesNotAskAnObjectWithoutAnInterface) {
  SharedObject service(kService);
  Listen(service).hasInterface = false;
  LinkFontManager(library_);
  EXPECT_EQ(Calls(), (Lines{"create", "destroy"}) + kBusy);
  ExpectDefault();
  service.Unload();
  EXPECT_FALSE(ServiceIsLoaded());
  UnlinkFontManager(library_);
}

TEST_F(FontManagerLink, TakesTheDefaultWhenTheLibraryHasNoObject) {
  SharedObject service(kService);
  Listen(service).hasObject = false;
  LinkFontManager(library_);
  EXPECT_EQ(Calls(), Lines{"create"} + kBusy);
  ExpectDefault();
  service.Unload();
  EXPECT_FALSE(ServiceIsLoaded());
  UnlinkFontManager(library_);
}

TEST_F(FontManagerLink, TakesTheDefaultWhenTheExportsAreMissing) {
  for (const char* path : {kUnnamedService, kEmptyService}) {
    SCOPED_TRACE(path);
    SharedObject service(path);
    LinkFontManager(library_);
    EXPECT_EQ(Calls(), kBusy);
    ExpectDefault();
    EXPECT_EQ(library_.count, 1);
    service.Unload();
    EXPECT_FALSE(ServiceIsLoaded());
    UnlinkFontManager(library_);
  }
}

// --- Further links of the same library

TEST_F(FontManagerLink, ASecondLinkGetsAnObjectOfItsOwnUnasked) {
  SharedObject service(kService);
  Listen(service);
  LinkFontManager(library_);
  DynamicLink<FontManagerSupport>* const first = std::exchange(library_.link, nullptr);
  Calls();
  LinkFontManager(library_);
  EXPECT_EQ(Calls(), (Lines{"create", "HourGlass(1)", "operation14(0)", "HourGlass(0)"}));
  EXPECT_EQ(library_.count, 2);
  EXPECT_NE(library_.link->object, first->object);
  EXPECT_EQ(library_.link->iface, library_.link->object->iface);
  EXPECT_EQ(library_.link->loaded, 0u);

  UnlinkFontManager(library_);
  EXPECT_EQ(Calls(), (Lines{"operation4", "destroy"}));
  EXPECT_EQ(library_.count, 1);
  EXPECT_NE(library_.create, nullptr);
  library_.link = first;
  UnlinkFontManager(library_);
  EXPECT_EQ(Calls(), (Lines{"operation4", "destroy"}));
  service.Unload();
  EXPECT_FALSE(ServiceIsLoaded());
}

TEST_F(FontManagerLink, ASecondLinkTakesTheDefaultWhenTheLibraryHasNoUsableObject) {
  for (const bool hasObject : {false, true}) {
    SCOPED_TRACE(hasObject);
    SharedObject service(kService);
    FontServiceState& state = Listen(service);
    LinkFontManager(library_);
    DynamicLink<FontManagerSupport>* const first = std::exchange(library_.link, nullptr);
    Calls();
    state.hasObject = hasObject;
    state.hasInterface = false;
    LinkFontManager(library_);
    EXPECT_EQ(Calls(), (hasObject ? Lines{"create", "destroy"} : Lines{"create"}) + kBusy);
    EXPECT_EQ(library_.link->loaded, 0u);
    EXPECT_EQ(library_.link->object, nullptr);
    EXPECT_NE(dynamic_cast<FontManagerSupportDefault*>(library_.link->iface), nullptr);
    EXPECT_EQ(library_.count, 2);

    UnlinkFontManager(library_);
    EXPECT_EQ(Calls(), Lines());
    EXPECT_EQ(library_.count, 1);
    library_.link = first;
    UnlinkFontManager(library_);
    EXPECT_EQ(Calls(), (Lines{"operation4", "destroy"}));
    service.Unload();
    EXPECT_FALSE(ServiceIsLoaded());
  }
}

TEST_F(FontManagerLink, BehindAFailedAttemptTheLibraryIsNotTriedAgain) {
  LinkFontManager(library_);
  DynamicLink<FontManagerSupport>* const first = std::exchange(library_.link, nullptr);
  SharedObject service(kService);
  Listen(service);
  Calls();
  LinkFontManager(library_);
  EXPECT_EQ(Calls(), kBusy);
  ExpectDefault();
  EXPECT_EQ(library_.count, 2);
  UnlinkFontManager(library_);
  EXPECT_EQ(library_.count, 1);
  library_.link = first;
  UnlinkFontManager(library_);
  EXPECT_EQ(library_.count, 0);

  // With no link left, it is.
  LinkFontManager(library_);
  EXPECT_EQ(library_.link->loaded, 1u);
  UnlinkFontManager(library_);
}

// --- In an import

TEST_F(FontManagerLink, StandsBetweenCheckFileAndCloseFile) {
  SharedObject service(kService);
  Listen(service);
  SetHostUnits(301);
  ASSERT_EQ(Check(Document("<g/>")), 1);
  EXPECT_EQ(GetFontManager()->loaded, 1u);
  EXPECT_EQ(UsingFontManager(), 1);
  Lines opening = Calls();
  opening.erase(opening.begin(), opening.begin() + FindLine(opening, "CFontReplacement"));
  EXPECT_EQ(Without(opening, "MemInitBaseT"),
            (Lines{"CFontReplacement::CFontReplacement(svg)", "create", "accept(1)", "HourGlass(1)", "operation14(0)",
                   "HourGlass(0)", "ShowPasteStringChanges(0)"}));
  CloseFile();
  EXPECT_EQ(GetFontManager(), nullptr);
  Lines closing = Calls();
  closing.resize(4);
  EXPECT_EQ(closing, (Lines{"ShowPasteStringChanges(1)", "operation4", "destroy", "UdateUnits(301)"}));
}

TEST_F(FontManagerLink, IsFlaggedAlsoWhenTheDefaultAnswers) {
  ASSERT_EQ(Check(Document("<g/>")), 1);
  EXPECT_EQ(UsingFontManager(), 1);
  EXPECT_EQ(GetFontManager()->loaded, 0u);
  EXPECT_EQ((*GetFontManager())->Operation14(0), 0x80000000u);
}
