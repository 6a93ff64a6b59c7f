// The short way from a text to its tree: what it takes, with the library's tree, and what it leaves to the library.

#include "platform/xml_plain.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "tests/platform/dom_reader.h"
#include "tests/platform/tree_comparison.h"

namespace {

constexpr std::u16string_view kLeft = u"(left)";
constexpr std::u16string_view kRefused = u"(refused)";

// The tree that a reader makes of a text, written. The reader sees a copy with nothing behind its last unit, so that a
// checker of addresses finds each step beyond it.
template <typename Read>
std::u16string Written(std::u16string_view text, Read read, std::u16string_view otherwise) {
  const std::vector<char16_t> units(text.begin(), text.end());
  XmlTree tree;
  return read(std::u16string_view(units.data(), units.size()), &tree) ? WrittenTree(tree) : std::u16string(otherwise);
}

std::u16string ByShortWay(std::u16string_view text) { return Written(text, ReadPlainXml, kLeft); }
std::u16string ByLibrary(std::u16string_view text) { return Written(text, ReadByLibrary, kRefused); }

std::string Printed(std::u16string_view text) { return testing::PrintToString(std::u16string(text.substr(0, 1000))); }

void ExpectTaken(std::u16string_view text) {
  const std::u16string written = ByShortWay(text);
  EXPECT_NE(written, kLeft) << Printed(text);
  EXPECT_EQ(written, ByLibrary(text)) << Printed(text);
}

void ExpectLeftAndTakenByTheLibrary(std::u16string_view text) {
  EXPECT_EQ(ByShortWay(text), kLeft) << Printed(text);
  EXPECT_NE(ByLibrary(text), kRefused) << Printed(text);
}

void ExpectLeftAndRefused(std::u16string_view text) {
  EXPECT_EQ(ByShortWay(text), kLeft) << Printed(text);
  EXPECT_EQ(ByLibrary(text), kRefused) << Printed(text);
}

// Returns whether the short way takes the text, which the library must take then too.
bool AgreesOn(std::u16string_view text) {
  const std::u16string written = ByShortWay(text);
  if (written == kLeft) return false;
  EXPECT_EQ(written, ByLibrary(text)) << Printed(text);
  return true;
}

std::u16string Wide(std::string_view ascii) { return std::u16string(ascii.begin(), ascii.end()); }

std::u16string Number(int number) { return Wide(std::to_string(number)); }

std::u16string Repeated(std::u16string_view piece, std::size_t count) {
  std::u16string text;
  while (count-- != 0) text += piece;
  return text;
}

std::u16string Nested(std::size_t depth) { return Repeated(u"<g>", depth) + Repeated(u"</g>", depth); }

std::u16string WithAttributes(int count) {
  std::u16string text = u"<svg";
  for (int i = 0; i < count; ++i) text += u" a" + Number(i) + u"='" + Number(i) + u"'";
  return text + u"/>";
}

std::u16string WithPrefixedAttributes(int count) {
  std::u16string text = u"<svg xmlns:p='u'";
  for (int i = 0; i < count; ++i) text += u" p:a" + Number(i) + u"='" + Number(i) + u"'";
  return text + u"/>";
}

// Documents that the short way takes, which between them use each of its routines.
constexpr std::u16string_view kDocuments[] = {
    u"<a/>",
    u"<a></a>",
    u" <a b='c' d=\"e\"/> ",
    u"<?xml version='1.0' encoding=\"utf-8\" standalone='no' ?>\n<a/>",
    u"<?xml version=\"1.0\"?><!--b--><?c d?><a/><!-- e --><?f?>\r\n",
    u"<a\tb = 'c'\r\n\td='\te\r\nf' ></a\n>",
    u"<a b='&amp;&lt;x&quot;' c=\"&#65;&#x1F600;&#13;\"/>",
    u"<a>b&amp;c&gt;&apos;d&#x41;e&#66;</a>",
    u"<a>b]c]]&gt;d\re\r\nf</a>",
    u"<a>\u00E9\u4E00\u8000\uE000\uFFFD</a>",
    u"<a b='\u00E9\uFFFD0123456789\u8000abcdef'/>",
    u"<a><b> </b> <c>d</c>\n e <f/> </a>",
    u"<a xml:space='preserve'> <b xml:space='default'> </b>&#32;</a>",
    u"<a> <![CDATA[b]]]> <![CDATA[]]>c<![CDATA[<d\r\n&]]></a>",
    u"<a><!-- - b\r--> <!----></a>",
    u"<a> <?b c?d\r?><?e?> <?xml-stylesheet f?></a>",
    u"<p:a xmlns:p='u' p:b='1' b='2'><p:c/></p:a>",
    u"<a xmlns='u' xmlns:p='v'><b xmlns:p='u' p:c='1'/><d p:c='2'/></a>",
    u"<a xmlns:p='u' xmlns:q='v'><b p:c='1' q:c='2' p:d='3'/></a>",
    u"<a xml:space='preserve' xmlns:xml='http://www.w3.org/XML/1998/namespace'> </a>",
    u"<svg width=\"10\" height=\"20\"><g id=\"g1\" style=\"fill:none\"><path d=\"M 0 0 L 10 10 z\"/></g></svg>",
};

}  // namespace

