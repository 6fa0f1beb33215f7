#include "tools/kavhost/content/factory_content.h"

#include "platform/directory.h"
#include "platform/file_system.h"
#include "platform/whole_file.h"
#include "tools/kavhost/base/errors.h"
#include "tools/kavhost/base/text.h"
#include "tools/kavhost/content/content_manifest.h"
#include "utils/product.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <system_error>

namespace KAV::Host {

namespace {

namespace fs = std::filesystem;
using EKind = Platform::IFileSystem::EKind;

/// A folder of the content, where it is installed, and which of its files count.
struct SPart {
    std::string_view folder;
    std::string_view place;
    std::string_view extension;
    ENamedContent kind;
};
constexpr std::array<SPart, 2> Parts{
    {{"Patches", KAV_VENDOR "/" KAV_PRODUCT "/", ".kvp", ENamedContent::Patch},
        {"Routings", KAV_VENDOR "/Routings/", ".kvt", ENamedContent::Routing}}};
/// Where F1 in the editor looks for it.
constexpr std::string_view GuidePlace = KAV_VENDOR "/" KAV_PRODUCT "/" KAV_OWN_GUIDE;
/// Beside the patches; the plug-in lists only what ends like a patch.
constexpr std::string_view ManifestPlace = KAV_VENDOR "/" KAV_PRODUCT "/.factory-content";

struct SContentFile {
    std::string place;
    std::string bytes;
    SFingerprint fingerprint;
};

fs::path At(const fs::path& documents, std::string_view place) {
    return documents / PathOf(place);
}

std::optional<std::string> ReadBytes(const fs::path& file) {
    const auto bytes = Platform::ReadWholeFile(file);
    if (bytes.data == nullptr) return std::nullopt;
    return std::string(bytes.data.get(), bytes.size);
}

/// Something has the name, be it a link to nothing: writing would go where the link says.
bool IsTaken(const fs::path& path) noexcept {
    std::error_code error;
    return fs::symlink_status(path, error).type() != fs::file_type::not_found;
}

/// Or none that could have been installed.
bool IsEmpty(const fs::path& path) noexcept {
    std::error_code error;
    return !fs::is_regular_file(path, error) || fs::file_size(path, error) == 0;
}

SContentFile ReadContentFile(const fs::path& path, std::string place) {
    auto bytes = ReadBytes(path);
    if (!bytes) throw CFailure(Utf8(path) + ": cannot be read");
    const auto fingerprint = FingerprintOf(*bytes);
    return {std::move(place), std::move(*bytes), fingerprint};
}

void Collect(const fs::path& folder, const std::string& place, std::string_view extension,
    std::vector<SContentFile>& files) {
    auto entries = Platform::ListDirectory(folder);
    std::ranges::sort(entries, {}, &Platform::SDirectoryEntry::name);
    for (const auto& entry : entries) {
        const auto path = folder / PathOf(entry.name);
        if (entry.isFolder)
            Collect(path, place + entry.name + "/", extension, files);
        else if (entry.name.ends_with(extension))
            files.push_back(ReadContentFile(path, place + entry.name));
    }
}

std::vector<SContentFile> ReadContent(const SContentSource& source) {
    std::vector<SContentFile> files;
    for (const auto& part : Parts) {
        const auto before = files.size();
        Collect(source.folder / PathOf(part.folder), std::string(part.place), part.extension, files);
        if (files.size() == before) {
            throw CFailure(Utf8(source.folder) + ": no " + std::string(part.extension) +
                           " files in a folder " + std::string(part.folder) + " there");
        }
    }
    // Systems that are kept small leave the documents of packages out.
    std::error_code error;
    if (fs::is_regular_file(source.guide, error))
        files.push_back(ReadContentFile(source.guide, std::string(GuidePlace)));
    return files;
}

void CheckDocuments(const fs::path& documents) {
    if (documents.empty()) throw CFailure("the system has no documents folder");
}

/// Before anything is changed.
EContentFate StateOf(const SContentFile& file, const fs::path& documents, const CContentManifest& manifest) {
    const auto path = At(documents, file.place);
    if (!IsTaken(path)) return EContentFate::Missing;
    const auto bytes = ReadBytes(path);
    if (!bytes) return EContentFate::Users;
    if (*bytes == file.bytes) return EContentFate::There;
    return manifest.Has(file.place, FingerprintOf(*bytes)) ? EContentFate::Renewed : EContentFate::Users;
}

bool WriteBytes(const fs::path& path, const std::string& bytes) noexcept {
    return Platform::MakeFolders(path.parent_path()) &&
           Platform::ReplaceWholeFile(path, bytes.data(), bytes.size());
}

EContentFate Remove(std::string_view place, const fs::path& documents, const CContentManifest& manifest) {
    const auto path = At(documents, place);
    if (!IsTaken(path)) return EContentFate::Missing;
    const auto bytes = ReadBytes(path);
    if (!bytes) return IsEmpty(path) ? EContentFate::Users : EContentFate::Failed;
    if (!manifest.Has(place, FingerprintOf(*bytes))) return EContentFate::Users;
    return Platform::Files().Remove(path) ? EContentFate::Removed : EContentFate::Failed;
}

/// Removes the folders around `place` that are empty, from the inside out, but never the documents folder.
void RemoveEmptyFolders(const fs::path& documents, std::string_view place) noexcept {
    std::error_code error;
    for (auto folder = PathOf(place).parent_path(); !folder.empty(); folder = folder.parent_path()) {
        const auto path = documents / folder;
        const auto type = fs::symlink_status(path, error).type();
        if (type == fs::file_type::not_found) continue;
        if (type != fs::file_type::directory) return; // the user's link to a folder elsewhere
        if (!fs::remove(path, error)) return;         // it isn't empty
    }
}

std::string_view Word(EContentFate fate) noexcept {
    switch (fate) {
    case EContentFate::Installed:
        return "installed";
    case EContentFate::Renewed:
        return "renewed";
    case EContentFate::There:
        return "already there";
    case EContentFate::Users:
        return "yours, kept";
    case EContentFate::Missing:
        return "already gone";
    case EContentFate::Removed:
        return "removed";
    case EContentFate::Failed:
        return "failed";
    }
    return "";
}

std::string_view StateWord(EContentFate fate) noexcept {
    switch (fate) {
    case EContentFate::There:
        return "installed";
    case EContentFate::Renewed:
        return "older";
    case EContentFate::Missing:
        return "missing";
    default:
        return "yours";
    }
}

/// Empty for a file in a folder further down, which no option can name.
std::string OptionAt(const std::string& place) {
    for (const auto& part : Parts) {
        if (!place.starts_with(part.place) || !place.ends_with(part.extension)) continue;
        const auto name = std::string_view(place).substr(part.place.size());
        if (name.find('/') != std::string_view::npos) continue;
        return OptionFor(part.kind, name.substr(0, name.size() - part.extension.size()));
    }
    return {};
}

/// What kavhost prints of a file.
struct SListedFile {
    std::string_view state;
    std::string place;
    std::string option;
};

/// Those of the user that have a name of their own, or share the factory's with another extension.
void AddUsers(const SContentFolders& folders, const ContentReport& report, std::vector<SListedFile>& list) {
    for (const auto& part : Parts) {
        for (const auto& content : ContentNames(part.kind, folders)) {
            const auto place = std::string(part.place) + Utf8(content.file.filename());
            if (!content.isUsers || std::ranges::find(report, place, &SContentLine::place) != report.end())
                continue;
            list.push_back({StateWord(EContentFate::Users), place, OptionFor(part.kind, content.name)});
        }
    }
}

} // namespace

ContentReport InstallContent(const SContentSource& source, const fs::path& documents) {
    CheckDocuments(documents);
    const auto files = ReadContent(source);
    CContentManifest manifest(At(documents, ManifestPlace));
    ContentReport report;
    for (const auto& file : files) report.push_back({file.place, StateOf(file, documents, manifest)});

    // Recorded before it is done, because a file without a record would never be removed.
    const auto isToBeWritten = [](EContentFate fate) {
        return fate == EContentFate::Missing || fate == EContentFate::Renewed;
    };
    CContentManifest plan = manifest;
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (isToBeWritten(report[i].fate)) plan.Add(files[i].place, files[i].fingerprint);
    }
    Platform::MakeFolders(At(documents, ManifestPlace).parent_path());
    plan.Save();
    for (std::size_t i = 0; i < files.size(); ++i) {
        auto& fate = report[i].fate;
        if (!isToBeWritten(fate)) continue;
        if (!WriteBytes(At(documents, files[i].place), files[i].bytes)) {
            fate = EContentFate::Failed;
            continue;
        }
        if (fate == EContentFate::Missing) fate = EContentFate::Installed;
        manifest.Settle(files[i].place, files[i].fingerprint);
    }
    manifest.Save();
    return report;
}

