// Pictures through a cairo of another kind: nobody gets one that has fewer bytes a pixel than may be counted
// on.

#include <cairo.h>
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <string>

#include "log-capture.h"
#include "private-bus.h"

namespace {

class APictureOfAnotherCairo : public testing::Test {
protected:
    // The status of a picture two pixels wide with so many bytes a row.
    cairo_status_t StatusOf(char stride, bool hasPixels = true) const
    {
        const std::string head("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\2\0\0\0\1", 24);
        std::ofstream(Path(), std::ios::binary) << head << stride << char{hasPixels};
        cairo_surface_t* surface = cairo_image_surface_create_from_png(Path().c_str());
        const cairo_status_t status = cairo_surface_status(surface);
        cairo_surface_destroy(surface);
        return status;
    }
    std::string Path() const { return folder.Path() + "/preview.png"; }

    static int Surfaces()
    {
        void* library = dlopen("libcairo.so.2", RTLD_NOW);
        const auto* count = library ? static_cast<int*>(dlsym(library, "other_cairo_surfaces")) : nullptr;
        return count ? *count : -1;
    }

    TestSupport::TemporaryFolder folder;
};

TEST_F(APictureOfAnotherCairo, is_given_with_four_bytes_a_pixel_and_more)
{
    EXPECT_EQ(StatusOf(8), CAIRO_STATUS_SUCCESS);
    EXPECT_EQ(StatusOf(32), CAIRO_STATUS_SUCCESS);
}

TEST_F(APictureOfAnotherCairo, is_refused_with_fewer_bytes_a_pixel)
{
    EXPECT_EQ(StatusOf(4), CAIRO_STATUS_READ_ERROR);
    EXPECT_EQ(StatusOf(7), CAIRO_STATUS_READ_ERROR);
}

TEST_F(APictureOfAnotherCairo, is_refused_without_pixels)
{
    EXPECT_EQ(StatusOf(8, false), CAIRO_STATUS_READ_ERROR);
}

TEST_F(APictureOfAnotherCairo, is_released_when_it_is_refused)
{
    StatusOf(4);
    EXPECT_EQ(Surfaces(), 0);
    EXPECT_TRUE(LogCapture::Lines().empty());
}

}  // namespace
