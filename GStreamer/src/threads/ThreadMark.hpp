#pragma once

#include <gst/gst.h>

namespace nsGstVireRtspSrc {

/// Says what the thread is doing for an element for as long as this object lives. Handlers of signals and messages
/// run on our threads, and may call the element from there: a call that would wait for its own thread is recognised
/// by its mark. Marks of one thread may be nested.
class ThreadMark {
public:
    enum class Kind {
        kNone,
        kTransition,  ///< Changes the session, or posts what came of that.
        kStreaming,   ///< Runs a stream's task.
    };

    ThreadMark(const GstElement* aElement, Kind aKind);
    ~ThreadMark();
    ThreadMark(const ThreadMark&) = delete;
    ThreadMark& operator=(const ThreadMark&) = delete;

    /// The innermost of the calling thread for the element.
    static Kind Of(const GstElement* aElement);

private:
    const GstElement* const m_element;
    const Kind m_kind;
    ThreadMark* const m_outer;
};

}  // namespace nsGstVireRtspSrc
