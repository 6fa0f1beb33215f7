#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace KAV::Pixels {

/// A font of the system.
struct SFontFile {
    std::string path;
    int index = 0; ///< of the font in its file, with that of a named instance in the upper half

    bool operator==(const SFontFile&) const = default;
    auto operator<=>(const SFontFile&) const = default;
};

/// Finds fonts. Threads: the one that made it.
class IFontFinder {
public:
    IFontFinder() = default;
    virtual ~IFontFinder() = default;
    IFontFinder(const IFontFinder&) = delete;
    IFontFinder& operator=(const IFontFinder&) = delete;

    /// The fonts that are said to have the character, the best first. May take long. Throws std::bad_alloc.
    virtual std::vector<SFontFile> FontsWith(char32_t character) = 0;
};

using MakeFontFinder = std::function<std::unique_ptr<IFontFinder>()>;

/// The fonts of this system (platform/fontconfig). Reads its configuration and its list of fonts, which takes
/// seconds when there are many new ones. Null if there is no such library.
std::unique_ptr<IFontFinder> FindSystemFonts();

/// Which fonts have a character that the editor's typeface lacks. Each character is looked for once, on a
/// thread of the search's own, which owns all that it touches, ends when nothing is left to look for, and is
/// never waited for. Any thread.
class CGlyphSearch final {
public:
    /// `make` is called on that thread, each time it starts; where it gives null, no font has anything.
    explicit CGlyphSearch(MakeFontFinder make);
    ~CGlyphSearch(); ///< what is still being looked for is given up
    CGlyphSearch(const CGlyphSearch&) = delete;
    CGlyphSearch& operator=(const CGlyphSearch&) = delete;

    /// The one that all editors of the process share.
    static CGlyphSearch& OfProcess();

    using Fonts = std::vector<const SFontFile*>;

    /// Some fonts that are said to have the character, the best first; they live as long as the search. Null
    /// while it is being looked for, which this begins.
    const Fonts* FontsWith(char32_t character);
    /// Grows with each answer.
    std::uint32_t Answers() const noexcept;

private:
    struct SState;
    void Start();
    static void Work(const std::shared_ptr<SState>& state);
    static void Run(const std::shared_ptr<SState>& state) noexcept;

    const std::shared_ptr<SState> _state;
};

} // namespace KAV::Pixels
