// kav_artwork FOLDER [NAME...]: draws every picture, or those named, into a folder, with the manifest beside
// them. kav_artwork --icons FOLDER: draws the icons of the desktop's menus.

#include "artwork/icon.h"
#include "artwork/pictures.h"
#include "artwork/png_file.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

using namespace KAV::Artwork;

namespace {

void WriteManifest(const std::filesystem::path& folder) {
    std::ofstream manifest(folder / "manifest.txt", std::ios::binary);
    manifest
        << "# FILE RESOURCE: the pictures, and the names under which the library carries them (type IMG).\n";
    for (const auto& sprite : Sprites) manifest << sprite.stem << ".png " << ResourceNameOf(sprite) << '\n';
}

int Run(const std::filesystem::path& folder, const std::vector<std::string>& names) {
    std::filesystem::create_directories(folder);
    if (names.empty()) WriteManifest(folder);
    for (const auto& name : names) SpriteOf(name);
    for (const auto& sprite : Sprites) {
        if (!names.empty() && std::find(names.begin(), names.end(), sprite.stem) == names.end()) continue;
        WritePng(folder / (std::string(sprite.stem) + ".png"), Paint(sprite));
    }
    return 0;
}

int RunIcons(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    for (const int side : IconSides)
        WritePng(folder / (std::to_string(side) + ".png"), DrawIcon(side).Quantised());
    return 0;
}

} // namespace

int main(int argc, char** argv) try {
    if (argc == 3 && argv[1] == std::string_view("--icons")) return RunIcons(argv[2]);
    if (argc < 2 || *argv[1] == '-') {
        std::fputs("kav_artwork FOLDER [NAME...]\nkav_artwork --icons FOLDER\n", stderr);
        return 2;
    }
    return Run(argv[1], std::vector<std::string>(argv + 2, argv + argc));
} catch (const std::exception& error) {
    std::fprintf(stderr, "kav_artwork: %s\n", error.what());
    return 1;
}
