// Calls of the document that fail in the middle of an import: what leaves the entry point, and that CloseFile copes.

#include <stdexcept>

#include "tests/support/fake_document.h"
#include "tests/support/filter_test.h"

namespace {

struct Failure {
  HRESULT status;
  std::string interfaceName;
  bool operator==(const Failure&) const = default;
};

class DocumentFailure : public FilterTest {
 protected:
  // What the call failed with; a status of 0 when it did not.
  template <class Call>
  static Failure FailureOf(Call call) {
    try {
      call();
    } catch (const DocumentError& error) {
      return {error.status, error.interfaceName};
    }
    return {0, ""};
  }
  Failure CheckFails() {
    return FailureOf([this] { Check("x"); });
  }
  template <class Call>
  static void ExpectSubscriptFailure(Call call) {
    try {
      call();
      ADD_FAILURE() << "nothing was thrown";
    } catch (const std::out_of_range& error) {
      EXPECT_STREQ(error.what(), "invalid vector<T> subscript");
    }
  }

  FakeDocument document;
};

}  // namespace

TEST_F(DocumentFailure, NoDocumentToBeHadIsANullPointer) {
  document.isCreated = false;
  const Failure failure = CheckFails();
  EXPECT_EQ(failure.status, static_cast<HRESULT>(0x80004003));
  EXPECT_EQ(run.RootNode, nullptr);
  EXPECT_EQ(CloseFile(), 0);
}

TEST_F(DocumentFailure, AFailedLoadIsAnErrorOfTheDocument) {
  document.loadStatus = kOutOfMemory;
  EXPECT_EQ(CheckFails(), (Failure{kOutOfMemory, "IXMLDOMDocument"}));
  EXPECT_EQ(CloseFile(), 0);
}

TEST_F(DocumentFailure, AFailedReadOfTheRootIsAnErrorOfTheDocument) {
  document.elementStatus = kFailed;
  EXPECT_EQ(CheckFails(), (Failure{kFailed, "IXMLDOMDocument"}));
  EXPECT_EQ(run.RootNode, nullptr);
  EXPECT_EQ(run.definitions.ClipDefs.records, nullptr);
  EXPECT_EQ(CloseFile(), 0);
}

TEST_F(DocumentFailure, AFailedReadOfTheHeightIsAnErrorOfTheMap) {
  document.root.namedItemStatus = kFailed;
  EXPECT_EQ(CheckFails(), (Failure{kFailed, "IXMLDOMNamedNodeMap"}));
  EXPECT_EQ(run.DocHeight, 480.0);
  EXPECT_EQ(CloseFile(), 0);
  EXPECT_EQ(document.root.references, 0);
}

TEST_F(DocumentFailure, AFailedReadOfTheRootsChildrenIsAnErrorOfTheNode) {
  document.root.childNodesStatus = kFailed;
  EXPECT_EQ(CheckFails(), (Failure{kFailed, "IXMLDOMNode"}));
  EXPECT_EQ(CloseFile(), 0);
}

TEST_F(DocumentFailure, ARootWithoutAListOrAnItemHasNoChildren) {
  document.root.hasChildren = false;
  EXPECT_EQ(Check("x"), 0);
  CloseFile();
  document.root.hasChildren = true;
  document.root.AddNull();
  EXPECT_EQ(Check("x"), 0);
  EXPECT_EQ(run.NodeCount, 1);
  CloseFile();
}

TEST_F(DocumentFailure, ANullChildOfTheRootFailsInTheWalkBehindTheOthers) {
  document.root.Add(u"defs").Add(u"pattern");
  document.root.AddNull();
  document.root.Add(u"defs").Add(u"pattern");
  ExpectSubscriptFailure([this] { Check("x"); });
  EXPECT_EQ(run.NodeCount, 3);
  EXPECT_EQ(run.NodeCursor, 2);
  EXPECT_EQ(run.definitions.PatternDefs.count, 3);  // both definitions stand in front of the failure
  EXPECT_EQ(run.commands.count, 0u);
  EXPECT_EQ(CloseFile(), 0);
}

TEST_F(DocumentFailure, ANullChildOfDefsFailsBehindTheOthers) {
  FakeNode& defs = document.root.Add(u"defs");
  defs.AddNull();
  defs.Add(u"pattern");
  ExpectSubscriptFailure([this] { Check("x"); });
  EXPECT_EQ(run.definitions.PatternDefs.count, 2);
  EXPECT_EQ(CloseFile(), 0);
}

TEST_F(DocumentFailure, AFailedReadOfADefinitionsIdIsAnErrorOfTheMap) {
  document.root.Add(u"defs").Add(u"clipPath").namedItemStatus = kInvalidArgument;
  EXPECT_EQ(CheckFails(), (Failure{kInvalidArgument, "IXMLDOMNamedNodeMap"}));
  EXPECT_EQ(CloseFile(), 0);
}

TEST_F(DocumentFailure, AFailureInTheTranslationLeavesGetImportCommand) {
  FakeNode& group = document.root.Add(u"g");
  FakeNode& shape = document.root.Add(u"rect");
  group.childNodesStatus = kFailed;
  ASSERT_EQ(Check("x"), 1);
  Drain();
  const auto next = [] { GetImportCommand(); };
  EXPECT_EQ(FailureOf(next), (Failure{kFailed, "IXMLDOMNode"}));
  EXPECT_EQ(run.NodeCursor, 1);
  // What the group had sent before is still in the queue.
  EXPECT_EQ(Drain(), (Lines{"SGRP 1"}));
  shape.namedItemStatus = kFailed;
  EXPECT_EQ(FailureOf(next), (Failure{kFailed, "IXMLDOMNamedNodeMap"}));
  Drain();
  EXPECT_EQ(CloseFile(), 0);
  EXPECT_EQ(group.references, 0);
  EXPECT_EQ(shape.references, 0);
  EXPECT_EQ(document.root.references, 0);
}

TEST_F(DocumentFailure, ANullChildOfAGroupFailsInTheTranslation) {
  FakeNode& group = document.root.Add(u"g");
  group.AddNull();
  FakeNode& inner = group.Add(u"g");
  ASSERT_EQ(Check("x"), 1);
  Drain();
  ExpectSubscriptFailure([] { GetImportCommand(); });
  EXPECT_EQ(Drain(), (Lines{"SGRP 1", "SGRP 1", "EGRP 1"}));
  EXPECT_EQ(inner.references, 0);
  EXPECT_EQ(CloseFile(), 0);
}
