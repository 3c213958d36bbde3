#include "Player/Exception.hpp"

#include <cstdarg>

#include "Player/String.hpp"

namespace Player {

Exception::Exception(unsigned short aCategory, unsigned short aError)
    : mCategory(aCategory), mError(aError), mMessage{} {}

void Exception::Format(const char* aFmt, void* aArgs) {
    CStrWithFormatVA(mMessage, kMessageSize, aFmt, aArgs);
}

// The five kinds differ in nothing but their category.
#define PLAYER_DEFINE_KIND(aKind, aArea)                          \
    aKind::aKind(unsigned short aError, const char* aFmt, ...)    \
        : Exception(static_cast<unsigned short>(aArea), aError) { \
        va_list lArgs;                                            \
        va_start(lArgs, aFmt);                                    \
        Format(aFmt, &lArgs);                                     \
        va_end(lArgs);                                            \
    }

PLAYER_DEFINE_KIND(SystemErr, Area::kSystem)
PLAYER_DEFINE_KIND(NetworkErr, Area::kNetwork)
PLAYER_DEFINE_KIND(RTSPErr, Area::kRTSP)
PLAYER_DEFINE_KIND(SDPErr, Area::kSDP)
PLAYER_DEFINE_KIND(RTPErr, Area::kRTP)

}  // namespace Player
