// Pictures on disk, read and written through the Windows Imaging Component. COM must be initialised.
#pragma once

#include <string>

#include "common/picture.h"

namespace zv {

struct PictureFile {
  Picture picture;
  std::string format;            /// "PNG", "JPEG", ...
  unsigned long long bytes = 0;  /// Size of the file.
};

/// Reads the first frame of a PNG, JPEG, BMP, TIFF or GIF file; one with an alpha as a picture of 32 bits. Throws a
/// Failure that names the file.
PictureFile readPicture(const std::string& path);

/// The formats pictures are written in.
enum class OutputFormat { Png, Bmp };

/// The format that a file's ending asks for. Throws a UsageError for any other ending.
OutputFormat outputFormat(const std::string& path);

/// Writes a PNG or BMP file, as the ending says, at the picture's own depth where the format has it: pictures of up
/// to 8 bits keep their palette. Throws a Failure that names the file.
void writePicture(const std::string& path, Picture& picture);

/// Writes a picture of 32 bits with its alpha, as a PNG file. Throws as writePicture; a UsageError for another ending.
void writePictureWithAlpha(const std::string& path, Picture& picture);

}  // namespace zv
