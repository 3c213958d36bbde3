#include "MediaSessions/Dialogues/Device.hpp"

#include <atomic>
#include <chrono>
#include <map>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "Crypto/Crypto.hpp"
#include "Player/String.hpp"

namespace Player::MediaSessions {

namespace {

using TestSupport::Bytes;

constexpr char kUser[] = "me";
constexpr char kPassword[] = "secret";
constexpr char kDigest[] = "Digest ";
constexpr char kBasic[] = "Authorization: Basic bWU6c2VjcmV0";
constexpr std::chrono::seconds kPatience(5);

/// One access unit: what an RTP packet carries, and what comes out of the depacketizer, both but for its number in the
/// last byte.
struct AccessUnit {
    Bytes mPayload;
    Bytes mSample;
};

const AccessUnit& UnitOf(const std::string& aFormat) {
    static const std::map<std::string, AccessUnit> kUnits = {
        // A NAL unit; its length in front of it.
        {"H264", {{0x65, 0x88}, {0, 0, 0, 3, 0x65, 0x88}}},
        {"MP4V-ES", {{0, 0, 1, 0xB6}, {0, 0, 1, 0xB6}}},
        // Its length in a byte.
        {"MP4A-LATM", {{3, 0x21, 0x10}, {0x21, 0x10}}},
        // Bits of all headers, one header of 13 bits for the length and 3 for the index.
        {"mpeg4-generic", {{0, 16, 0, 3 << 3, 0x21, 0x10}, {0x21, 0x10}}},
    };
    return kUnits.at(aFormat);
}

Bytes Numbered(Bytes aUnit, unsigned aNumber) {
    aUnit.push_back(static_cast<std::uint8_t>(aNumber));
    return aUnit;
}

/// "VIDEO trackID=1"
std::string Description(std::istringstream& aRest) {
    std::string lControl;
    std::getline(aRest >> std::ws, lControl);
    return "S| v=0\nS| m=video 0 RTP/AVP 96\nS| a=rtpmap:96 H264/90000\nS| a=control:" + lControl + "\n";
}

/// "M$ 0 H264 96"
std::string Packets(const std::string& aWord, std::istringstream& aRest) {
    unsigned lTrack = 0;
    std::string lFormat;
    unsigned lPayloadType = 0;
    unsigned lFirst = 1;
    aRest >> lTrack >> lFormat >> lPayloadType >> lFirst;
    lFirst = 0 == lFirst ? 1 : lFirst;
    std::string lScript;
    for (unsigned lSeq = lFirst; lSeq < lFirst + 2; ++lSeq) {
        TestSupport::RtpPacket lPacket;
        lPacket.Type(lPayloadType).Seq(lSeq).Timestamp(lSeq * 3000).Ssrc(0xCA3E7A);
        lPacket.Marker().Payload(Numbered(UnitOf(lFormat).mPayload, lSeq));
        lScript += std::string("M$" == aWord ? "S$ " : "RTP ") + std::to_string(lTrack) + " " +
                   TestSupport::Hex(lPacket.Build()) + "\n";
    }
    return lScript;
}

std::string HexOf(const Player::Packet& aPacket) {
    return TestSupport::Hex(Bytes(aPacket.Begin(), aPacket.End()));
}

}  // namespace

std::ostream& operator<<(std::ostream& aStream, const Device& aDevice) {
    return aStream << aDevice.mHabit;
}

void DeviceTest::SetUp() {
    const std::string lScript = Written();
    const bool lAsks = std::string::npos != lScript.find("-Authenticate:");
    if (lAsks && !Crypto::IsAvailable()) { GTEST_SKIP() << "built without GnuTLS"; }
    Serve(lScript);
    SetVariables();
    for (MediaHandler* lHandler : {static_cast<MediaHandler*>(&mPlayer), static_cast<MediaHandler*>(&mHandler)}) {
        lHandler->SetConfigParam("RTSP:Profile", "modern");
        lHandler->SetConfigParam("RTSP:Transports", GetParam().mTransports);
        lHandler->SetConfigParam("RTSP:TargetRTPBuffer", "0");
        lHandler->SetConfigParam("RTSP:TimeOutAfter", GetParam().mTimeOutAfter);
        lHandler->SetConfigParam("RTSP:UserName", kUser);
        lHandler->SetConfigParam("RTSP:Password", kPassword);
    }
}

std::string DeviceTest::Written() {
    std::string lScript;
    std::istringstream lLines(GetParam().mDialogue);
    for (std::string lLine; std::getline(lLines, lLine);) {
        lLine.erase(0, lLine.find_first_not_of(' '));
        std::istringstream lWords(lLine);
        std::string lWord;
        lWords >> lWord;
        if (">" == lWord) {
            lScript += Request(lLine);
        } else if ("VIDEO" == lWord) {
            lScript += Description(lWords);
        } else if ("M$" == lWord || "MRTP" == lWord) {
            lScript += Packets(lWord, lWords);
        } else {
            lScript += lLine + "\n";
        }
    }
    return lScript + "NOTIFY over\n";
}

std::string DeviceTest::Request(const std::string& aLine) {
    std::vector<std::string> lParts;
    Split(aLine, '|', lParts);
    std::vector<std::string> lWords;
    Split(lParts[0], ' ', lWords);
    const bool lIsDescribe = "DESCRIBE" == lWords[1];
    if (lIsDescribe) {
        lParts.push_back("Supported: 3gpp-pipelined, 3gpp-switch-req-sdp");
        lParts.push_back("Accept: application/sdp");
    }
    if (1 == lParts.size()) { throw std::invalid_argument("a request without lines: " + aLine); }
    std::string lLine = lParts[0];
    for (std::size_t i = 1; i < lParts.size(); ++i) {
        lLine += " | " + Answer(lWords[1], lWords[2], lParts[i]);
    }
    return lLine + "\n";
}

std::string DeviceTest::Answer(const std::string& aMethod, const std::string& aPath, const std::string& aPart) {
    if ("Basic" == aPart) { return kBasic; }
    if (0 != aPart.compare(0, sizeof(kDigest) - 1, kDigest)) { return aPart; }
    const std::string lName = "response" + std::to_string(mHashes.size());
    const std::size_t lRealm = aPart.find(' ') + 1;
    const std::size_t lNonce = aPart.rfind(' ') + 1;
    const std::string lRealmText = aPart.substr(lRealm, lNonce - 1 - lRealm);
    mHashes.push_back({lName, lRealmText, aPart.substr(lNonce), aMethod, aPath});
    return std::string("Authorization: Digest username=\"") + kUser + "\", realm=\"" + lRealmText + "\", nonce=\"" +
           aPart.substr(lNonce) + "\", uri=\"rtsp://{host}/" + aPath + "\", response=\"{" + lName + "}\"";
}

void DeviceTest::SetVariables() {
    const std::string lHost = "127.0.0.1:" + std::to_string(mServer->Port());
    mServer->Set("host", lHost);
    mServer->Set("blank", " ");
    for (const Hash& lHash : mHashes) {
        const auto lMD5 = [](const std::string& aText) { return Crypto::HexDigest(Crypto::Hash::kMD5, aText); };
        const std::string lWho = lMD5(std::string(kUser) + ":" + lHash.mRealm + ":" + kPassword);
        const std::string lWhat = lMD5(lHash.mMethod + ":rtsp://" + lHost + "/" + lHash.mPath);
        mServer->Set(lHash.mName, lMD5(lWho + ":" + lHash.mNonce + ":" + lWhat));
    }
}

std::string DeviceTest::Unit(TrackIdx aTrack) {
    const auto lEnd = std::chrono::steady_clock::now() + kPatience;
    while (std::chrono::steady_clock::now() < lEnd) {
        const auto lPacket = mPlayer.GetTrackPacket(aTrack);
        if (lPacket) { return HexOf(*lPacket); }
        std::this_thread::yield();
    }
    return "nothing";
}

void DeviceTest::PlayToTheEnd() {
    Play(GetParam().mPath);
    const std::vector<std::string>& lFormats = GetParam().mTracks;
    ASSERT_EQ(lFormats.size(), mPlayer.GetTrackCount());
    for (TrackIdx lTrack = 0; lTrack < lFormats.size(); ++lTrack) {
        EXPECT_EQ(lFormats[lTrack], mPlayer.GetTrackInfo(lTrack)->Get("Format"));
        EXPECT_EQ(TestSupport::Hex(Numbered(UnitOf(lFormats[lTrack]).mSample, 1)), Unit(lTrack)) << "track " << lTrack;
    }
    std::atomic<bool> lIsOver{false};
    std::thread lWaiter([&] {
        EXPECT_TRUE(mServer->Await("over"));
        lIsOver = true;
    });
    while (!lIsOver) {
        mPlayer.Produce(0);
        std::this_thread::yield();
    }
    lWaiter.join();
    EXPECT_EQ("", mServer->Failure());
}

TEST_P(DeviceTest, PlaysToItsFirstAccessUnits) {
    PlayToTheEnd();
}

}  // namespace Player::MediaSessions
