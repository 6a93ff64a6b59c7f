#include "platform/xml_document.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/platform/dom_reader.h"

TEST(XmlDocument, ANewDocumentIsEmptyAndValidates) {
  Dom dom;
  bool validate = false;
  EXPECT_EQ(dom->get_validateOnParse(&validate), kOk);
  EXPECT_TRUE(validate);
  EXPECT_EQ(dom->put_validateOnParse(false), kOk);
  EXPECT_EQ(dom->get_validateOnParse(&validate), kOk);
  EXPECT_FALSE(validate);
  EXPECT_EQ(dom->put_async(false), kOk);
  IXMLDOMNode* root = dom.Root();
  EXPECT_EQ(dom->get_documentElement(&root), kFalse);
  EXPECT_EQ(root, nullptr);
}

TEST(XmlDocument, LoadingReportsSuccessAndGivesTheElement) {
  Dom dom;
  EXPECT_TRUE(dom.Load(u"<svg/>"));
  EXPECT_EQ(dom.status, kOk);
  IXMLDOMNode* root = nullptr;
  EXPECT_EQ(dom->get_documentElement(&root), kOk);
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(BaseName(root), u"svg");
  root->Release();
}

TEST(XmlDocument, HasNoDoctypeEvenWhenLoaded) {
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<svg/>"));
  IXMLDOMNode* doctype = dom.Root();
  EXPECT_EQ(dom->get_doctype(&doctype), kFalse);
  EXPECT_EQ(doctype, nullptr);
}

TEST(XmlDocument, ARefusedTextLeavesAnEmptyDocumentAndAnError) {
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<svg/>"));
  EXPECT_FALSE(dom.Load(u"<svg>"));
  EXPECT_EQ(dom.status, kFalse);
  EXPECT_EQ(dom.Root(), nullptr);
  IXMLDOMParseError* error = nullptr;
  ASSERT_EQ(dom->get_parseError(&error), kOk);
  std::int32_t code = 0;
  EXPECT_EQ(error->get_errorCode(&code), kOk);
  EXPECT_NE(code, 0);
  std::u16string_view reason;
  EXPECT_EQ(error->get_reason(&reason), kOk);
  EXPECT_FALSE(reason.empty());
  EXPECT_EQ(reason.find(u'\n'), std::u16string_view::npos);
  std::u16string_view source;
  EXPECT_EQ(error->get_srcText(&source), kFalse);
  EXPECT_TRUE(source.empty());
  error->Release();
}

TEST(XmlDocument, ALoadThatGoesWellClearsTheError) {
  Dom dom;
  ASSERT_FALSE(dom.Load(u"<!DOCTYPE svg><svg/>"));
  ASSERT_TRUE(dom.Load(u"<svg/>"));
  IXMLDOMParseError* error = nullptr;
  ASSERT_EQ(dom->get_parseError(&error), kOk);
  std::int32_t code = 1;
  EXPECT_EQ(error->get_errorCode(&code), kFalse);
  EXPECT_EQ(code, 0);
  std::u16string_view reason = u"?";
  EXPECT_EQ(error->get_reason(&reason), kFalse);
  EXPECT_TRUE(reason.empty());
  error->Release();
}

TEST(XmlDocument, LoadingAgainReplacesTheTree) {
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<a x='1'><b/></a>"));
  ASSERT_TRUE(dom.Load(u"<c/>"));
  EXPECT_EQ(Show(dom.Root()), u"c[]");
}

TEST(XmlDocument, ATextOfMoreThan31BitsIsAnInvalidArgument) {
  // Only the length is looked at: a text of this size that is read would be a fault.
  const char16_t unit = u'<';
  Dom dom;
  bool success = true;
  EXPECT_EQ(dom->loadXML(std::u16string_view(&unit, std::size_t{0x80000000}), &success), kInvalidArgument);
  EXPECT_FALSE(success);
}

