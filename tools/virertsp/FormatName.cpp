#include "FormatName.hpp"

#include "Player/String.hpp"

namespace Virertsp {

namespace {

struct Static {
    unsigned mPayloadType;
    const char* mName;
};

constexpr Static kStatic[] = {
    {0, "PCMU"},  {3, "GSM"},   {4, "G723"},   {5, "DVI4"}, {6, "DVI4"},  {7, "LPC"},   {8, "PCMA"},  {9, "G722"},
    {10, "L16"},  {11, "L16"},  {12, "QCELP"}, {13, "CN"},  {14, "MPA"},  {15, "G728"}, {16, "DVI4"}, {17, "DVI4"},
    {18, "G729"}, {25, "CelB"}, {26, "JPEG"},  {28, "nv"},  {31, "H261"}, {32, "MPV"},  {33, "MP2T"}, {34, "H263"},
};

}  // namespace

std::string FormatName(const Player::Properties& aTrack) {
    std::string lFormat = aTrack.Get("Format");
    if (!lFormat.empty()) { return lFormat; }
    const std::string lType = aTrack.Get("PayloadType");
    for (const Static& lStatic : kStatic) {
        if (std::to_string(lStatic.mPayloadType) == lType) { return lStatic.mName; }
    }
    return "payload type " + (lType.empty() ? std::string("unknown") : lType);
}

}  // namespace Virertsp
