// Pictures as the service looks at them: through cairo, opened late, and never at any price.

#include <cairo.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <memory>
#include <string>

#include "private-bus.h"
#include "systemd-handles.h"

namespace {

using SurfacePtr = std::unique_ptr<cairo_surface_t, Platform::Releases<cairo_surface_destroy>>;

class APicture : public testing::Test {
protected:
    std::string Path() const { return folder.Path() + "/preview.png"; }
    cairo_status_t Status() const
    {
        return cairo_surface_status(SurfacePtr(cairo_image_surface_create_from_png(Path().c_str())).get());
    }
    void Write(const std::string& bytes) const { std::ofstream(Path(), std::ios::binary) << bytes; }

    // One pixel.
    std::string png = std::string(
        "\x89PNG\r\n\x1a\n"
        "\0\0\0\rIHDR\0\0\0\1\0\0\0\1\x08\6\0\0\0\x1f\x15\xc4\x89"
        "\0\0\0\x0bIDAT\x78\xda\x63\x60\0\2\0\0\x05\0\1\xe9\xfa\xdc\xd8"
        "\0\0\0\0IEND\xae\x42\x60\x82",
        68);
    TestSupport::TemporaryFolder folder;
};

TEST_F(APicture, is_read)
{
    Write(png);
    const SurfacePtr surface(cairo_image_surface_create_from_png(Path().c_str()));
    EXPECT_EQ(cairo_surface_status(surface.get()), CAIRO_STATUS_SUCCESS);
    EXPECT_EQ(cairo_image_surface_get_width(surface.get()), 1);
    EXPECT_EQ(cairo_image_surface_get_height(surface.get()), 1);
}

TEST_F(APicture, that_is_missing_has_a_status_of_its_own)
{
    EXPECT_NE(Status(), CAIRO_STATUS_SUCCESS);
}

TEST_F(APicture, that_claims_more_than_4096_pixels_a_side_is_not_read)
{
    for (const std::size_t side : {std::size_t{16}, std::size_t{20}}) {
        std::string large = png;
        large.replace(side, 4, std::string("\0\0\x10\1", 4));
        Write(large);
        EXPECT_EQ(Status(), CAIRO_STATUS_READ_ERROR);
    }
}

TEST_F(APicture, that_is_no_regular_file_is_not_waited_for)
{
    ASSERT_EQ(mkfifo(Path().c_str(), 0600), 0);
    EXPECT_NE(Status(), CAIRO_STATUS_SUCCESS);
}

TEST_F(APicture, that_ends_early_is_damaged)
{
    Write(png.substr(0, 40));
    EXPECT_NE(Status(), CAIRO_STATUS_SUCCESS);
}

}  // namespace
