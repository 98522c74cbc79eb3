// The watch faces that the watch of this process has, as they lie on disk.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "value-store-sqlite.h"

namespace Wfctl {

inline constexpr char kIdleClockKey[] = "db/wms/clocks_set_idle";
inline constexpr char kWatchfaceNameKey[] = "file/private/com.corvane.watchface/watchface_name";
// A preference of the service: the face that the next update of a world clock is for.
inline constexpr char kWorldClockTargetPref[] = "wfs-watch-name-world-clock-update";

struct Face {
    std::string name;
    bool writable = false;  // its copy in the read/write area is the one that counts
    bool shipped = false;
    bool hasPreview = false;
    std::string folder;  // with "/" at its end
    std::string ResultXml() const { return folder + name + "_result.xml"; }
    std::string WatchfaceXml() const { return folder + "watchface.xml"; }
    std::string Preview() const { return folder + name + ".png"; }
};

// By name.
std::vector<Face> ListFaces();
std::vector<std::string> FaceNames();

// The faces, or Stop with Exit::kNotFound when there is none.
std::vector<Face> RequireFaces();

std::optional<Face> FindFace(const std::string& name);

// What may stand beside a face's name.
enum class Beside { kNothing, kFiles };

// For names that people type: the end of the name, from a "-" or "." on, is enough when only one face has it.
// Else Stop with Exit::kNotFound and the name that may be meant, of a file where one may be named as well.
Face RequireFace(const std::string& name, Beside beside = Beside::kNothing);

// The folder of all shipped faces, with "/" at its end.
std::string ShippedFaces();

// The face's read/write copy, there or not.
Face WritableFace(const std::string& name);

// The title of a result XML in its default language; empty when it has none or cannot be read.
std::string TitleOf(const std::string& resultXml);

struct Current {
    std::string app;   // the idle clock's; empty while unset
    std::string face;  // empty while unset
};
Current CurrentFace();
Current CurrentFace(Platform::ValueStore& keys);

}  // namespace Wfctl
