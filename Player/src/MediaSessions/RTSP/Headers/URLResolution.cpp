#include "MediaSessions/RTSP/Headers/URLResolution.hpp"

#include <strings.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "Player/String.hpp"

namespace Player::URL {

namespace {

constexpr char kSchemeEnd[] = "://";
constexpr std::size_t kNone = std::string::npos;

bool IsAlpha(char aCh) {
    return ('a' <= aCh && aCh <= 'z') || ('A' <= aCh && aCh <= 'Z');
}

bool IsSchemeCharacter(char aCh) {
    return IsAlpha(aCh) || ('0' <= aCh && aCh <= '9') || '+' == aCh || '-' == aCh || '.' == aCh;
}

/// Where the scheme ends, 0 without one.
std::size_t SchemeLength(const std::string& aText) {
    const std::size_t lEnd = aText.find(kSchemeEnd);
    if (kNone == lEnd || 0 == lEnd || !IsAlpha(aText[0])) { return 0; }
    return std::all_of(aText.begin(), aText.begin() + static_cast<std::ptrdiff_t>(lEnd), IsSchemeCharacter) ? lEnd : 0;
}

/// Scheme "://" authority, path, query. Put together in this order they are the URL again.
struct Parts {
    std::string mRoot;
    std::string mPath;
    /// Begins with its "?".
    std::string mQuery;

