#pragma once

#include "pixels/bitmap.h"
#include "pixels/image_name.h"
#include "pixels/sheet.h"

#include <memory>
#include <string>

/// Pictures by their names: a PNG file of exactly that name, relative to the current folder unless it is
/// absolute; otherwise the one of that name in this library, whose case is ignored. A file that can't be
/// decoded doesn't fall back on the library's.
///
/// Any thread. Throw KAV::Exceptions::GDIPImage if the picture can't be decoded, and std::bad_alloc.
namespace KAV::Native {

/// The library's picture, which all editors of the process share. Null if there is none, or if a file of that
/// name hides it.
std::shared_ptr<const Pixels::ISheet> StoredSheet(const std::u16string& name);

/// The picture at the size of the mark, which is that of one frame; -1 is the stored width or height. Without
/// a size and a blur it is a sheet, decoded when it is drawn. A size scales the whole grid at once, as one
/// picture. A blur makes a white silhouette that is larger by eight radii in width and height, the picture in
/// its middle.
///
/// A missing picture is null with a blur, and throws KAV::Exceptions::Std without. No pixels are null, too.
std::unique_ptr<Pixels::SBitmap> MakeImage(const std::u16string& name, const Pixels::SImageMark& mark);

} // namespace KAV::Native
