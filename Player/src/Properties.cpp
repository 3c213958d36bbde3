#include "Player/Properties.hpp"

#include <algorithm>

namespace Player {

namespace {

template <typename List>
auto FindIn(List& aList, const std::string& aKey) {
    return std::find_if(aList.begin(), aList.end(), [&](const Property& aEntry) { return aEntry.Key() == aKey; });
}

}  // namespace

Properties::ConstIterator Properties::Find(const std::string& aKey) const {
    return FindIn(mList, aKey);
}

bool Properties::Is(const std::string& aKey, const std::string& aVal) const {
    const ConstIterator lEntry = Find(aKey);
    return lEntry != mList.end() && lEntry->Val() == aVal;
}

void Properties::Get(const std::string& aKey, std::string& aVal) const {
    const ConstIterator lEntry = Find(aKey);
    if (lEntry == mList.end()) {
        aVal.clear();
    } else {
        aVal = lEntry->Val();
    }
}

std::string Properties::Get(const std::string& aKey) const {
    std::string lVal;
    Get(aKey, lVal);
    return lVal;
}

bool Properties::Has(const std::string& aKey) const {
    return Find(aKey) != mList.end();
}

void Properties::Erase(const std::string& aKey) {
    const ConstIterator lEntry = Find(aKey);
    if (lEntry != mList.end()) { mList.erase(lEntry); }
}

void Properties::Insert(const Property& aProperty) {
    const Iterator lEntry = FindIn(mList, aProperty.Key());
    if (lEntry == mList.end()) {
        mList.push_back(aProperty);
    } else {
        lEntry->Val() = aProperty.Val();
    }
}

void Properties::Insert(const std::string& aKey, const std::string& aVal) {
    Insert(Property(aKey, aVal));
}

}  // namespace Player
