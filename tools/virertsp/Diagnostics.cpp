#include "Diagnostics.hpp"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Printable.hpp"

namespace Virertsp {

namespace {

constexpr char kName[] = "virertsp:";
constexpr char kRed[] = "\033[1;31m";
constexpr char kYellow[] = "\033[1;33m";
constexpr char kPlain[] = "\033[0m";

bool HasColours() {
    const char* const lUnwanted = std::getenv("NO_COLOR");
    const char* const lTerminal = std::getenv("TERM");
    return (nullptr == lUnwanted || '\0' == *lUnwanted) && nullptr != lTerminal &&
           0 != std::strcmp("dumb", lTerminal) && 0 != isatty(STDERR_FILENO);
}

void Print(const char* aColour, const std::string& aText) {
    const bool lColours = HasColours();
    std::fprintf(stderr, "%s%s%s %s\n", lColours ? aColour : "", kName, lColours ? kPlain : "",
                 Printable(aText).c_str());
}

}  // namespace

void PrintError(const std::string& aText) {
    Print(kRed, aText);
}

void PrintWarning(const std::string& aText) {
    Print(kYellow, aText);
}

}  // namespace Virertsp
