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
#define PLAYER_DEFINE_KIND(aKind, aCategory)                                                    \
    aKind::aKind(unsigned short aError, const char* aFmt, ...) : Exception(aCategory, aError) { \
        va_list lArgs;                                                                          \
        va_start(lArgs, aFmt);                                                                  \
        Format(aFmt, &lArgs);                                                                   \
        va_end(lArgs);                                                                          \
    }

PLAYER_DEFINE_KIND(SystemErr, 1)
PLAYER_DEFINE_KIND(NetworkErr, 3)
PLAYER_DEFINE_KIND(RTSPErr, 17)
PLAYER_DEFINE_KIND(SDPErr, 18)
PLAYER_DEFINE_KIND(RTPErr, 19)

}  // namespace Player
