// kav_artwork_preview PICTURES FOLDER: composes the panel at rest and busy, at its base size and at twice
// that.

#include "artwork/png_file.h"
#include "artwork/preview.h"

#include <cstdio>
#include <exception>

using namespace KAV::Artwork;

int main(int argc, char** argv) try {
    if (argc != 3) {
        std::fputs("kav_artwork_preview PICTURES FOLDER\n", stderr);
        return 2;
    }
    const CPreview preview(argv[1]);
    const std::filesystem::path folder = argv[2];
    std::filesystem::create_directories(folder);
    WritePng(folder / "panel-rest.png", preview.Compose(EScene::Rest, 1));
    WritePng(folder / "panel-rest-2x.png", preview.Compose(EScene::Rest, 2));
    WritePng(folder / "panel-busy.png", preview.Compose(EScene::Busy, 1));
    WritePng(folder / "panel-busy-2x.png", preview.Compose(EScene::Busy, 2));
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "kav_artwork_preview: %s\n", error.what());
    return 1;
}
