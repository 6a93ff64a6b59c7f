// Texts and values of documents: what white space, references and line ends become.

#include <gtest/gtest.h>

#include <string>

#include "tests/platform/dom_reader.h"

namespace {

std::u16string Units(std::size_t count, char16_t unit) { return std::u16string(count, unit); }

}  // namespace

TEST(XmlAttributeValue, KeepsTabsAndLineFeeds) {
  EXPECT_EQ(AttributeA(u"<e a='M 1 2\n\tL 3 4\n'/>"), u"M 1 2\n\tL 3 4\n");
  EXPECT_EQ(AttributeA(u"<e a=\"\t\"/>"), u"\t");
  EXPECT_EQ(AttributeA(u"<e a='\n\n\t\t  '/>"), u"\n\n\t\t  ");
}

TEST(XmlAttributeValue, LineEndsBecomeLineFeeds) {
  EXPECT_EQ(AttributeA(u"<e a='1\r\n2\r3\n4\r\r\n5'/>"), u"1\n2\n3\n4\n\n5");
  EXPECT_EQ(AttributeA(u"<e a='\u00E4\r\n2\r3&amp;\r'/>"), u"\u00E4\n2\n3&\n");
}

TEST(XmlAttributeValue, KeepsTabsAndLineFeedsBesideReferencesAndOtherCharacters) {
  EXPECT_EQ(AttributeA(u"<e a='1\n2\t&lt;\n3'/>"), u"1\n2\t<\n3");
  EXPECT_EQ(AttributeA(u"<e a='1\n2\t\u00E9\n3'/>"), u"1\n2\t\u00E9\n3");
  EXPECT_EQ(AttributeA(u"<e a='\u20AC\n\t&#x41;'/>"), u"\u20AC\n\tA");
}

TEST(XmlAttributeValue, EachValueGetsItsOwnTabsAndLineFeeds) {
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<e a='1\n2' b=\"'\t'\" c='\u00E9\n' d=' ' f='\t\n'><g a='\n' b='x y' c='x\ty'/></e>"));
  EXPECT_EQ(Attribute(dom.Root(), u"a"), u"1\n2");
  EXPECT_EQ(Attribute(dom.Root(), u"b"), u"'\t'");
  EXPECT_EQ(Attribute(dom.Root(), u"c"), u"\u00E9\n");
  EXPECT_EQ(Attribute(dom.Root(), u"d"), u" ");
  EXPECT_EQ(Attribute(dom.Root(), u"f"), u"\t\n");
  EXPECT_EQ(Attribute(Child(dom.Root(), 0), u"a"), u"\n");
  EXPECT_EQ(Attribute(Child(dom.Root(), 0), u"b"), u"x y");
  EXPECT_EQ(Attribute(Child(dom.Root(), 0), u"c"), u"x\ty");
}

TEST(XmlAttributeValue, NamespaceDeclarationsKeepThemToo) {
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<e a='1\n' xmlns:p\n=\n'u\n\tv' b='\t2' xmlns='w\n' xmlnsx='\n' c='3\n'/>"));
  EXPECT_EQ(Attribute(dom.Root(), u"xmlns:p"), u"u\n\tv");
  EXPECT_EQ(Attribute(dom.Root(), u"xmlns"), u"w\n");
  EXPECT_EQ(Attribute(dom.Root(), u"xmlnsx"), u"\n");
  EXPECT_EQ(Attribute(dom.Root(), u"a"), u"1\n");
  EXPECT_EQ(Attribute(dom.Root(), u"b"), u"\t2");
  EXPECT_EQ(Attribute(dom.Root(), u"c"), u"3\n");
}

TEST(XmlAttributeValue, BlanksAreNeitherJoinedNorTrimmed) {
  EXPECT_EQ(AttributeA(u"<e a='  1   2  '/>"), u"  1   2  ");
}

TEST(XmlAttributeValue, ReferencesAreReplaced) {
  EXPECT_EQ(AttributeA(u"<e a='&lt;&gt;&amp;&apos;&quot;'/>"), u"<>&'\"");
  EXPECT_EQ(AttributeA(u"<e a='&#65;&#x42;&#x20AC;&#38;&#60;'/>"), u"AB\u20AC&<");
  EXPECT_EQ(AttributeA(u"<e a='&#9;&#10;&#13;'/>"), u"\t\n\r");
  EXPECT_EQ(AttributeA(u"<e a='&amp;amp;'/>"), u"&amp;");
}

TEST(XmlAttributeValue, CharactersBeyondTheBasicPlaneAreSurrogatePairs) {
  EXPECT_EQ(AttributeA(u"<e a='&#x1F600;'/>"), u"\U0001F600");
  EXPECT_EQ(AttributeA(u"<e a='x\U0001F600y\U0010FFFF'/>"), u"x\U0001F600y\U0010FFFF");
}

