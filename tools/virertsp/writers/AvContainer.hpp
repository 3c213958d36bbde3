#pragma once

#include <memory>
#include <string>

#include "writers/Container.hpp"

struct AVFormatContext;
struct AVPacket;

namespace Virertsp {

/// A container that libavformat writes.
class AvContainer : public Container {
public:
    AvContainer(const std::string& aPath, OutputFile::Existing aExisting, const Player::Time& aStart);
    ~AvContainer() override;

    std::unique_ptr<Writer> AddTrack(const Player::Properties& aTrack) override;

    /// The packet's times are in units of 1 / `aRate` s.
    void Write(AVPacket& aPacket, int aRate);
    /// To be called once for each track.
    void FinishTrack();
    const std::string& Path() const { return mPath; }
    const Player::Time& Start() const { return mStart; }

private:
    void WriteHeader();
    /// Throws `Failure` for a negative result.
    void Check(int aResult) const;

    std::string mPath;
    Player::Time mStart;
    AVFormatContext* mContext = nullptr;
    bool mBegun = false;
    unsigned mOpenTracks = 0;
};

}  // namespace Virertsp
