#include "SDP/Parser.hpp"

#include <string>

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
    InsertTo(aReader, *aSession, "UserName", ' ');
    InsertTo(aReader, *aSession, "SessionId", ' ');
    InsertTo(aReader, *aSession, "SessionVersion", ' ');
    InsertTo(aReader, *aSession, "OriginNetworkType", ' ');
    InsertTo(aReader, *aSession, "OriginAddressType", ' ');
    InsertRest(aReader, *aSession, "OriginAddress");
}

/// s=<session name>
void ParseName(Reader& aReader, PropertiesPtr& aSession) {
    InsertRest(aReader, *aSession, "SessionName");
}

/// c=<nettype> <addrtype> <connection-address>
void ParseConnection(Reader& aReader, PropertiesPtr& aProps) {
    InsertTo(aReader, *aProps, "ConnectionNetworkType", ' ');
    InsertTo(aReader, *aProps, "ConnectionAddressType", ' ');
    InsertRest(aReader, *aProps, "ConnectionAddress");
}

/// rtpmap:<payload type> <encoding name>/<clock rate>[/<encoding parameters>]
void ParseRTPMap(Reader& aReader, Properties& aProps) {
    SkipLnTo(aReader, ' ');
    InsertTo(aReader, aProps, "Format", '/');
    InsertTo(aReader, aProps, "TimeRes", '/');
    InsertRest(aReader, aProps, "EncParams");
}

/// control:<URL, absolute or relative>
void ParseControl(Reader& aReader, Properties& aProps) {
    InsertRest(aReader, aProps, "Id");
}

/// range:npt=<start>-[<end>]
void ParseRange(Reader& aReader, Properties& aProps) {
    std::string lKind;
    ReadLnTo(aReader, lKind, '=');
    if ("npt" != lKind) { return SkipLn(aReader); }
    SkipLnWhile(aReader, ' ');
    InsertTo(aReader, aProps, "StartTime", '-');
    SkipLnWhile(aReader, ' ');
    InsertRest(aReader, aProps, "EndTime");
}

/// fmtp:<payload type> <parameters>
void ParseFormatParams(Reader& aReader, Properties& aProps) {
    SkipLnTo(aReader, ' ');
    InsertRest(aReader, aProps, "FmtParams");
}

/// framesize:<payload type> <width>-<height>
void ParseFrameSize(Reader& aReader, Properties& aProps) {
    SkipLnWhile(aReader, ' ');
    SkipLnTo(aReader, ' ');
    InsertTo(aReader, aProps, "Width", '-');
    SkipLnWhile(aReader, ' ');
    InsertRest(aReader, aProps, "Height");
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
    InsertTo(aReader, *lMedia, "MediaType", ' ');
    InsertTo(aReader, *lMedia, "Port", ' ');
    InsertTo(aReader, *lMedia, "Transport", ' ');
    InsertTo(aReader, *lMedia, "PayloadType", ' ');
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

/// All behind the version line. A second one ends the description, and so does one medium too many.
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
