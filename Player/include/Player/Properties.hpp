#pragma once

#include <list>
#include <string>

#include "Player/Ptr.hpp"
#include "Player/SharedObject.hpp"

namespace Player {

/// One key and its value, both text.
class Property {
public:
    Property(const std::string& aKey, const std::string& aVal) : mKey(aKey), mVal(aVal) {}

    const std::string& Key() const { return mKey; }
    const std::string& Val() const { return mVal; }
    std::string& Val() { return mVal; }

private:
    std::string mKey;
    std::string mVal;
};

/// A bag of settings or of what a description says: text values by case-sensitive key, one entry per
/// key, in the order in which the keys first came.
class Properties : public SharedObject {
public:
    using Iterator = std::list<Property>::iterator;
    using ConstIterator = std::list<Property>::const_iterator;

    Properties() : SharedObject(0) {}

    /// Whether `aKey` is there and its value is exactly `aVal`.
    bool Is(const std::string& aKey, const std::string& aVal) const;
    /// The value, or empty text when the key is absent; `Has` distinguishes the two.
    void Get(const std::string& aKey, std::string& aVal) const;
    std::string Get(const std::string& aKey) const;
    bool Has(const std::string& aKey) const;

    void Erase(const std::string& aKey);
    /// A key that is there keeps its place and gets the new value; any other is appended.
    void Insert(const Property& aProperty);
    void Insert(const std::string& aKey, const std::string& aVal);

    Iterator Begin() { return mList.begin(); }
    Iterator End() { return mList.end(); }
    ConstIterator Begin() const { return mList.begin(); }
    ConstIterator End() const { return mList.end(); }

private:
    ConstIterator Find(const std::string& aKey) const;

    std::list<Property> mList;
};

}  // namespace Player
