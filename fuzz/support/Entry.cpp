// One input, and what holds for every target: it ends in bounded time and holds bounded memory. (The leak checker sees
// to it that all is given back.)

#include <sys/time.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "Player/Report.hpp"
#include "support/Memory.hpp"
#include "support/Target.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* aData, std::size_t aSize);

namespace Fuzz {
namespace {

/// Ends the process when an input takes too long. Time of the processor counts, sanitizers included: a busy machine
/// makes no difference. A common input takes less than a thousandth of it.
class TimeLimit {
public:
    TimeLimit() { Set(kMostSeconds); }
    TimeLimit(const TimeLimit&) = delete;
    TimeLimit& operator=(const TimeLimit&) = delete;
    ~TimeLimit() { Set(0); }

    static void Prepare() { std::signal(SIGVTALRM, TakesTooLong); }

private:
    static constexpr int kMostSeconds = 2;

    static void TakesTooLong(int /*aSignal*/) { std::abort(); }
    static void Set(int aSeconds) {
        itimerval lTimer{};
        lTimer.it_value.tv_sec = aSeconds;
        setitimer(ITIMER_VIRTUAL, &lTimer, nullptr);
    }
};

/// Messages are formatted as ever and go nowhere.
class QuietReporter : public Player::Reporter {
public:
    void Report(const char* /*aFile*/, Player::UInt /*aLine*/, Player::Severity /*aSeverity*/,
                const char* aMessage) override {
        FUZZ_CHECK(std::strlen(aMessage) < 4096);
    }
};

bool Prepare() {
    static QuietReporter sReporter;
    Player::SetReporter(&sReporter);
    TimeLimit::Prepare();
    return true;
}

}  // namespace
}  // namespace Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* aData, std::size_t aSize) {
    static const bool sPrepared = Fuzz::Prepare();
    static_cast<void>(sPrepared);
    // What the library draws by lot is the same each time, so that a find can be repeated.
    std::srand(1);
    const Fuzz::TimeLimit lTime;
    const Fuzz::MemoryWatch lMemory;
    Fuzz::Input lInput(aData, aSize);
    Fuzz::Run(lInput);
    FUZZ_CHECK(lMemory.Peak() <= Fuzz::kBounds.mBase + Fuzz::kBounds.mPerByte * aSize);
    return 0;
}
