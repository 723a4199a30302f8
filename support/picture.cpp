#include "support/picture.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <png.h>

namespace support {
namespace {

// A picture that is being read or written; what libpng holds for it is freed.
struct Image : png_image {
    Image() : png_image{} { version = PNG_IMAGE_VERSION; }
    ~Image() { png_image_free(this); }
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;
};

Planes read(const std::string& path, bool inColor) {
    Image image;
    if (!(path == "-" ? png_image_begin_read_from_stdio(&image, stdin)
                      : png_image_begin_read_from_file(&image, path.c_str())))
        throw PictureError("cannot read the picture " + path + ": " + image.message);
    const int count = inColor && (image.format & PNG_FORMAT_FLAG_COLOR) != 0 ? 3 : 1;
    image.format = count == 3 ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
    std::vector<png_byte> bytes(PNG_IMAGE_SIZE(image));
    const png_color black{};
    if (!png_image_finish_read(&image, &black, bytes.data(), 0, nullptr))
        throw PictureError("cannot read the picture " + path + ": " + image.message);

    const int columns = static_cast<int>(image.width);
    Planes planes{{static_cast<int>(image.height), columns * count}, count};
    auto next = bytes.begin();
    for (int i = 0; i < planes.all.rows; ++i)
        for (int j = 0; j < columns; ++j)
            for (int plane = 0; plane < count; ++plane)
                planes.all(i, plane * columns + j) = *next++;
    return planes;
}

} // namespace

Picture read_png(const std::string& path) {
    return read(path, false).all;
}
Planes read_planes(const std::string& path) {
    return read(path, true);
}

std::string png(const Planes& planes) {
    std::vector<png_byte> bytes;
    for (int i = 0; i < planes.all.rows; ++i)
        for (int j = 0; j < planes.columns(); ++j)
            for (int plane = 0; plane < planes.count; ++plane)
                bytes.push_back(static_cast<png_byte>(
                    std::lround(std::clamp(planes.all(i, plane * planes.columns() + j), 0.0F, 255.0F))));

    Image image;
    image.width = static_cast<png_uint_32>(planes.columns());
    image.height = static_cast<png_uint_32>(planes.all.rows);
    image.format = planes.count == 3 ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
    std::string content(PNG_IMAGE_PNG_SIZE_MAX(image), '\0'); // before compression
    png_alloc_size_t size = content.size();
    if (!png_image_write_to_memory(&image, content.data(), &size, 0, bytes.data(), 0, nullptr))
        throw PictureError(std::string("cannot make a picture: ") + image.message);
    content.resize(size);
    return content;
}

void write_planes(const std::string& path, const Planes& planes) {
    const std::string unfinished = path + ".part";
    std::ofstream file(unfinished, std::ios::binary);
    file << png(planes) << std::flush;
    if (!file || std::rename(unfinished.c_str(), path.c_str()) != 0) {
        std::remove(unfinished.c_str());
        throw PictureError("cannot write the picture " + path);
    }
}
void write_png(const std::string& path, const Picture& gray) {
    write_planes(path, {gray, 1});
}

Picture beside(const std::vector<Picture>& pictures) {
    constexpr int gap = 8;
    constexpr float white = 255;
    Picture all;
    all.rows = pictures.front().rows;
    for (const Picture& picture : pictures) {
        if (all.columns > 0)
            all.values.insert(all.values.end(), static_cast<std::size_t>(gap * all.rows), white);
        all.values.insert(all.values.end(), picture.values.begin(), picture.values.end());
        all.columns += picture.columns + (&picture == &pictures.front() ? 0 : gap);
    }
    return all;
}

} // namespace support
