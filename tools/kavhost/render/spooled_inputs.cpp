#include "tools/kavhost/render/spooled_inputs.h"

#include "platform/interrupt.h"
#include "platform/standard_streams.h"
#include "platform/temporary_file.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/scratch_folder.h"
#include "tools/kavhost/base/text.h"

#include <cerrno>
#include <fstream>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <vector>

namespace KAV::Host {

namespace {

namespace fs = std::filesystem;

bool IsStandardInput(const fs::path& input) {
    return input == "-";
}

bool IsPipe(const fs::path& input) {
    std::error_code error;
    return fs::is_fifo(fs::status(input, error));
}

} // namespace

/// The stored content of one input.
class CSpooledInputs::CSpool final {
public:
    fs::path Get(const fs::path& input) {
        const std::lock_guard lock(_mutex);
        if (_file == nullptr) Fill(input);
        return _file->Name();
    }

private:
    void Fill(const fs::path& input) {
        const auto name = IsStandardInput(input) ? std::string("standard input") : Utf8(input);
        const auto folder = ScratchFolder();
        Platform::RemoveAbandonedFiles(folder);
        std::error_code error;
        auto file = Platform::CTemporaryFile::Create(folder, true, error);
        if (file == nullptr) throw CFailure(name + ": cannot be stored: " + error.message());
        std::ofstream stream(file->Name(), std::ios::binary);
        std::optional<Platform::CByteSource> source;
        IsStandardInput(input) ? source.emplace() : source.emplace(input);
        std::vector<char> piece(std::size_t{1} << 16);
        for (;;) {
            errno = 0;
            const auto count = source->Read(piece);
            if (count < 0) {
                const auto reason = std::generic_category().message(errno);
                if (Platform::Interrupted()) throw CInterruption();
                throw CFailure(std::string(name).append(": cannot be read: ").append(reason));
            }
            if (count == 0) break;
            stream.write(piece.data(), count);
        }
        stream.close();
        if (!stream) {
            const auto reason = std::generic_category().message(errno);
            throw CFailure(
                std::string(name).append(": cannot be stored in ").append(Utf8(folder)) + ": " + reason);
        }
        _file = std::move(file);
    }

    std::mutex _mutex; ///< held while the input is read
    std::unique_ptr<Platform::CTemporaryFile> _file;
};

CSpooledInputs::CSpooledInputs() = default;
CSpooledInputs::~CSpooledInputs() = default;

fs::path CSpooledInputs::SourceOf(const fs::path& input) {
    if (!IsStandardInput(input) && !IsPipe(input)) return {};
    CSpool* spool = nullptr;
    {
        const std::lock_guard lock(_mutex);
        auto& place = _spools[input];
        if (place == nullptr) place = std::make_unique<CSpool>();
        spool = place.get();
    }
    return spool->Get(input);
}

} // namespace KAV::Host
