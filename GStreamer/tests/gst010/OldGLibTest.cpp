#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "support/PluginFile.hpp"

namespace ElementTest {

namespace {

/// What the plugin file needs of other libraries, a name a line.
std::string NeededSymbols() {
    std::FILE* const lPipe = popen((std::string("nm -D --undefined-only ") + kPluginFile).c_str(), "r");
    if (nullptr == lPipe) { return "(nm does not run)"; }
    std::string lText;
    char lPiece[4096];
    while (const std::size_t lSize = std::fread(lPiece, 1, sizeof(lPiece), lPipe)) {
        lText.append(lPiece, lSize);
    }
    pclose(lPipe);
    return lText;
}

}  // namespace

/// Devices with 0.10 have a GLib of its time, 2.24 and later.
TEST(OldGLib, IsEnough) {
    const std::string lNeeded = NeededSymbols();
    ASSERT_NE(std::string::npos, lNeeded.find(" g_static_mutex_"));
    for (const char* const lNewer :
         {" g_weak_ref_", " g_mutex_init", " g_rec_mutex_", " g_cond_init", " g_thread_new", "_free_full", " g_clear_",
          " g_get_monotonic_time", " g_bytes_", " g_hash_table_add", " g_ptr_array_new_full"}) {
        EXPECT_EQ(std::string::npos, lNeeded.find(lNewer)) << lNewer;
    }
}

}  // namespace ElementTest
