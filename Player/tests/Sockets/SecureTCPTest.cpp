#include "Sockets/SecureTCP.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Player/Features.hpp"
#include "support/Patience.hpp"
#include "support/ReportCapture.hpp"
#include "support/ScriptedServer.hpp"
#include "support/TLSRelay.hpp"

namespace Player::Sockets {
namespace {

using TestSupport::TLSRelay;

class SecureTCPTest : public testing::Test {
protected:
    void SetUp() override {
        if (!HasTLS()) { GTEST_SKIP() << "built without GnuTLS"; }
    }
    void Connect(const std::string& aScript, bool aSaysGoodbye = true) {
        TLSRelay::Manners lManners;
        lManners.mSaysGoodbye = aSaysGoodbye;
        mServer = std::make_unique<TestSupport::ScriptedServer>(aScript);
        mRelay = std::make_unique<TLSRelay>(mServer->Port(), lManners);
        mSocket = std::make_unique<SecureTCP>();
        mSocket->Connect(Address("127.0.0.1", std::to_string(mRelay->Port()).c_str()));
        mSocket->Secure("127.0.0.1", mRelay->AuthoritiesFile(), 10);
    }
    std::string Read(UInt aSize) {
        std::string lText(aSize, '\0');
        const SInt lCount = mSocket->Read(&lText[0], aSize, 10);
        return lCount < 0 ? "nothing" : lText.substr(0, static_cast<std::size_t>(lCount));
    }

    TestSupport::ReportCapture mReports;
    TestSupport::Patience mPatience{std::chrono::seconds(10)};
    std::unique_ptr<TestSupport::ScriptedServer> mServer;
    std::unique_ptr<TLSRelay> mRelay;
    std::unique_ptr<SecureTCP> mSocket;
    Byte mByte = 0;
};

TEST_F(SecureTCPTest, BytesGoBothWays) {
    Connect("C: hello\nS~ abc\n");
    EXPECT_FALSE(mSocket->HasClosed());
    EXPECT_EQ(Socket::kNoData, mSocket->ReadAvailable(&mByte, 1));
    EXPECT_EQ(7, mSocket->Write("hello\r\n", 7, 10));
    EXPECT_EQ("ab", Read(2));
    EXPECT_EQ("c", Read(2));
    EXPECT_EQ(Socket::kTimeOut, mSocket->Read(&mByte, 1, 0));
    EXPECT_EQ("", mServer->Failure());
}

TEST_F(SecureTCPTest, LookingForTheEndLosesNothing) {
    for (const bool lSaysGoodbye : {true, false}) {
        Connect("C: x\nS~ abcdef\nAWAIT read\nCLOSE\n", lSaysGoodbye);
        mSocket->Write("x\r\n", 3, 10);
        EXPECT_EQ("a", Read(1));
        EXPECT_FALSE(mSocket->HasClosed()) << "decrypted with the byte before";
        mServer->Notify("read");
        EXPECT_EQ("bcdef", Read(10));
        EXPECT_TRUE(mPatience.Until([&] { return mSocket->HasClosed(); }));
        EXPECT_EQ("", Read(10));
        EXPECT_EQ(Socket::kClosed, mSocket->ReadAvailable(&mByte, 1));
        EXPECT_TRUE(mSocket->HasClosed());
    }
}

TEST_F(SecureTCPTest, WhatComesWhileLookingIsRead) {
    Connect("C: x\nS~ abc\n");
    mSocket->Write("x\r\n", 3, 10);
    // Looks until the bytes are there, without reading them.
    std::string lText(3, '\0');
    EXPECT_TRUE(mPatience.Until([&] {
        EXPECT_FALSE(mSocket->HasClosed());
        return 1 == mSocket->ReadAvailable(&lText[0], 1);
    }));
    EXPECT_FALSE(mSocket->HasClosed());
    EXPECT_EQ(2, mSocket->ReadAvailable(&lText[1], 2));
    EXPECT_EQ("abc", lText);
}

TEST_F(SecureTCPTest, ManyRecordsAreReadInOrder) {
    std::string lScript = "C: x\n";
    for (int i = 0; i < 100; ++i) {
        lScript += "S~ 0123456789\nSPLIT\n";
    }
    Connect(lScript + "NOTIFY sent\n");
    mSocket->Write("x\r\n", 3, 10);
    ASSERT_TRUE(mServer->Await("sent"));
    std::string lText(2000, '\0');
    UInt lTaken = 0;
    EXPECT_TRUE(mPatience.Until([&] {
        const SInt lCount = mSocket->ReadAvailable(&lText[lTaken], 2000 - lTaken);
        if (lCount > 0) { lTaken += static_cast<UInt>(lCount); }
        return lTaken >= 1000;
    }));
    EXPECT_EQ(0U, lTaken % 10);
    EXPECT_EQ("0123456789", lText.substr(990, 10));
}

}  // namespace
}  // namespace Player::Sockets
