#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace KAV::Host {

class CEffect;

/// A patch as a file: `.kvp`, the text that an effect takes as the chunk of one program; or `.fxp`, the
/// record in which hosts keep one program of any effect.
class CPatchFile final {
public:
    /// Throws CUsageError for a file with another ending, and CFailure for one that cannot be read or is no
    /// patch.
    explicit CPatchFile(const std::filesystem::path& file);

    /// The number of the effect that the patch was made with; nothing if it doesn't say.
    std::optional<std::int32_t> UniqueId() const noexcept { return _uniqueId; }

    /// Throws CFailure when the patch belongs to another effect, or the effect does not take it.
    void Apply(CEffect& effect) const;

    /// What it is: the bytes that an effect takes, or a list of values in the order of the effect's
    /// parameters; the other is null.
    const std::string* Chunk() const noexcept { return std::get_if<std::string>(&_content); }
    const std::vector<float>* Values() const noexcept { return std::get_if<std::vector<float>>(&_content); }

    /// What the program is called: a text patch like its file. Empty for a chunk in a record, which has its
    /// name inside.
    const std::string& Name() const noexcept { return _name; }

private:
    void ReadText(const std::string& bytes);
    void ReadRecord(const std::string& bytes);

    std::string _file; ///< its name, for messages
    std::optional<std::int32_t> _uniqueId;
    std::string _name;
    std::variant<std::string, std::vector<float>> _content;
};

} // namespace KAV::Host
