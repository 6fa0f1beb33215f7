// Lists a user's folder of patches, as happens each time the list is refreshed.

#include "utils/path.h"
#include "utils/scan_folder.h"

#include <benchmark/benchmark.h>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

using namespace KAV;
namespace fs = std::filesystem;

namespace {

/// A folder of this many empty files, removed at the end.
class CManyFiles final {
public:
    explicit CManyFiles(int files)
        : _folder(fs::temp_directory_path() / ("kav-bench-" + std::to_string(std::random_device()()))) {
        fs::create_directories(_folder);
        for (int i = 0; i < files; ++i) std::ofstream(_folder / (std::to_string(i) + " A patch.kvp"));
    }
    ~CManyFiles() {
        std::error_code ignored; // a leftover in the temporary folder isn't a failure
        fs::remove_all(_folder, ignored);
    }
    CManyFiles(const CManyFiles&) = delete;
    CManyFiles& operator=(const CManyFiles&) = delete;

    std::u16string Path() const { return Utils::FromSystemPath(_folder); }

private:
    fs::path _folder;
};

void ScanFolder(benchmark::State& state) {
    const CManyFiles files(static_cast<int>(state.range(0)));
    const auto folder = files.Path();
    for (auto _ : state) benchmark::DoNotOptimize(Utils::ScanFolder(folder, u"kvp;fxp"));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(ScanFolder)->Arg(100)->Arg(10000)->Unit(benchmark::kMicrosecond);

} // namespace
