#include "Processors/RTP/Factories.hpp"

#include "Processors/RTP/AMR.hpp"
#include "Processors/RTP/H264.hpp"
#include "Processors/RTP/MP4ALATM.hpp"
#include "Processors/RTP/MP4VES.hpp"
#include "Processors/RTP/MPEG4Generic.hpp"

namespace Player::Processors::RTP {

SharedPtr<Processor, SharedObject> CreateDepacketizer(Properties& aFormat) {
    using Factory = SharedPtr<Processor, SharedObject> (*)(Properties&);
    constexpr Factory kFactories[] = {H264::Create, MP4VES::Create, MP4ALATM::Create, AMR::Create,
                                      MPEG4Generic::Create};
    for (const Factory lCreate : kFactories) {
        SharedPtr<Processor, SharedObject> lProcessor = lCreate(aFormat);
        if (lProcessor) { return lProcessor; }
    }
    return {};
}

}  // namespace Player::Processors::RTP
