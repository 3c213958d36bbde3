#include "Player/Report.hpp"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "Player/String.hpp"

namespace Player {

namespace {

constexpr SInt kLocalSize = 4096;
/// Longer messages, which are not expected, are cut to that many characters.
constexpr SInt kOverlongLength = 3;

/// There before any other static object and never destroyed: constructors and destructors of those may report.
union DefaultReporter {
    constexpr DefaultReporter() noexcept : mReporter() {}
    ~DefaultReporter() {}

    Reporter mReporter;
};

DefaultReporter gDefaultReporter;
// The one member there is, from the beginning to the end.
Reporter* const gDefault = &gDefaultReporter.mReporter;  // NOLINT(cppcoreguidelines-pro-type-union-access)
Reporter* gReporter = gDefault;

}  // namespace

void Reporter::Report(const char* aFile, UInt aLine, Severity aSeverity, const char* aMessage) {
    std::fprintf(stderr, "<%s: %s:%4u> %s\n", CStrWithSeverity(aSeverity), RelativizeFile(aFile), aLine, aMessage);
}

void Report(const char* aFile, UInt aLine, Severity aSeverity, const char* aFmt, ...) {
    va_list lArgs;
    va_start(lArgs, aFmt);
    ReportVA(aFile, aLine, aSeverity, aFmt, &lArgs);
    va_end(lArgs);
}

void ReportVA(const char* aFile, UInt aLine, Severity aSeverity, const char* aFmt, void* aArgs) {
    if (nullptr != gReporter) { Report(*gReporter, aFile, aLine, aSeverity, aFmt, aArgs); }
}

void Report(Reporter& aRep, const char* aFile, UInt aLine, Severity aSeverity, const char* aFmt, void* aArgs) {
    if (nullptr == aFmt) { return; }
    Char lLocal[kLocalSize] = {};
    const SInt lLength = CStrWithFormatVA(lLocal, kLocalSize, aFmt, aArgs);
    if (lLength < 0) { return; }
    if (lLength >= kLocalSize) { lLocal[kOverlongLength] = 0; }
    aRep.Report(aFile, aLine, aSeverity, lLocal);
}

void SetReporter(Reporter* aReporter) {
    gReporter = aReporter;
}

void SetDefaultReporter() {
    gReporter = gDefault;
}

const char* CStrWithSeverity(Severity aSeverity) {
    switch (aSeverity) {
        case Severity::Trace: return "Trace";
        case Severity::Debug: return "Debug";
        case Severity::Info: return "Info";
        case Severity::Warning: return "Warning";
        case Severity::Error: return "Error";
    }
    return "Unknown";
}

const char* RelativizeFile(const char* aPath) {
    for (const char* lFolder : {"/src/", "/include/"}) {
        const char* lFound = std::strstr(aPath, lFolder);
        if (nullptr != lFound) { return lFound + 1; }
    }
    const char* lSlash = std::strrchr(aPath, '/');
    return nullptr == lSlash ? aPath : lSlash + 1;
}

}  // namespace Player
