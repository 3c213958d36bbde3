// References that servers send: what they are resolved to is a URL of the base's server, or the reference itself.

#include "MediaSessions/RTSP/Headers/URLResolution.hpp"
#include "support/Target.hpp"

namespace Fuzz {

const Bounds kBounds{65536, 64};

namespace {

namespace URL = Player::URL;

bool BeginsWith(const std::string& aText, const std::string& aBegin) {
    return 0 == aText.compare(0, aBegin.size(), aBegin);
}

void CheckResolution(const std::string& aReference) {
    const std::string lRoot = "rtsp://h:554";
    for (const std::string& lBase : {lRoot, lRoot + "/", lRoot + "/a/b", lRoot + "/a/b/?x=1/"}) {
        const std::string lURL = URL::Resolve(lBase, aReference);
        FUZZ_CHECK(BeginsWith(lURL, lRoot) || URL::IsAbsolute(lURL) || BeginsWith(lURL, "rtsp:"));
        // What is resolved stands for itself.
        if (URL::IsAbsolute(lURL) && lURL.back() > ' ') { FUZZ_CHECK(URL::Resolve(lBase, lURL) == lURL); }
        FUZZ_CHECK(BeginsWith(URL::Append(lBase, aReference), lBase));
    }
}

void CheckUserInfo(const std::string& aURL) {
    const std::string lRest = URL::WithoutUserInfo(aURL);
    FUZZ_CHECK(lRest.size() <= aURL.size());
    FUZZ_CHECK(URL::UserInfoOf(lRest) == URL::UserInfo());
    FUZZ_CHECK(URL::WithoutUserInfo(lRest) == lRest);
}

/// Written by hand: what is put into a URL comes out again.
void CheckWritten(const std::string& aText) {
    std::string lSafe;
    for (const char lCh : aText) {
        if (std::string::npos == std::string("/@:%").find(lCh)) { lSafe += lCh; }
    }
    const URL::UserInfo lInfo = URL::UserInfoOf("rtsp://me%40:" + lSafe + "@h/clip");
    FUZZ_CHECK("me@" == lInfo.mName && lSafe == lInfo.mPassword);
}

}  // namespace

void Run(Input& aInput) {
    const std::string lText = AsText(aInput.Rest());
    CheckResolution(lText);
    CheckUserInfo(lText);
    CheckUserInfo("rtsp://" + lText);
    CheckWritten(lText);
    FUZZ_CHECK(!URL::BaseOf("rtsp://h/clip", lText, "").empty());
    URL::HostAndPort(lText, "554");
}

}  // namespace Fuzz
