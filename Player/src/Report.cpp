#include "Player/Report.hpp"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "Player/Ptr.hpp"
#include "Player/String.hpp"

namespace Player {

namespace {

constexpr SInt kLocalSize = 4096;
/// Longer messages are cut to three characters and the terminator: they are not expected to occur.
constexpr SInt kOverlongSize = 4;

/// Made on first use and never destroyed: reports may come from destructors of static objects.
Reporter* TheDefaultReporter() {
    static Reporter* sReporter = new Reporter;
    return sReporter;
}

/// The default is reached through a flag, not through its address: reports made before static
/// objects of this file are initialised find it as well.
Reporter* gReporter = nullptr;
bool gUseDefault = true;

Reporter* InstalledReporter() {
    return gUseDefault ? TheDefaultReporter() : gReporter;
}

}  // namespace

void Reporter::Report(const char* aFile, UInt aLine, Severity aSeverity, const char* aMessage) {
    std::fprintf(stderr, "<%s: %s:%4u> %s\n", CStrWithSeverity(aSeverity), RelativizeFile(aFile).c_str(), aLine,
                 aMessage);
}

void Report(const char* aFile, UInt aLine, Severity aSeverity, const char* aFmt, ...) {
    va_list lArgs;
    va_start(lArgs, aFmt);
    ReportVA(aFile, aLine, aSeverity, aFmt, &lArgs);
    va_end(lArgs);
}

void ReportVA(const char* aFile, UInt aLine, Severity aSeverity, const char* aFmt, void* aArgs) {
    Reporter* const lReporter = InstalledReporter();
    if (nullptr != lReporter) { Report(*lReporter, aFile, aLine, aSeverity, aFmt, aArgs); }
}

void Report(Reporter& aRep, const char* aFile, UInt aLine, Severity aSeverity, const char* aFmt, void* aArgs) {
    if (nullptr == aFmt) { return; }
    Char lLocal[kLocalSize] = {};
    const SInt lLength = CStrWithFormatVA(lLocal, kLocalSize, aFmt, aArgs);
    if (lLength < 0) { return; }
    if (lLength < kLocalSize) {
        aRep.Report(aFile, aLine, aSeverity, lLocal);
        return;
    }
    const ScopedArray<Char> lHeap(new Char[static_cast<std::size_t>(lLength) + 1]);
    CStrWithFormatVA(lHeap.Ptr(), kOverlongSize, aFmt, aArgs);
    aRep.Report(aFile, aLine, aSeverity, lHeap.Ptr());
}

void SetReporter(Reporter* aReporter) {
    gReporter = aReporter;
    gUseDefault = false;
}

void SetDefaultReporter() {
    gUseDefault = true;
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

std::string RelativizeFile(const char* aPath) {
    for (const char* lFolder : {"/src/", "/include/"}) {
        const char* lFound = std::strstr(aPath, lFolder);
        if (nullptr != lFound) { return lFound + 1; }
    }
    const char* lSlash = std::strrchr(aPath, '/');
    return nullptr == lSlash ? aPath : lSlash + 1;
}

}  // namespace Player
