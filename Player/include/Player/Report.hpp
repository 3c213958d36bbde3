#pragma once

#include "Player/Types.hpp"

namespace Player {

enum Severity : SInt { Trace = 0, Debug = 1, Info = 2, Warning = 3, Error = 4 };

/// Where the library's reports go: to standard error, one line each, unless a derived class has another place.
/// May be called from any thread that calls into the library.
class Reporter {
public:
    Reporter() = default;
    Reporter(const Reporter&) = delete;
    Reporter& operator=(const Reporter&) = delete;
    virtual ~Reporter() = default;
    virtual void Report(const char* aFile, UInt aLine, Severity aSeverity, const char* aMessage);
};

/// Sends a message to the installed reporter, if any. Nothing is filtered here.
void Report(const char* aFile, UInt aLine, Severity aSeverity, const char* aFmt, ...)
    __attribute__((format(printf, 4, 5)));
/// `aArgs` is the address of a `va_list`, which stays usable; null for none.
void ReportVA(const char* aFile, UInt aLine, Severity aSeverity, const char* aFmt, void* aArgs);
/// To a given reporter. Needs no memory. A message of 4096 characters or more is delivered as its first three.
void Report(Reporter& aRep, const char* aFile, UInt aLine, Severity aSeverity, const char* aFmt, void* aArgs);

/// One reporter for the process; null silences all reports. The caller keeps ownership and keeps it alive;
/// install it before playing starts.
void SetReporter(Reporter* aReporter);
/// Back to the built-in one, which is there from the start and writes every report to standard error.
void SetDefaultReporter();

/// "Trace", "Debug", "Info", "Warning", "Error", else "Unknown".
const char* CStrWithSeverity(Severity aSeverity);
/// A source path for people: from the "src/" or "include/" in it, else the file name. An end of `aPath` itself.
const char* RelativizeFile(const char* aPath);

}  // namespace Player
