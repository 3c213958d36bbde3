#pragma once

namespace Faults {

/// The calls of the system that can be made to go wrong.
enum class Call { kSocket, kBind, kConnect, kSetSockOpt, kSend, kSendTo, kRecv, kRecvFrom, kRecvMMsg, kSelect, kTime };

/// While it lives, one call that the thread makes fails with the given `errno`: the `aNumber`th of its kind, from 1.
class FailingCall {
public:
    FailingCall(Call aCall, int aErrno, unsigned aNumber);
    FailingCall(const FailingCall&) = delete;
    FailingCall& operator=(const FailingCall&) = delete;
    ~FailingCall();

    /// Whether it has failed.
    static bool Happened();
};

/// While it lives, every other call of the thread that waits or moves data is interrupted by a signal, so to
/// speak, before it does anything.
class Interrupted {
public:
    Interrupted();
    Interrupted(const Interrupted&) = delete;
    Interrupted& operator=(const Interrupted&) = delete;
    ~Interrupted();
};

/// While it lives, the system takes so many bytes at most from one write of the thread to a connection.
class SmallWrites {
public:
    explicit SmallWrites(unsigned aBytes);
    SmallWrites(const SmallWrites&) = delete;
    SmallWrites& operator=(const SmallWrites&) = delete;
    ~SmallWrites();
};

/// While it lives, somebody sets the clock by so many seconds when the thread reads it for the `aNumber`th time.
class ClockSet {
public:
    ClockSet(long aSeconds, unsigned aNumber);
    ClockSet(const ClockSet&) = delete;
    ClockSet& operator=(const ClockSet&) = delete;
    ~ClockSet();

    /// Whether it was set.
    static bool Happened();
};

}  // namespace Faults
