#include "threads/ThreadMark.hpp"

namespace nsGstVireRtspSrc {

namespace {

thread_local ThreadMark* tInnermost = nullptr;

}  // namespace

ThreadMark::ThreadMark(const GstElement* aElement, Kind aKind)
    : m_element(aElement), m_kind(aKind), m_outer(tInnermost) {
    tInnermost = this;
}

ThreadMark::~ThreadMark() {
    tInnermost = m_outer;
}

ThreadMark::Kind ThreadMark::Of(const GstElement* aElement) {
    for (const ThreadMark* lMark = tInnermost; nullptr != lMark; lMark = lMark->m_outer) {
        if (aElement == lMark->m_element) { return lMark->m_kind; }
    }
    return Kind::kNone;
}

}  // namespace nsGstVireRtspSrc
