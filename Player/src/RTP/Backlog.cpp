#include "RTP/Backlog.hpp"

#include "Player/Report.hpp"

namespace Player::RTP {

void Backlog::ReportDrop() {
    if (mHasReported) { return; }
    mHasReported = true;
    Report(__FILE__, __LINE__, Severity::Warning, "Packets are dropped: %u MiB wait to be played",
           static_cast<UInt>(mLimit >> 20));
}

}  // namespace Player::RTP
