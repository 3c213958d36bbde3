#pragma once

#include <memory>
#include <string>

#include "Parser/Types.hpp"

namespace Parser {

struct SeqParameterSet;
struct PicParameterSet;

/// Size, profile and level out of one sequence and one picture parameter set of H.264.
class SpsPpsParser {
public:
    /// Two raw NAL units, each with its header byte and without a start code. Never throws: when either
    /// of them is bad or cut short, all four values are 0.
    SpsPpsParser(const std::string& aSps, const std::string& aPps);

    // In luma samples, as coded: whole macroblocks before cropping, and for streams that may hold field
    // pictures the height of one field.
    UInt GetWidth() const { return mWidth; }
    UInt GetHeight() const { return mHeight; }

    /// profile_idc, for example 100 for High.
    UInt GetProfileIndication() const { return mProfileIndication; }
    /// level_idc, ten times the level: 31 for level 3.1.
    UInt GetLevelIndication() const { return mLevelIndication; }

private:
    struct Free {
        void operator()(SeqParameterSet* aSps) const;
        void operator()(PicParameterSet* aPps) const;
    };

    void Parse(const std::string& aSps, const std::string& aPps);

    std::unique_ptr<SeqParameterSet, Free> mSps;
    std::unique_ptr<PicParameterSet, Free> mPps;
    UInt mWidth = 0;
    UInt mHeight = 0;
    UInt mProfileIndication = 0;
    UInt mLevelIndication = 0;
};

}  // namespace Parser
