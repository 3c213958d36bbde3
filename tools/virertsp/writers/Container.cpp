#include "writers/Container.hpp"

#include <strings.h>

#include "Failure.hpp"
#ifdef VIRERTSP_HAS_LIBAV
#include "writers/AvContainer.hpp"
#endif

namespace Virertsp {

bool Container::IsFor(const std::string& aPath) {
    const std::string lEnd = aPath.size() < 4 ? std::string() : aPath.substr(aPath.size() - 4);
    return 0 == strcasecmp(".mp4", lEnd.c_str()) || 0 == strcasecmp(".mkv", lEnd.c_str());
}

std::shared_ptr<Container> Container::Make(const std::string& aPath, OutputFile::Existing aExisting,
                                           const Player::Time& aStart) {
#ifdef VIRERTSP_HAS_LIBAV
    return std::make_shared<AvContainer>(aPath, aExisting, aStart);
#else
    static_cast<void>(aExisting);
    static_cast<void>(aStart);
    throw Failure(kExitUsage, "Can't write " + aPath + ": this program was built without libavformat.");
#endif
}

}  // namespace Virertsp
