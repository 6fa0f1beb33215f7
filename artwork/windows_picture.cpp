#include "artwork/windows_picture.h"

#include <cstdint>

namespace KAV::Artwork {

namespace {

void Append(std::string& bytes, int size, std::size_t number) {
    for (int i = 0; i < size; ++i) bytes += static_cast<char>(number >> 8 * i & 0xFF);
}

/// The rows from the bottom up, blue first, each filled up to a multiple of four bytes.
std::string Rows(const SPixels& picture, int channels) {
    std::string rows;
    for (int y = picture.height - 1; y >= 0; --y) {
        for (int x = 0; x < picture.width; ++x) {
            for (const int channel : {2, 1, 0, 3}) {
                if (channel < channels) rows += static_cast<char>(picture.At(x, y)[channel]);
            }
        }
        rows.resize((rows.size() + 3) / 4 * 4);
    }
    return rows;
}

/// The head of a bitmap, BITMAPINFOHEADER.
std::string Head(int width, int height, int channels) {
    constexpr std::size_t size = 40;
    std::string head;
    Append(head, 4, size);
    Append(head, 4, static_cast<std::size_t>(width));
    Append(head, 4, static_cast<std::size_t>(height));
    Append(head, 2, 1); // plane
    Append(head, 2, static_cast<std::size_t>(8 * channels));
    head.resize(size);
    return head;
}

/// In an icon the height counts twice: a mask of one bit per pixel follows, for systems without alpha.
std::string Image(const SPixels& picture) {
    const auto maskRow = static_cast<std::size_t>((picture.width + 31) / 32 * 4);
    std::string mask;
    for (int y = picture.height - 1; y >= 0; --y) {
        std::string row(maskRow, '\0');
        for (int x = 0; x < picture.width; ++x) {
            if (picture.At(x, y)[3] < 128)
                row[static_cast<std::size_t>(x / 8)] |= static_cast<char>(0x80 >> x % 8);
        }
        mask += row;
    }
    return Head(picture.width, 2 * picture.height, 4) + Rows(picture, 4) + mask;
}

} // namespace

std::string BmpOf(const SPixels& picture) {
    constexpr std::size_t fileHead = 14;
    const std::string head = Head(picture.width, picture.height, 3);
    const std::string rows = Rows(picture, 3);
    std::string bytes = "BM";
    Append(bytes, 4, fileHead + head.size() + rows.size());
    Append(bytes, 4, 0);
    Append(bytes, 4, fileHead + head.size());
    return bytes + head + rows;
}

std::string IcoOf(const std::vector<SPixels>& pictures) {
    std::string directory;
    std::string images;
    Append(directory, 2, 0);
    Append(directory, 2, 1); // an icon, not a cursor
    Append(directory, 2, pictures.size());
    const std::size_t first = directory.size() + 16 * pictures.size();
    for (const auto& picture : pictures) {
        const std::string image = Image(picture);
        Append(directory, 1, static_cast<std::size_t>(picture.width));
        Append(directory, 1, static_cast<std::size_t>(picture.height));
        Append(directory, 2, 0);  // no palette
        Append(directory, 2, 1);  // plane
        Append(directory, 2, 32); // bits per pixel
        Append(directory, 4, image.size());
        Append(directory, 4, first + images.size());
        images += image;
    }
    return directory + images;
}

} // namespace KAV::Artwork
