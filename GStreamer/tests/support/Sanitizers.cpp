// Defaults for the sanitizers that the tests may be built with.

extern "C" const char* __asan_default_options();
extern "C" const char* __lsan_default_options();
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __tsan_default_options();
extern "C" const char* __tsan_default_suppressions();

/// GLib is built without frame pointers: only the slow way sees where its memory comes from.
extern "C" const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0";
}

/// Standard error stays for what went wrong.
extern "C" const char* __lsan_default_options() {
    return "print_suppressions=0";
}

extern "C" const char* __lsan_default_suppressions() {
    return
        // GLib's table of quarks, whose outgrown versions stay for those who read them without a lock.
        "leak:_dl_init\n"
        "leak:g_quark_from_static_string\n"
        "leak:g_quark_from_string\n"
        "leak:g_intern_static_string\n"
        "leak:g_intern_string\n"
        // GStreamer's list of log functions keeps what it held before, for the same reason.
        "leak:gst_debug_add_log_function\n"
        // Deliberate in the element: the text of the "wap profile" is never freed.
        "leak:ElementTest::ElementUnderTest::SetProfile\n";
}

/// GLib and GStreamer are not built for the thread sanitizer: what they do to their own memory is theirs to get right,
/// and cannot be told from here.
extern "C" const char* __tsan_default_options() {
    return "ignore_noninstrumented_modules=1";
}

extern "C" const char* __tsan_default_suppressions() {
    return
        // The type system's lock and that of GStreamer's registry of plugins are taken in both orders, all of it in
        // those two, while types of plugins are loaded.
        "deadlock:g_type_class_ref\n";
}
