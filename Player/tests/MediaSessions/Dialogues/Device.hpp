#pragma once

#include <gtest/gtest.h>

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "MediaSessions/SessionFixture.hpp"

namespace Player::MediaSessions {

/// What a kind of camera or server says from the first request to the first access unit, named by its habit.
struct Device {
    const char* mHabit;
    /// As in "RTSP:Transports".
    const char* mTransports;
    /// What is asked for, as it stands after the host in the URL.
    const char* mPath;
    /// Formats of the tracks that play, in order.
    std::vector<std::string> mTracks;
    /// In the shorthand of `Dialogue`. {host} is the server's host and port. More words:
    ///     VIDEO trackID=1         a description of a track of H.264, payload type 96, with this control URL
    ///     M$ 0 H264 96            access units 1 and 2 of that format and payload type, interleaved on channel 0
    ///     M$ 0 H264 96 3          the same of units 3 and 4
    ///     MRTP 0 H264 96          the same from Media(0)'s RTP port
    /// and in a request, in place of the header that answers a challenge:
    ///     Digest cam n1           for that realm and nonce
    ///     Basic
    /// A request is expected with exactly the lines that are written here; those of DESCRIBE are filled in.
    const char* mDialogue;
    /// Seconds that the client waits for an answer.
    const char* mTimeOutAfter = "10";
};

/// For the names of the tests.
std::ostream& operator<<(std::ostream& aStream, const Device& aDevice);

/// Plays what the device describes, in the modern profile.
class DeviceTest : public SessionTest, public testing::WithParamInterface<Device> {
protected:
    void SetUp() override;
    /// Gets an access unit of each track, and leaves the player to its work until the dialogue is over.
    void PlayToTheEnd();

private:
    std::string Written();
    std::string Request(const std::string& aLine);
    std::string Answer(const std::string& aMethod, const std::string& aPath, const std::string& aPart);
    void SetVariables();
    std::string Unit(TrackIdx aTrack);

    /// Variables with the text whose hash they are.
    struct Hash {
        std::string mName;
        std::string mRealm;
        std::string mNonce;
        std::string mMethod;
        std::string mPath;
    };
    std::vector<Hash> mHashes;
};

inline std::string HabitOf(const testing::TestParamInfo<Device>& aInfo) {
    return aInfo.param.mHabit;
}

}  // namespace Player::MediaSessions
