#pragma once

#include "tools/kavhost/report/report.h"
#include "tools/kavhost/tags/chunk_file.h"
#include "tools/kavhost/tags/tag_library.h"

#include <filesystem>
#include <string>
#include <vector>

namespace KAV::Host {

/// What a sound file holds besides its audio, on its way into another one: chunks of WAV and AIFF files,
/// tags, pictures, markers. Between files of the same kind chunks keep their bytes; otherwise what has a
/// counterpart is translated.
class CTags final {
public:
    /// Never throws because of the file: what can't be read is left out, and the report will say so.
    /// `library` may be null, and outlives this.
    explicit CTags(const std::filesystem::path& file, const ITagLibrary* library = TagLibrary());

    /// Adds all that fits to `file`, which is complete and becomes `container`. `effect` is what the audio
    /// has gone through. Notes in the report name what could not be carried. Throws CFailure if `file` cannot
    /// be written.
    void AddTo(const std::filesystem::path& file, EContainer container, const std::string& effect,
        SRenderReport& report) const;

private:
    class CPlan;

    template<typename OPERATION>
    void Read(OPERATION&& operation); ///< by the library, whose failures end here
    void ReadId3(SChunk& chunk);      ///< and takes out of the chunk what is outdated

    const ITagLibrary* _library;
    SChunkList _chunks;
    STagSet _tags;                    ///< of files without chunks, and of the first ID3v2 chunk
    std::vector<std::string> _blocks; ///< names of FLAC's that aren't carried
    std::vector<std::string> _leftOut;
    std::string _unreadable; ///< why the tags are, if so
};

} // namespace KAV::Host
