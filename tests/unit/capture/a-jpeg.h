// JPEG files for tests.

#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

// This needs what stands above.
#include <jpeglib.h>

struct JpegColor {
    uint8_t red, green, blue;
};

// How a file is written beside its size and colours.
struct JpegForm {
    bool gray = false;
    bool cmyk = false;
    int scans = 1;  // above 1: progressive, gray, one scan more for each frequency
};

// A JPEG whose pixel at (x, y) is about `color(x, y)`.
inline std::string Jpeg(int width, int height, const std::function<JpegColor(int, int)>& color,
                        const JpegForm& form = {})
{
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&jpeg, &bytes, &size);
    jpeg.image_width = static_cast<JDIMENSION>(width);
    jpeg.image_height = static_cast<JDIMENSION>(height);
    const bool gray = form.gray || form.scans > 1;
    jpeg.input_components = gray ? 1 : form.cmyk ? 4 : 3;
    jpeg.in_color_space = gray ? JCS_GRAYSCALE : form.cmyk ? JCS_CMYK : JCS_RGB;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, 95, TRUE);
    std::vector<jpeg_scan_info> script(static_cast<size_t>(form.scans));
    for (int i = 0; i < form.scans; ++i) script[static_cast<size_t>(i)] = {1, {0}, i, i, 0, 0};
    if (form.scans > 1) {
        jpeg.scan_info = script.data();
        jpeg.num_scans = form.scans;
    }
    jpeg_start_compress(&jpeg, TRUE);
    std::vector<unsigned char> row;
    for (int y = 0; y < height; ++y) {
        row.clear();
        for (int x = 0; x < width; ++x) {
            const JpegColor c = color(x, y);
            if (gray) {
                row.push_back(c.red);
            } else {
                row.insert(row.end(), {c.red, c.green, c.blue});
                if (form.cmyk) row.push_back(255);
            }
        }
        JSAMPROW pixels = row.data();
        jpeg_write_scanlines(&jpeg, &pixels, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::string file(reinterpret_cast<char*>(bytes), size);
    std::free(bytes);
    return file;
}
