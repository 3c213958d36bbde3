#pragma once

#include "Player/Processor.hpp"

namespace Player {

/// The end of a chain.
class Consumer : public Processor {
public:
    /// Nothing follows a consumer: always throws `SystemErr` `kNothingFollows`.
    void Attach(const SharedPtr<Processor, SharedObject>& aNext) override;
};

}  // namespace Player
