#include "backup-report.h"

#include <algorithm>

#include "json-text.h"

namespace Wfctl {

std::string QuotedName(const std::string& name)
{
    return JsonLine(BytesToJson(name));
}

std::string CountedItems(std::size_t faces, std::size_t pictures)
{
    const std::string face = Counted(faces, "face");
    const std::string picture = Counted(pictures, "picture");
    if (faces == 0 || pictures == 0) return faces == 0 ? picture : face;
    return face + " and " + picture;
}

void PrintSummary(const Options& options, const char* what, const BackupManifest& manifest,
                  const std::string& folder, const std::vector<std::string>& notCarried)
{
    if (options.json) {
        Json faces = Json::array(), pictures = Json::array();
        for (const BackupItem& item : manifest.items)
            (item.IsFace() ? faces : pictures).push_back(BytesToJson(item.name));
        PrintLine(JsonLine(Json{
            {"folder",     BytesToJson(folder)          },
            {"faces",      faces                        },
            {"pictures",   pictures                     },
            {"current",    BytesToJson(manifest.current)},
            {"notCarried", notCarried                   }
        }));
        return;
    }
    const auto faces = static_cast<std::size_t>(std::ranges::count_if(manifest.items, &BackupItem::IsFace));
    PrintLine(std::string(what) + " " + Counted(faces, "face") + " and " +
              Counted(manifest.items.size() - faces, "picture") +
              (manifest.current.empty() ? "" : "; the current face is " + QuotedName(manifest.current)));
}

}  // namespace Wfctl