    explicit Parts(const std::string& aURL) {
        const std::size_t lScheme = SchemeLength(aURL);
        const std::size_t lAuthority = 0 == lScheme ? 0 : lScheme + sizeof(kSchemeEnd) - 1;
        const std::size_t lPath = 0 == lScheme ? 0 : std::min(aURL.find_first_of("/?", lAuthority), aURL.size());
        const std::size_t lQuery = std::min(aURL.find('?', lPath), aURL.size());
        mRoot = aURL.substr(0, lPath);
        mPath = aURL.substr(lPath, lQuery - lPath);
        mQuery = aURL.substr(lQuery);
    }
};

/// RFC 3986 section 5.2.4: "a/b/../c/./d" is "a/c/d".
std::string WithoutDotSegments(const std::string& aPath) {
    std::vector<std::string_view> lSegments;
    const std::string_view lPath(aPath);
    bool lEndsInFolder = false;
    for (std::size_t lAt = 1; lAt <= lPath.size();) {
        const std::size_t lEnd = std::min(lPath.find('/', lAt), lPath.size());
        const std::string_view lSegment = lPath.substr(lAt, lEnd - lAt);
        lEndsInFolder = "." == lSegment || ".." == lSegment;
        if (".." == lSegment) {
            if (!lSegments.empty()) { lSegments.pop_back(); }
        } else if ("." != lSegment) {
            lSegments.push_back(lSegment);
        }
        lAt = lEnd + 1;
    }
    std::string lResult;
    for (const std::string_view lSegment : lSegments) {
        lResult.append("/").append(lSegment);
    }
    return lEndsInFolder || lResult.empty() ? lResult + "/" : lResult;
}

/// `aPath` begins with "/".
std::string Normalized(const std::string& aPath) {
    return kNone == aPath.find("/.") ? aPath : WithoutDotSegments(aPath);
}

bool EndsInSlash(const std::string& aText) {
    return !aText.empty() && '/' == aText.back();
}

/// What `aReference`, relative to a folder or to a file in one, means.
std::string ResolvePath(const Parts& aBase, const std::string& aReference) {
    const Parts lReference(aReference);
    if (lReference.mPath.empty()) { return aBase.mRoot + aBase.mPath + lReference.mQuery; }
    const bool lIsFromRoot = '/' == lReference.mPath[0];
    if (!lIsFromRoot && !aBase.mQuery.empty() && EndsInSlash(aBase.mQuery)) {
        return aBase.mRoot + aBase.mPath + aBase.mQuery + aReference;
    }
    const std::size_t lSlash = aBase.mPath.rfind('/');
    const std::string lFolder = kNone == lSlash ? "/" : aBase.mPath.substr(0, lSlash + 1);
    return aBase.mRoot + Normalized(lIsFromRoot ? lReference.mPath : lFolder + lReference.mPath) +
           (lReference.mQuery.empty() ? aBase.mQuery : lReference.mQuery);
}

/// What is no encoding stays as it is.
std::string PercentDecoded(const std::string& aText) {
    std::string lText;
    for (std::size_t i = 0; i < aText.size(); ++i) {
        const int lHigh = '%' == aText[i] && i + 2 < aText.size() ? HexDigit(aText[i + 1]) : -1;
        const int lLow = lHigh < 0 ? -1 : HexDigit(aText[i + 2]);
        if (lLow < 0) {
            lText += aText[i];
            continue;
        }
        lText += static_cast<char>(lHigh * 16 + lLow);
        i += 2;
    }
    return lText;
}

}  // namespace

bool IsAbsolute(const std::string& aText) {
    return 0 != SchemeLength(aText);
}

std::string Resolve(const std::string& aBase, const std::string& aReference) {
    std::string lReference = Trimmed(aReference);
    if (lReference.empty() || "*" == lReference) { return aBase; }
    if (IsAbsolute(lReference)) { return lReference; }
    if (0 == lReference.compare(0, 2, "//")) { return aBase.substr(0, SchemeLength(aBase)) + ":" + lReference; }
    return ResolvePath(Parts(aBase), lReference);
}

std::string BaseOf(const std::string& aRequest, const std::string& aContentBase, const std::string& aContentLocation) {
    std::string lBase = Trimmed(aContentBase);
    if (lBase.empty()) { lBase = Trimmed(aContentLocation); }
    if (lBase.empty() || IsAbsolute(lBase)) { return lBase.empty() ? aRequest : lBase; }
    // "host/clip/" is a host only where it is the one that was asked.
    const Parts lRequest(WithoutUserInfo(aRequest));
    const std::string lScheme = aRequest.substr(0, SchemeLength(aRequest)) + kSchemeEnd;
    const auto lHostOf = [](const std::string& aAuthority) { return HostAndPort(aAuthority, "").first; };
    const std::string lFirst = lBase.substr(0, lBase.find('/'));
    const std::string lRequestHost = lHostOf(lRequest.mRoot.substr(std::min(lScheme.size(), lRequest.mRoot.size())));
    if (!lFirst.empty() && lHostOf(lFirst) == lRequestHost) { return lScheme + lBase; }
    return Resolve(aRequest, lBase);
}

std::string Append(const std::string& aBase, const std::string& aReference) {
    const std::string lReference = Trimmed(aReference);
    const bool lHasSlash = EndsInSlash(aBase) || (!lReference.empty() && '/' == lReference[0]);
    return aBase + (lHasSlash ? "" : "/") + lReference;
}

UserInfo UserInfoOf(const std::string& aURL) {
    const std::string lInfo = UserInfoText(aURL);
    const std::size_t lColon = lInfo.find(':');
    return {PercentDecoded(lInfo.substr(0, lColon)),
            kNone == lColon ? std::string() : PercentDecoded(lInfo.substr(lColon + 1))};
}

std::pair<std::string, std::string> HostAndPort(const std::string& aAuthority, const std::string& aDefaultPort) {
    const std::size_t lAt = aAuthority.rfind('@');
    const std::string lPlace = kNone == lAt ? aAuthority : aAuthority.substr(lAt + 1);
    const std::size_t lBracket = '[' == lPlace.c_str()[0] ? lPlace.find(']') : kNone;
    const std::size_t lColon = lPlace.find(':', kNone == lBracket ? 0 : lBracket);
    const std::string lPort = kNone == lColon ? std::string() : lPlace.substr(lColon + 1);
    const std::string lHost = kNone == lBracket ? lPlace.substr(0, lColon) : lPlace.substr(1, lBracket - 1);
    return {lHost, lPort.empty() ? aDefaultPort : lPort};
}

std::string PathAndQuery(const std::string& aURL) {
    return aURL.substr(Parts(aURL).mRoot.size());
}

std::string Scheme(const std::string& aURL) {
    return LowerCased(aURL.substr(0, SchemeLength(aURL)));
}

}  // namespace Player::URL
