#include <gtest/gtest.h>

#include <dlfcn.h>

#include <atomic>
#include <cstdio>
#include <string>
#include <thread>

#include "gstvirertspsrc.hpp"
#include "support/ElementUnderTest.hpp"
#include "support/Finalize.hpp"
#include "support/LogCapture.hpp"
#include "support/PluginFile.hpp"

namespace ElementTest {

namespace {

/// What the plugin file shows to others, in order of names.
std::string ExportedSymbols() {
    const std::string lCommand =
        std::string("nm -D --defined-only ") + kPluginFile + " | cut -d' ' -f3 | sort | tr '\\n' ' '";
    std::FILE* const lPipe = popen(lCommand.c_str(), "r");
    if (nullptr == lPipe) { return "(nm does not run)"; }
    char lText[4096] = {};
    const std::size_t lSize = std::fread(lText, 1, sizeof(lText) - 1, lPipe);
    pclose(lPipe);
    return std::string(lText, lSize);
}

}  // namespace

/// Looked at, not loaded: the element is registered in this process already.
TEST(Plugin, DescribesItself) {
    void* const lFile = dlopen(kPluginFile, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(nullptr, lFile) << dlerror();
    const auto* const lDescriptor = static_cast<const GstPluginDesc*>(dlsym(lFile, "gst_plugin_desc"));
    ASSERT_NE(nullptr, lDescriptor);
    EXPECT_EQ(GST_VERSION_MAJOR, lDescriptor->major_version);
    EXPECT_EQ(GST_VERSION_MINOR, lDescriptor->minor_version);
    EXPECT_STREQ("virertspsrc", lDescriptor->name);
    EXPECT_STREQ("Template virertspsrc", lDescriptor->description);
    EXPECT_NE(nullptr, lDescriptor->plugin_init);
    EXPECT_STREQ("1.6.0", lDescriptor->version);
    EXPECT_STREQ("Proprietary", lDescriptor->license);
    EXPECT_STREQ("gst-vire-rtsp-src", lDescriptor->source);
    EXPECT_STREQ("Quenra", lDescriptor->package);
    EXPECT_STRNE("", lDescriptor->origin);
    dlclose(lFile);
}

TEST(Plugin, ShowsItsDescriptorOnly) {
    const std::string lSymbols = ExportedSymbols();
    EXPECT_TRUE("gst_plugin_desc " == lSymbols || "gst_plugin_desc gst_plugin_virertspsrc_get_desc " == lSymbols)
        << lSymbols;
}

TEST(Plugin, TheElementDescribesItself) {
    GstElementFactory* const lFactory = gst_element_factory_find("virertspsrc");
    ASSERT_NE(nullptr, lFactory);
    EXPECT_STREQ("VireRtspSrc", FactoryField(lFactory, "long-name"));
    EXPECT_STREQ("Source/Network", FactoryField(lFactory, "klass"));
    EXPECT_STREQ("Quenra RTSP Source Element", FactoryField(lFactory, "description"));
    EXPECT_EQ(GST_RANK_NONE, static_cast<int>(gst_plugin_feature_get_rank(GST_PLUGIN_FEATURE(lFactory))));
    gst_object_unref(lFactory);
}

TEST(Plugin, TheElementIsOfItsType) {
    const ElementUnderTest lElement;
    EXPECT_STREQ("GstVireRtspSrc", G_OBJECT_TYPE_NAME(lElement.Get()));
    EXPECT_EQ(GST_TYPE_ELEMENT, g_type_parent(G_OBJECT_TYPE(lElement.Get())));
}

TEST(Plugin, TheElementHasOneSometimesPadThatTakesAnything) {
    const ElementUnderTest lElement;
    GList* const lTemplates = gst_element_class_get_pad_template_list(GST_ELEMENT_GET_CLASS(lElement.Get()));
    ASSERT_EQ(1U, g_list_length(lTemplates));
    auto* const lTemplate = static_cast<GstPadTemplate*>(lTemplates->data);
    EXPECT_STREQ("src%d", GST_PAD_TEMPLATE_NAME_TEMPLATE(lTemplate));
    EXPECT_EQ(GST_PAD_SRC, GST_PAD_TEMPLATE_DIRECTION(lTemplate));
    EXPECT_EQ(GST_PAD_SOMETIMES, GST_PAD_TEMPLATE_PRESENCE(lTemplate));
    EXPECT_TRUE(gst_caps_is_any(GST_PAD_TEMPLATE_CAPS(lTemplate)));
    EXPECT_EQ(nullptr, lElement.Get()->pads);
}

TEST(Plugin, TheElementIsChosenForItsOwnScheme) {
    GstElement* const lElement = MakeFromUri("vire://server/stream");
    ASSERT_NE(nullptr, lElement);
    EXPECT_STREQ("GstVireRtspSrc", G_OBJECT_TYPE_NAME(lElement));
    gchar* lLocation = nullptr;
    g_object_get(lElement, "location", &lLocation, nullptr);
    EXPECT_STREQ("rtsp://server/stream", lLocation);
    g_free(lLocation);
    gst_object_unref(lElement);
}

TEST(Plugin, TheElementIsNotChosenForRtsp) {
    GstElement* const lElement = MakeFromUri("rtsp://server/stream");
    if (nullptr == lElement) { return; }
    EXPECT_STRNE("GstVireRtspSrc", G_OBJECT_TYPE_NAME(lElement));
    gst_object_unref(lElement);
}

TEST(Plugin, TheUriHandlerTakesAndGivesTheLocation) {
    const ElementUnderTest lElement;
    auto* const lHandler = GST_URI_HANDLER(lElement.Get());
    EXPECT_EQ("", UriOf(lHandler));
    EXPECT_TRUE(SetUri(lHandler, "vire://a/b"));
    EXPECT_EQ("rtsp://a/b", UriOf(lHandler));
    EXPECT_EQ("rtsp://a/b", lElement.Text("location"));
    EXPECT_EQ(GST_URI_SRC, static_cast<int>(gst_uri_handler_get_uri_type(lHandler)));
    ASSERT_NE(nullptr, gst_uri_handler_get_protocols(lHandler));
    EXPECT_STREQ("vire", gst_uri_handler_get_protocols(lHandler)[0]);
    EXPECT_EQ(nullptr, gst_uri_handler_get_protocols(lHandler)[1]);
}

TEST(Plugin, TheUriHandlerGivesTheLocationWholeWhileItChanges) {
    ElementUnderTest lElement;
    // Long enough for a text to be freed while it is read.
    const std::string lOne = "rtsp://one/" + std::string(30000, '1');
    const std::string lOther = "rtsp://other/" + std::string(30000, '2');
    lElement.SetText("location", lOne.c_str());
    std::atomic<bool> lDone{false};
    std::thread lSetter([&] {
        for (int lRound = 0; lRound < 20000; ++lRound) {
            lElement.SetText("location", (0 == lRound % 2 ? lOther : lOne).c_str());
        }
        lDone = true;
    });
    unsigned lGarbled = 0;
    while (!lDone) {
        const std::string lUri = UriOf(GST_URI_HANDLER(lElement.Get()));
        lGarbled += lOne != lUri && lOther != lUri;
    }
    lSetter.join();
    EXPECT_EQ(0U, lGarbled);
}

TEST(Plugin, TheElementsFinalizeDoesNotReachItsParents) {
    static bool sReached = false;
    static bool sReachedByOwn = true;
    auto* const lClass = static_cast<GObjectClass*>(g_type_class_peek(gst_vire_rtsp_src_get_type()));
    const Finalize lUsual = lClass->finalize;
    lClass->finalize = [](GObject* aObject) {
        ElementsOwnFinalize()(aObject);
        sReachedByOwn = sReached;
        static_cast<GObjectClass*>(g_type_class_peek(GST_TYPE_ELEMENT))->finalize(aObject);
    };
    {
        const ElementUnderTest lElement;
        // GObject's finalize drops what is attached.
        g_object_set_data_full(G_OBJECT(lElement.Get()), "probe", &sReached, [](gpointer) { sReached = true; });
    }
    lClass->finalize = lUsual;
    EXPECT_FALSE(sReachedByOwn);
    EXPECT_TRUE(sReached);
}

}  // namespace ElementTest
