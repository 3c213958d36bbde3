#include "support/ElementUnderTest.hpp"

#include <algorithm>
#include <chrono>
#include <thread>

namespace ElementTest {

namespace {

std::string Application(GstMessage* aMessage) {
    const GstStructure* const lStructure = gst_message_get_structure(aMessage);
    gint lError = 0;
    if (!gst_structure_has_name(lStructure, "VIRE_RTSP_SRC_MESSAGE") || 1 != gst_structure_n_fields(lStructure) ||
        !gst_structure_get_int(lStructure, "Error", &lError)) {
        return "application message of another form";
    }
    return "error " + std::to_string(lError);
}

std::string Warning(GstMessage* aMessage) {
    GError* lError = nullptr;
    gst_message_parse_warning(aMessage, &lError, nullptr);
    const std::string lText = lError->message;
    g_error_free(lError);
    return "warning " + lText;
}

std::string Failure(GstMessage* aMessage) {
    GError* lError = nullptr;
    gst_message_parse_error(aMessage, &lError, nullptr);
    const bool lIsResource = GST_RESOURCE_ERROR == lError->domain;
    const std::string lText = (lIsResource ? "resource " : "other domain ") + std::to_string(lError->code) + " " +
                              std::string(lError->message);
    g_error_free(lError);
    return "failure " + lText;
}

std::string Buffering(GstMessage* aMessage) {
    gint lPercent = -1;
    gst_message_parse_buffering(aMessage, &lPercent);
    return "buffering " + std::to_string(lPercent);
}

}  // namespace

std::string Describe(GstMessage* aMessage) {
    switch (GST_MESSAGE_TYPE(aMessage)) {
        case GST_MESSAGE_APPLICATION: return Application(aMessage);
        case GST_MESSAGE_ERROR: return Failure(aMessage);
        case GST_MESSAGE_WARNING: return Warning(aMessage);
        case GST_MESSAGE_BUFFERING: return Buffering(aMessage);
        case GST_MESSAGE_DURATION: return "duration";
        default: return std::string("other ") + gst_message_type_get_name(GST_MESSAGE_TYPE(aMessage));
    }
}

ElementUnderTest::ElementUnderTest() : mElement(gst_element_factory_make("virertspsrc", nullptr)), mBus(gst_bus_new()) {
    gst_element_set_bus(mElement, mBus);
    g_signal_connect(mElement, "pad-added", G_CALLBACK(OnPadAdded), this);
    g_signal_connect(mElement, "pad-removed", G_CALLBACK(OnPadRemoved), this);
    g_signal_connect(mElement, "no-more-pads", G_CALLBACK(OnNoMorePads), this);
}

ElementUnderTest::~ElementUnderTest() {
    gst_element_set_state(mElement, GST_STATE_NULL);
    gst_bus_set_flushing(mBus, TRUE);
    gst_object_unref(mElement);
    gst_object_unref(mBus);
}

GstState ElementUnderTest::State() const {
    GstState lState = GST_STATE_VOID_PENDING;
    gst_element_get_state(mElement, &lState, nullptr, 0);
    return lState;
}

void ElementUnderTest::Force(GstState aState) {
    GST_OBJECT_LOCK(mElement);
    GST_STATE(mElement) = aState;
    GST_OBJECT_UNLOCK(mElement);
}

bool ElementUnderTest::Play(const char* aLocation) {
    SetText("location", aLocation);
    return GST_STATE_CHANGE_FAILURE != Set(GST_STATE_READY) && GST_STATE_CHANGE_FAILURE != Set(GST_STATE_PAUSED) &&
           GST_STATE_CHANGE_FAILURE != Set(GST_STATE_PLAYING);
}

void ElementUnderTest::SetProfile(const char* aValue) {
    g_object_set(mElement, "wap-profile", aValue, nullptr);
}

std::string ElementUnderTest::Text(const char* aProperty) const {
    gchar* lValue = nullptr;
    g_object_get(mElement, aProperty, &lValue, nullptr);
    const std::string lText = nullptr == lValue ? "(null)" : lValue;
    g_free(lValue);
    return lText;
}

bool ElementUnderTest::Seek(GstClockTime aPosition) {
    return gst_element_send_event(mElement,
                                  gst_event_new_seek(1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, GST_SEEK_TYPE_SET,
                                                     static_cast<gint64>(aPosition), GST_SEEK_TYPE_NONE, -1));
}

SinkPad* ElementUnderTest::Sink(unsigned aTrack) const {
    const std::lock_guard<std::mutex> lLock(mMutex);
    const auto lFound = mSinks.find("src" + std::to_string(aTrack));
    return mSinks.end() == lFound ? nullptr : lFound->second.get();
}

std::vector<std::string> ElementUnderTest::PadSignals() const {
    const std::lock_guard<std::mutex> lLock(mMutex);
    return mPadSignals;
}

void ElementUnderTest::OnPadAdded(GstElement* /*aElement*/, GstPad* aPad, gpointer aThis) {
    auto* const lThis = static_cast<ElementUnderTest*>(aThis);
    auto lSink = std::make_shared<SinkPad>(aPad);
    const std::lock_guard<std::mutex> lLock(lThis->mMutex);
    lThis->mPadSignals.emplace_back(GST_PAD_NAME(aPad));
    lThis->mSinks[GST_PAD_NAME(aPad)] = lSink;
}

void ElementUnderTest::OnPadRemoved(GstElement* /*aElement*/, GstPad* aPad, gpointer aThis) {
    auto* const lThis = static_cast<ElementUnderTest*>(aThis);
    const std::lock_guard<std::mutex> lLock(lThis->mMutex);
    lThis->mPadSignals.push_back(std::string("-") + GST_PAD_NAME(aPad));
    const auto lFound = lThis->mSinks.find(GST_PAD_NAME(aPad));
    if (lThis->mSinks.end() == lFound) { return; }
    // A test may still look at what it got.
    lThis->mOldSinks.push_back(lFound->second);
    lThis->mSinks.erase(lFound);
}

void ElementUnderTest::OnNoMorePads(GstElement* /*aElement*/, gpointer aThis) {
    auto* const lThis = static_cast<ElementUnderTest*>(aThis);
    const std::lock_guard<std::mutex> lLock(lThis->mMutex);
    lThis->mPadSignals.emplace_back("no-more-pads");
}

void ElementUnderTest::Collect() {
    while (GstMessage* const lMessage = gst_bus_pop(mBus)) {
        mMessages.push_back(Describe(lMessage));
        gst_message_unref(lMessage);
    }
}

std::vector<std::string> ElementUnderTest::TakeMessages(const std::vector<std::string>& aKinds) {
    Collect();
    std::vector<std::string> lTaken;
    for (const std::string& lMessage : mMessages) {
        const std::string lKind = lMessage.substr(0, lMessage.find(' '));
        if (aKinds.end() != std::find(aKinds.begin(), aKinds.end(), lKind)) { lTaken.push_back(lMessage); }
    }
    mMessages.clear();
    return lTaken;
}

std::size_t ElementUnderTest::CountMessages(const std::string& aMessage) {
    Collect();
    return static_cast<std::size_t>(std::count(mMessages.begin(), mMessages.end(), aMessage));
}

bool ElementUnderTest::AwaitMessage(const std::string& aMessage) {
    return Eventually([this, &aMessage] { return 0 != CountMessages(aMessage); });
}

bool Eventually(const std::function<bool()>& aCondition) {
    const auto lEnd = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!aCondition()) {
        if (std::chrono::steady_clock::now() > lEnd) { return false; }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

}  // namespace ElementTest
