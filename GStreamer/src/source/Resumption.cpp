#include "source/Resumption.hpp"

namespace nsGstVireRtspSrc {

/// | occasion         | live  | position | sought or lost | way    |
/// |------------------|-------|----------|----------------|--------|
/// | playing          | yes   | any      | any            | play   |
/// |                  | no    | none     | any            | resume |
/// |                  | no    | some     | no             | resume |
/// |                  | no    | some     | yes            | seek   |
/// | change           | any   | none     | any            | play   |
/// |                  | any   | some     | any            | seek   |
/// | network returned | yes   | any      | any            | play   |
/// |                  | no    | none     | any            | resume |
/// |                  | no    | some     | any            | seek   |
Resumption::Way Resumption::Choose(Occasion aOccasion, bool aLive) const {
    const bool lPosition = -1 != m_resumePosition;
    if (Occasion::kChange == aOccasion) { return lPosition ? Way::kSeek : Way::kPlay; }
    if (aLive) { return Way::kPlay; }
    const bool lWanted = Occasion::kNetworkReturned == aOccasion || m_seekPending || m_networkWasLost;
    return lPosition && lWanted ? Way::kSeek : Way::kResume;
}

void Resumption::sought(gint64 aPosition) {
    m_resumePosition = aPosition;
    m_seekPending = m_serverPaused && -1 != aPosition;
}

void Resumption::reached(gint64 aPosition) {
    if (-1 == m_resumePosition || aPosition < m_resumePosition) { m_resumePosition = aPosition; }
}

void Resumption::Forget() {
    m_resumePosition = -1;
    m_seekPending = false;
    m_networkWasLost = false;
}

}  // namespace nsGstVireRtspSrc
