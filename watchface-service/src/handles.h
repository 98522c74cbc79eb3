// Owners of what the platform's C interfaces hand out: one pointer wide, released on every way out.

#pragma once

#include <cstdlib>
#include <memory>

#include "app-control.h"
#include "bundle.h"

namespace WatchfaceService {

template <auto Release>
struct Releases {
    void operator()(auto* handle) const { Release(handle); }
};

using BundlePtr = std::unique_ptr<bundle, Releases<bundle_free>>;
using CStringPtr = std::unique_ptr<char, Releases<std::free>>;
using AppControlPtr = std::unique_ptr<app_control_s, Releases<app_control_destroy>>;

}  // namespace WatchfaceService