TEST(XmlPlain, TreesThatDifferInAnythingAreWrittenDifferently) {
  const std::u16string_view texts[] = {u"<a/>",
                                       u"<b/>",
                                       u"<a b=''/>",
                                       u"<a b='c'/>",
                                       u"<a b='c' d=''/>",
                                       u"<a b='' d='c'/>",
                                       u"<a p:b='c' xmlns:p='u'/>",
                                       u"<a q:b='c' xmlns:q='u'/>",
                                       u"<a> </a>",
                                       u"<a>b</a>",
                                       u"<a><![CDATA[b]]></a>",
                                       u"<a><!--b--></a>",
                                       u"<a> <!--b--></a>",
                                       u"<a><!--b--> </a>",
                                       u"<a><b/></a>",
                                       u"<a> <b/></a>",
                                       u"<a><b> </b></a>",
                                       u"<a><b/> </a>",
                                       u"<a><?b?></a>",
                                       u"<a><?b c?></a>",
                                       u"<a><b/><c/></a>",
                                       u"<a><c/><b/></a>",
                                       u"<a><b><c/></b></a>",
                                       u"<a xml:space='preserve'/>",
                                       u"<a xml:space='default'/>",
                                       u"<a xml:space='preserve'> </a>"};
  for (std::size_t i = 0; i < std::size(texts); ++i) {
    for (std::size_t j = 0; j < std::size(texts); ++j) {
      EXPECT_EQ(ByLibrary(texts[i]) == ByLibrary(texts[j]), i == j) << Printed(texts[i]) << Printed(texts[j]);
    }
  }
  EXPECT_EQ(ByLibrary(u"<a b='1' c='2' xmlns='u'/>"), ByLibrary(u"<a xmlns='u' c='2' b='1'/>"));
}

TEST(XmlPlain, XmlDeclarationsInEveryFormAreTaken) {
  for (const std::u16string_view declaration :
       {u"<?xml version='1.0'?>", u"<?xml version=\"1.0\"?>", u"<?xml version='1.0' ?>",
        u"<?xml\r\n\tversion = \"1.0\"\r\n?>", u"<?xml version='1.0' encoding='UTF-8'?>",
        u"<?xml version='1.0' encoding=\"iso-8859-1\" ?>", u"<?xml version='1.0' encoding\n=\n'windows-1252'?>",
        u"<?xml version='1.0' encoding='UTF-16'?>", u"<?xml version='1.0' encoding='x'?>",
        u"<?xml version='1.0' encoding='EBCDIC-US.2_a'?>", u"<?xml version='1.0' encoding='Z'?>",
        u"<?xml version='1.0' encoding='z9'?>", u"<?xml version='1.0' encoding='an-encoding-of-a-long-name'?>",
        u"<?xml version='1.0' standalone='yes'?>", u"<?xml version='1.0' standalone=\"no\"?>",
        u"<?xml version='1.0' standalone = 'no' ?>", u"<?xml version=\"1.0\" encoding='utf-8' standalone=\"no\"?>",
        u"<?xml  version='1.0'  encoding='utf-8'  standalone='yes'  ?>"}) {
    ExpectTaken(std::u16string(declaration) + u"<a>\u00E9</a>");
    ExpectTaken(std::u16string(declaration) + u"\n<!--b-->\n<a/>");
  }
}

TEST(XmlPlain, CommentsInstructionsAndBlanksAroundTheElementAreTaken) {
  for (const std::u16string_view text :
       {u"<a/>", u"\n\t\r <a/>", u"<a/> \r\n\t", u"<!--b--><a/>", u"<a/><!--b-->", u"<?b c?><a/>", u"<a/><?b?>",
        u" <!--b--> <?c d?> <!--e--> <a/> <!--f--> <?g?> ", u"<!--\r--><a/><?b \r?>",
        u"<?xml version='1.0'?><?xml-stylesheet href='b'?><a/>",
        u"                                <a/>                                "}) {
    ExpectTaken(text);
  }
}

TEST(XmlPlain, TagsAreTakenHoweverTheyAreSpaced) {
  for (const std::u16string_view text : {u"<a/>",
                                         u"<a />",
                                         u"<a\r\n/>",
                                         u"<a></a>",
                                         u"<a ></a >",
                                         u"<a\t\n></a\t\r\n>",
                                         u"<a b='1'/>",
                                         u"<a b='1' />",
                                         u"<a b='1'></a>",
                                         u"<a b='1' ></a>",
                                         u"<a  b='1'  c=\"2\"  />",
                                         u"<a\tb='1'\nc='2'\r\nd='3'\re='4'\n/>",
                                         u"<a b ='1'/>",
                                         u"<a b= '1'/>",
                                         u"<a b\n=\r\n'1'/>",
                                         u"<a b='1'\n                                c='2'/>",
                                         u"<_/>",
                                         u"<_._-0 _-=''/>",
                                         u"<A.B-C_9 Z='1' z='2'/>",
                                         u"<abcdefghijklmnopqrstuvwxyz ABCDEFGHIJKLMNOPQRS=''/>",
                                         u"<a><b><c></c></b></a>",
                                         u"<a><b></b><b/></a>",
                                         u"<xmla xmlns-b='1' xmlnsc='2' xml='3' XMLd='4'/>"}) {
    ExpectTaken(text);
  }
}

TEST(XmlPlain, ValuesAreTakenWithTheirQuotesBreaksAndReferences) {
  for (const std::u16string_view text :
       {u"<a b=''/>", u"<a b=\"\"/>", u"<a b='\"'/>", u"<a b=\"'\"/>", u"<a b='>]]>-->?>/='/>", u"<a b=' c  d '/>",
        u"<a b='\t'/>", u"<a b='\n'/>", u"<a b='\r'/>", u"<a b='\r\n'/>", u"<a b='\n\r'/>", u"<a b='\r\r\n\n'/>",
        u"<a b='c\rd\r\ne\nf\tg'/>", u"<a b='c\r&amp;\nd\r\n&#13;\r'/>", u"<a b='&#13;\n&#10;\r&#9;\t'/>",
        u"<a b='&lt;&gt;&amp;&apos;&quot;'/>", u"<a b=\"x&lt;y&gt;z\"/>", u"<a b='&amp;lt;&#38;lt;'/>",
        u"<a b='\u00E9\r\n&lt;\uFFFD'/>"}) {
    ExpectTaken(text);
  }
}

