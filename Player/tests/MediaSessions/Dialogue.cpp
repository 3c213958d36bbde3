#include "MediaSessions/Dialogue.hpp"

#include <map>
#include <sstream>
#include <vector>

#include "Player/String.hpp"

namespace Player::MediaSessions {

namespace {

using Words = std::vector<std::string>;

Words Pieces(const std::string& aText, char aSep) {
    Words lPieces;
    Split(aText, aSep, lPieces);
    return lPieces;
}

std::string URLOf(const std::string& aPath) {
    return std::string::npos == aPath.find("://") ? "rtsp://127.0.0.1:{port}/" + aPath : aPath;
}

std::string ReasonOf(const std::string& aStatus) {
    static const std::map<std::string, std::string> kReasons = {
        {"200", "OK"},
        {"302", "Found"},
        {"401", "Unauthorized"},
        {"404", "Not Found"},
        {"454", "Session Not Found"},
        {"455", "Method Not Valid in This State"},
        {"459", "Aggregate Operation Not Allowed"},
        {"461", "Unsupported Transport"},
        {"500", "Internal Server Error"},
    };
    return kReasons.at(aStatus);
}

/// "video@b:99:1000:H264"
std::string Media(const std::string& aTrack) {
    struct Kind {
        const char* mFormat;
        const char* mPayloadType;
        const char* mClockRate;
    };
    static const std::map<std::string, Kind> kKinds = {
        {"video", {"H264", "96", "90000"}},
        {"audio", {"AMR", "97", "8000"}},
    };
    const Words lFields = Pieces(aTrack, ':');
    const Words lNames = Pieces(lFields[0], '@');
    const auto lFound = kKinds.find(lNames[0]);
    const Kind lKind = kKinds.end() == lFound ? Kind{"t140", "98", "1000"} : lFound->second;
    const std::string lPayloadType = lFields.size() > 1 ? lFields[1] : lKind.mPayloadType;
    const std::string lClockRate = lFields.size() > 2 ? lFields[2] : lKind.mClockRate;
    const std::string lFormat = lFields.size() > 3 ? lFields[3] : lKind.mFormat;
    return "S| m=" + lNames[0] + " 0 RTP/AVP " + lPayloadType + "\nS| a=rtpmap:" + lPayloadType + " " + lFormat + "/" +
           lClockRate + "\nS| a=control:" + lNames.back() + "\n";
}

/// "SDP clip/ video audio range=0-20"
std::string Description(const std::string& aWords) {
    const Words lWords = Pieces(aWords, ' ');
    std::string lSession = "S| v=0\n";
    std::string lMedia;
    for (std::size_t i = 2; i < lWords.size(); ++i) {
        if (0 == lWords[i].compare(0, 6, "range=")) {
            lSession += "S| a=range:npt=" + lWords[i].substr(6) + "\n";
        } else {
            lMedia += Media(lWords[i]);
        }
    }
    const std::string lBase = "-" == lWords[1] ? "" : "S: Content-Base: " + URLOf(lWords[1]) + "\n";
    return lBase + "S: Content-Length: {length}\nS:\n" + lSession + lMedia;
}

std::string Transport(const std::string& aWords, bool aIsResponse) {
    const Words lWords = Pieces(aWords, ' ');
    if ("TCP" == lWords[0]) {
        const unsigned long lChannel = 2 * std::stoul(lWords[1]);
        return "Transport: RTP/AVP/TCP;unicast;interleaved=" + std::to_string(lChannel) + "-" +
               std::to_string(lChannel + 1);
    }
    if ("*" == lWords[1]) { return aIsResponse ? "Transport: RTP/AVP;unicast" : "Transport: RTP/AVP;unicast;{*}"; }
    const std::string lPort = "client_port" + lWords[1];
    std::string lLine = "Transport: RTP/AVP;unicast;client_port={" + lPort + "}-{" + lPort + "+1}";
    return aIsResponse ? lLine + ";server_port={server_port" + lWords[1] + "}" : lLine;
}

std::string Line(const std::string& aText, bool aIsResponse) {
    const std::string lWord = aText.substr(0, 4);
    return "UDP " == lWord || "TCP " == lWord ? Transport(aText, aIsResponse) : aText;
}

/// "> SETUP clip/video 2 | Session: 5 | UDP 0"
std::string Request(const Words& aParts) {
    const Words lWords = Pieces(aParts[0], ' ');
    std::string lScript = "C: " + lWords[1] + " " + URLOf(lWords[2]) + " RTSP/1.0\nC: CSeq: " + lWords[3] + "\n";
    if (1 == aParts.size()) { return lScript + "C...\n"; }
    lScript += "C: User-Agent: {*}\n";
    for (std::size_t i = 1; i < aParts.size(); ++i) {
        lScript += "C: " + Line(aParts[i], false) + "\n";
    }
    return lScript + "C:\n";
}

/// "< 200 2 | Session: 5 | UDP 0"
std::string Response(const Words& aParts) {
    const Words lWords = Pieces(aParts[0], ' ');
    std::string lScript = "S: RTSP/1.0 " + lWords[1] + " " + ReasonOf(lWords[1]) + "\nS: CSeq: " + lWords[2] + "\n";
    for (std::size_t i = 1; i < aParts.size(); ++i) {
        if (0 == aParts[i].compare(0, 4, "SDP ")) { return lScript + Description(aParts[i]); }
        lScript += "S: " + Line(aParts[i], true) + "\n";
    }
    return lScript + "S:\n";
}

}  // namespace

std::string Dialogue(const std::string& aShorthand) {
    std::string lScript;
    std::istringstream lLines(aShorthand);
    for (std::string lLine; std::getline(lLines, lLine);) {
        lLine.erase(0, lLine.find_first_not_of(' '));
        const char lKind = lLine.empty() ? '\0' : lLine[0];
        if ('>' == lKind) {
            lScript += Request(Pieces(lLine, '|'));
        } else if ('<' == lKind) {
            lScript += Response(Pieces(lLine, '|'));
        } else {
            lScript += lLine + "\n";
        }
    }
    return lScript;
}

}  // namespace Player::MediaSessions
