#pragma once

#include "platform/whole_file.h"

#include <cstddef>
#include <memory>
#include <string_view>

/// One name for everything that can be stored or fetched: a location. Its beginning decides what it means:
///   "http"        a web resource
///   "HKEY_"       a value of the user's settings: root/key/.../key/value, for example
///                 "HKEY_CURRENT_USER/Software/VENDOR/PRODUCT/Width"
///   "clipboard:"  the clipboard's content under a private format, whose name is the whole location
/// and anything else is the path of a file. Any thread, but never the audio thread. Nothing throws and
/// nothing is shown: a failure is the empty result.
namespace KAV::Utils {

/// The content: `size` bytes followed by two zero bytes, so that text in it is terminated in either width.
/// Null, with a size of 0, if there is nothing to read; that includes a file of 0 bytes. `postData` is sent
/// with the request for a web resource (utils/http.h) and ignored elsewhere. A file that is larger than
/// `largestFile` isn't read: the result is null, with its size.
std::unique_ptr<char[]> ReadUniversal(std::u16string_view location, std::size_t& size,
    std::u16string_view postData = {}, std::size_t largestFile = Platform::LargestFile) noexcept;

/// The number of bytes written, `size` or 0. A file is replaced whole or stays as it was. Nothing is written
/// to the web.
std::size_t WriteUniversal(std::u16string_view location, const void* data, std::size_t size) noexcept;

/// Whether there is such a value, file or folder.
bool ExistsUniversal(std::u16string_view location) noexcept;

/// Fetches web resources, with the results of ReadUniversal(). May throw.
using WebReader = std::unique_ptr<char[]> (*)(
    std::u16string_view url, std::size_t& size, std::u16string_view postData);

/// From now on `reader` fetches what begins with "http"; initially that is HttpGet(). Null means that nothing
/// can be fetched. Any thread.
void SetWebReader(WebReader reader) noexcept;

} // namespace KAV::Utils
