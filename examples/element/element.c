/* Shows how to play with the element in an application, in C and for both GStreamers: element URL
 * Every track goes to a sink that counts its buffers; a real application would decode and show them. */
#include <gst/gst.h>
#include <stdio.h>

static void count(GstElement* sink, GstBuffer* buffer, GstPad* pad, gpointer counter) {
    (void)sink;
    (void)buffer;
    (void)pad;
    ++*(guint*)counter;
}

/* A track has appeared: it gets a sink of its own. Live sources need sinks that do not wait in PAUSED. */
static void add_sink(GstElement* source, GstPad* pad, gpointer counter) {
    GstElement* const pipeline = GST_ELEMENT(gst_element_get_parent(source));
    GstElement* const sink = gst_element_factory_make("fakesink", NULL);
    GstPad* const sink_pad = gst_element_get_static_pad(sink, "sink");
    g_object_set(sink, "async", FALSE, "sync", FALSE, "signal-handoffs", TRUE, NULL);
    g_signal_connect(sink, "handoff", G_CALLBACK(count), counter);
    gst_bin_add(GST_BIN(pipeline), sink);
    gst_element_sync_state_with_parent(sink);
    gst_pad_link(pad, sink_pad);
    gst_object_unref(sink_pad);
    gst_object_unref(pipeline);
}

/* The element never posts an error: it posts its code and a warning, and the application decides. */
static gboolean on_message(GstBus* bus, GstMessage* message, gpointer loop) {
    const GstStructure* const structure = gst_message_get_structure(message);
    gint code = 0;
    (void)bus;
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_APPLICATION && gst_structure_get_int(structure, "Error", &code)) {
        printf("failed: %d\n", code);
        g_main_loop_quit((GMainLoop*)loop);
    } else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_WARNING) {
        GError* error = NULL;
        gst_message_parse_warning(message, &error, NULL);
        printf("%s\n", error->message);
        g_error_free(error);
    } else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS) {
        g_main_loop_quit((GMainLoop*)loop);
    }
    return TRUE;
}

int main(int argc, char** argv) {
    guint counter = 0;
    GstElement* pipeline;
    GstElement* source;
    GstBus* bus;
    GMainLoop* loop;
    gst_init(&argc, &argv);
    source = gst_element_factory_make("virertspsrc", NULL);
    if (argc != 2 || source == NULL) { return 2; }

    loop = g_main_loop_new(NULL, FALSE);
    pipeline = gst_pipeline_new(NULL);
    gst_bin_add(GST_BIN(pipeline), source);
    g_object_set(source, "location", argv[1], "rtp-buffer-size", "1", NULL);
    g_signal_connect(source, "pad-added", G_CALLBACK(add_sink), &counter);
    bus = gst_element_get_bus(pipeline);
    gst_bus_add_watch(bus, on_message, loop);
    gst_object_unref(bus);

    if (gst_element_set_state(pipeline, GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE) { g_main_loop_run(loop); }
    gst_element_set_state(pipeline, GST_STATE_NULL);
    printf("%u buffers\n", counter);
    gst_object_unref(pipeline);
    g_main_loop_unref(loop);
    return 0;
}
