// Plays a launch line that has the element in it, step by step, and writes down what came out. For what
// gst-launch can't do: pausing, seeking, changing the location.
//
//   element_play LAUNCH STEP...
//
//     play, pause, ready, null   goes to the state
//     wait:SECONDS               lets it play
//     until:NAME:SECONDS         waits until the sink NAME has shown this timestamp
//     seek:SECONDS, location:URL asks the element named "source"
//     simple:SECONDS             seeks as most applications do, with gst_element_seek_simple on the pipeline
//     at:SECONDS                 waits until the pipeline's position is there, and writes it down: "position NS SINCE",
//                                with the time since the last step that played or sought began, in ns too
//     end                        sends the pipeline an end of stream
//     eos                        waits for the end of all streams
//     caps:NAME                  writes down what the sink NAME is fed with: "caps NAME CAPS"
//
// A playbin's source is given the profile "modern" and gathers a second of media.
//
// A line on standard output per buffer that a sink (fakesink, signal-handoffs) has got: its name, the timestamp in
// ns and the SHA-1 of the bytes; the same for the element's pads, with the offset after it. A line per step as it
// begins, and per bus message that matters. Ends with 1 when a step did not succeed within a minute.

#include <gst/gst.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "gstvirertspsrc.hpp"

namespace {

constexpr auto kPatience = std::chrono::seconds(60);

std::mutex gMutex;
std::map<std::string, GstClockTime> gLatest;  // Under gMutex, as standard output is.

void Say(const std::string& aLine) {
    const std::lock_guard<std::mutex> lLock(gMutex);
    std::puts(aLine.c_str());
}

std::string Sum(GstBuffer* aBuffer) {
    GstMapInfo lMap;
    if (!gst_buffer_map(aBuffer, &lMap, GST_MAP_READ)) { return "unreadable"; }
    gchar* const lSum = g_compute_checksum_for_data(G_CHECKSUM_SHA1, lMap.data, lMap.size);
    gst_buffer_unmap(aBuffer, &lMap);
    const std::string lText = lSum;
    g_free(lSum);
    return lText;
}

void SayBuffer(const std::string& aName, GstBuffer* aBuffer, const std::string& aMore) {
    const GstClockTime lTime = GST_BUFFER_PTS(aBuffer);
    Say(aName + " " + std::to_string(lTime) + " " + Sum(aBuffer) + aMore);
    const std::lock_guard<std::mutex> lLock(gMutex);
    gLatest[aName] = lTime;
}

void OnHandoff(GstElement* aSink, GstBuffer* aBuffer, GstPad* /*aPad*/, gpointer /*aNothing*/) {
    SayBuffer(GST_OBJECT_NAME(aSink), aBuffer, "");
}

GstPadProbeReturn OnBuffer(GstPad* aPad, GstPadProbeInfo* aInfo, gpointer /*aNothing*/) {
    GstBuffer* const lBuffer = GST_PAD_PROBE_INFO_BUFFER(aInfo);
    SayBuffer(GST_OBJECT_NAME(aPad), lBuffer, " " + std::to_string(GST_BUFFER_OFFSET(lBuffer)));
    return GST_PAD_PROBE_OK;
}

void OnPadAdded(GstElement* /*aSource*/, GstPad* aPad, gpointer /*aNothing*/) {
    gst_pad_add_probe(aPad, GST_PAD_PROBE_TYPE_BUFFER, OnBuffer, nullptr, nullptr);
}

void OnSourceSetup(GstElement* /*aPlaybin*/, GstElement* aSource, gpointer /*aNothing*/) {
    gst_util_set_object_arg(G_OBJECT(aSource), "profile", "modern");
    g_object_set(aSource, "rtp-buffer-size", "1", nullptr);
}

bool Eventually(const std::function<bool()>& aCondition) {
    const auto lEnd = std::chrono::steady_clock::now() + kPatience;
    while (!aCondition()) {
        if (std::chrono::steady_clock::now() > lEnd) { return false; }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

bool HasShown(const std::string& aName, double aSeconds) {
    const std::lock_guard<std::mutex> lLock(gMutex);
    const auto lFound = gLatest.find(aName);
    return gLatest.end() != lFound && static_cast<double>(lFound->second) >= aSeconds * 1e9;
}

class Player {
public:
    explicit Player(const char* aLaunch);
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;
    ~Player();

    bool Do(const std::string& aStep);

private:
    static GstBusSyncReply OnMessage(GstBus* aBus, GstMessage* aMessage, gpointer aThis);
    bool Go(GstState aState);
    bool Seek(double aTo);
    bool SeekSimple(double aTo);
    bool AwaitPosition(double aSeconds);
    bool SayCaps(const std::string& aSink);

    GstElement* mPipeline;
    GstElement* mSource;
    std::chrono::steady_clock::time_point mBegin;
    std::mutex mMutex;
    bool mEnded = false;   // Under mMutex.
    bool mFailed = false;  // Under mMutex.
};

Player::Player(const char* aLaunch) {
    GError* lError = nullptr;
    mPipeline = gst_parse_launch(aLaunch, &lError);
    if (nullptr == mPipeline || nullptr != lError) {
        std::fprintf(stderr, "element_play: %s\n", nullptr == lError ? "no pipeline" : lError->message);
        std::exit(2);
    }
    GstBus* const lBus = gst_element_get_bus(mPipeline);
    gst_bus_set_sync_handler(lBus, OnMessage, this, nullptr);
    gst_object_unref(lBus);

    GstIterator* const lSinks = gst_bin_iterate_sinks(GST_BIN(mPipeline));
    gst_iterator_foreach(
        lSinks,
        [](const GValue* aSink, gpointer) {
            GObject* const lSink = G_OBJECT(g_value_get_object(aSink));
            // A playbin has its sinks within.
            if (0 == g_signal_lookup("handoff", G_OBJECT_TYPE(lSink))) { return; }
            g_signal_connect(lSink, "handoff", G_CALLBACK(OnHandoff), nullptr);
        },
        nullptr);
    gst_iterator_free(lSinks);
    mSource = gst_bin_get_by_name(GST_BIN(mPipeline), "source");
    if (nullptr == mSource) {
        g_signal_connect(mPipeline, "source-setup", G_CALLBACK(OnSourceSetup), nullptr);
    } else {
        g_signal_connect(mSource, "pad-added", G_CALLBACK(OnPadAdded), nullptr);
    }
}

Player::~Player() {
    gst_element_set_state(mPipeline, GST_STATE_NULL);
    if (nullptr != mSource) { gst_object_unref(mSource); }
    gst_object_unref(mPipeline);
}

GstBusSyncReply Player::OnMessage(GstBus* /*aBus*/, GstMessage* aMessage, gpointer aThis) {
    auto* const lThis = static_cast<Player*>(aThis);
    const GstMessageType lType = GST_MESSAGE_TYPE(aMessage);
    if (GST_MESSAGE_APPLICATION == lType || GST_MESSAGE_BUFFERING == lType || GST_MESSAGE_WARNING == lType ||
        GST_MESSAGE_ERROR == lType) {
        gchar* const lText = gst_structure_to_string(gst_message_get_structure(aMessage));
        Say(std::string("message ") + lText);
        g_free(lText);
    }
    const std::lock_guard<std::mutex> lLock(lThis->mMutex);
    lThis->mEnded = lThis->mEnded || GST_MESSAGE_EOS == lType;
    lThis->mFailed = lThis->mFailed || GST_MESSAGE_ERROR == lType;
    gst_message_unref(aMessage);
    return GST_BUS_DROP;
}

bool Player::Go(GstState aState) {
    const GstStateChangeReturn lResult = gst_element_set_state(mPipeline, aState);
    if (GST_STATE_CHANGE_ASYNC != lResult) { return GST_STATE_CHANGE_FAILURE != lResult; }
    // A live source gives a paused pipeline nothing to preroll with.
    return GST_STATE_PLAYING != aState ||
           GST_STATE_CHANGE_FAILURE != gst_element_get_state(mPipeline, nullptr, nullptr, 60 * GST_SECOND);
}

bool Player::Seek(double aTo) {
    return gst_element_send_event(mSource,
                                  gst_event_new_seek(1.0, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, GST_SEEK_TYPE_SET,
                                                     static_cast<gint64>(aTo * 1e9), GST_SEEK_TYPE_NONE, -1));
}

bool Player::SayCaps(const std::string& aSink) {
    GstElement* const lSink = gst_bin_get_by_name(GST_BIN(mPipeline), aSink.c_str());
    if (nullptr == lSink) { return false; }
    GstPad* const lPad = gst_element_get_static_pad(lSink, "sink");
    GstCaps* const lCaps = gst_pad_get_current_caps(lPad);
    gst_object_unref(lPad);
    gst_object_unref(lSink);
    if (nullptr == lCaps) { return false; }
    gchar* const lText = gst_caps_to_string(lCaps);
    Say("caps " + aSink + " " + lText);
    g_free(lText);
    gst_caps_unref(lCaps);
    return true;
}

bool Player::SeekSimple(double aTo) {
    return gst_element_seek_simple(mPipeline, GST_FORMAT_TIME, GST_SEEK_FLAG_FLUSH, static_cast<gint64>(aTo * 1e9));
}

bool Player::AwaitPosition(double aSeconds) {
    gint64 lPosition = -1;
    const bool lThere = Eventually([&] {
        return gst_element_query_position(mPipeline, GST_FORMAT_TIME, &lPosition) &&
               static_cast<double>(lPosition) >= aSeconds * 1e9;
    });
    const std::chrono::nanoseconds lSince = std::chrono::steady_clock::now() - mBegin;
    Say("position " + std::to_string(lPosition) + " " + std::to_string(lSince.count()));
    return lThere;
}

bool Player::Do(const std::string& aStep) {
    Say("step " + aStep);
    const auto lColon = aStep.find(':');
    const std::string lVerb = aStep.substr(0, lColon);
    const std::string lRest = std::string::npos == lColon ? "" : aStep.substr(lColon + 1);
    if ("play" == lVerb || "seek" == lVerb || "simple" == lVerb) { mBegin = std::chrono::steady_clock::now(); }
    if ("play" == lVerb) { return Go(GST_STATE_PLAYING); }
    if ("pause" == lVerb) { return Go(GST_STATE_PAUSED); }
    if ("ready" == lVerb) { return Go(GST_STATE_READY); }
    if ("null" == lVerb) { return Go(GST_STATE_NULL); }
    if ("seek" == lVerb) { return Seek(std::stod(lRest)); }
    if ("simple" == lVerb) { return SeekSimple(std::stod(lRest)); }
    if ("at" == lVerb) { return AwaitPosition(std::stod(lRest)); }
    if ("end" == lVerb) { return gst_element_send_event(mPipeline, gst_event_new_eos()); }
    if ("location" == lVerb) {
        g_object_set(mSource, "location", lRest.c_str(), nullptr);
        return true;
    }
    if ("caps" == lVerb) { return SayCaps(lRest); }
    if ("wait" == lVerb) {
        std::this_thread::sleep_for(std::chrono::duration<double>(std::stod(lRest)));
        return true;
    }
    if ("until" == lVerb) {
        const auto lSecond = lRest.find(':');
        const double lSeconds = std::stod(lRest.substr(lSecond + 1));
        return Eventually([&] { return HasShown(lRest.substr(0, lSecond), lSeconds); });
    }
    if ("eos" == lVerb) {
        return Eventually([this] {
            const std::lock_guard<std::mutex> lLock(mMutex);
            return mEnded || mFailed;
        });
    }
    std::fprintf(stderr, "element_play: what is %s?\n", aStep.c_str());
    return false;
}

}  // namespace

int main(int aCount, char** aArguments) {
    gst_init(&aCount, &aArguments);
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    if (aCount < 2) {
        std::fprintf(stderr, "usage: element_play LAUNCH STEP...\n");
        return 2;
    }
    gst_element_register(nullptr, "virertspsrc", GST_RANK_NONE, gst_vire_rtsp_src_get_type());
    Player lPlayer(aArguments[1]);
    for (int lIndex = 2; lIndex < aCount; ++lIndex) {
        if (!lPlayer.Do(aArguments[lIndex])) {
            Say(std::string("failed ") + aArguments[lIndex]);
            return 1;
        }
    }
    return 0;
}