TEST(XmlAttributeValue, HoldsTheOtherQuoteAndAngles) {
  EXPECT_EQ(AttributeA(u"<e a=\"it's > 1\"/>"), u"it's > 1");
  EXPECT_EQ(AttributeA(u"<e a='\"'/>"), u"\"");
}

TEST(XmlAttributeValue, MayBeEmpty) {
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<e a=''/>"));
  ASSERT_NE(FindAttribute(dom.Root(), u"a"), nullptr);
  EXPECT_EQ(Attribute(dom.Root(), u"a"), u"");
}

TEST(XmlAttributeValue, OfEveryLengthAroundTheBlocksOfTheScan) {
  for (std::size_t length = 0; length < 70; ++length) {
    for (const char16_t last : {u'x', u'\n', u'\u00E4', u'\u4E00', u'"'}) {
      const std::u16string value = Units(length, u'1') + last;
      EXPECT_EQ(AttributeA(u"<e a='" + value + u"'/>"), value) << length;
    }
  }
}

TEST(XmlAttributeValue, OfFifteenMillionUnitsWorks) {
  std::u16string value = Units(15'000'000, u'5');
  for (std::size_t i = 79; i < value.size(); i += 80) value[i] = u'\n';
  EXPECT_TRUE(AttributeA(u"<e a='" + value + u"'/>") == value);
  value[7'000'000] = u'\u00E4';
  EXPECT_TRUE(AttributeA(u"<e a='" + value + u"'/>") == value);
}

TEST(XmlText, OfTwelveMillionUnitsIsOneNode) {
  std::u16string text = Units(12'000'000, u't');
  for (std::size_t i = 79; i < text.size(); i += 80) text[i] = u'\n';
  text[5'000'000] = u'\u00E4';
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<e>" + text + u"</e>"));
  EXPECT_EQ(ChildCount(dom.Root()), 1);
  EXPECT_TRUE(TextOf(Child(dom.Root(), 0)) == text);
}

TEST(XmlText, LineEndsBecomeLineFeedsEverywhere) {
  EXPECT_EQ(Shown(u"<e>1\r\n2\r3\n4\r\r\n5<![CDATA[\r\n\r]]><!--\r\n\r--><?p \r\nq\rr?></e>"),
            u"e['1\n2\n3\n4\n\n5'{\n\n}!\n\n!?p q\nr?]");
  EXPECT_EQ(Shown(u"<e\r\n>\u00E4\r\n\u4E00\r</e\r>\r"), u"e['\u00E4\n\u4E00\n']");
}

TEST(XmlText, ReferencesAreReplacedAndMakeOneNodeWithTheTextAround) {
  EXPECT_EQ(Shown(u"<e>a&lt;b&#x1F600;\u00E4&amp;&#13;c</e>"), u"e['a<b\U0001F600\u00E4&\rc']");
  EXPECT_EQ(Shown(u"<e>&gt;&apos;&quot;</e>"), u"e['>'\"']");
  EXPECT_EQ(Shown(u"<e>&amp;lt;</e>"), u"e['&lt;']");
}

TEST(XmlText, CharactersOfEveryLengthInUtf8) {
  const std::u16string text = u"\u007F\u0080\u07FF\u0800\uD7FF\uE000\uFFFD\U00010000\U0010FFFF";
  EXPECT_EQ(RootText(u"<e>" + text + u"</e>"), text);
  EXPECT_EQ(AttributeA(u"<e a='" + text + u"'/>"), text);
  EXPECT_EQ(Shown(u"<e><![CDATA[" + text + u"]]></e>"), u"e[{" + text + u"}]");
  EXPECT_EQ(Shown(u"<e><!--" + text + u"--></e>"), u"e[!" + text + u"!]");
}

TEST(XmlText, NamesMayHoldLettersBeyondAscii) {
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<\u00E9l xmlns:\u00FC='u' \u00FC:\u00E4='1'/>"));
  EXPECT_EQ(BaseName(dom.Root()), u"\u00E9l");
  EXPECT_EQ(Attribute(dom.Root(), u"\u00FC:\u00E4"), u"1");
  EXPECT_EQ(BaseName(FindAttribute(dom.Root(), u"\u00FC:\u00E4")), u"\u00E4");
}

