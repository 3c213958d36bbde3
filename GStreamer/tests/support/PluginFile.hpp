#pragma once

namespace ElementTest {

/// Path of the plugin file under test. The build generates its definition, so that the path is part of one
/// compilation instead of all of them, and a compiler cache serves every build folder.
extern const char* const kPluginFile;

}  // namespace ElementTest
