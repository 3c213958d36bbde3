#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MediaSessions/RTSP/Connection.hpp"
#include "MediaSessions/RTSP/Peer.hpp"
#include "support/ReportCapture.hpp"

namespace Player::MediaSessions {

using Lines = std::vector<std::string>;

/// A control connection and the server that it is to.
class ConnectionTest : public ::testing::Test {
protected:
    ConnectionTest() {
        mConfig.mTimeOutAfter = 1;
        mConnection.SetURL(mPeer.URL());
    }

    void Connect() {
        mConnection.DoConnect(mPeer.Authority());
        mPeer.Accept();
    }
    /// What is buffered, as text.
    std::string Buffered() {
        std::string lText(mConnection.Left(), '\0');
        EXPECT_TRUE(mConnection.Peek(&lText[0], mConnection.Left()));
        return lText;
    }
    void Write(const Lines& aLines) {
        for (const auto& lLine : aLines) {
            mConnection.WriteLn(lLine);
        }
        mConnection.WriteLn();
    }

    TestSupport::ReportCapture mReports;
    Configuration mConfig;
    Testing::Peer mPeer;
    Connection mConnection{mConfig};
};

}  // namespace Player::MediaSessions
