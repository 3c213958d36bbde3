#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <locale>
#include <string>

namespace Player::Testing {

/// While it lives, the process runs in a locale that writes 12,5 and 1.000, like an application in German:
/// for printf and for new streams. It is built on the spot, as the machine may have none installed.
class CommaLocale {
public:
    CommaLocale() : mBefore(std::locale::global(std::locale(std::locale::classic(), new Punctuation))) {
        Build();
        setenv("LOCPATH", mFolder.c_str(), 1);
        std::setlocale(LC_NUMERIC, "comma");
        unsetenv("LOCPATH");
    }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;
    ~CommaLocale() {
        std::setlocale(LC_NUMERIC, "C");
        std::locale::global(mBefore);
        Run("rm -r '" + mFolder + "'");
    }

    /// Without the system's tool for it, only streams are in German.
    static bool ReachesPrintf() { return std::string(",") == std::localeconv()->decimal_point; }

private:
    struct Punctuation : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };

    void Build() const {
        Run("mkdir '" + mFolder + "'");
        const std::string lSource = mFolder + "/source";
        std::ofstream(lSource)
            << "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3;3\nEND LC_NUMERIC\n";
        Run("localedef -c -i '" + lSource + "' -f ANSI_X3.4-1968 '" + mFolder + "/comma'");
    }
    static void Run(const std::string& aCommand) {
        // Its exit status grumbles about the categories that are absent; what counts is seen by `ReachesPrintf`.
        static_cast<void>(std::system((aCommand + " >/dev/null 2>&1").c_str()));
    }

    std::string mFolder = ::testing::TempDir() + "comma-locale-" + std::to_string(getpid());
    std::locale mBefore;
};

}  // namespace Player::Testing
