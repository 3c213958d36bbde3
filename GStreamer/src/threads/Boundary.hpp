#pragma once

#include <gst/gst.h>

namespace nsGstVireRtspSrc {

/// Logs the exception that is being handled. From any thread.
void LogAtBoundary(gpointer aObject) noexcept;

/// Does what C code has called for. No exception may pass through that: what is thrown all the same, for want of
/// memory say, is logged, and the answer is `aOtherwise`.
template <typename Result, typename Action>
Result AtBoundary(gpointer aObject, Result aOtherwise, Action aAction) noexcept {
    try {
        return aAction();
    } catch (...) { LogAtBoundary(aObject); }
    return aOtherwise;
}

/// For actions without a result.
template <typename Action>
void AtBoundary(gpointer aObject, Action aAction) noexcept {
    try {
        aAction();
    } catch (...) { LogAtBoundary(aObject); }
}

}  // namespace nsGstVireRtspSrc
