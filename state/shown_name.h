#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace KAV {

/// The names of the user's files of one kind and the one that is shown. The shown name may be that of no
/// file: then the place is that of the entry that was shown last. The operations that change something say
/// whether they did.
class CShownName final {
public:
    explicit CShownName(std::u16string_view name) : _name(name) {}

    /// Replaces the list, never by an empty one. The place stays where it was, in proportion to the length,
    /// and its entry is shown.
    bool SetNames(std::vector<std::u16string> names);
    /// Shows a name, and the first entry of that name if there is one. A name that is shown already keeps its
    /// place, for two files may have the same one.
    bool Show(std::u16string_view name);
    /// Shows an entry; one that isn't there does nothing.
    bool Choose(std::int32_t place);

    /// Where an entry is that stood at `place` when the list was read: there, or where the first of that name
    /// is by now; -1 if there is none.
    std::int32_t Find(std::int32_t place, std::u16string_view name) const noexcept;

    const std::u16string& Name() const noexcept { return _name; }
    const std::vector<std::u16string>& Names() const noexcept { return _names; }
    std::int32_t Count() const noexcept { return static_cast<std::int32_t>(_names.size()); }
    std::int32_t Place() const noexcept { return _place; } ///< 0 without a list

private:
    void SetPlace(std::int32_t place) noexcept;

    std::vector<std::u16string> _names;
    std::u16string _name;
    std::int32_t _place = 0; // 0 <= _place < Count(), but for an empty list
    float _position = 0.0f;  // 0..1; it survives a new list, the place follows it
};

} // namespace KAV
