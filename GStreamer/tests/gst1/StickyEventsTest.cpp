#include <gtest/gtest.h>

#include "support/SourceFixture.hpp"

namespace ElementTest {

namespace {

class StickyEvents : public SourceFixture {
protected:
    GstPad* PadOf(unsigned aTrack) {
        GstPad* const lPad = gst_element_get_static_pad(mElement.Get(), ("src" + std::to_string(aTrack)).c_str());
        gst_object_unref(lPad);
        return lPad;
    }
    guint GroupId(unsigned aTrack) {
        GstEvent* const lStart = gst_pad_get_sticky_event(PadOf(aTrack), GST_EVENT_STREAM_START, 0);
        guint lGroupId = GST_GROUP_ID_INVALID;
        if (nullptr == lStart || !gst_event_parse_group_id(lStart, &lGroupId)) { return GST_GROUP_ID_INVALID; }
        gst_event_unref(lStart);
        return lGroupId;
    }
    std::string StreamId(unsigned aTrack) {
        gchar* const lId = gst_pad_get_stream_id(PadOf(aTrack));
        const std::string lText = nullptr == lId ? "" : lId;
        g_free(lId);
        return lText;
    }
    void PlayTwo() {
        Serve({FakeServer::H264(), FakeServer::AAC()});
        mServer.Push(1, 0, "y");
        ASSERT_TRUE(mElement.Play());
        ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
        ASSERT_TRUE(mElement.Sink(1)->Await("buffer"));
    }
};

}  // namespace

TEST_F(StickyEvents, ComeInOrderBeforeTheFirstBuffer) {
    PlayTwo();
    EXPECT_EQ("stream-start caps segment buffer", mElement.Sink(0)->Kinds());
    EXPECT_EQ("stream-start caps segment buffer", mElement.Sink(1)->Kinds());
}

TEST_F(StickyEvents, AreOnThePadWhenItIsAdded) {
    ServeH264();
    std::string lSeen;
    g_signal_connect(mElement.Get(), "pad-added", G_CALLBACK(+[](GstElement*, GstPad* aPad, std::string* aSeen) {
                         gchar* const lId = gst_pad_get_stream_id(aPad);
                         GstCaps* const lCaps = gst_pad_get_current_caps(aPad);
                         *aSeen = nullptr != lId && nullptr != lCaps ? "both" : "not both";
                         g_free(lId);
                         gst_caps_unref(lCaps);
                     }),
                     &lSeen);
    ASSERT_EQ(GST_STATE_CHANGE_NO_PREROLL, Preroll());
    EXPECT_EQ("both", lSeen);
}

TEST_F(StickyEvents, ThePadsOfAStartAreAGroup) {
    PlayTwo();
    EXPECT_NE(GST_GROUP_ID_INVALID, GroupId(0));
    EXPECT_EQ(GroupId(0), GroupId(1));
    EXPECT_NE(StreamId(0), StreamId(1));
    EXPECT_NE("", StreamId(0));
}

TEST_F(StickyEvents, ComeAgainAfterReadyInAGroupOfTheirOwn) {
    PlayTwo();
    const guint lFirst = GroupId(0);
    const std::string lId = StreamId(0);
    ASSERT_EQ(GST_STATE_CHANGE_SUCCESS, mElement.Set(GST_STATE_READY));
    EXPECT_EQ(GST_GROUP_ID_INVALID, GroupId(0));
    mElement.Sink(0)->Clear();
    mElement.Sink(1)->Clear();
    mServer.Push(0, 1, "again");
    mServer.Push(1, 1, "again");
    ASSERT_TRUE(mElement.Play());
    ASSERT_TRUE(mElement.Sink(0)->Await("buffer"));
    ASSERT_TRUE(mElement.Sink(1)->Await("buffer"));
    // The pads flushed while they were PAUSED, so downstream is told first that this is over.
    for (const unsigned lTrack : {0U, 1U}) {
        std::string lKinds = mElement.Sink(lTrack)->Kinds();
        EXPECT_EQ("stream-start caps segment buffer", lKinds.substr(lKinds.find("stream-start")));
    }
    EXPECT_NE(lFirst, GroupId(0));
    EXPECT_EQ(GroupId(0), GroupId(1));
    EXPECT_EQ(lId, StreamId(0));
}

TEST_F(StickyEvents, APadOfANewChannelJoinsTheGroup) {
    PlayTwo();
    const guint lGroup = GroupId(1);
    mServer.Describe({FakeServer::MP4V(), FakeServer::AAC()});
    PushOn("Play", 0, "x");
    mElement.SetText("location", "rtsp://host/b");
    EXPECT_EQ(lGroup, GroupId(0));
    EXPECT_EQ(lGroup, GroupId(1));
}

TEST_F(StickyEvents, AnEndWithoutAnyBufferHasThemToo) {
    mServer.Describe({FakeServer::H264()});
    mServer.End(0, "Bye");
    ASSERT_TRUE(mElement.Play());
    ASSERT_TRUE(mElement.Sink(0)->Await("eos"));
    EXPECT_EQ("stream-start caps eos", mElement.Sink(0)->Kinds());
}

TEST_F(StickyEvents, FlushStopLeavesTheRunningTime) {
    ServeH264();
    StartPlaying();
    static gboolean sReset = TRUE;
    const gulong lProbe = gst_pad_add_probe(
        PadOf(0), static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_EVENT_FLUSH | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM),
        [](GstPad*, GstPadProbeInfo* aInfo, gpointer) {
            if (GST_EVENT_FLUSH_STOP == GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(aInfo))) {
                gst_event_parse_flush_stop(GST_PAD_PROBE_INFO_EVENT(aInfo), &sReset);
            }
            return GST_PAD_PROBE_OK;
        },
        nullptr, nullptr);
    PushOn("Seek", 1, "x");
    mElement.Seek(5);
    EXPECT_FALSE(sReset);
    gst_pad_remove_probe(PadOf(0), lProbe);
}

}  // namespace ElementTest
