#include "support/ClientSocket.hpp"

#include <fstream>
#include <sstream>
#include <string>

namespace TestSupport {

namespace {

constexpr unsigned long kStateEstablished = 1;

/// "0100007F:C001" -> 0xC001
unsigned long PortOf(const std::string& aAddress) {
    return std::stoul(aAddress.substr(aAddress.find(':') + 1), nullptr, 16);
}

}  // namespace

ClientSocket ClientSocket::Find(unsigned aClientPort, unsigned aServerPort) {
    for (const char* lName : {"/proc/net/tcp", "/proc/net/tcp6"}) {
        std::ifstream lTable(lName);
        std::string lRow;
        std::getline(lTable, lRow);
        while (std::getline(lTable, lRow)) {
            // sl local_address rem_address st tx_queue:rx_queue ...
            std::istringstream lFields(lRow);
            std::string lNumber, lLocal, lRemote, lState, lQueues;
            lFields >> lNumber >> lLocal >> lRemote >> lState >> lQueues;
            if (PortOf(lLocal) != aClientPort || PortOf(lRemote) != aServerPort) { continue; }
            ClientSocket lSocket;
            lSocket.mEstablished = kStateEstablished == std::stoul(lState, nullptr, 16);
            lSocket.mUnread = PortOf(lQueues);
            return lSocket;
        }
    }
    return ClientSocket();
}

}  // namespace TestSupport
