#pragma once

#include <string>

#include "Direction.hpp"

namespace Networks {

/// A network namespace of our own whose only interface is a TUN device: what programs in it send to other
/// machines comes out of `Read`, and what goes into `Write` arrives at them. Both vanish with this process.
class Tunnel {
public:
    /// The process is in the new namespace afterwards. Throws `std::system_error`.
    explicit Tunnel(const char* aAddress);
    ~Tunnel();
    Tunnel(const Tunnel&) = delete;
    Tunnel& operator=(const Tunnel&) = delete;

    int Descriptor() const { return mDevice; }
    /// Where the namespace can be entered, for nsenter(1).
    std::string NamespacePath() const;

    /// Takes an IPv4 packet if there is one.
    bool Read(Packet& aPacket) const;
    void Write(const Packet& aPacket) const;

private:
    int mNamespace;
    int mDevice;
};

}  // namespace Networks
