#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

/// Failures of the editor and its renderers, each with a finished text for the user. None of them leaves this
/// library.
namespace KAV::Exceptions {

/// The base class: what() is that of std::exception; the text is in the field.
struct Std : std::exception {
    /// " <source> ERROR:", an empty line, the message.
    Std(std::u16string_view errorMessage, std::u16string_view source);

    std::u16string message; ///< lines end with CR LF
};

/// A function of the system failed with this error number.
struct StdFunc : Std {
    StdFunc(std::u16string_view function, std::uint32_t error, std::u16string_view source);
};

/// A function of GDI+ returned this status.
struct GDIP : Std {
    GDIP(std::u16string_view function, std::int32_t status);

protected:
    /// With a text that follows that of the function.
    GDIP(std::u16string_view function, std::int32_t status, std::u16string_view addition);
};

/// A bitmap of this name and size in pixels could not be created; `status` is what its GetLastStatus()
/// returned.
struct GDIPImage : GDIP {
    GDIPImage(std::u16string_view name, std::int32_t width, std::int32_t height, std::int32_t status);
};

/// A function of OpenGL reported this error. `getString` is glGetString() of the current context; it may
/// return null, which counts as empty, and its texts are UTF-8.
struct OGL : Std {
    using GetString = const unsigned char* (*)(unsigned int name);
    OGL(std::u16string_view function, std::uint32_t error, GetString getString);
};

} // namespace KAV::Exceptions
