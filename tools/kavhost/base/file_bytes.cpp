#include "tools/kavhost/base/file_bytes.h"

#include "platform/whole_file.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"

#include <system_error>

namespace KAV::Host {

std::string ReadFileBytes(const std::filesystem::path& file, std::uintmax_t most) {
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (!std::filesystem::exists(status)) throw CFailure(Utf8(file) + ": no such file");
    if (!std::filesystem::is_regular_file(status)) throw CFailure(Utf8(file) + ": not a plain file");
    const auto size = std::filesystem::file_size(file, error);
    if (!error && size == 0) throw CFailure(Utf8(file) + ": empty");
    if (!error && size > most) throw CFailure(Utf8(file) + ": too large");
    const auto bytes = Platform::ReadWholeFile(file);
    if (bytes.data == nullptr) throw CFailure(Utf8(file) + ": cannot be read");
    return {bytes.data.get(), bytes.size};
}

} // namespace KAV::Host
