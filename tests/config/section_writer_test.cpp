// Tests the output of a save.
#include <tova/config/file_item.hpp>

#include "config/listing.hpp"
#include "config/text_files.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace config_support;
using tova::config::file_item;
using tova::generic::argument;
using tova::generic::varg_list;

TEST(SectionWriter, WritesASectionWithItsEntriesAndAnEmptyLine) {
    EXPECT_EQ("[s]\na=12\n\n", resaved("[s]\na=1 2\n"));
    EXPECT_EQ("[s]\na=\"1 2\"\n\n", resaved("[s]\na=\"1 2\"\n"));
    EXPECT_EQ("", resaved(""));
}

TEST(SectionWriter, WritesInTreeOrderAndLowerCaseWithoutComments) {
    EXPECT_EQ("[a]\nx=1\ny=2\n\n[bb]\nm=3\n\n",
              resaved("# remark\n[BB]\nM=3 # remark\n\n[A]\nY=2\nX=1\n"));
}

TEST(SectionWriter, DropsEntriesOutsideAnySection) {
    EXPECT_EQ("[s]\nk=2\n\n", resaved("top=1\n[s]\nk=2\n"));
    EXPECT_EQ("", resaved("top=1\narray[]=1,2\n"));
}

TEST(SectionWriter, WritesAnEntryUnderEverySectionWithANameOfTheSameLength) {
    EXPECT_EQ("[a]\nx=1\ny=2\n\n[b]\nx=1\ny=2\n\n", resaved("[a]\nx=1\n[b]\ny=2\n"));
    EXPECT_EQ("[a]\nx=1\n\n[bb]\ny=2\n\n", resaved("[a]\nx=1\n[bb]\ny=2\n"));
    // The parent may itself be an entry. Its children then appear under a section with a name of
    // that length.
    EXPECT_EQ("[z]\nsub=2\nx=1\n\n", saved([](file_item& item) {
                  item.set("z.x = 1", 0);
                  item.set("k = top", 0);
                  item.set("k.sub = 2", 0);
              }));
}

TEST(SectionWriter, WritesASectionForEachStepOfAPath) {
    EXPECT_EQ("[a]\n\n[a.b]\nk=1\n\n", resaved("[a.b]\nk=1\n"));
    EXPECT_EQ("[\"a b\"]\nk=1\n\n", resaved("[\"a b\"]\nk=1\n"));
}

TEST(SectionWriter, WritesArraysOnOneLine) {
    EXPECT_EQ("[s]\nk[]=a,\"b c\",d\nm=1\n\n", resaved("[s]\nm=1\nk[]=a,\"b c\",\nd\n"));
}

TEST(SectionWriter, WritesMoreThanTenElementsInByteOrder) {
    EXPECT_EQ("[s]\nk[]=0,1,10,11,2,3,4,5,6,7,8,9\n\n",
              resaved("[s]\nk[]=0,1,2,3,4,5,6,7,8,9,10,11\n"));
}

TEST(SectionWriter, RepeatsElementsUnderASectionWithANameAsLongAsTheArraysPath) {
    EXPECT_EQ("[abc]\nx=1\n0=a\n1=b\n\n[s]\nk[]=a,b\n\n", resaved("[s]\nk[]=a,b\n[abc]\nx=1\n"));
}

TEST(SectionWriter, WritesAKeyThatParsesAsANumberAsPartOfTheArrayBeforeIt) {
    EXPECT_EQ("[s]\n1[]=a,v\nx=w\n\n", resaved("[s]\n1[]=a\n5=v\nx=w\n"));
    // The number may have a sign, a prefix and trailing letters; a key that parses as 0 doesn't
    // count.
    EXPECT_EQ("[s]\n![]=a,v,w\n08=x\n9=y\n\n", resaved("[s]\n![]=a\n-5=v\n07z=w\n08=x\n9=y\n"));
}

TEST(SectionWriter, WritesElementsAfterAGapButNoneWithoutTheFirst) {
    EXPECT_EQ("[s]\nk[]=a,c\n\n", saved([](file_item& item) {
                  item.set_array("s.k", varg_list(argument("a")), varg_list());
                  item.set("s.k.2 = c", 0);
              }));
    EXPECT_EQ("[s]\nk[]=\n\n", saved([](file_item& item) {
                  item.set_array("s.k", varg_list(), varg_list());
                  item.set("s.k.1 = b", 0);
              }));
}

TEST(SectionWriter, EndsAnArrayAtAnElementWithChildren) {
    EXPECT_EQ("[s]\nk[]=a\n\n", saved([](file_item& item) {
                  item.set_array("s.k", varg_list(argument("a"), argument("b")), varg_list());
                  item.set("s.k.0.x = deep", 0);
              }));
}

TEST(SectionWriter, WritesAnArrayWithoutElementsEvenAsTheVeryLastEntry) {
    EXPECT_EQ("[s]\nk[]=\n\n",
              saved([](file_item& item) { item.set_array("s.k", varg_list(), varg_list()); }));
    EXPECT_EQ("[s]\nk[]=\nm=1\n\n", saved([](file_item& item) {
                  item.set_array("s.k", varg_list(), varg_list());
                  item.set("s.m = 1", 0);
              }));
}

TEST(SectionWriter, WritesOnlyTheFlagsWord3AsAnArrayAndOnly0AsASection) {
    EXPECT_EQ("[s]\nalias=t\nk=v\nn=\n\n", saved([](file_item& item) {
                  item.set("s.alias", variant("t"), 4);
                  item.set("s.k", variant("v"), 6);
                  item.set("s.k.0", variant("x"), 0);
                  item.set("s.n", variant(), 0);
              }));
}

TEST(SectionWriter, WritesValuesOfAnyTypeAsStrings) {
    EXPECT_EQ("[s]\na=-7\nb=1\nc=\xC3\xA4\nd=2.5\n\n", saved([](file_item& item) {
                  item.set("s.a", variant(-7), 0);
                  item.set("s.b", variant(true), 0);
                  item.set("s.c", variant(L"\xE4"), 0);
                  item.set("s.d", variant(2.5), 0);
              }));
}

TEST(SectionWriter, QuotesKeysAndSectionsToo) {
    EXPECT_EQ("[\"s t\"]\n\"a b\"=\"c d\"\n\"k l\"[]=\"x y\",z\n\n", saved([](file_item& item) {
                  item.set("s t.a b", variant("c d"), 0);
                  item.set_array("s t.k l", varg_list(argument("x y"), argument("z")), varg_list());
              }));
}

TEST(SectionWriter, ListsAnEmptyNameLikeAnyOther) {
    // The section "a" has an entry with an empty name.
    EXPECT_EQ("[a]\n=1\nx=2\n\n", saved([](file_item& item) {
                  item.set("a.. = 1", 0);
                  item.set("a.x = 2", 0);
              }));
    // Nodes below a child of the root whose name is empty are listed like children of the root.
    EXPECT_EQ("[]\n\n", saved([](file_item& item) { item.set(".x = 1", 0); }));
}

TEST(SectionWriter, WritesAnElementWithACommaThatReadsBackAsTwo) {
    EXPECT_EQ("[s]\nk[]=a,b,c\n\n", resaved("[s]\nk[]=\"a,b\",c\n"));
    EXPECT_EQ((lines{"s: 0 true", "s.k: 3 nil", "s.k.0: 1 'a'", "s.k.1: 1 'b'", "s.k.2: 1 'c'"}),
              loaded(resaved("[s]\nk[]=\"a,b\",c\n")));
}

}  // namespace
