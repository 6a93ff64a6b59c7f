#include "document/node_access.h"

#include <stdexcept>

#include "tests/support/fake_document.h"
#include "tests/support/filter_test.h"

namespace {

// Nodes of a parsed document: the children of its root.
class NodeAccess : public FilterTest {
 protected:
  IXMLDOMNode* Child(std::string_view elements) {
    EXPECT_EQ(Check(Document(elements)), 1);
    return run.NodeList.At(0);
  }
};

}  // namespace

TEST_F(NodeAccess, TheNameIsTheLocalOne) {
  EXPECT_EQ(GetNodeName(Child("<rect/>")), u"rect");
  ResetImportRun();
  EXPECT_EQ(GetNodeName(Child("<svg:rect/>")), u"rect");
  ResetImportRun();
  EXPECT_EQ(GetNodeName(Child("<Rect/>")), u"Rect");
}

TEST_F(NodeAccess, CommentsAndTextHaveNoName) {
  EXPECT_EQ(GetNodeName(Child("<!-- rect -->")), u"");
  ResetImportRun();
  EXPECT_EQ(GetNodeName(Child("rect")), u"");
}

TEST_F(NodeAccess, AttributesAreFoundByTheirFullNameExactly) {
  IXMLDOMNode* node = Child("<image id='a' xlink:href='b' inkscape:cy='c' empty=''/>");
  EXPECT_EQ(GetNodeAttribute(node, u"id"), u"a");
  EXPECT_EQ(GetNodeAttribute(node, u"xlink:href"), u"b");
  EXPECT_EQ(GetNodeAttribute(node, u"inkscape:cy"), u"c");
  EXPECT_EQ(GetNodeAttribute(node, u"href"), u"");
  EXPECT_EQ(GetNodeAttribute(node, u"cy"), u"");
  EXPECT_EQ(GetNodeAttribute(node, u"ID"), u"");
  EXPECT_EQ(GetNodeAttribute(node, u"i"), u"");
  EXPECT_EQ(GetNodeAttribute(node, u"idx"), u"");
  EXPECT_EQ(GetNodeAttribute(node, u"empty"), u"");
}

TEST_F(NodeAccess, AnotherPrefixOfTheSameNamespaceIsAnotherName) {
  IXMLDOMNode* node = Child("<image xmlns:l='http://www.w3.org/1999/xlink' l:href='b'/>");
  EXPECT_EQ(GetNodeAttribute(node, u"xlink:href"), u"");
  EXPECT_EQ(GetNodeAttribute(node, u"l:href"), u"b");
}

TEST_F(NodeAccess, NoNodeAndANodeWithoutAttributesReadAsEmpty) {
  EXPECT_EQ(GetNodeAttribute(nullptr, u"id"), u"");
  EXPECT_EQ(GetNodeAttribute(Child("<!-- id='a' -->"), u"id"), u"");
}

// --- Failures and references, with nodes built by hand

TEST(NodeReading, GivesTheAttributeAndItsMapBack) {
  FakeNode node(u"rect");
  node.Set(u"id", u"a");
  EXPECT_EQ(GetNodeAttribute(&node, u"id"), u"a");
  EXPECT_EQ(GetNodeAttribute(&node, u"x"), u"");
  EXPECT_EQ(node.mapReferences, 0);
  IXMLDOMNamedNodeMap* map = nullptr;
  IXMLDOMNode* attribute = nullptr;
  node.get_attributes(&map);
  map->getNamedItem(u"id", &attribute);
  EXPECT_EQ(static_cast<FakeNode*>(attribute)->references, 1);
}

TEST(NodeReading, ANodeWithoutAMapReadsAsEmpty) {
  FakeNode node(u"rect");
  node.hasAttributes = false;
  EXPECT_EQ(GetNodeAttribute(&node, u"id"), u"");
}

TEST(NodeReading, AFailedLookUpOfAnAttributeIsAnErrorOfTheMap) {
  FakeNode node(u"rect");
  node.Set(u"id", u"a");
  node.namedItemStatus = kFailed;
  try {
    GetNodeAttribute(&node, u"id");
    ADD_FAILURE() << "nothing was thrown";
  } catch (const DocumentError& error) {
    EXPECT_EQ(error.status, kFailed);
    EXPECT_STREQ(error.interfaceName, "IXMLDOMNamedNodeMap");
  }
  EXPECT_EQ(node.mapReferences, 0);
}

TEST(NodeReading, AChildListHoldsOneReferenceToEachNode) {
  FakeNode node(u"g");
  FakeNode& first = node.Add(u"a");
  FakeNode& second = node.Add(u"b");
  {
    ChildNodeList list;
    CollectChildNodes(&node, list);
    EXPECT_EQ(list.length(), 2);
    EXPECT_EQ(list.At(0), &first);
    EXPECT_EQ(list.At(1), &second);
    EXPECT_EQ(first.references, 1);
    EXPECT_EQ(second.references, 1);
    EXPECT_EQ(node.listReferences, 0);
  }
  EXPECT_EQ(first.references, 0);
  EXPECT_EQ(second.references, 0);
}

TEST(NodeReading, ANullItemIsSkippedAndTheLastSubscriptFails) {
  FakeNode node(u"g");
  FakeNode& first = node.Add(u"a");
  node.AddNull();
  FakeNode& third = node.Add(u"c");
  ChildNodeList list;
  CollectChildNodes(&node, list);
  EXPECT_EQ(list.length(), 3);
  EXPECT_EQ(list.At(0), &first);
  EXPECT_EQ(list.At(1), &third);
  for (std::int32_t subscript : {2, 3, -1}) {
    try {
      list.At(subscript);
      ADD_FAILURE() << "nothing was thrown";
    } catch (const std::out_of_range& error) {
      EXPECT_STREQ(error.what(), "invalid vector<T> subscript");
    }
  }
}

TEST(NodeReading, NullItemsAloneMakeAnEmptyListWithALength) {
  FakeNode node(u"g");
  node.AddNull();
  ChildNodeList list;
  CollectChildNodes(&node, list);
  EXPECT_EQ(list.length(), 1);
  EXPECT_TRUE(list.empty());
}

TEST(NodeReading, AnAbsentListIsEmptyAndReplacesWhatWasThere) {
  FakeNode full(u"g"), none(u"g");
  FakeNode& child = full.Add(u"a");
  none.hasChildren = false;
  ChildNodeList list;
  CollectChildNodes(&full, list);
  CollectChildNodes(&none, list);
  EXPECT_EQ(list.length(), 0);
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(child.references, 0);
}

TEST(NodeReading, AFailedReadOfTheChildrenIsAnErrorOfTheNode) {
  FakeNode node(u"g");
  node.childNodesStatus = kOutOfMemory;
  ChildNodeList list;
  try {
    CollectChildNodes(&node, list);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const DocumentError& error) {
    EXPECT_EQ(error.status, static_cast<HRESULT>(0x8007000E));
    EXPECT_STREQ(error.interfaceName, "IXMLDOMNode");
  }
  EXPECT_EQ(list.length(), 0);
}
