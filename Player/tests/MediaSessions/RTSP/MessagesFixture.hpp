#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MediaSessions/RTSP/Peer.hpp"
#include "MediaSessions/RTSP/Receiver.hpp"
#include "Player/Buffer.hpp"
#include "support/Packets.hpp"
#include "support/ReportCapture.hpp"
#include "support/Throws.hpp"

namespace Player::MediaSessions {

inline constexpr char kInvalidResponse[] = "17/2 RTSP::RecvResponse(): Invalid response: ";
inline constexpr char kOk[] = "RTSP/1.0 200 OK\r\nCSeq: 1\r\n\r\n";

/// A frame on channel 0 with an RTP packet; each payload is another packet.
inline std::string Frame(unsigned aSeq, const std::string& aPayload) {
    const TestSupport::Bytes lPacket =
        TestSupport::RtpPacket().Seq(aSeq).Ssrc(7).Payload(TestSupport::AsBytes(aPayload)).Build();
    return TestSupport::AsText(TestSupport::InterleavedFrame(0, lPacket));
}

inline std::string TextOf(const Buffer& aBuffer) {
    return std::string(aBuffer.Begin(), aBuffer.End());
}

/// The client's end of a control connection, and the server that it is to.
class MessagesTest : public ::testing::Test {
protected:
    MessagesTest() { Connect(); }

    void Connect() {
        mReceiver.Connect(mPeer.Authority());
        mPeer.Accept();
        mReports.Clear();
    }
    bool Recv(const std::string& aText, UInt aCSeq = 1) {
        mPeer.Send(aText);
        return mMessages.RecvResponse(aCSeq);
    }
    std::string RecvThrows(const std::string& aText, UInt aCSeq = 1) {
        return TestSupport::Thrown([&] { Recv(aText, aCSeq); });
    }

    TestSupport::ReportCapture mReports;
    Testing::Peer mPeer;
    Receiver mReceiver;
    Connection& mConnection = mReceiver.mConnection;
    Messages& mMessages = mReceiver.mMessages;
};

}  // namespace Player::MediaSessions