ContentReport UninstallContent(const fs::path& documents) {
    CheckDocuments(documents);
    CContentManifest manifest(At(documents, ManifestPlace));
    if (manifest.Places().empty()) return {};
    ContentReport report;
    for (const auto& place : manifest.Places()) {
        report.push_back({place, Remove(place, documents, manifest)});
        if (report.back().fate != EContentFate::Failed) manifest.Forget(place);
    }
    manifest.Save();
    for (const auto& line : report) RemoveEmptyFolders(documents, line.place);
    RemoveEmptyFolders(documents, ManifestPlace);
    return report;
}

ContentReport ListContent(const SContentSource& source, const fs::path& documents) {
    CheckDocuments(documents);
    const CContentManifest manifest(At(documents, ManifestPlace));
    ContentReport report;
    for (const auto& file : ReadContent(source)) {
        auto state = StateOf(file, documents, manifest);
        if (state == EContentFate::There && !manifest.Has(file.place, file.fingerprint))
            state = EContentFate::Users;
        report.push_back({file.place, state});
    }
    return report;
}

void PrintChanges(std::ostream& out, const ContentReport& report) {
    std::array<std::size_t, 7> counts{};
    for (const auto& line : report) {
        ++counts[static_cast<std::size_t>(line.fate)];
        if (line.fate == EContentFate::Users || line.fate == EContentFate::Failed)
            out << line.place << ": " << Word(line.fate) << '\n';
    }
    out << report.size() << " files";
    for (std::size_t fate = 0; fate < counts.size(); ++fate) {
        if (counts[fate] > 0) out << ", " << counts[fate] << ' ' << Word(static_cast<EContentFate>(fate));
    }
    out << '\n';
}

void PrintContent(std::ostream& out, const ContentReport& report, const SContentFolders& folders) {
    std::vector<SListedFile> list;
    for (const auto& line : report) list.push_back({StateWord(line.fate), line.place, OptionAt(line.place)});
    AddUsers(folders, report, list);
    std::size_t width = 0;
    for (const auto& file : list) {
        if (!file.option.empty()) width = std::max(width, file.place.size());
    }
    for (const auto& file : list) {
        std::string line(file.state);
        line.resize(11, ' ');
        line += file.place;
        if (!file.option.empty()) line.append(width - file.place.size() + 2, ' ').append(file.option);
        out << Printable(line) << '\n';
    }
}

bool HasFailed(const ContentReport& report) noexcept {
    return std::ranges::any_of(report, [](const auto& line) { return line.fate == EContentFate::Failed; });
}

} // namespace KAV::Host