TEST(XmlText, ThousandsOfNamesAreKeptApart) {
  std::u16string text = u"<r xmlns:p='u'>";
  for (int i = 0; i < 3000; ++i) {
    std::u16string number;
    for (const char digit : std::to_string(i)) number.push_back(static_cast<char16_t>(digit));
    text += u"<e" + number + u" a" + number + u"='" + number + u"' p:a" + number + u"='p" + number + u"'/>";
  }
  Dom dom;
  ASSERT_TRUE(dom.Load(text + u"</r>"));
  IXMLDOMNode* const last = Child(dom.Root(), 2999);
  EXPECT_EQ(BaseName(last), u"e2999");
  EXPECT_EQ(Attribute(last, u"a2999"), u"2999");
  EXPECT_EQ(Attribute(last, u"p:a2999"), u"p2999");
  EXPECT_EQ(BaseName(Child(dom.Root(), 0)), u"e0");
  EXPECT_EQ(Attribute(Child(dom.Root(), 127), u"p:a127"), u"p127");
}

TEST(XmlWhiteSpace, AloneIsDropped) {
  EXPECT_EQ(Shown(u"<e> \t\r\n </e>"), u"e[]");
  EXPECT_EQ(Shown(u"<e>\n <a/>\n <b> </b> </e>"), u"e[a[]b[]]");
  EXPECT_EQ(Shown(u"<e> <!--c--> <?p q?> <a/> </e>"), u"e[!c!?p q?a[]]");
}

TEST(XmlWhiteSpace, BesideOtherCharactersIsKept) {
  EXPECT_EQ(Shown(u"<e> x\n</e>"), u"e[' x\n']");
  EXPECT_EQ(Shown(u"<e>\n\n&lt; </e>"), u"e['\n\n< ']");
  EXPECT_EQ(Shown(u"<e> \u00A0 </e>"), u"e[' \u00A0 ']");
}

TEST(XmlWhiteSpace, FromReferencesIsDroppedLikeAnyOther) { EXPECT_EQ(Shown(u"<e> &#32;&#10;&#13;&#9; </e>"), u"e[]"); }

TEST(XmlWhiteSpace, InCDataIsKept) {
  EXPECT_EQ(Shown(u"<e><![CDATA[ \n ]]></e>"), u"e[{ \n }]");
  EXPECT_EQ(Shown(u"<e> <![CDATA[]]> </e>"), u"e[{}]");
}

TEST(XmlWhiteSpace, IsKeptWhereItIsPreserved) {
  EXPECT_EQ(Shown(u"<e xml:space='preserve'> <a> </a> </e>"), u"e[' 'a[' ']' ']");
  EXPECT_EQ(Shown(u"<e> <a xml:space='preserve'> </a> </e>"), u"e[a[' ']]");
}

TEST(XmlWhiteSpace, PreservingEndsWithDefaultAndWithTheElement) {
  EXPECT_EQ(Shown(u"<e xml:space='preserve'> <a xml:space='default'> <b> </b></a> </e>"), u"e[' 'a[b[]]' ']");
  EXPECT_EQ(Shown(u"<e> <a xml:space='preserve'> </a> <b> </b></e>"), u"e[a[' ']b[]]");
}

TEST(XmlWhiteSpace, OtherValuesOfSpaceChangeNothing) {
  EXPECT_EQ(Shown(u"<e xml:space='preserve'><a xml:space='PRESERVE'> </a></e>"), u"e[a[' ']]");
  EXPECT_EQ(Shown(u"<e xml:space=' preserve'> </e>"), u"e[]");
  EXPECT_EQ(Shown(u"<e space='preserve'> </e>"), u"e[]");
  EXPECT_EQ(Shown(u"<e xmlns:x='u' x:space='preserve'> </e>"), u"e[]");
}

TEST(XmlNodes, CDataSectionsAreNodesOfTheirOwn) {
  EXPECT_EQ(Shown(u"<e>a<![CDATA[<&]]>b<![CDATA[]>]]><![CDATA[c]]></e>"), u"e['a'{<&}'b'{]>}{c}]");
}

TEST(XmlNodes, CommentsAndInstructionsPartTexts) {
  EXPECT_EQ(Shown(u"<e>a<!--b-->c<?d?>e</e>"), u"e['a'!b!'c'?d ?'e']");
}

TEST(XmlNodes, CommentsAndInstructionsEndWhereTheirCloserStands) {
  EXPECT_EQ(Shown(u"<e><!-- > -> - --><?p > q?\?></e>"), u"e[! > -> - !?p > q??]");
  EXPECT_EQ(Shown(u"<e><!-->--><!--->--><?p?>?></e>"), u"e[!>!!->!?p ?'?>']");
  EXPECT_EQ(Shown(u"<e><![CDATA[]]]><![CDATA[]]]]><![CDATA[> ]> ]] >]]></e>"), u"e[{]}{]]}{> ]> ]] >}]");
  EXPECT_EQ(Shown(u"<e><!----></e>"), u"e[!!]");
}

