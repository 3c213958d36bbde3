#pragma once

#include "report/Findings.hpp"
#include "report/Html.hpp"

namespace Virertsp {

/// The report: one HTML page that needs no other file.
class Page {
public:
    /// The findings outlive this.
    explicit Page(const Findings& aFindings) : mFindings(aFindings) {}

    std::string Text();

private:
    /// Of a described track, or of one that only appears in lines.
    std::string TrackName(unsigned aTrack) const;
    void AddHead();
    void AddSummary();
    void AddServer();
    void AddTracks();
    void AddTrack(const JsonValue& aTrack);
    void AddPlots();
    void AddPictures();
    void AddProperties(const JsonValue& aProperties);

    const Findings& mFindings;
    Html mHtml;
};

}  // namespace Virertsp
