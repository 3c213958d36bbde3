#pragma once

#include <memory>
#include <string>

#include "Sockets/TCP.hpp"
#include "Sockets/TLS.hpp"

namespace Player::Sockets {

/// A TCP connection whose bytes go as they are until it is secured, and within TLS from then on.
class SecureTCP : public TCP {
public:
    using TCP::TCP;

    /// Of a connected socket; see `TLS`. It stays in non-blocking mode.
    void Secure(const std::string& aHost, const std::string& aAuthorities, UInt aTimeoutSec) {
        NonBlockingMode(true);
        auto lTLS = std::make_unique<TLS>(Descriptor(), aHost, aAuthorities);
        lTLS->Handshake(aTimeoutSec);
        mTLS = std::move(lTLS);
    }

    // What `Socket` does, within TLS where there is one.
    SInt Read(void* aData, UInt aSize, UInt aTimeoutSec) {
        return mTLS ? mTLS->Read(aData, aSize, aTimeoutSec) : TCP::Read(aData, aSize, aTimeoutSec);
    }
    SInt ReadAvailable(void* aData, UInt aSize) {
        return mTLS ? mTLS->ReadAvailable(aData, aSize) : TCP::ReadAvailable(aData, aSize);
    }
    SInt Write(const void* aData, UInt aSize, UInt aTimeoutSec) {
        return mTLS ? mTLS->Write(aData, aSize, aTimeoutSec) : TCP::Write(aData, aSize, aTimeoutSec);
    }
    bool HasClosed() { return mTLS ? mTLS->HasClosed() : TCP::HasClosed(); }

private:
    std::unique_ptr<TLS> mTLS;
};

}  // namespace Player::Sockets
