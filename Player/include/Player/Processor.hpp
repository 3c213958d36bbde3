#pragma once

#include "Player/Packet.hpp"
#include "Player/Ptr.hpp"
#include "Player/Types.hpp"

namespace Player {

/// One link of the chain that turns what a transport receives into what a consumer queues.
class Processor : public SharedObject {
public:
    Processor() : SharedObject(0) {}

    /// Sets the next link.
    virtual void Attach(const SharedPtr<Processor, SharedObject>& aNext) = 0;
    /// A notice that travels down the chain beside the packets; every link passes it on after acting on it.
    /// The transports send "EndOfStream" with "Timeout", "EndTime", "Bye" or "Unknown".
    virtual void Param(const String& aKey, const String& aVal) = 0;
    /// Takes one packet. `aLatest` is the newest play time that the transport holds for the track.
    /// False asks the caller to deliver no more for now; this packet counts as delivered all the same.
    virtual bool Handle(const SharedPtr<Packet, SharedObject>& aPacket, Time aLatest) = 0;
    /// Drops all that is held, here and further down.
    virtual void Flush() = 0;
};

}  // namespace Player
