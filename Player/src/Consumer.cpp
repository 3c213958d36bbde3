#include "Player/Consumer.hpp"

#include "Throw.hpp"

namespace Player {

void Consumer::Attach(const SharedPtr<Processor, SharedObject>& /*aNext*/) {
    PLAYER_THROW(SystemErr, ErrorCode::kNothingFollows, "Consumer::Attach(): Should never be called");
}

}  // namespace Player