TEST(XmlPlain, ReferencesToCharactersAreTaken) {
  for (const std::u16string_view reference :
       {u"&#9;",      u"&#10;",     u"&#13;",      u"&#32;",      u"&#x20;",   u"&#65;",
        u"&#x41;",    u"&#x4a;",    u"&#x4A;",     u"&#xfFfD;",   u"&#127;",   u"&#x80;",
        u"&#xD7FF;",  u"&#xE000;",  u"&#65533;",   u"&#x10000;",  u"&#65536;", u"&#x1F600;",
        u"&#x1FFFE;", u"&#x1FFFF;", u"&#x10FFFF;", u"&#1114111;", u"&#0065;",  u"&#x000000000000041;"}) {
    ExpectTaken(u"<a>" + std::u16string(reference) + u"</a>");
    ExpectTaken(u"<a>b" + std::u16string(reference) + u"c" + std::u16string(reference) + u"</a>");
    ExpectTaken(u"<a b='" + std::u16string(reference) + u"' c=\"d" + std::u16string(reference) + u"e\"/>");
  }
}

TEST(XmlPlain, BracketsInTextAreTaken) {
  for (const std::u16string_view text : {u"]", u"]]", u"]]]", u"]>", u"] ]>", u"]]&gt;", u"]&#93;>", u"b]c]]d", u"[[",
                                         u">", u"]\r]", u"]&amp;]", u"--> ?>", u"'\"=/"}) {
    ExpectTaken(u"<a>" + std::u16string(text) + u"</a>");
    ExpectTaken(u"<a>0123456789abcde" + std::u16string(text) + u"0123456789abcdef<b/></a>");
  }
}

TEST(XmlPlain, UnitsOfEveryKindAreTaken) {
  for (const char16_t unit : std::initializer_list<char16_t>{0x7F, 0x80, 0x9F, 0xA0, 0xFF, 0x100, 0x7FFF, 0x8000,
                                                             0x8020, 0x803C, 0xD7FF, 0xE000, 0xFEFF, 0xFF3C, 0xFFFD}) {
    const std::u16string text(3, unit);
    ExpectTaken(u"<a b='" + text + u"'>" + text + u"<!--" + text + u"--><?p " + text + u"?><![CDATA[" + text +
                u"]]></a>");
  }
}

TEST(XmlPlain, AUnitFrom8000OnIsNoStopAtAnyPlaceInFrontOfOne) {
  for (std::size_t distance = 0; distance <= 17; ++distance) {
    for (const char16_t unit : std::initializer_list<char16_t>{0x8000, 0x9F20, 0xE03C, 0xFFFD}) {
      const std::u16string text = unit + std::u16string(distance, u'x');
      for (const std::u16string& piece : {text, u"0123456789" + text, text + text}) {
        ExpectTaken(u"<a b='" + piece + u"' c=\"" + piece + u"\"/>");
        ExpectTaken(u"<a>" + piece + u"</a>");
        ExpectTaken(u"<a>" + piece + u"&amp;" + piece + u"]" + piece + u"\r" + piece + u"</a>");
        ExpectTaken(u"<a><!--" + piece + u"--><?p " + piece + u"?><![CDATA[" + piece + u"]]></a>");
      }
    }
  }
}

TEST(XmlPlain, StopsAreFoundBehindPiecesOfEveryLength) {
  for (std::size_t length = 0; length <= 40; ++length) {
    for (const char16_t unit : {u'x', u' ', u'\n', u'\r', u'\u00E9', u'\u4E00', u'\u9000'}) {
      const std::u16string piece(length, unit);
      ExpectTaken(u"<a b='" + piece + u"'/>");
      ExpectTaken(u"<a b=\"" + piece + u"&amp;" + piece + u"\r\n" + piece + u"\"/>");
      ExpectTaken(u"<a>" + piece + u"</a>");
      ExpectTaken(u"<a>" + piece + u"&amp;" + piece + u"]" + piece + u"\r\n" + piece + u"<b/>" + piece + u"y</a>");
      ExpectTaken(u"<a><!--" + piece + u"-" + piece + u"\r\n" + piece + u"--></a>");
      ExpectTaken(u"<a><?p " + piece + u"?" + piece + u"\r\n" + piece + u"?></a>");
      ExpectTaken(u"<a><![CDATA[" + piece + u"]" + piece + u"\r\n" + piece + u"]]></a>");
    }
    const std::u16string blanks(length, u' ');
    const std::u16string name = u"n" + std::u16string(length, u'm');
    ExpectTaken(blanks + u"<a" + blanks + u"/>" + blanks);
    ExpectTaken(u"<a b" + blanks + u"=" + blanks + u"'' " + blanks + u"c=''></a" + blanks + u">");
    ExpectTaken(u"<" + name + u" " + name + u"='' x='y'></" + name + u">");
    ExpectTaken(u"<a xmlns:" + name + u"='u'><" + name + u":b " + name + u":" + name + u"=''/></a>");
    ExpectTaken(u"<a><?" + name + u"?><?" + name + u" b?></a>");
  }
}

TEST(XmlPlain, WhatNeedsNoChangeLiesInTheTextWhateverStandsInFrontOfIt) {
  const std::u16string_view text =
      u"<a b='\r' c='1\t\u9000'><!--\r--><!--2--><?d e\r?><?d 3?><![CDATA[\r]]><![CDATA[4]]>\r5<e/>6]\n</a>";
  Dom dom;
  bool success = false;
  ASSERT_EQ(dom->loadXML(text, &success), kOk);
  const auto liesInTheText = [text](IXMLDOMNode* node) {
    std::u16string_view view;
    node->get_text(&view);
    return view.data() >= text.data() && view.data() + view.size() <= text.data() + text.size();
  };
  EXPECT_FALSE(liesInTheText(FindAttribute(dom.Root(), u"b")));
  EXPECT_TRUE(liesInTheText(FindAttribute(dom.Root(), u"c")));
  for (const std::int32_t child : {0, 2, 4, 6}) EXPECT_FALSE(liesInTheText(Child(dom.Root(), child))) << child;
  for (const std::int32_t child : {1, 3, 5, 8}) EXPECT_TRUE(liesInTheText(Child(dom.Root(), child))) << child;
}

