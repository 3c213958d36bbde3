#pragma once

#include <string>

namespace Player {

/// The NAL units of a "sprop-parameter-sets" (RFC 6184 section 8.1), each by itself and without the start codes and
/// zeros that encoders put around it in a file. Entries that need nothing of it, or that can't be read, stay as they
/// are.
std::string NormalizedParameterSets(const std::string& aSets);

}  // namespace Player
