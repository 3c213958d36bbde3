// The parts of a URL: taken out of it as they stand, and put together again they are the same text.

#include "Player/URL.hpp"
#include "support/Target.hpp"

namespace Fuzz {

const Bounds kBounds{4096, 16};

namespace {

void CheckAuthority(const std::string& aURL) {
    const std::string lAuthority = Player::URL::Authority(aURL);
    FUZZ_CHECK(std::string::npos == lAuthority.find('/'));
    FUZZ_CHECK(std::string::npos != aURL.find(lAuthority));
    // What stands in front of it is a scheme or nothing, and what follows is a path or nothing.
    const std::size_t lSlashes = aURL.find("//");
    const std::string lScheme = std::string::npos == lSlashes ? "" : aURL.substr(0, lSlashes + 2);
    FUZZ_CHECK(0 == aURL.compare(0, lScheme.size() + lAuthority.size(), lScheme + lAuthority));
    const std::string lRest = aURL.substr(lScheme.size() + lAuthority.size());
    FUZZ_CHECK(lRest.empty() || '/' == lRest[0]);
}

void CheckAddress(const std::string& aAuthority) {
    const auto [lHost, lPort] = Player::URL::Address(aAuthority);
    const std::size_t lAt = aAuthority.find('@');
    const std::string lPlace = std::string::npos == lAt ? aAuthority : aAuthority.substr(lAt);
    FUZZ_CHECK(std::string::npos == lHost.find(':'));
    FUZZ_CHECK(lHost.size() < lPlace.size() ? lHost + ":" + lPort == lPlace : lHost == lPlace && "554" == lPort);
}

}  // namespace

void Run(Input& aInput) {
    const std::string lText = AsText(aInput.Rest());
    CheckAuthority(lText);
    CheckAddress(lText);
    CheckAddress(Player::URL::Authority(lText));
    // An authority survives being made part of a URL.
    const std::string lAuthority = Player::URL::Authority(lText);
    FUZZ_CHECK(lAuthority == Player::URL::Authority("rtsp://" + lAuthority + "/clip"));
}

}  // namespace Fuzz
