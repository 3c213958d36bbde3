#pragma once

#include <string>
#include <vector>

#include "MediaSessions/RTSP/Messages.hpp"
#include "Player/Processor.hpp"
#include "RTP/Transports/OverRTSP.hpp"

namespace Player::MediaSessions {

/// Keeps the payload of every packet that reaches it.
class Collector : public Processor {
public:
    void Attach(const SharedPtr<Processor, SharedObject>& /*aNext*/) override {}
    void Param(const String& /*aKey*/, const String& /*aVal*/) override {}
    bool Handle(const SharedPtr<Packet, SharedObject>& aPacket, Time /*aLatest*/) override {
        mPayloads.emplace_back(aPacket->Begin(), aPacket->End());
        return true;
    }
    void Flush() override {}

    std::vector<std::string> mPayloads;
};

/// A connection with a track over channels 0 and 1.
class Receiver {
public:
    explicit Receiver(UInt aTimeOutAfter = 1) {
        mConfig.mTimeOutAfter = aTimeOutAfter;
        mTransport.AddTrack();
        mTransport.SetInterLeavedChannelIdentifier(0, "0-1");
        mTransport.AttachTrack(0, mCollector);
        mTransport.ModifyTrackRTPStack(0).SetExpectedPT(96);
        mMessages.SetFrameReceiver(&mTransport);
    }

    void Connect(const std::string& aAuthority) {
        mConnection.SetURL("rtsp://" + aAuthority + "/clip");
        mConnection.DoConnect(aAuthority);
    }
    /// What has been delivered since the last call.
    std::vector<std::string> Delivered() {
        mTransport.Fetch();
        std::vector<std::string> lPayloads;
        lPayloads.swap(mCollector->mPayloads);
        return lPayloads;
    }

    Configuration mConfig;
    Connection mConnection{mConfig};
    Messages mMessages{mConnection};

private:
    SharedPtr<Collector, SharedObject> mCollector{new Collector};
    RTP::Transports::OverRTSP mTransport{&mMessages};
};

}  // namespace Player::MediaSessions
