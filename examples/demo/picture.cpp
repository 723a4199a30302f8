#include "picture.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <png.h>

namespace {

png_image new_image() {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    return image;
}

} // namespace

Picture read_png(const std::string& path) {
    png_image image = new_image();
    if (!png_image_begin_read_from_file(&image, path.c_str()))
        throw PictureError("cannot read the picture " + path + ": " + image.message);
    image.format = PNG_FORMAT_GRAY;
    std::vector<png_byte> bytes(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr))
        throw PictureError("cannot read the picture " + path + ": " + image.message);

    Picture picture{static_cast<int>(image.height), static_cast<int>(image.width), std::vector<float>(bytes.size())};
    for (int i = 0; i < picture.rows; ++i)
        for (int j = 0; j < picture.columns; ++j)
            picture(i, j) = bytes[static_cast<std::size_t>(i) * image.width + static_cast<std::size_t>(j)];
    return picture;
}

void write_png(const std::string& path, const Picture& picture) {
    std::vector<png_byte> bytes;
    for (int i = 0; i < picture.rows; ++i)
        for (int j = 0; j < picture.columns; ++j)
            bytes.push_back(static_cast<png_byte>(std::lround(std::clamp(picture(i, j), 0.0F, 255.0F))));

    png_image image = new_image();
    image.width = static_cast<png_uint_32>(picture.columns);
    image.height = static_cast<png_uint_32>(picture.rows);
    image.format = PNG_FORMAT_GRAY;
    const std::string unfinished = path + ".part";
    if (!png_image_write_to_file(&image, unfinished.c_str(), 0, bytes.data(), 0, nullptr))
        throw PictureError("cannot write the picture " + path + ": " + image.message);
    if (std::rename(unfinished.c_str(), path.c_str()) != 0) {
        std::remove(unfinished.c_str());
        throw PictureError("cannot write the picture " + path);
    }
}

Picture beside(const std::vector<Picture>& pictures) {
    constexpr int gap = 8;
    constexpr float white = 255;
    Picture all;
    all.rows = pictures.front().rows;
    for (const Picture& picture : pictures) {
        if (all.columns > 0)
            all.pixels.insert(all.pixels.end(), static_cast<std::size_t>(gap * all.rows), white);
        all.pixels.insert(all.pixels.end(), picture.pixels.begin(), picture.pixels.end());
        all.columns += picture.columns + (&picture == &pictures.front() ? 0 : gap);
    }
    return all;
}
