// kav_artwork_installer FOLDER: draws the icon and the pictures of the installer for Windows into a folder.

#include "artwork/installer.h"
#include "artwork/windows_picture.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>

using namespace KAV::Artwork;

namespace {

void Write(const std::filesystem::path& file, const std::string& bytes) {
    std::ofstream out(file, std::ios::binary);
    out.exceptions(std::ios::failbit | std::ios::badbit);
    out << bytes << std::flush;
}

} // namespace

int main(int argc, char** argv) try {
    if (argc != 2) {
        std::fputs("kav_artwork_installer FOLDER\n", stderr);
        return 2;
    }
    const std::filesystem::path folder = argv[1];
    Write(folder / "installer.ico", IcoOf(PaintInstallerIcon()));
    Write(folder / "header.bmp", BmpOf(PaintInstallerHeader()));
    Write(folder / "side.bmp", BmpOf(PaintInstallerSide()));
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "kav_artwork_installer: %s\n", error.what());
    return 1;
}
