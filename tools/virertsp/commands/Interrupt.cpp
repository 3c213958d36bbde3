#include "commands/Interrupt.hpp"

#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>

namespace Virertsp {

namespace {

/// What the server gets to answer once the user has had enough.
constexpr suseconds_t kLastMicroseconds = 700000;

volatile std::sig_atomic_t gInterrupted = 0;
volatile std::sig_atomic_t gWaiting = 0;
volatile std::sig_atomic_t gExitCode = 0;

void SetAlarm(suseconds_t aMicroseconds) {
    itimerval lTimer = {};
    lTimer.it_value.tv_usec = aMicroseconds;
    setitimer(ITIMER_REAL, &lTimer, nullptr);
}

void Note(int /*aSignal*/) {
    gInterrupted = 1;
    if (0 != gWaiting) { SetAlarm(kLastMicroseconds); }
}

void EndProcess(int /*aSignal*/) {
    _exit(static_cast<int>(gExitCode));
}

void Handle(int aSignal, void (*aHandler)(int)) {
    struct sigaction lAction = {};
    lAction.sa_handler = aHandler;
    lAction.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(aSignal, &lAction, nullptr);
}

}  // namespace

void CatchInterrupts() {
    gInterrupted = 0;
    for (const int lSignal : {SIGINT, SIGTERM}) {
        Handle(lSignal, Note);
    }
}

bool Interrupted() {
    return 0 != gInterrupted;
}

ImpatientWait::ImpatientWait(int aExitCode) {
    gExitCode = aExitCode;
    Handle(SIGALRM, EndProcess);
    gWaiting = 1;
    if (Interrupted()) { SetAlarm(kLastMicroseconds); }
}

ImpatientWait::~ImpatientWait() {
    gWaiting = 0;
    SetAlarm(0);
}

}  // namespace Virertsp
