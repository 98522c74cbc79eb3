// What help shows as an example works as it stands there.

#include <cstdlib>
#include <filesystem>

#include "a-watch.h"

namespace fs = std::filesystem;

namespace {

// Those that end by themselves and need nothing that is not there.
constexpr const char* kVerbs[] = {
    "world-clock prepare",
    "world-clock update",
    "world-clock show",
    "bg add",
    "bg list",
    "bg del",
    "bg save",
    "bg cancel",
    "date",
    "evaluate save",
    "evaluate load",
    "status",
    "list",
    "show",
    "set",
    "current",
    "install",
    "update",
    "edit",
    "validate",
    "flatten",
    "render",
    "sheet",
    "send",
    "key set",
    "key list",
    "pref set",
    "pref get",
    "pref list",
    "pref unset",
    "setting get",
    "setting set",
    "setting list",
    "backup",
    "restore",
    "survey query",
    "survey list",
    "trace on",
    "trace off",
    "preview request",
    "preview check",
    "preview",
    "doctor",
    "completion",
    "help",
    "manual",
    "delete",
};

std::string ExampleOf(const std::string& help)
{
    const std::string title = "\nExample:\n  ";
    const auto begin = help.find(title);
    if (begin == std::string::npos) return "false";
    return help.substr(begin + title.size(), help.find('\n', begin + title.size()) - begin - title.size());
}

}  // namespace

TEST_F(AWatch, does_what_the_examples_of_help_say)
{
    fs::copy_file(StagedResultXml(kDigital), mFolder + "/my-face_result.xml");
    fs::copy_file(StagedResultXml(kClassic), mFolder + "/" + kClassic + "_result.xml");
    fs::copy_file(ReadOnlyFace(kClassic) + kClassic + ".png", mFolder + "/holiday.jpg");
    Run({"set", "c4"});
    mEnvironment["PATH"] = fs::path(WFCTL).parent_path().string() + ":" + std::getenv("PATH");
    Run({"pref", "set", kService, "wfs-pref-idle-change-request-from", "test"});
    for (const char* verb : kVerbs) {
        const auto shell = [this](const std::string& command) {
            return RunProgram({"sh", "-c", "cd \"$0\" && " + command, mFolder}, mEnvironment);
        };
        const std::string example = ExampleOf(shell(std::string("wfctl ") + verb + " --help").out);
        const Result done = shell(example);
        EXPECT_EQ(done.status, 0) << example << "\n" << done.out << done.err;
    }
}
