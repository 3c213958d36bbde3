#include "Processors/RTP/Factories.hpp"

#include <initializer_list>

#include "Processors/RTP/AMR.hpp"
#include "Processors/RTP/EarlyMarkers.hpp"
#include "Processors/RTP/H264.hpp"
#include "Processors/RTP/MP4ALATM.hpp"
#include "Processors/RTP/MP4VES.hpp"
#include "Processors/RTP/MPEG4Generic.hpp"

namespace Player::Processors::RTP {

namespace {

using Factory = SharedPtr<Processor, SharedObject> (*)(Properties&);

SharedPtr<Processor, SharedObject> FirstOf(std::initializer_list<Factory> aFactories, Properties& aFormat) {
    for (const Factory lCreate : aFactories) {
        SharedPtr<Processor, SharedObject> lProcessor = lCreate(aFormat);
        if (lProcessor) { return lProcessor; }
    }
    return {};
}

}  // namespace

SharedPtr<Processor, SharedObject> CreateDepacketizer(Properties& aFormat) {
    return FirstOf({H264::Create, MP4VES::Create, MP4ALATM::Create, AMR::Create, MPEG4Generic::Create}, aFormat);
}

SharedPtr<Processor, SharedObject> CreateTolerantDepacketizer(Properties& aFormat) {
    return FirstOf({H264::CreateDelimited, EarlyMarkers::Create, MP4ALATM::Create, AMR::Create, MPEG4Generic::Create},
                   aFormat);
}

}  // namespace Player::Processors::RTP
