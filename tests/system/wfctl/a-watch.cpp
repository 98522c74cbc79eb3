#include "a-watch.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

Arguments Command(Arguments arguments)
{
    arguments.insert(arguments.begin(), WFCTL);
    return arguments;
}

// Nothing of the machine's own watch or bus; the language of the previews that ship, so that no watch begins
// with captures.
const Environment kNoWatch = {
    {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus"},
    {"DBUS_STARTER_ADDRESS",     ""                          },
    {"WATCH_ROOT",               "/nonexistent/watch"        },
    {"WATCH_RESOURCES",          ""                          },
    {"LC_ALL",                   "en_GB.UTF-8"               }
};

}  // namespace

Result Wfctl(const Arguments& arguments)
{
    return RunProgram(Command(arguments), kNoWatch);
}

AFolder::AFolder()
{
    std::string folder = testing::TempDir() + "wfctl-XXXXXX";
    mFolder = mkdtemp(folder.data());
}

AFolder::~AFolder()
{
    fs::remove_all(mFolder);
}

std::string AFolder::Holding(const std::string& name, const std::string& bytes) const
{
    std::ofstream(mFolder + "/" + name, std::ios::binary) << bytes;
    return mFolder + "/" + name;
}

AWatch::AWatch() : mRoot(mFolder + "/it's a \"watch\" $x `y` \\ ü미렐 ")
{
    mRoot.resize(std::max<std::size_t>(mRoot.size(), 220), 'x');
    mUp = Wfctl({"up", "--root", mRoot});
    EXPECT_EQ(mUp.status, 0) << mUp.err << ContentsOf(mRoot + "/watch.log");
    mEnvironment = kNoWatch;
    mEnvironment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + State("RUN_FOLDER") + "/bus";
    mEnvironment["WATCH_ROOT"] = mRoot;
    mEnvironment["WATCH_RESOURCES"] = STAGED_FACES;
}

AWatch::~AWatch()
{
    if (HasFailure()) std::cerr << ContentsOf(mRoot + "/watch.log");
    const Result down = Wfctl({"down", "--root", mRoot});
    EXPECT_THAT(down.status, testing::AnyOf(0, 9)) << down.err;
}

Result AWatch::Run(const Arguments& arguments) const
{
    return RunProgram(Command(arguments), mEnvironment);
}

std::unique_ptr<Program> AWatch::Start(const Arguments& arguments) const
{
    return std::make_unique<Program>(Command(arguments), mEnvironment);
}

std::unique_ptr<Program> AWatch::Listen(Arguments arguments) const
{
    arguments.insert(arguments.begin(), "listen");
    auto listener = Start(arguments);
    EXPECT_THAT(listener->NextErrorLine().value_or(""), testing::StartsWith("listening as"));
    return listener;
}

std::string AWatch::State(const std::string& name) const
{
    const std::string text = ContentsOf(mRoot + "/watch.state");
    const auto at = text.find("\n" + name + "='");
    if (at == std::string::npos) return {};
    const auto begin = at + name.size() + 3;
    return text.substr(begin, text.find('\'', begin) - begin);
}

std::string AWatch::ReadOnlyFace(const std::string& name) const
{
    return std::string(STAGED_FACES) + "/com.corvane.watchface/shared/res/watchlist/" + name + "/";
}

std::string AWatch::ReadWriteFace(const std::string& name) const
{
    return mRoot + "/apps/com.corvane.watchface/shared/data/watchlist/" + name + "/";
}

namespace {
const std::string kStagedList = STAGED_FACES "/com.corvane.watchface/shared/res/watchlist/";
}

std::vector<std::string> StagedFaces()
{
    std::vector<std::string> names;
    for (const auto& folder : std::filesystem::directory_iterator(kStagedList)) {
        names.push_back(folder.path().filename());
    }
    return names;
}

std::string StagedResultXml(const std::string& name)
{
    return kStagedList + name + "/" + name + "_result.xml";
}

std::string BlankPicture(const AFolder& folder)
{
    const std::string document = folder.Holding("blank.xml", R"(<watchface format="1" id="com.example.blank"
 version="1" width="16" height="16" shape="square" default-language="en" preview-time="10:08:36" title-key="t">
 <strings language="en"><string key="t">T</string></strings></watchface>)");
    const std::string picture = folder.Path() + "/blank.png";
    EXPECT_EQ(Wfctl({"render", document, "-o", picture}).status, 0);
    return picture;
}
