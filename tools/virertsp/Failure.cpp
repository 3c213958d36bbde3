#include "Failure.hpp"

#include <cerrno>
#include <cstring>

#include "Diagnostics.hpp"

namespace Virertsp {

namespace {

using Player::Area;
namespace ErrorCode = Player::ErrorCode;

/// The message without the name of the function in front.
std::string WithoutFunction(const std::string& aMessage) {
    const std::size_t lEnd = aMessage.find("(): ");
    return std::string::npos == lEnd ? aMessage : aMessage.substr(lEnd + 4);
}

std::string Sentence(const std::string& aText) {
    return aText.empty() || '.' != aText.back() ? aText + "." : aText;
}

std::string ServerOf(const std::string& aURL) {
    const std::size_t lSlashes = aURL.find("//");
    const std::size_t lBegin = std::string::npos == lSlashes ? 0 : lSlashes + 2;
    std::string lServer = aURL.substr(lBegin, aURL.find('/', lBegin) - lBegin);
    // Passwords are never shown.
    lServer.erase(0, lServer.rfind('@') + 1);
    return lServer;
}

Failure ExplainConnect(int aError, const std::string& aServer) {
    if (ETIMEDOUT == aError) {
        return Failure(kExitTimeOut, "The server " + aServer + " did not take the connection in time.");
    }
    if (ECONNREFUSED == aError) { return Failure(kExitNetwork, "The server " + aServer + " refuses connections."); }
    return Failure(kExitNetwork, "Can't connect to the server " + aServer + ": " + std::strerror(aError) + ".");
}

Failure ExplainNetwork(const Player::Exception& aException, const std::string& aServer) {
    switch (aException.Error()) {
        case ErrorCode::kLookupFailed:
            return Failure(kExitNetwork, "The name of the server " + aServer + " can't be resolved.");
        case ErrorCode::kConnectFailed: return ExplainConnect(aException.SystemError(), aServer);
        case ErrorCode::kReadFailed:
            if (ETIMEDOUT == aException.SystemError()) {
                return Failure(kExitTimeOut, "The server " + aServer + " does not answer.");
            }
            return Failure(kExitNetwork, "The connection to the server " + aServer + " broke.");
        case ErrorCode::kWriteFailed:
            return Failure(kExitNetwork, "The connection to the server " + aServer + " broke.");
        case ErrorCode::kTLSFailed: return Failure(kExitRefused, Sentence(WithoutFunction(aException.Message())));
        default: return Failure(kExitSystem, WithoutFunction(aException.Message()) + ".");
    }
}

Failure ExplainRTSP(const Player::Exception& aException, const std::string& aServer) {
    const std::string lText = WithoutFunction(aException.Message());
    if (ErrorCode::kNoAnswer == aException.Error()) {
        return Failure(kExitNetwork, "The server " + aServer + " closed the connection without an answer.");
    }
    if (ErrorCode::kMulticastOnly == aException.Error()) { return Failure(kExitRefused, Sentence(lText)); }
    if (aException.Error() >= ErrorCode::kFirstStatus) {
        return Failure(kExitRefused, "The server " + aServer + " refuses: " + lText + ".");
    }
    return Failure(kExitProtocol, "The server " + aServer + " can't be understood: " + lText + ".");
}

}  // namespace

Failure Explain(const Player::Exception& aException, const std::string& aURL, bool aIsRedirected) {
    const std::string lServer = ServerOf(aURL);
    switch (static_cast<Area>(aException.Category())) {
        case Area::kNetwork:
            return ExplainNetwork(aException, aIsRedirected ? "that " + lServer + " redirects to" : lServer);
        case Area::kRTSP: return ExplainRTSP(aException, lServer);
        case Area::kSDP:
            return Failure(kExitProtocol,
                           "The server " + lServer + " describes no presentation that can be understood.");
        default: return Failure(kExitSystem, WithoutFunction(aException.Message()) + ".");
    }
}

int Guard(const std::function<void()>& aCommand) {
    try {
        aCommand();
    } catch (const Failure& lFailure) {
        PrintError(lFailure.what());
        return lFailure.Code();
    } catch (const std::exception& lError) {
        PrintError(lError.what());
        return kExitSystem;
    }
    return kExitOk;
}

}  // namespace Virertsp
