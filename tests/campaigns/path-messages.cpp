#include "path-messages.h"

#include <utility>

#include "path-message-groups.h"

namespace Campaign {

namespace {

// Longer than a name, and than a path, may be.
const std::string kLongName(300, 'x'), kLongPath(5000, 'x');

const std::vector<Path> kPaths{
    {"../escaped",                 Path::kLeadsOut},
    {"../../escaped",              Path::kLeadsOut},
    {"../../../../escaped",        Path::kLeadsOut},
    {"../../../../../../escaped",  Path::kLeadsOut},
    {".",                          Path::kLeadsOut},
    {"..",                         Path::kLeadsOut},
    {"../",                        Path::kLeadsOut},
    {"./../escaped",               Path::kLeadsOut},
    {"a/../../escaped",            Path::kLeadsOut},
    {"a/b/..",                     Path::kLeadsOut},
    {"escaped/..",                 Path::kLeadsOut},
    {"../watchlist/../../escaped", Path::kLeadsOut},
    {"link/x",                     Path::kLeadsOut},
    {"link/../../escaped",         Path::kLeadsOut},
    {kLongName,                    Path::kLeadsOut},
    {kLongPath,                    Path::kLeadsOut},
    {"link",                       Path::kIsLink  },
    {"link/",                      Path::kIsLink  },
    {"",                           Path::kIsOdd   },
    {"/",                          Path::kIsOdd   },
    {"//",                         Path::kIsOdd   },
    {"/etc/escaped",               Path::kIsOdd   },
    {"/proc/self",                 Path::kIsOdd   },
    {"planted",                    Path::kIsOdd   }, // whose files are links to one elsewhere
    {"\xff\xfe",                   Path::kIsOdd   },
};

// Those of files that are to be copied: SOURCES is a folder of ours, with pictures of dangerous names.
const std::vector<Path> kSources{
    {"SOURCES/link",        Path::kIsOdd   },
    {"SOURCES/planted.png", Path::kIsOdd   },
    {"SOURCES/..",          Path::kLeadsOut},
    {"SOURCES/.",           Path::kLeadsOut},
    {"SOURCES/",            Path::kLeadsOut},
    {"SOURCES/folder",      Path::kLeadsOut},
    {"SOURCES/../escaped",  Path::kLeadsOut},
    {"/",                   Path::kLeadsOut},
    {"..",                  Path::kLeadsOut},
    {"/proc/self/mem",      Path::kLeadsOut},
    {"/dev/zero",           Path::kLeadsOut},
    {kLongPath,             Path::kLeadsOut},
    {"\xff\xfe",            Path::kLeadsOut},
};

const std::vector<std::string> kCurrentFaceRows{
    "KEYS:file/private/com.corvane.watchface/watchface_name",
    "KEYS:db/wms/clocks_set_idle",
    "PREFERENCES:wfs-pref-idle-change-request-from",
};

void PrepareNothing(PathStage&, const std::string&) {}

}  // namespace

PathMessage::PathMessage(const char* fieldAttacked, const Identity& sender, Values messageValues)
    : field(fieldAttacked),
      from(sender),
      values(std::move(messageValues)),
      paths(&kPaths),
      prepare(PrepareNothing)
{
}

PathMessage& PathMessage::Does(Effect what, std::string which, std::string withValue)
{
    effect = what;
    effectOn = std::move(which);
    harmless = std::move(withValue);
    return *this;
}

PathMessage& PathMessage::Tries(const std::vector<Path>& others)
{
    paths = &others;
    return *this;
}

PathMessage& PathMessage::After(Preparation step)
{
    prepare = step;
    return *this;
}

PathMessage& PathMessage::Answers(const char* toOneThatLeadsOut, const char* toLink)
{
    answer = toOneThatLeadsOut;
    answerToLink = toLink;
    return *this;
}

PathMessage& PathMessage::IsRefused()
{
    isRefused = true;
    return *this;
}

PathMessage& PathMessage::Logs(const char* text)
{
    logged = text;
    return *this;
}

PathMessage& PathMessage::MaySet(std::vector<std::string> beginnings)
{
    rows = std::move(beginnings);
    return *this;
}

PathMessage& PathMessage::WithArray(const char* key)
{
    arrayKey = key;
    return *this;
}

const std::vector<Path>& SourcePaths()
{
    return kSources;
}

const std::vector<std::string>& CurrentFaceRows()
{
    return kCurrentFaceRows;
}

std::string FaceFile(const std::string& name)
{
    return std::string(kFaces) + "/" + name;
}

std::string InVariant(const std::string& name)
{
    return std::string(kGalleries) + "/U1/" + name;
}

std::vector<PathMessage> PathMessages(const PathStage& stage)
{
    PathMessageList all;
    AddFaces(stage, all);
    AddPictures(all);
    AddRestored(stage, all);
    AddValues(all);
    return all;
}

}  // namespace Campaign
