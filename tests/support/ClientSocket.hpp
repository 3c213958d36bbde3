#pragma once

namespace TestSupport {

/// What the system knows of the TCP socket at the client's end of a connection on this machine.
struct ClientSocket {
    /// Both sides are open as far as the client knows.
    bool mEstablished = false;
    /// Bytes received and not yet read by the client; 0 when the socket is gone.
    unsigned long mUnread = 0;

    static ClientSocket Find(unsigned aClientPort, unsigned aServerPort);
};

}  // namespace TestSupport
