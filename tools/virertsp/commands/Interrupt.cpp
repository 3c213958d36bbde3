#include "commands/Interrupt.hpp"

#include <csignal>
#include <initializer_list>

namespace Virertsp {

namespace {

volatile std::sig_atomic_t gInterrupted = 0;

void Note(int /*aSignal*/) {
    gInterrupted = 1;
}

}  // namespace

void CatchInterrupts() {
    gInterrupted = 0;
    struct sigaction lAction = {};
    lAction.sa_handler = Note;
    lAction.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int lSignal : {SIGINT, SIGTERM}) {
        sigaction(lSignal, &lAction, nullptr);
    }
}

bool Interrupted() {
    return 0 != gInterrupted;
}

}  // namespace Virertsp
