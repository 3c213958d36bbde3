#pragma once

namespace nsGstVireRtspSrc {

/// Sends the library's reports to the debug category "virertsp_player", once and for the whole process.
void InstallLibraryReporter();

}  // namespace nsGstVireRtspSrc
