#include "Player/Properties.hpp"

#include <gtest/gtest.h>

namespace Player {
namespace {

std::string Listed(const Properties& aProps) {
    std::string lText;
    for (auto lEntry = aProps.Begin(); lEntry != aProps.End(); ++lEntry) {
        lText += lEntry->Key() + "=" + lEntry->Val() + ";";
    }
    return lText;
}

TEST(Property, HoldsKeyAndValue) {
    Property lProperty("key", "val");
    EXPECT_EQ("key", lProperty.Key());
    lProperty.Val() = "other";
    const Property lCopy(lProperty);
    EXPECT_EQ("other", lCopy.Val());
    Property lAssigned("", "");
    lAssigned = lCopy;
    EXPECT_EQ("key", lAssigned.Key());
    EXPECT_EQ("other", lAssigned.Val());
}

TEST(Properties, ReplacedValuesKeepTheirPlace) {
    Properties lProps;
    lProps.Insert("a", "1");
    lProps.Insert("b", "2");
    lProps.Insert("a", "3");
    EXPECT_EQ("a=3;b=2;", Listed(lProps));
    lProps.Insert(Property("c", "4"));
    lProps.Insert(Property("b", "5"));
    EXPECT_EQ("a=3;b=5;c=4;", Listed(lProps));
}

TEST(Properties, InsertsAnEntryOfItsOwn) {
    Properties lProps;
    lProps.Insert("a", "1");
    lProps.Insert(*lProps.Begin());
    EXPECT_EQ("a=1;", Listed(lProps));
}

TEST(Properties, GetOfAMissingKeyEmptiesTheOutput) {
    Properties lProps;
    lProps.Insert("k", "v");
    std::string lVal = "old";
    lProps.Get("k", lVal);
    EXPECT_EQ("v", lVal);
    lProps.Get("missing", lVal);
    EXPECT_EQ("", lVal);
    EXPECT_EQ("v", lProps.Get("k"));
    EXPECT_EQ("", lProps.Get("missing"));
}

TEST(Properties, HasTellsAnEmptyValueFromNone) {
    Properties lProps;
    EXPECT_FALSE(lProps.Has("k"));
    EXPECT_FALSE(lProps.Is("k", ""));
    lProps.Insert("k", "");
    EXPECT_TRUE(lProps.Has("k"));
    EXPECT_TRUE(lProps.Is("k", ""));
    EXPECT_EQ("", lProps.Get("k"));
}

TEST(Properties, KeysAndValuesCompareByteForByte) {
    Properties lProps;
    lProps.Insert("Key", "Val");
    EXPECT_TRUE(lProps.Is("Key", "Val"));
    EXPECT_FALSE(lProps.Is("Key", "val"));
    EXPECT_FALSE(lProps.Is("Key", "Val "));
    EXPECT_FALSE(lProps.Is("key", "Val"));
    EXPECT_FALSE(lProps.Has("key"));
    EXPECT_FALSE(lProps.Has("Key "));
    lProps.Insert("key", "other");
    EXPECT_EQ("Key=Val;key=other;", Listed(lProps));
}

TEST(Properties, Erase) {
    Properties lProps;
    lProps.Insert("a", "1");
    lProps.Insert("b", "2");
    lProps.Insert("c", "3");
    lProps.Erase("b");
    lProps.Erase("missing");
    EXPECT_EQ("a=1;c=3;", Listed(lProps));
    lProps.Insert("b", "4");
    EXPECT_EQ("a=1;c=3;b=4;", Listed(lProps));
}

TEST(Properties, EntriesMayBeChangedInPlace) {
    Properties lProps;
    lProps.Insert("a", "1");
    for (auto lEntry = lProps.Begin(); lEntry != lProps.End(); ++lEntry)
        lEntry->Val() += "!";
    EXPECT_EQ("1!", lProps.Get("a"));
}

TEST(Properties, CopiesTheListButNotTheOwners) {
    const SharedPtr<Properties, SharedObject> lOriginal(new Properties);
    lOriginal->Insert("a", "1");
    EXPECT_EQ(1U, lOriginal->GetRefCount());

    const Properties lCopy(*lOriginal);
    EXPECT_EQ(0U, lCopy.GetRefCount());
    EXPECT_EQ("a=1;", Listed(lCopy));

    const SharedPtr<Properties, SharedObject> lAssigned(new Properties);
    lAssigned->Insert("b", "2");
    *lAssigned = *lOriginal;
    EXPECT_EQ(1U, lAssigned->GetRefCount());
    EXPECT_EQ("a=1;", Listed(*lAssigned));
    lAssigned->Insert("a", "9");
    EXPECT_EQ("a=1;", Listed(*lOriginal));
}

}  // namespace
}  // namespace Player