TEST(XmlDocument, ReferencesAreCountedAndReturnToZero) {
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<svg id='1'>t<g/></svg>"));
  EXPECT_EQ(OutstandingNodeReferences(dom.Get()), 0);
  IXMLDOMNode* root = nullptr;
  IXMLDOMNamedNodeMap* attributes = nullptr;
  IXMLDOMNodeList* children = nullptr;
  IXMLDOMNode* attribute = nullptr;
  IXMLDOMNode* child = nullptr;
  IXMLDOMNodeList* noChildren = nullptr;
  IXMLDOMParseError* error = nullptr;
  dom->get_documentElement(&root);
  root->get_attributes(&attributes);
  root->get_childNodes(&children);
  attributes->getNamedItem(u"id", &attribute);
  children->get_item(0, &child);
  child->get_childNodes(&noChildren);
  dom->get_parseError(&error);
  EXPECT_EQ(OutstandingNodeReferences(dom.Get()), 7);
  child->AddRef();
  children->AddRef();
  attributes->AddRef();
  noChildren->AddRef();
  error->AddRef();
  EXPECT_EQ(OutstandingNodeReferences(dom.Get()), 12);
  for (int i = 0; i < 2; ++i) {
    child->Release();
    children->Release();
    attributes->Release();
    noChildren->Release();
    error->Release();
  }
  attribute->Release();
  root->Release();
  EXPECT_EQ(OutstandingNodeReferences(dom.Get()), 0);
}

TEST(XmlDocument, FailedLookupsTakeNoReference) {
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<svg>t</svg>"));
  EXPECT_EQ(FindAttribute(dom.Root(), u"id"), nullptr);
  IXMLDOMNamedNodeMap* attributes = nullptr;
  EXPECT_EQ(Child(dom.Root(), 0)->get_attributes(&attributes), kFalse);
  EXPECT_EQ(attributes, nullptr);
  EXPECT_EQ(OutstandingNodeReferences(dom.Get()), 0);
}

TEST(XmlDocument, TheTreeGoesWithTheDocumentWhateverReferencesAreOut) {
  IXMLDOMDocument* const document = CreateDomDocument();
  bool success = false;
  document->loadXML(u"<svg><g/></svg>", &success);
  IXMLDOMNode* root = nullptr;
  document->get_documentElement(&root);
  document->AddRef();
  document->Release();
  EXPECT_EQ(BaseName(root), u"svg");
  document->Release();  // a leak checker sees the rest
}

TEST(XmlDocument, TextViewsStayValidWhileTheDocumentLives) {
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<svg a='value'>text<!--comment--></svg>"));
  std::u16string_view value;
  std::u16string_view name;
  std::u16string_view text;
  FindAttribute(dom.Root(), u"a")->get_text(&value);
  Child(dom.Root(), 0)->get_text(&text);
  dom.Root()->get_baseName(&name);
  for (int i = 0; i < 3; ++i) TextOf(dom.Root());
  EXPECT_EQ(value, u"value");
  EXPECT_EQ(name, u"svg");
  EXPECT_EQ(text, u"text");
}

TEST(XmlDocument, AChildListAnswersInOrderAndNothingOutside) {
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<svg><a/>t<b/></svg>"));
  EXPECT_EQ(ChildCount(dom.Root()), 3);
  EXPECT_EQ(BaseName(Child(dom.Root(), 0)), u"a");
  EXPECT_EQ(TextOf(Child(dom.Root(), 1)), u"t");
  EXPECT_EQ(BaseName(Child(dom.Root(), 2)), u"b");
  IXMLDOMNodeList* children = nullptr;
  dom.Root()->get_childNodes(&children);
  for (const std::int32_t index : {-1, 3, 0x7FFFFFFF}) {
    IXMLDOMNode* item = dom.Root();
    EXPECT_EQ(children->get_item(index, &item), kFalse) << index;
    EXPECT_EQ(item, nullptr) << index;
  }
  children->Release();
}

TEST(XmlDocument, NodesWithoutChildrenHaveAnEmptyList) {
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<svg a='1'>t<![CDATA[c]]><!--d--><?p q?><e/></svg>"));
  for (std::int32_t i = 0; i < 5; ++i) EXPECT_EQ(ChildCount(Child(dom.Root(), i)), 0) << i;
  IXMLDOMNode* const attribute = FindAttribute(dom.Root(), u"a");
  EXPECT_EQ(ChildCount(attribute), 0);
  IXMLDOMNodeList* children = nullptr;
  attribute->get_childNodes(&children);
  IXMLDOMNode* item = dom.Root();
  EXPECT_EQ(children->get_item(0, &item), kFalse);
  EXPECT_EQ(item, nullptr);
  children->Release();
}

