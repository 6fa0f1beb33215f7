#pragma once

#include "artwork/bitmap.h"

#include <filesystem>
#include <map>
#include <string>

namespace KAV::Artwork {

/// A moment in the life of the panel.
enum class EScene { Rest, Busy };

/// Composes the whole panel out of picture files as the editor does: in the layout's order, scaled to the
/// window, with texts, tints and the gain-reduction curve. For looking at; it shares no code with the editor.
class CPreview final {
public:
    /// Reads every picture from `folder`; throws std::runtime_error.
    explicit CPreview(const std::filesystem::path& folder);

    /// The panel at `scale` times its base size.
    SPixels Compose(EScene scene, double scale) const;

private:
    std::map<std::string, CBitmap, std::less<>> _pictures;
};

} // namespace KAV::Artwork