TEST(XmlPlain, CDataIsTaken) {
  for (const std::u16string_view text :
       {u"<a><![CDATA[]]></a>", u"<a><![CDATA[ ]]></a>", u"<a><![CDATA[]]]></a>", u"<a><![CDATA[]]]]></a>",
        u"<a><![CDATA[]>]]></a>", u"<a><![CDATA[> ]> ]] >]]></a>", u"<a><![CDATA[<b>&amp;&<!-- -- -->]]></a>",
        u"<a><![CDATA[\r]]><![CDATA[\r\n\r]]></a>", u"<a>b<![CDATA[c]]>d</a>", u"<a> <![CDATA[]]> </a>",
        u"<a><![CDATA[b]]><![CDATA[c]]></a>", u"<a><![CDATA[<![CDATA[]]>]] ></a>"}) {
    ExpectTaken(text);
  }
}

TEST(XmlPlain, CommentsAreTaken) {
  for (const std::u16string_view text :
       {u"<a><!----></a>", u"<a><!-- --></a>", u"<a><!-->--></a>", u"<a><!--->--></a>", u"<a><!-- - - --></a>",
        u"<a><!--b-c--></a>", u"<a><!--\r-\r\n\r--></a>", u"<a><!--<b>&c]]>--></a>", u"<a>b<!--c-->d</a>",
        u"<a> <!--b--> <!--c--></a>"}) {
    ExpectTaken(text);
  }
}

TEST(XmlPlain, InstructionsAreTaken) {
  for (const std::u16string_view text :
       {u"<a><?b?></a>", u"<a><?b ?></a>", u"<a><?b c?></a>", u"<a><?b  c ?></a>", u"<a><?b\r\nc\rd\r\n?></a>",
        u"<a><?b ?\?></a>", u"<a><?b ? >?></a>", u"<a><?b c?d?></a>", u"<a><?b <c>&d]]>--?></a>",
        u"<a><?xml-stylesheet href='b'?></a>", u"<a><?xm?><?x?><?mlx c?></a>", u"<a><?aml?><?xal?><?xma?></a>",
        u"<a>b<?c?>d</a>", u"<a> <?b?> </a>", u"<b><?b b?><b b='b'/></b>"}) {
    ExpectTaken(text);
  }
}

TEST(XmlPlain, WhiteSpaceIsDroppedOrKeptInEveryNesting) {
  const std::u16string_view tags[] = {u"<b>", u"<b xml:space='preserve'>", u"<b xml:space='default'>",
                                      u"<b xml:space='odd'>", u"<b xml:space=' preserve'>"};
  for (const std::u16string_view outer : tags) {
    for (const std::u16string_view middle : tags) {
      for (const std::u16string_view inner : tags) {
        ExpectTaken(std::u16string(outer) + u" \n" + std::u16string(middle) + u"\t" + std::u16string(inner) +
                    u"\r\n</b> <![CDATA[ ]]> </b>\r x <b/> </b>");
      }
    }
  }
}

TEST(XmlPlain, WhiteSpaceOfReferencesIsDroppedOrKeptLikeAnyOther) {
  for (const std::u16string_view blanks : {u"&#32;", u" &#x20; ", u"&#9;&#10;&#13;", u"\r&#13;\r\n"}) {
    ExpectTaken(u"<a>" + std::u16string(blanks) + u"</a>");
    ExpectTaken(u"<a>b<c/>" + std::u16string(blanks) + u"<c/>" + std::u16string(blanks) + u"d</a>");
    ExpectTaken(u"<a xml:space='preserve'>" + std::u16string(blanks) + u"<b/>" + std::u16string(blanks) + u"</a>");
  }
}

TEST(XmlPlain, NamesWithPrefixesAreTaken) {
  for (const std::u16string_view text : {u"<a xmlns='u'/>",
                                         u"<a xmlns=''/>",
                                         u"<a xmlns='u'><b xmlns=''/><c/></a>",
                                         u"<p:a xmlns:p='u'/>",
                                         u"<p:a xmlns:p='u'></p:a>",
                                         u"<a xmlns:p='u'><p:b/><p:b></p:b></a>",
                                         u"<a xmlns:p='u' p:b='1' b='2'/>",
                                         u"<a p:b='1' xmlns:p='u'/>",
                                         u"<p:p p:p='1' p='2' xmlns:p='p'/>",
                                         u"<a xmlns:p='u' xmlns:q='u' p:b='1' q:c='2'/>",
                                         u"<a xmlns:p='u' xmlns:q='v' p:b='1' q:b='2'/>",
                                         u"<a xmlns:p='u' xmlns='u' p:b='1' b='2'/>",
                                         u"<xml:a/>",
                                         u"<a xml:lang='en' xml:base='b' xml:id='c' xml:d='e'/>",
                                         u"<a xmlns:p='u' p:xmlns='1' p:xml='2'/>",
                                         u"<a xmlns:p='&amp;b' xmlns:q='&#117;\r\n' q:c=''/>",
                                         u"<a xmlns:p='not a URI' xmlns='../b'/>",
                                         u"<a xmlns:xmlnsb='u' xmlnsb:c=''/>",
                                         u"<a xmlns:xmk='u' xmk:space='preserve'> </a>",
                                         u"<a:b xmlns:a='u'><b xmlns:b='v'><b:a/><a:a b:b=''/></b></a:b>"}) {
    ExpectTaken(text);
  }
}

