#pragma once

#include <string>
#include <vector>

#include "MediaSessions/RTSP/Configuration.hpp"
#include "Player/Time.hpp"
#include "Player/Types.hpp"

namespace Player::MediaSessions {

/// The lines of one request: request line, CSeq and User-Agent at the start, the optional headers that all
/// requests share at the end.
class Request {
public:
    Request(const char* aMethod, const std::string& aURL, UInt aCSeq, const Configuration& aConfig);

    /// Appends a header line.
    Request& Line(const std::string& aLine);
    /// Appends a header, unless its value is empty.
    Request& Optional(const char* aName, const std::string& aValue);
    /// "Range: npt=12.500000-": from a position to the end.
    Request& RangeFrom(Time aFrom);

    /// All lines, without their ends and without the empty line that closes a request.
    std::vector<std::string> Lines() const;

private:
    const Configuration& mConfig;
    std::vector<std::string> mLines;
};

}  // namespace Player::MediaSessions
