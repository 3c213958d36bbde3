#include "Writer.hpp"

#include "AnnexBWriter.hpp"
#include "Failure.hpp"

namespace Virertsp {

namespace {

template <typename T>
std::unique_ptr<Writer> Make(const Player::Properties& aTrack, const std::string& aPath) {
    return std::make_unique<T>(aTrack, aPath);
}

struct Format {
    const char* mName;
    const char* mExtension;
    std::unique_ptr<Writer> (*mMake)(const Player::Properties& aTrack, const std::string& aPath);
};

constexpr Format kFormats[] = {
    {"H264", ".h264", Make<AnnexBWriter>},
};

class NullWriter : public Writer {
public:
    void Write(const Player::Packet& /*aSample*/) override {}
    void Finish() override {}
    std::string Name() const override { return "nowhere"; }
};

}  // namespace

std::unique_ptr<Writer> MakeWriter(const Player::Properties& aTrack, const std::string& aBase) {
    const std::string lName = aTrack.Get("Format");
    for (const Format& lFormat : kFormats) {
        if (lName == lFormat.mName) { return lFormat.mMake(aTrack, aBase + lFormat.mExtension); }
    }
    throw Failure(kExitNothingPlayable, "There is no file format here for " + lName + ".");
}

std::unique_ptr<Writer> MakeNullWriter() {
    return std::make_unique<NullWriter>();
}

}  // namespace Virertsp
