#include "SDP/Parser.hpp"

#include <string>

#include "Player/Keys.hpp"
#include "SDP/Reader.hpp"
#include "Throw.hpp"

namespace Player {

namespace {

using PropertiesPtr = SharedPtr<Properties, SharedObject>;
using PropertiesList = std::list<PropertiesPtr>;

/// Stores what stands before `aDelim`, or the rest of the line without its end, under `aKey`.
void InsertTo(Reader& aReader, Properties& aProps, const char* aKey, char aDelim) {
    std::string lVal;
    ReadLnTo(aReader, lVal, aDelim);
    aProps.Insert(aKey, lVal);
}

/// Stores the rest of the line under `aKey`.
void InsertRest(Reader& aReader, Properties& aProps, const char* aKey) {
    std::string lVal;
    ReadLn(aReader, lVal);
    aProps.Insert(aKey, lVal);
}

/// o=<username> <sess-id> <sess-version> <nettype> <addrtype> <unicast-address>
void ParseOrigin(Reader& aReader, PropertiesPtr& aSession) {
    InsertTo(aReader, *aSession, Key::kUserName, ' ');
    InsertTo(aReader, *aSession, Key::kSessionId, ' ');
    InsertTo(aReader, *aSession, Key::kSessionVersion, ' ');
    InsertTo(aReader, *aSession, Key::kOriginNetworkType, ' ');
    InsertTo(aReader, *aSession, Key::kOriginAddressType, ' ');
    InsertRest(aReader, *aSession, Key::kOriginAddress);
}

/// s=<session name>
void ParseName(Reader& aReader, PropertiesPtr& aSession) {
    InsertRest(aReader, *aSession, Key::kSessionName);
}

/// c=<nettype> <addrtype> <connection-address>
void ParseConnection(Reader& aReader, PropertiesPtr& aProps) {
    InsertTo(aReader, *aProps, Key::kConnectionNetworkType, ' ');
    InsertTo(aReader, *aProps, Key::kConnectionAddressType, ' ');
    InsertRest(aReader, *aProps, Key::kConnectionAddress);
}

/// rtpmap:<payload type> <encoding name>/<clock rate>[/<encoding parameters>]
void ParseRTPMap(Reader& aReader, Properties& aProps) {
    SkipLnTo(aReader, ' ');
    InsertTo(aReader, aProps, Key::kFormat, '/');
    InsertTo(aReader, aProps, Key::kTimeRes, '/');
    InsertRest(aReader, aProps, Key::kEncParams);
}

/// control:<URL, absolute or relative>
void ParseControl(Reader& aReader, Properties& aProps) {
    InsertRest(aReader, aProps, Key::kId);
}

/// range:npt=<start>-[<end>]
void ParseRange(Reader& aReader, Properties& aProps) {
    std::string lKind;
    ReadLnTo(aReader, lKind, '=');
    if ("npt" != lKind) { return SkipLn(aReader); }
    SkipLnWhile(aReader, ' ');
    InsertTo(aReader, aProps, Key::kStartTime, '-');
    SkipLnWhile(aReader, ' ');
    InsertRest(aReader, aProps, Key::kEndTime);
}

/// fmtp:<payload type> <parameters>
void ParseFormatParams(Reader& aReader, Properties& aProps) {
    SkipLnTo(aReader, ' ');
    InsertRest(aReader, aProps, Key::kFmtParams);
}

/// framesize:<payload type> <width>-<height>
void ParseFrameSize(Reader& aReader, Properties& aProps) {
    SkipLnWhile(aReader, ' ');
    SkipLnTo(aReader, ' ');
    InsertTo(aReader, aProps, Key::kWidth, '-');
    SkipLnWhile(aReader, ' ');
    InsertRest(aReader, aProps, Key::kHeight);
}

struct Attribute {
    const char* mName;
    void (*mParse)(Reader&, Properties&);
};

constexpr Attribute kAttributes[] = {
    {"rtpmap", ParseRTPMap},     {"control", ParseControl},     {"range", ParseRange},
    {"fmtp", ParseFormatParams}, {"framesize", ParseFrameSize},
};

/// a=<name>:<value>
void ParseAttribute(Reader& aReader, PropertiesPtr& aProps) {
    std::string lName;
    if (ReadLnTo(aReader, lName, ':')) {
        for (const Attribute& lAttribute : kAttributes) {
            if (lName == lAttribute.mName) { return lAttribute.mParse(aReader, *aProps); }
        }
    }
    SkipLn(aReader);
}

/// m=<media> <port> <proto> <fmt> ..., and the lines that belong to it.
void ParseMediaDescription(Reader& aReader, PropertiesList& aMedia) {
    PropertiesPtr lMedia(new Properties);
    InsertTo(aReader, *lMedia, Key::kMediaType, ' ');
    InsertTo(aReader, *lMedia, Key::kPort, ' ');
    InsertTo(aReader, *lMedia, Key::kTransport, ' ');
    InsertTo(aReader, *lMedia, Key::kPayloadType, ' ');
    SkipLn(aReader);

    bool lMine = true;
    for (char lType = 0; lMine && NextType(aReader, lType);) {
        switch (lType) {
            case 'a': ParseAttribute(aReader, lMedia); break;
            case 'c': ParseConnection(aReader, lMedia); break;
            case 'm':
            case 'v':
                aReader.Rewind<char>(2);
                lMine = false;
                break;
            default: SkipLn(aReader); break;
        }
    }
    aMedia.push_back(lMedia);
}

/// Presentations have a handful of media; each kept costs many times the bytes of its line.
constexpr std::size_t kMostMedia = 16384;

/// Everything after the version line. A second one ends the description, and so does one medium too many.
void ParseCommon(Reader& aReader, PropertiesPtr& aSession, PropertiesList& aMedia) {
    aSession.Set(new Properties);
    aMedia.clear();
    for (char lType = 0; NextType(aReader, lType);) {
        switch (lType) {
            case 's': ParseName(aReader, aSession); break;
            case 'o': ParseOrigin(aReader, aSession); break;
            case 'c': ParseConnection(aReader, aSession); break;
            case 'a': ParseAttribute(aReader, aSession); break;
            case 'm':
                if (kMostMedia == aMedia.size()) {
                    return Report(__FILE__, __LINE__, Severity::Warning, "ParseSDP(): %s", "Too many media");
                }
                ParseMediaDescription(aReader, aMedia);
                break;
            case 'v': return;
            default: SkipLn(aReader); break;
        }
    }
}

}  // namespace

void ParseSDP(const BufferRef& aSDP, PropertiesPtr& aSession, PropertiesList& aMedia) {
    Reader lReader(aSDP);
    const char lType = lReader.Read<char>();
    const char lEquals = lReader.Read<char>();
    if ('v' != lType || '=' != lEquals) {
        PLAYER_THROW(SDPErr, ErrorCode::kBadSyntax, "ParseSDP(): %s", "Bad SDP syntax");
    }
    if ('0' != lReader.Read<char>()) {
        PLAYER_THROW(SDPErr, ErrorCode::kUnsupportedVersion, "ParseSDP(): %s", "Unsupported SDP version");
    }
    SkipLn(lReader);
    ParseCommon(lReader, aSession, aMedia);
}

}  // namespace Player
