#include "folder-listing.h"

#include "files.h"
#include "handles.h"

namespace WatchfaceService {

std::vector<std::string> ListFolder(const std::string& folder)
{
    std::vector<std::string> names;
    Eina_List* list = ecore_file_ls(folder.c_str());
    while (list) {
        const CStringPtr name(static_cast<char*>(list->data));
        names.emplace_back(name.get());
        list = eina_list_remove_list(list, list);
    }
    return names;
}

}  // namespace WatchfaceService
