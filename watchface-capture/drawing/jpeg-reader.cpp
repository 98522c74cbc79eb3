#include <cairo.h>

#include <bit>
#include <csetjmp>
#include <cstdint>
#include <cstdio>

// These need what stands above.
#include <jerror.h>
#include <jpeglib.h>

#include "picture-reader.h"

namespace Drawing {
namespace {

constexpr int kMostScans = 32;           // of a progressive picture; cameras write about ten
constexpr long kMostMemory = 160 << 20;  // bytes; the coefficients of the largest picture take 100 MB

// How cairo lays out a pixel without alpha.
constexpr J_COLOR_SPACE kPixels = std::endian::native == std::endian::little ? JCS_EXT_BGRX : JCS_EXT_XRGB;

// One decoder with all that it needs; it leaves by a long jump to `out`.
struct Decoder {
    jpeg_decompress_struct jpeg;
    jpeg_error_mgr errors;
    jpeg_progress_mgr progress;
    std::jmp_buf out;
};

Decoder& Of(j_common_ptr jpeg)
{
    return *static_cast<Decoder*>(jpeg->client_data);
}

[[noreturn]] void Leave(j_common_ptr jpeg)
{
    std::longjmp(Of(jpeg).out, 1);
}

// A picture that is not whole is none; bytes that nobody needs harm nothing.
void OnMessage(j_common_ptr jpeg, int level)
{
    const int code = jpeg->err->msg_code;
    if (level < 0 && code != JWRN_EXTRANEOUS_DATA && code != JWRN_ADOBE_XFORM && code != JWRN_JFIF_MAJOR)
        Leave(jpeg);
}

void OnProgress(j_common_ptr jpeg)
{
    if (reinterpret_cast<j_decompress_ptr>(jpeg)->input_scan_number > kMostScans) Leave(jpeg);
}

void Begin(Decoder& decoder, std::string_view bytes)
{
    decoder.jpeg.err = jpeg_std_error(&decoder.errors);
    decoder.errors.error_exit = Leave;
    decoder.errors.emit_message = OnMessage;
    decoder.jpeg.client_data = &decoder;
    jpeg_create_decompress(&decoder.jpeg);
    decoder.jpeg.mem->max_memory_to_use = kMostMemory;
    decoder.progress = {};
    decoder.progress.progress_monitor = OnProgress;
    decoder.jpeg.progress = &decoder.progress;
    jpeg_mem_src(&decoder.jpeg, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

// Nothing in these has a destructor.
bool ReadHeader(Decoder& decoder, std::string_view bytes)
{
    if (setjmp(decoder.out)) return false;
    Begin(decoder, bytes);
    return jpeg_read_header(&decoder.jpeg, TRUE) == JPEG_HEADER_OK;
}

bool Start(Decoder& decoder, double scale)
{
    if (setjmp(decoder.out)) return false;
    decoder.jpeg.out_color_space = kPixels;
    decoder.jpeg.scale_denom = 8;
    while (decoder.jpeg.scale_denom > 1 && scale * decoder.jpeg.scale_denom > 1)
        decoder.jpeg.scale_denom /= 2;
    return jpeg_start_decompress(&decoder.jpeg) == TRUE;
}

bool ReadRows(Decoder& decoder, unsigned char* pixels, int stride)
{
    if (setjmp(decoder.out)) return false;
    while (decoder.jpeg.output_scanline < decoder.jpeg.output_height) {
        JSAMPROW row = pixels + static_cast<size_t>(stride) * decoder.jpeg.output_scanline;
        jpeg_read_scanlines(&decoder.jpeg, &row, 1);
    }
    return jpeg_finish_decompress(&decoder.jpeg) == TRUE;
}

// Frees what the decoder holds.
struct Guard {
    Decoder& decoder;
    ~Guard() { jpeg_destroy_decompress(&decoder.jpeg); }
};

PictureSize SizeOf(const Decoder& decoder)
{
    const JDIMENSION width = decoder.jpeg.image_width, height = decoder.jpeg.image_height;
    const bool good =
        width >= 1 && height >= 1 && width <= Limits::kLargestSide && height <= Limits::kLargestSide;
    return good ? PictureSize{static_cast<int>(width), static_cast<int>(height)} : PictureSize{};
}

}  // namespace

PictureSize JpegSize(std::string_view bytes)
{
    if (!bytes.starts_with("\xff\xd8\xff")) return {};
    Decoder decoder{};
    const Guard guard{decoder};
    return ReadHeader(decoder, bytes) ? SizeOf(decoder) : PictureSize{};
}

SurfacePtr DecodeJpeg(std::string_view bytes, double scale)
{
    Decoder decoder{};
    const Guard guard{decoder};
    if (!ReadHeader(decoder, bytes) || SizeOf(decoder).IsNone() || !Start(decoder, scale)) return nullptr;
    SurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24,
                                                  static_cast<int>(decoder.jpeg.output_width),
                                                  static_cast<int>(decoder.jpeg.output_height)));
    cairo_surface_flush(surface.get());
    unsigned char* pixels = cairo_image_surface_get_data(surface.get());
    if (!pixels || !ReadRows(decoder, pixels, cairo_image_surface_get_stride(surface.get()))) return nullptr;
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

}  // namespace Drawing