TEST(XmlPlain, APrefixIsWhatItIsDeclaredForWhereItStands) {
  for (const std::u16string_view text :
       {u"<a xmlns:p='u'><b xmlns:p='v' p:c='1'/><d p:c='2'/></a>",
        u"<a xmlns:p='u' xmlns:q='v'><b xmlns:q='u'/><c p:d='1' q:d='2'/></a>",
        u"<a xmlns:p='u' xmlns:q='v'><b xmlns:q='u'></b><c p:d='1' q:d='2'></c></a>",
        u"<a xmlns:p='u' xmlns:q='u'><b xmlns:q='v' p:c='1' q:c='2'/></a>",
        u"<a xmlns:p='u' xmlns:q='u'><b xmlns:q='v'><c xmlns:p='w' p:d='1' q:d='2'/><c p:d='1' q:d='2'/></b></a>",
        u"<a><b xmlns:p='u'><p:c/></b><b xmlns:p='v'><p:c p:d='1'/></b></a>",
        u"<a xmlns:p='u' xmlns:q='v'><b xmlns:p='v' xmlns:q='u' p:c='1' q:c='2'/><b p:c='1' q:c='2'/></a>"}) {
    ExpectTaken(text);
  }
  for (const std::u16string_view text :
       {u"<a><b xmlns:p='u'/><p:c/></a>", u"<a><b xmlns:p='u'></b><c p:d='1'/></a>",
        u"<a><b xmlns:p='u'><c xmlns:p='v'/></b><p:d/></a>", u"<a p:b='1'><c xmlns:p='u'/></a>",
        u"<a xmlns:p='u' xmlns:q='v'><b xmlns:q='u' p:c='1' q:c='2'/></a>",
        u"<a xmlns:p='u' xmlns:q='u'><b xmlns:q='v'/><c p:d='1' q:d='2'/></a>",
        u"<a xmlns:p='u' xmlns:q='u'><b xmlns:q='v'></b><c p:d='1' q:d='2'/></a>"}) {
    ExpectLeftAndRefused(text);
  }
}

TEST(XmlPlain, TheDeclarationOfXmlIsTakenAndNotKept) {
  const std::u16string declaration = u" xmlns:xml='http://www.w3.org/XML/1998/namespace'";
  ExpectTaken(u"<a" + declaration + u"/>");
  ExpectTaken(u"<a" + declaration + u" xml:space='preserve'> <b/> </a>");
  ExpectTaken(u"<a xml:space='preserve'" + declaration + u"> <b/> </a>");
  ExpectTaken(u"<a" + declaration + u"><b xml:space='preserve'> </b></a>");
  ExpectTaken(u"<a xml:space='preserve'> <b" + declaration + u" xml:space='default'> </b> </a>");
  ExpectTaken(u"<a b='1'" + declaration + u" c='2'><xml:d" + declaration + u"/></a>");
  ExpectTaken(u"<a xmlns:xml='http://www.w3.org/XML/1998/n&#97;mespace' xml:lang='b'/>");
  EXPECT_EQ(ByShortWay(u"<a" + declaration + declaration + u"/>"), kLeft);
}

TEST(XmlPlain, NestingIsTakenUpTo256) {
  ExpectTaken(Nested(255));
  ExpectTaken(Nested(256));
  ExpectTaken(Repeated(u"<g>", 255) + u"<g/><g/>" + Repeated(u"</g>", 255));
  ExpectLeftAndRefused(Nested(257));
  ExpectLeftAndRefused(Repeated(u"<g>", 256) + u"<g/>" + Repeated(u"</g>", 256));
}

