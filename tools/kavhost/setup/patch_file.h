#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace KAV::Host {

class CEffect;

/// A patch as a file: the text that an effect takes as the chunk of one program, `.kvp`; or the record in
/// which hosts keep one program of any effect, `.fxp`. The content decides which it is, not the name.
class CPatchFile final {
public:
    /// Throws CFailure for a file that cannot be read or is no patch.
    explicit CPatchFile(const std::filesystem::path& file);

    /// Whether a file of these bytes is a record, or the beginning of one.
    static bool IsRecord(std::string_view bytes) noexcept;
    /// The program that an effect has now.
    static CPatchFile Of(const CEffect& effect);

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
    CPatchFile() = default;
    void ReadText(const std::string& bytes);
    void ReadRecord(const std::string& bytes);

    std::string _file; ///< its name, for messages
    std::optional<std::int32_t> _uniqueId;
    std::string _name;
    std::variant<std::string, std::vector<float>> _content;
};

} // namespace KAV::Host
