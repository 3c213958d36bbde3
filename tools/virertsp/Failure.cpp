#include "Failure.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace Virertsp {

namespace {

// The library's areas of failure and the numbers in them that are told apart here.
constexpr unsigned kCategoryNetwork = 3;
constexpr unsigned kCategoryRTSP = 17;
constexpr unsigned kCategorySDP = 18;
constexpr unsigned kLookup = 16;
constexpr unsigned kConnect = 35;
constexpr unsigned kRead = 38;
constexpr unsigned kWrite = 39;
/// RTSP statuses from here on are the server's; lower numbers are the library's own judgement.
constexpr unsigned kFirstStatus = 0x300;
/// A request that the server closed the connection on has no status at all.
constexpr unsigned kNoStatus = 0;

/// What stands between the last brackets: an error number of the system, or a word.
std::string InBrackets(const std::string& aMessage) {
    const std::size_t lBegin = aMessage.rfind('[');
    const std::size_t lEnd = aMessage.rfind(']');
    if (std::string::npos == lBegin || std::string::npos == lEnd || lEnd < lBegin) { return std::string(); }
    return aMessage.substr(lBegin + 1, lEnd - lBegin - 1);
}

/// The message without the name of the function in front.
std::string WithoutFunction(const std::string& aMessage) {
    const std::size_t lEnd = aMessage.find("(): ");
    return std::string::npos == lEnd ? aMessage : aMessage.substr(lEnd + 4);
}

std::string ServerOf(const std::string& aURL) {
    const std::size_t lSlashes = aURL.find("//");
    const std::size_t lBegin = std::string::npos == lSlashes ? 0 : lSlashes + 2;
    std::string lServer = aURL.substr(lBegin, aURL.find('/', lBegin) - lBegin);
    // A password is nobody's business.
    lServer.erase(0, lServer.rfind('@') + 1);
    return lServer;
}

Failure ExplainConnect(const std::string& aDetail, const std::string& aServer) {
    const int lError = static_cast<int>(std::strtoul(aDetail.c_str(), nullptr, 10));
    if ("Timeout" == aDetail || ETIMEDOUT == lError) {
        return Failure(kExitTimeOut, "The server " + aServer + " did not take the connection in time.");
    }
    if (ECONNREFUSED == lError) { return Failure(kExitNetwork, "The server " + aServer + " refuses connections."); }
    return Failure(kExitNetwork, "Can't connect to the server " + aServer + ": " + std::strerror(lError) + ".");
}

Failure ExplainNetwork(const Player::Exception& aException, const std::string& aServer) {
    const std::string lDetail = InBrackets(aException.Message());
    switch (aException.Error()) {
        case kLookup: return Failure(kExitNetwork, "The name of the server " + aServer + " can't be resolved.");
        case kConnect: return ExplainConnect(lDetail, aServer);
        case kRead:
            // "[errno, result]": -3 is the result of a wait in which nothing came.
            if (std::string::npos != lDetail.find(", -3")) {
                return Failure(kExitTimeOut, "The server " + aServer + " does not answer.");
            }
            return Failure(kExitNetwork, "The connection to the server " + aServer + " broke.");
        case kWrite: return Failure(kExitNetwork, "The connection to the server " + aServer + " broke.");
        default: return Failure(kExitSystem, WithoutFunction(aException.Message()) + ".");
    }
}

Failure ExplainRTSP(const Player::Exception& aException, const std::string& aServer) {
    const std::string lText = WithoutFunction(aException.Message());
    if (kNoStatus == aException.Error()) {
        return Failure(kExitNetwork, "The server " + aServer + " closed the connection without an answer.");
    }
    if (aException.Error() >= kFirstStatus) {
        return Failure(kExitRefused, "The server " + aServer + " refuses: " + lText + ".");
    }
    return Failure(kExitProtocol, "The server " + aServer + " can't be understood: " + lText + ".");
}

}  // namespace

Failure Explain(const Player::Exception& aException, const std::string& aURL) {
    const std::string lServer = ServerOf(aURL);
    switch (aException.Category()) {
        case kCategoryNetwork: return ExplainNetwork(aException, lServer);
        case kCategoryRTSP: return ExplainRTSP(aException, lServer);
        case kCategorySDP:
            return Failure(kExitProtocol,
                           "The server " + lServer + " describes no presentation that can be understood.");
        default: return Failure(kExitSystem, WithoutFunction(aException.Message()) + ".");
    }
}

int Guard(const std::function<void()>& aCommand) {
    try {
        aCommand();
    } catch (const Failure& lFailure) {
        std::fprintf(stderr, "virertsp: %s\n", lFailure.what());
        return lFailure.Code();
    } catch (const std::exception& lError) {
        std::fprintf(stderr, "virertsp: %s\n", lError.what());
        return kExitSystem;
    }
    return kExitOk;
}

}  // namespace Virertsp
