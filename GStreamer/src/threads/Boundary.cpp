#include "threads/Boundary.hpp"

#include <exception>

#include "debug/Debug.hpp"

#define GST_CAT_DEFAULT SourceCategory()

namespace nsGstVireRtspSrc {

void LogAtBoundary(gpointer aObject) noexcept {
    try {
        throw;
    } catch (const std::exception& lException) {
        GST_ERROR_OBJECT(aObject, "Failed: %s", lException.what());
    } catch (...) { GST_ERROR_OBJECT(aObject, "Failed"); }
}

}  // namespace nsGstVireRtspSrc
