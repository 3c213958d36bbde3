#include "Parser/SpsPpsParser.hpp"

#include <vector>

#include "Parset.hpp"

namespace Parser {

namespace {

constexpr UInt kMacroblockSide = 16;

/// Unsigned on purpose: a count at the very end of its range wraps to 0.
UInt SideOf(UInt aMacroblocksMinus1) {
    return (aMacroblocksMinus1 + 1) * kMacroblockSide;
}

std::vector<Byte> BytesOf(const std::string& aText) {
    return std::vector<Byte>(aText.begin(), aText.end());
}

}  // namespace

void SpsPpsParser::Free::operator()(SeqParameterSet* aSps) const {
    FreeSPS(aSps);
}

void SpsPpsParser::Free::operator()(PicParameterSet* aPps) const {
    FreePPS(aPps);
}

SpsPpsParser::SpsPpsParser(const std::string& aSps, const std::string& aPps) {
    try {
        Parse(aSps, aPps);
    } catch (...) {
        // The values are set last, so they are still 0, which says "unknown".
    }
}

void SpsPpsParser::Parse(const std::string& aSps, const std::string& aPps) {
    mSps.reset(AllocSPS());
    mPps.reset(AllocPPS());

    std::vector<Byte> lSps = BytesOf(aSps);
    std::vector<Byte> lPps = BytesOf(aPps);
    ProcessSPS(*mSps, lSps.data(), lSps.size());
    ProcessPPS(*mPps, lPps.data(), lPps.size(), *mSps);

    mWidth = SideOf(mSps->pic_width_in_mbs_minus1);
    mHeight = SideOf(mSps->pic_height_in_map_units_minus1);
    mProfileIndication = mSps->profile_idc;
    mLevelIndication = mSps->level_idc;
}

}  // namespace Parser
