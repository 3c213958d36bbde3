#include "writers/AnnexBWriter.hpp"

#include <gtest/gtest.h>

#include "Failure.hpp"
#include "Written.hpp"

namespace Virertsp {
namespace {

std::string Written(const std::string& aParameters, const std::vector<std::string>& aSamples) {
    return Virertsp::Written(Track("H264", aParameters), ".h264", aSamples);
}

const std::string kStart("\0\0\0\1", 4);

TEST(AnnexBWriterTest, ParameterSetsOfTheDescriptionComeFirst) {
    // "Z0I=" and "aM4=" are 67 42 and 68 ce; what follows the parameter is another one.
    EXPECT_EQ(kStart + "\x67\x42" + kStart + "\x68\xce",
              Written("packetization-mode=1;sprop-parameter-sets=Z0I=,aM4=;profile-level-id=42", {}));
    EXPECT_EQ("", Written("packetization-mode=1", {}));
    EXPECT_EQ(kStart + "\x67\x42", Written("sprop-parameter-sets=Z0I=,", {}));
}

TEST(AnnexBWriterTest, LengthsBecomeStartCodes) {
    const std::string lTwo("\0\0\0\2\x65\x88\0\0\0\1\x06", 11);
    EXPECT_EQ(kStart + "\x65\x88" + kStart + "\x06" + kStart + "\x41", Written("", {lTwo, {"\0\0\0\1\x41", 5}}));
}

TEST(AnnexBWriterTest, ALengthBeyondTheSampleIsCut) {
    EXPECT_EQ(kStart + "\x65\x88", Written("", {{"\xff\xff\xff\xff\x65\x88", 6}}));
    EXPECT_EQ(kStart + "\x65", Written("", {{"\0\0\0\1\x65\0\0\0", 8}}));
}

TEST(OutputFileTest, FailuresNameTheFile) {
    EXPECT_THROW(OutputFile("/nowhere/file"), Failure);
    OutputFile lFull("/dev/full");
    lFull.Write("x", 1);
    try {
        lFull.Close();
        FAIL();
    } catch (const Failure& lFailure) {
        EXPECT_EQ(kExitOutput, lFailure.Code());
        EXPECT_STREQ("Can't write /dev/full: No space left on device.", lFailure.what());
    }
}

}  // namespace
}  // namespace Virertsp