TEST(XmlPlain, AttributesAreTakenUpTo10000) {
  ExpectTaken(WithAttributes(9'999));
  ExpectTaken(WithAttributes(10'000));
  ExpectLeftAndRefused(WithAttributes(10'001));
  const std::u16string declaration = u"<svg xmlns:xml='http://www.w3.org/XML/1998/namespace'";
  ExpectTaken(declaration + WithAttributes(9'999).substr(4));
  ExpectLeftAndRefused(declaration + WithAttributes(10'000).substr(4));
}

TEST(XmlPlain, AttributesWithPrefixesAreTakenUpTo31) {
  ExpectTaken(WithPrefixedAttributes(31));
  for (const int count : {32, 33, 100}) ExpectLeftAndTakenByTheLibrary(WithPrefixedAttributes(count));
  Dom dom;
  ASSERT_TRUE(dom.Load(WithPrefixedAttributes(100)));
  EXPECT_EQ(Attribute(dom.Root(), u"p:a99"), u"99");
  // Declarations are none of them, and each tag is counted on its own.
  const std::u16string element = WithPrefixedAttributes(31);
  ExpectTaken(u"<g xmlns:a='1' xmlns:b='2' xmlns:c='3'>" + element + element + u"</g>");
}

TEST(XmlPlain, NamesAreTakenUpTo1000Units) {
  const auto withNames = [](std::size_t units) {
    const std::u16string name(units, u'n');
    return u"<" + name + u" " + name + u"='1'><?" + name + u"?></" + name + u">";
  };
  ExpectTaken(withNames(1000));
  ExpectLeftAndTakenByTheLibrary(withNames(1001));
  ExpectLeftAndTakenByTheLibrary(u"<a " + std::u16string(1001, u'n') + u"='1'/>");
  ExpectLeftAndTakenByTheLibrary(u"<a><?" + std::u16string(1001, u'n') + u"?></a>");
}

TEST(XmlPlain, NamesThatAreAlikeAreKeptApart) {
  // Alike in their ends and length, with or without their middle, in a sum of these, and in all units but one.
  for (const std::vector<std::u16string_view>& names : std::vector<std::vector<std::u16string_view>>{
           {u"abz", u"acz", u"adz"},
           {u"abcde", u"aXcYe", u"a-c.e"},
           {u"az", u"abcdez", u"abcdeabcdz"},
           {u"eb", u"ac", u"iA"},
           {u"abcdefghijklmnopqrstuvwxyz", u"abcdefghijklmnopqrstuvwXyz", u"abcdefghijkl.nopqrstuvwxyz"},
           {u"p:a", u"q:a", u"p_a", u"pqa"},
           {u"xmlns", u"xmlnt", u"xmlns-", u"Xmlns"}}) {
    std::u16string text = u"<r xmlns:p='u' xmlns:q='v'>";
    for (int round = 0; round < 3; ++round) {
      for (const std::u16string_view name : names) {
        text += u"<" + std::u16string(name);
        for (const std::u16string_view attribute : names) text += u" " + std::u16string(attribute) + u"='1'";
        text += u"></" + std::u16string(name) + u">";
      }
    }
    ExpectTaken(text + u"</r>");
  }
  ExpectLeftAndRefused(u"<r><abz/><acz></abz></r>");
  ExpectLeftAndRefused(u"<r abz='' acz='' abz=''/>");
}

TEST(XmlPlain, NamesBeyondTheFirstSizeOfTheirTableAreTaken) {
  std::u16string text = u"<r xmlns:p='u'>";
  for (int round = 0; round < 2; ++round) {
    for (int i = 0; i < 700; ++i) {
      const std::u16string number = Number(i);
      text += u"<e" + number + u" a" + number + u"='" + number + u"' p:b" + number + u"=''/>";
    }
  }
  ExpectTaken(text + u"</r>");
}

TEST(XmlPlain, MistakesAroundTheElementAreLeft) {
  for (const std::u16string_view text :
       {u"", u" ", u"b", u"<a></a></a>", u"</a>", u"<a/></a>", u"<a/><b/>", u"<a/><a>", u"<a/>b", u"b<a/>",
        u"&#32;<a/>", u"<a/>&#32;", u"<?b?>", u"\uFEFF<a/>", u"\uFFFE<a/>", u"\u00A0<a/>", u"<a/>\u00A0"}) {
    ExpectLeftAndRefused(text);
  }
}

TEST(XmlPlain, MistakesInTagsAreLeft) {
  for (const std::u16string_view text : {u"<",
                                         u"<a",
                                         u"<a ",
                                         u"<a b",
                                         u"<a b=",
                                         u"<a b='",
                                         u"<a b='1",
                                         u"<a b='1'",
                                         u"<a/",
                                         u"<a>",
                                         u"<a>b",
                                         u"<a> ",
                                         u"<a><",
                                         u"<a></",
                                         u"<a></a",
                                         u"<a></a ",
                                         u"<a></a</a>",
                                         u"<a></a </a>",
                                         u"<a></a<b/></a>",
                                         u"<a></a/>",
                                         u"<a></a b='1'>",
                                         u"<a></ a>",
                                         u"<a></>",
                                         u"<a></ab>",
                                         u"<ab></a>",
                                         u"<a></A>",
                                         u"<a><b></a>",
                                         u"<a><b></a></b>",
                                         u"< a/>",
                                         u"<>",
                                         u"</>",
                                         u"<a / >",
                                         u"<a/ b='1'>",
                                         u"<a //>",
                                         u"<a><b <c/></a>",
                                         u"<1/>",
                                         u"<-a/>",
                                         u"<.a/>",
                                         u"<a!/>",
                                         u"<a\u00A0b='1'/>",
                                         u"<a\u0001/>",
                                         u"<a b/>",
                                         u"<a b=1/>",
                                         u"<a b='1\"/>",
                                         u"<a b='1' 'c'/>",
                                         u"<a b='1'c='2'/>",
                                         u"<a b==''/>",
                                         u"<a =''/>",
                                         u"<a ''/>",
                                         u"<a 1=''/>",
                                         u"<a b='<'/>",
                                         u"<a b='1' b='2'/>",
                                         u"<a b='1' c='2' b='3'/>"}) {
    ExpectLeftAndRefused(text);
  }
}

TEST(XmlPlain, MistakesInReferencesAreLeft) {
  for (const std::u16string_view reference :
       {u"&",        u"&;",       u"&b",       u"& amp;",   u"&amp",       u"&ampx;",        u"&AMP;",
        u"&nbsp;",   u"&lt",      u"&c;",      u"&#;",      u"&#x;",       u"&#x;;",         u"&#x;41;",
        u"&#65",     u"&# 65;",   u"&#65 ;",   u"&#-65;",   u"&#+65;",     u"&#6A;",         u"&#6:;",
        u"&#x4:;",   u"&#x4<;",   u"&#x4=;",   u"&#x4>;",   u"&#x4?;",     u"&#x4@;",        u"&#x4G;",
        u"&#x4g;",   u"&#x4/;",   u"&#X41;",   u"&#xx41;",  u"&#0;",       u"&#1;",          u"&#x1F;",
        u"&#xD800;", u"&#xDFFF;", u"&#xFFFE;", u"&#65535;", u"&#x110000;", u"&#4294967361;", u"&#x100000041;",
        u"&#\u0666;"}) {
    ExpectLeftAndRefused(u"<a>" + std::u16string(reference) + u"</a>");
    ExpectLeftAndRefused(u"<a b='" + std::u16string(reference) + u"'/>");
    ExpectLeftAndRefused(u"<a b=\"c" + std::u16string(reference) + u"d\"/>");
  }
}

TEST(XmlPlain, MistakesInCommentsSectionsAndInstructionsAreLeft) {
  for (const std::u16string_view text : {u"<![CDATA[]]><a/>",
                                         u"<![CDATA[<a/>",
                                         u"<![CDATA[ <a/>",
                                         u"<a/><![CDATA[",
                                         u"<a/><![CDATA[]]>",
                                         u"<!--b-->",
                                         u"<a>]]></a>",
                                         u"<a>b]]]></a>",
                                         u"<a>0123456789abcde]]></a>",
                                         u"<a><!</a>",
                                         u"<a><!-</a>",
                                         u"<a><!-b--></a>",
                                         u"<a><!--</a>",
                                         u"<a><!--></a>",
                                         u"<a><!---></a>",
                                         u"<a><!-- -- --></a>",
                                         u"<a><!-- ---></a>",
                                         u"<a><!--b-- ></a>",
                                         u"<a><!--b->",
                                         u"<a><!--b--",
                                         u"<!--b--",
                                         u"<a><![CDATA</a>",
                                         u"<a><![CDATA[</a>",
                                         u"<a><![CDATA[]]</a>",
                                         u"<a><![CDATA[]] ></a>",
                                         u"<a><![cdata[]]></a>",
                                         u"<a><![CDATA []]></a>",
                                         u"<a><?></a>",
                                         u"<a><?\?></a>",
                                         u"<a><? b?></a>",
                                         u"<a><?1?></a>",
                                         u"<a><?b</a>",
                                         u"<a><?b?</a>",
                                         u"<a><?b> </a>",
                                         u"<a><?b/?></a>",
                                         u"<a><?b?c?></a>",
                                         u"<a><?xml?></a>",
                                         u"<a><?xml version='1.0'?></a>",
                                         u"<a><?XML b?></a>",
                                         u"<a><?xMl?></a>"}) {
    ExpectLeftAndRefused(text);
  }
}

TEST(XmlPlain, MistakesInXmlDeclarationsAreLeft) {
  for (const std::u16string_view text : {u" <?xml version='1.0'?><a/>",
                                         u"<!--b--><?xml version='1.0'?><a/>",
                                         u"<?xml version='1.0'?><?xml version='1.0'?><a/>",
                                         u"<?xml version='1.0'?>",
                                         u"<?xml?><a/>",
                                         u"<?xml ?><a/>",
                                         u"<?xml encoding='UTF-8'?><a/>",
                                         u"<?xml standalone='yes'?><a/>",
                                         u"<?xmlversion='1.0'?><a/>",
                                         u"<?xml version='1.0><a/>",
                                         u"<?xml version='1.0\"?><a/>",
                                         u"<?xml version=1.0?><a/>",
                                         u"<?xml version '1.0'?><a/>",
                                         u"<?xml version='1.0'encoding='utf-8'?><a/>",
                                         u"<?xml version='1.0' encoding='utf-8' version='1.0'?><a/>",
                                         u"<?xml version='1.0' standalone='yes' encoding='utf-8'?><a/>",
                                         u"<?xml version='1.0' standalone='Yes'?><a/>",
                                         u"<?xml version='1.0' standalone=''?><a/>",
                                         u"<?xml version='1.0' b='c'?><a/>",
                                         u"<?xml version='1.0'><a/>",
                                         u"<?xml version='1.0'? ><a/>",
                                         u"<?xml version='1.1'?><a/>",
                                         u"<?xml version='1.00'?><a/>",
                                         u"<?xml version=''?><a/>",
                                         u"<?XML version='1.0'?><a/>"}) {
    ExpectLeftAndRefused(text);
  }
  const std::u16string declaration = u"<?xml version='1.0' encoding='utf-8' standalone='yes' ?>";
  for (std::size_t length = 1; length < declaration.size(); ++length) {
    ExpectLeftAndRefused(declaration.substr(0, length) + u"<a/>");
    if (declaration[length - 1] == u'=') ExpectLeftAndRefused(declaration.substr(0, length) + u"?><a/>");
  }
}

TEST(XmlPlain, DocumentTypesAreLeft) {
  for (const std::u16string_view text : {u"<!DOCTYPE a><a/>", u"<!DOCTYPE a [<!ENTITY b 'c'>]><a>&b;</a>",
                                         u"<a/><!DOCTYPE a>", u"<a><!DOCTYPE a></a>", u"<!ELEMENT a ANY><a/>"}) {
    ExpectLeftAndRefused(text);
  }
}

TEST(XmlPlain, MistakesInNamespacesAreLeft) {
  for (const std::u16string_view text : {u"<a xmlns='u' xmlns='u'/>",
                                         u"<a xmlns:p='u' xmlns:p='u'/>",
                                         u"<a xmlns:p='u' p:b='' p:b=''/>",
                                         u"<p:a/>",
                                         u"<a p:b=''/>",
                                         u"<p:a xmlns:q='u'/>",
                                         u"<a xmlns:p='u'><P:b/></a>",
                                         u"<p:a xmlns:p='u'></a>",
                                         u"<p:a xmlns:p='u' xmlns:q='u'></q:a>",
                                         u"<a xmlns:p=''/>",
                                         u"<a xmlns:p='u'><b xmlns:p=''/></a>",
                                         u"<a xmlns:xmlns='u'/>",
                                         u"<a xmlns:xml='u'/>",
                                         u"<a xmlns:xml=''/>",
                                         u"<a xmlns:p='http://www.w3.org/XML/1998/namespace'/>",
                                         u"<a xmlns='http://www.w3.org/XML/1998/namespace'/>",
                                         u"<a xmlns='http://www.w3.org/XML/1998/n&#97;mespace'/>",
                                         u"<a xmlns:p='http://www.w3.org/2000/xmlns/'/>",
                                         u"<a xmlns='http://www.w3.org/2000/xmlns/'/>",
                                         u"<xmlns:a/>",
                                         u"<a xmlns:='u'/>",
                                         u"<a xmlns:1='u'/>",
                                         u"<a xmlns:p='u' p:=''/>",
                                         u"<a xmlns:p='u' p:1=''/>",
                                         u"<a xmlns:p='u' p:b:c=''/>",
                                         u"<a xmlns:p='u'><p:b:c/></a>",
                                         u"<a :b=''/>",
                                         u"<:a/>",
                                         u"<a xmlns:p='u' xmlns:q='u' p:b='' q:b=''/>",
                                         u"<a xmlns:p='u' xmlns:q='&#117;' p:b='' q:b=''/>"}) {
    ExpectLeftAndRefused(text);
  }
}

TEST(XmlPlain, CharactersThatNoDocumentHasAreLeft) {
  const auto at = [](std::u16string_view units) {
    for (const std::size_t length : {0, 1, 15, 16, 17}) {
      const std::u16string piece = std::u16string(length, u'x') + std::u16string(units);
      ExpectLeftAndRefused(u"<a>" + piece + u"</a>");
      ExpectLeftAndRefused(u"<a>" + piece + u"0123456789abcdef</a>");
      ExpectLeftAndRefused(u"<a>&amp;" + piece + u"]</a>");
      ExpectLeftAndRefused(u"<a b='" + piece + u"'/>");
      ExpectLeftAndRefused(u"<a b=\"" + piece + u"0123456789abcdef\"/>");
      ExpectLeftAndRefused(u"<a><!--" + piece + u"--></a>");
      ExpectLeftAndRefused(u"<a><?b " + piece + u"?></a>");
      ExpectLeftAndRefused(u"<a><![CDATA[" + piece + u"0123456789abcdef]]></a>");
      ExpectLeftAndRefused(u"<!--" + piece + u"--><a/>");
      ExpectLeftAndRefused(u"<a/><?b " + piece + u"?>");
    }
    ExpectLeftAndRefused(std::u16string(units) + u"<a/>");
    ExpectLeftAndRefused(u"<a/>" + std::u16string(units));
    ExpectLeftAndRefused(u"<a" + std::u16string(units) + u"/>");
    ExpectLeftAndRefused(u"<a b" + std::u16string(units) + u"=''/>");
    ExpectLeftAndRefused(u"<a></a" + std::u16string(units) + u">");
  };
  for (const char16_t unit : std::initializer_list<char16_t>{0x0, 0x1, 0x8, 0xB, 0xC, 0xE, 0x1F, 0xD800, 0xDBFF, 0xDC00,
                                                             0xDFFF, 0xFFFE, 0xFFFF}) {
    at(std::u16string(1, unit));
  }
  at(u"\xDC00\xD800");
}

TEST(XmlPlain, WhatIsRightButUncommonIsLeft) {
  for (const std::u16string_view text :
       {u"<\u00E9/>", u"<a\u00E9/>", u"<a \u00E9='1'/>", u"<a b\u4E00='1'/>", u"<\U00010000/>", u"<a><?\u00E9?></a>",
        u"<a><?b\u00E9 c?></a>", u"<a xmlns:\u00E9='u'/>", u"<a xmlns:p='u' p:\u00E9=''/>", u"<a>\U0001F600</a>",
        u"<a>0123456789\U0010FFFFabcdef</a>", u"<a b='\U0001F600'/>", u"<a><!--\U0001F600--></a>",
        u"<a><![CDATA[\U0001F600]]></a>", u"<a><?b \U0001F600?></a>", u"<!--\U0001F600--><a/>",
        u"<?xml-stylesheet href='b'?><a/>", u"<a><?xml-model b?><?XML-stylesheet?><?xmlb?></a>"}) {
    ExpectLeftAndTakenByTheLibrary(text);
  }
}

TEST(XmlPlain, WhatTheLibraryMayTakeOrRefuseIsLeft) {
  for (const std::u16string_view text :
       {u"<?xml version='1.0' encoding=''?><a/>", u"<?xml version='1.0' encoding='1'?><a/>",
        u"<?xml version='1.0' encoding=' utf-8'?><a/>", u"<?xml version='1.0' encoding='utf-8 '?><a/>",
        u"<?xml version='1.0' encoding='\u00E9'?><a/>", u"<?xml version='1.0' encoding='utf-8'standalone='yes'?><a/>",
        u"<a><?b:c?></a>", u"<a><?b:c d?></a>", u"<a><?:?></a>"}) {
    EXPECT_EQ(ByShortWay(text), kLeft) << Printed(text);
  }
}

TEST(XmlPlain, ATextThatMayBeTooLongForTheLibraryIsLeft) {
  // Only the length is looked at: a text of this size that is read would be a fault.
  const char16_t unit = u'<';
  XmlTree tree;
  EXPECT_FALSE(ReadPlainXml(std::u16string_view(&unit, 200'000'001), &tree));
}

TEST(XmlPlain, ADocumentThatIsLeftInItsMiddleIsReadFromItsStart) {
  EXPECT_EQ(Shown(u"<a b='1&amp;'>c<!--d--> <e>f&lt;<\u00E9/></e></a>"), u"a['c'!d!e['f<'\u00E9[]]]");
  EXPECT_EQ(Shown(u"<a b='1&amp;'>c<!--d--> <e>f&lt;\U0001F600</e></a>"), u"a['c'!d!e['f<\U0001F600']]");
}

TEST(XmlPlain, DocumentsWithAUnitLessOrMoreAreReadAsByTheLibrary) {
  int taken = 0;
  for (const std::u16string_view document : kDocuments) {
    ExpectTaken(document);
    for (std::size_t i = 0; i < document.size(); ++i) {
      std::u16string text(document);
      text.erase(i, 1);
      taken += AgreesOn(text);
      text = document;
      text.insert(i, 1, document[i]);
      taken += AgreesOn(text);
    }
  }
  EXPECT_GT(taken, 500);
}

TEST(XmlPlain, DocumentsWithAnotherUnitAreReadAsByTheLibrary) {
  constexpr char16_t kUnits[] = {u'<', u'>', u'&', u'"', u'\'', u'/',  u'=',  u'?',  u'!', u'-',   u'[',  u']',
                                 u':', u' ', u'x', u'1', u';',  u'\r', u'\n', u'\0', 0xE9, 0x8000, 0xD800};
  int taken = 0;
  for (const std::u16string_view document : kDocuments) {
    for (std::size_t i = 0; i < document.size(); ++i) {
      std::u16string text(document);
      for (const char16_t unit : kUnits) {
        text[i] = unit;
        taken += AgreesOn(text);
      }
    }
  }
  EXPECT_GT(taken, 3000);
}

TEST(XmlPlain, DocumentsThatAreCutAreReadAsByTheLibrary) {
  int taken = 0;
  for (const std::u16string_view document : kDocuments) {
    for (std::size_t length = 0; length < document.size(); ++length) taken += AgreesOn(document.substr(0, length));
  }
  // What stands behind the element can be cut.
  EXPECT_GT(taken, 0);
}