TEST(XmlNodes, WhatStandsOutsideTheElementIsNoChildOfIt) {
  EXPECT_EQ(Shown(u"<!--a--><?b?><e/><!--c--><?d?>"), u"e[]");
}

TEST(XmlElementText, JoinsTextAndCDataOfAllDescendants) {
  EXPECT_EQ(RootText(u"<e>a<b>c<![CDATA[<d>]]></b>e<f><g>h</g></f></e>"), u"ac<d>eh");
  EXPECT_EQ(RootText(u"<e>a<!--no--><?no no?>b<c no='no'/></e>"), u"ab");
  EXPECT_EQ(RootText(u"<e/>"), u"");
  EXPECT_EQ(RootText(u"<e><a/> <b/></e>"), u"");
}

TEST(XmlElementText, OfAnElementAtEachPlace) {
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<e>a<b>c</b>d</e>"));
  EXPECT_EQ(TextOf(Child(dom.Root(), 1)), u"c");
  EXPECT_EQ(TextOf(dom.Root()), u"acd");
}

TEST(XmlElementText, IsTrimmedAtBothEnds) {
  EXPECT_EQ(RootText(u"<e>\r\n\t a  b \n</e>"), u"a  b");
  EXPECT_EQ(RootText(u"<e> <a> x </a> </e>"), u"x");
  EXPECT_EQ(RootText(u"<e><![CDATA[ \n ]]></e>"), u"");
  EXPECT_EQ(RootText(u"<e>\u00A0x\u00A0</e>"), u"\u00A0x\u00A0");
}

TEST(XmlElementText, IsNotTrimmedWherePreserved) {
  EXPECT_EQ(RootText(u"<e xml:space='preserve'> a <b/> </e>"), u" a  ");
  EXPECT_EQ(RootText(u"<e> <a xml:space='preserve'> x </a> </e>"), u"x");
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<e xml:space='preserve'><a> x </a><b xml:space='default'> y </b></e>"));
  EXPECT_EQ(TextOf(Child(dom.Root(), 0)), u" x ");
  EXPECT_EQ(TextOf(Child(dom.Root(), 1)), u"y");
}

TEST(XmlElementText, WhiteSpaceDroppedBetweenTwoPiecesIsOneBlank) {
  EXPECT_EQ(RootText(u"<e><a>x</a>\n  <a>y</a></e>"), u"x y");
  EXPECT_EQ(RootText(u"<e>x<a>\n</a>y</e>"), u"x y");
  EXPECT_EQ(RootText(u"<e><a>x\n</a>\n<a>\ny</a></e>"), u"x\n \ny");
  EXPECT_EQ(RootText(u"<e>x<!--c-->\n<b>y</b></e>"), u"x y");
  EXPECT_EQ(RootText(u"<e><b>x</b>\n<!--c-->y</e>"), u"x y");
  EXPECT_EQ(RootText(u"<e><b>x</b>\n<![CDATA[y]]></e>"), u"x y");
}

TEST(XmlElementText, HoweverManyStretchesWereDroppedBetweenTwoPiecesItIsOneBlank) {
  EXPECT_EQ(RootText(u"<e><g>\n<a>x</a>\n</g>\n<g>\n<a>y</a>\n</g></e>"), u"x y");
  EXPECT_EQ(RootText(u"<e>x<a> </a><b> </b><!--c--> <!--d-->y</e>"), u"x y");
  EXPECT_EQ(RootText(u"<e><a>x</a> <![CDATA[]]> <a>y</a></e>"), u"x y");
}

TEST(XmlElementText, WhiteSpaceDroppedInFrontOfTheFirstOrBehindTheLastPieceIsNothing) {
  EXPECT_EQ(RootText(u"<e> <b> </b> <a>x</a> <b> </b> </e>"), u"x");
  EXPECT_EQ(RootText(u"<e xml:space='preserve'><b xml:space='default'> <a>x</a> </b></e>"), u"x");
  Dom dom;
  ASSERT_TRUE(dom.Load(u"<e>a <b>x</b> <b>y</b></e>"));
  EXPECT_EQ(TextOf(Child(dom.Root(), 1)), u"x");
  EXPECT_EQ(TextOf(dom.Root()), u"a x y");
}

TEST(XmlElementText, NothingDroppedIsNoBlank) { EXPECT_EQ(RootText(u"<e><a>x</a><a>y</a></e>"), u"xy"); }

TEST(XmlElementText, OfTheDeepestTreeIsJoined) {
  std::u16string text;
  for (int i = 0; i < 256; ++i) text += u"<g>x";
  for (int i = 0; i < 256; ++i) text += u"y</g>";
  EXPECT_EQ(RootText(text), Units(256, u'x') + Units(256, u'y'));
}
