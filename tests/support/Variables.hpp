#pragma once

#include <map>
#include <mutex>
#include <string>

namespace TestSupport {

/// The named values of a dialogue, written {name} in its lines; {name+1} is a number one higher, {*} any text.
/// Safe to use from several threads.
class Variables {
public:
    void Set(const std::string& aName, const std::string& aValue);
    /// Empty when there is none.
    std::string Get(const std::string& aName) const;

    /// The text with every value put in. Throws `std::invalid_argument` for a name without a value.
    std::string Expand(const std::string& aText) const;
    /// The same for a message: a name without a value stays as it is written.
    std::string ExpandKnown(const std::string& aText) const;

    /// Whether the text is what the pattern says. A name without a value takes the text up to what follows
    /// it in the pattern (at least one character) and keeps it as its value if the whole pattern matches.
    bool Match(const std::string& aPattern, const std::string& aText);

private:
    using Map = std::map<std::string, std::string>;

    mutable std::mutex mMutex;
    Map mValues;
};

}  // namespace TestSupport
