#pragma once

#include <string>

#include "support/Input.hpp"

namespace Fuzz {

/// The answers of a server that does as it is asked, for targets that need one.
class Dialogue {
public:
    /// Two tracks of speech at 8000 Hz: "trackID=1", called video, and "trackID=2", called audio. An end of the
    /// presentation at 100 s.
    static std::string Description();
    /// A response with this CSeq, these header lines (each with its end) and this body.
    static std::string Response(unsigned aCSeq, const std::string& aHeaders = "", const std::string& aBody = "");
    static std::string Describe(unsigned aCSeq);

    /// An RTP packet of the first track with one frame of speech in it.
    static Bytes Speech(std::uint16_t aSeq, std::uint32_t aTimestamp, std::uint32_t aSsrc);
    static constexpr unsigned kSpeechBytes = 31;
    static constexpr unsigned kSpeechRate = 8000;
};

/// What the library wrote to a server: requests, each of them complete and numbered one above the one before; answers
/// to the server's own; and receiver reports. Checks that it is nothing else, and gives back the requests.
std::vector<std::string> RequestsIn(const std::string& aSent);
/// The value of a header in a request; empty when it has none.
std::string HeaderIn(const std::string& aRequest, const std::string& aName);

}  // namespace Fuzz