TEST(XmlDocument, KindsAndNamesOfNodes) {
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<s:svg xmlns:s='u' s:a='1'>t<![CDATA[c]]><!--d--><?target data here?></s:svg>"));
  EXPECT_EQ(TypeOf(dom.Root()), kElementNode);
  EXPECT_EQ(BaseName(dom.Root()), u"svg");
  IXMLDOMNode* const attribute = FindAttribute(dom.Root(), u"s:a");
  ASSERT_NE(attribute, nullptr);
  EXPECT_EQ(TypeOf(attribute), kAttributeNode);
  EXPECT_EQ(BaseName(attribute), u"a");
  const NodeType types[] = {kTextNode, kCDataNode, kCommentNode};
  for (std::int32_t i = 0; i < 3; ++i) {
    EXPECT_EQ(TypeOf(Child(dom.Root(), i)), types[i]);
    std::u16string_view name = u"?";
    EXPECT_EQ(Child(dom.Root(), i)->get_baseName(&name), kFalse);
    EXPECT_TRUE(name.empty());
  }
  IXMLDOMNode* const instruction = Child(dom.Root(), 3);
  EXPECT_EQ(TypeOf(instruction), kProcessingInstructionNode);
  EXPECT_EQ(BaseName(instruction), u"target");
  EXPECT_EQ(TextOf(instruction), u"data here");
}

TEST(XmlDocument, AttributesAreFoundByTheirFullNameOnly) {
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<svg xmlns:xlink='u' xmlns:l='u' l:title='0' xlink:href='1' href='2' Href='3' hre='4'/>"));
  EXPECT_EQ(Attribute(dom.Root(), u"xlink:href"), u"1");
  EXPECT_EQ(Attribute(dom.Root(), u"href"), u"2");
  EXPECT_EQ(Attribute(dom.Root(), u"Href"), u"3");
  EXPECT_EQ(Attribute(dom.Root(), u"hre"), u"4");
  EXPECT_EQ(Attribute(dom.Root(), u"l:href"), u"(absent)");
  EXPECT_EQ(Attribute(dom.Root(), u"xlink:title"), u"(absent)");
  EXPECT_EQ(Attribute(dom.Root(), u"HREF"), u"(absent)");
  EXPECT_EQ(Attribute(dom.Root(), u""), u"(absent)");
}

TEST(XmlDocument, AttributesAreFoundHoweverTheyAreWritten) {
  Dom dom;
  ASSERT_TRUE(
      dom.Load(u"<svg a='1' b = '2'\r\n\tc='&#51;'  p:d='4' xmlns:p='u' e=\"5\n6\r\n7\r8\" f='\u00E9' "
               u"xmlns:xml='http://www.w3.org/XML/1998/namespace' g=''/>"));
  const std::u16string_view expected[][2] = {
      {u"a", u"1"},          {u"b", u"2"},      {u"c", u"3"},       {u"p:d", u"4"},
      {u"e", u"5\n6\n7\n8"}, {u"f", u"\u00E9"}, {u"xmlns:p", u"u"}, {u"g", u""}};
  for (const auto& [name, value] : expected) EXPECT_EQ(Attribute(dom.Root(), name), value);
}

TEST(XmlDocument, TheNameOfAnElementHidesNoAttributeOfThatName) {
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<a a='1' b='&#50;'><b a='&#51;' b='4'/></a>"));
  EXPECT_EQ(Attribute(dom.Root(), u"a"), u"1");
  EXPECT_EQ(Attribute(dom.Root(), u"b"), u"2");
}

TEST(XmlDocument, NamespaceDeclarationsAreAttributes) {
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<svg xmlns='one' xmlns:p='two' p:a='1'/>"));
  EXPECT_EQ(Attribute(dom.Root(), u"xmlns"), u"one");
  EXPECT_EQ(Attribute(dom.Root(), u"xmlns:p"), u"two");
  EXPECT_EQ(Attribute(dom.Root(), u"p:a"), u"1");
  EXPECT_EQ(BaseName(FindAttribute(dom.Root(), u"xmlns:p")), u"p");
  EXPECT_EQ(BaseName(FindAttribute(dom.Root(), u"xmlns")), u"xmlns");
}

TEST(XmlDocument, AFailedCallIsDescribedByInterfaceAndStatus) {
  const DocumentError error(kFailed, "IXMLDOMNamedNodeMap");
  EXPECT_STREQ(error.what(), "IXMLDOMNamedNodeMap: status 0x80004005");
  EXPECT_EQ(error.status, kFailed);
  EXPECT_STREQ(error.interfaceName, "IXMLDOMNamedNodeMap");
}

TEST(XmlDocument, StatusesAreFailuresByTheirSign) {
  EXPECT_FALSE(Failed(kOk));
  EXPECT_FALSE(Failed(kFalse));
  for (const HRESULT status : {kNullPointer, kFailed, kOutOfMemory, kInvalidArgument}) EXPECT_TRUE(Failed(status));
}
