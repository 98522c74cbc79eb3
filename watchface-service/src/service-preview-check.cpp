#include "service-preview-check.h"

#include <cairo.h>

#include <functional>
#include <utility>

#include "files.h"
#include "handles.h"
#include "service-log.h"
#include "service-watchface-manager.h"

namespace WatchfaceService {

namespace {

constexpr int kMostRetries = 3;  // for one watch face in a row

using SurfacePtr = std::unique_ptr<cairo_surface_t, Releases<cairo_surface_destroy>>;

}  // namespace

PreviewCheck::PreviewCheck(std::shared_ptr<WatchfaceManager> manager)
    : mWatchfaceManager(std::move(manager)), mIdler(std::bind(&PreviewCheck::CheckIdlerCallback, this))
{
}

void PreviewCheck::Add(const std::string& watchName)
{
    const std::string path = WatchfaceManager::GeneratePath(true, PATH_TYPE_PREVIEW, watchName);
    LOG_INFO("watchface[%s]", watchName.c_str());
    if (!ecore_file_exists(path.c_str())) {
        LOG_ERROR("preview for watchface[%s] not found!!", watchName.c_str());
        return;
    }
    mPendingPreviews[watchName] = path;
    mIdler.Start();
}

bool PreviewCheck::IsValid(const std::string& previewPath)
{
    const SurfacePtr surface(cairo_image_surface_create_from_png(previewPath.c_str()));
    if (const cairo_status_t status = cairo_surface_status(surface.get()); status != CAIRO_STATUS_SUCCESS) {
        LOG_ERROR("cairo_image_surface_create_from_png failed!! (%d)", status);
        return false;
    }
    const int width = cairo_image_surface_get_width(surface.get());
    const int height = cairo_image_surface_get_height(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    LOG_INFO("preview size:%dx%d stride:%d", width, height, stride);
    // Half the width counts bytes here, not pixels, on purpose: which previews are captured again follows
    // from it. For a width that is a multiple of 8 this is the alpha of pixel width / 8. The platform's
    // surfaces have four bytes a pixel and more, so it lies within the row.
    return cairo_image_surface_get_data(surface.get())[height / 2 * stride + width / 2 + 3] != 0;
}

CommonUtilTaskReturn PreviewCheck::CheckIdlerCallback()
{
    for (const auto& [watchName, path] : mPendingPreviews) {
        LOG_INFO("check watchface[%s]", watchName.c_str());
        if (IsValid(path)) {
            mRetryCounts.erase(watchName);
        } else {
            CaptureAgain(watchName);
        }
    }
    mPendingPreviews.clear();
    return kCommonUtilTaskEnd;
}

void PreviewCheck::CaptureAgain(const std::string& watchName)
{
    if (++mRetryCounts[watchName] > kMostRetries) {
        LOG_ERROR("invalid preview generated more than %d times!! ignored!!", kMostRetries);
        mRetryCounts.erase(watchName);
        return;
    }
    LOG_ERROR(" preview is invalid!! request to generate!!");
    mWatchfaceManager->RequestPreviewCapture(watchName);
}

}  // namespace WatchfaceService
