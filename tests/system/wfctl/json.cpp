// What programs get of each verb: with --json nothing but JSON on stdout, under names that stay.

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

#include "a-watch.h"

namespace fs = std::filesystem;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;

namespace {

enum class Form {
    kValue,  // one JSON value
    kLines,  // one JSON value a line, for whatever goes by
};

struct Case {
    const char* verb;
    Arguments arguments;  // behind it; "%/" is the test's folder
    Form form;
    std::vector<const char*> names;  // of the value, of its first element, or of each line
    int status = 0;
    Arguments meanwhile = {};  // what goes by once the verb has said that it waits
};

// In an order in which each finds what it needs.
// clang-format off
const Case kCases[] = {
    {"status",              {}, Form::kValue, {"service", "capture", "bus", "trust", "root", "resources", "faces", "current"}},
    {"list",                {}, Form::kValue, {"name", "title", "area", "shipped", "current", "preview"}},
    {"show",                {"c1"}, Form::kValue, {"name", "area", "shipped", "current", "preview", "file"}},
    {"set",                 {"c4"}, Form::kValue, {"current"}},
    {"current",             {}, Form::kValue, {"app", "face"}},
    {"install",             {"%/my-face_result.xml"}, Form::kValue, {"from", "port", "bundle"}},
    {"update",              {"%/my-face_result.xml"}, Form::kValue, {"from", "port", "bundle"}},
    {"edit",                {"c1", "--pick", "dial=roman"}, Form::kValue, {"face", "changes", "preview"}},
    {"preview request",     {"c1"}, Form::kValue, {"face", "preview"}},
    {"preview check",       {"c1"}, Form::kValue, {"face", "preview", "state"}},
    {"preview",             {"c1"}, Form::kValue, {}},
    {"delete",              {"c1"}, Form::kValue, {"from", "port", "bundle"}},
    {"bg add",              {"%/holiday.png"}, Form::kLines, {"from", "port", "bundle"}},
    {"bg list",             {}, Form::kValue, {"folder", "pictures"}},
    {"bg del",              {"holiday.png"}, Form::kValue, {"from", "port", "bundle"}},
    {"bg save",             {}, Form::kValue, {"from", "port", "bundle"}},
    {"bg cancel",           {}, Form::kValue, {"from", "port", "bundle"}},
    {"world-clock prepare", {}, Form::kValue, {"face"}},
    {"world-clock update",  {"city", "Asia/Seoul"}, Form::kValue, {"from", "port", "bundle"}},
    {"world-clock show",    {"c4", "zone"}, Form::kValue, {"from", "port", "bundle"}},
    {"date",                {"yMMMMd"}, Form::kValue, {"from", "port", "bundle"}},
    {"evaluate save",       {"c1", "350"}, Form::kValue, {"from", "port", "bundle"}},
    {"evaluate load",       {"c1"}, Form::kValue, {"from", "port", "bundle"}},
    {"validate",            {"%/my-face_result.xml"}, Form::kValue, {"file", "kind", "good", "findings"}},
    {"flatten",             {"%/my-face_result.xml"}, Form::kValue, {"accepted", "findings", "watchface"}},
    {"render",              {"c1", "-o", "%/x.png"}, Form::kValue, {"picture"}},
    {"sheet",               {"c1", "-o", "%/x.png"}, Form::kValue, {"picture", "width", "height", "previews"}},
    {"send",                {"--as", kManager, kService, "type=watch-setting-created", "pkgid=x", "--wait", "30", "--count", "1"}, Form::kLines, {"from", "port", "bundle"}},
    {"listen",              {"--as", "com.corvane.w-home", "--count", "1"}, Form::kLines, {"from", "port", "bundle"}, 0, {"send", "--as", kEditor, "com.corvane.w-home", "type=x"}},
    {"launch",              {kService, "wfs/req/type=ttrace_disable"}, Form::kValue, {"result", "extra"}, 1},
    {"key set",             {"a", "1"}, Form::kValue, {"a"}},
    {"key get",             {"a"}, Form::kValue, {}},
    {"key list",            {}, Form::kValue, {"a"}},
    {"key watch",           {"a", "--count", "1"}, Form::kLines, {"key", "value"}, 0, {"key", "set", "a", "1"}},
    {"key unset",           {"a"}, Form::kValue, {"a"}},
    {"pref set",            {kService, "a", "1"}, Form::kValue, {"a"}},
    {"pref get",            {kService, "a"}, Form::kValue, {}},
    {"pref list",           {kService}, Form::kValue, {"a"}},
    {"pref unset",          {kService, "a"}, Form::kValue, {"a"}},
    {"setting set",         {"24-hour=true"}, Form::kValue, {"24-hour"}},
    {"setting get",         {"24-hour"}, Form::kValue, {}},
    {"setting list",        {}, Form::kValue, {"language", "country", "24-hour", "timezone"}},
    {"setting watch",       {"--count", "1"}, Form::kLines, {"key", "value"}, 0, {"setting", "set", "24-hour=true"}},
    {"survey query",        {}, Form::kValue, {"time", "application", "kind", "feature", "value", "extra"}},
    {"survey list",         {}, Form::kValue, {"time", "application", "kind", "feature", "value", "extra"}},
    {"trace on",            {}, Form::kValue, {"trace"}},
    {"trace off",           {}, Form::kValue, {"trace"}},
    {"monitor",             {"--count", "1"}, Form::kLines, {"kind"}, 0, {"key", "set", "a", "1"}},
    {"backup",              {"%/my-watch"}, Form::kValue, {"folder", "faces", "pictures", "current", "notCarried"}},
    {"restore",             {"%/my-watch", "--yes"}, Form::kValue, {"folder", "faces", "pictures", "current", "notCarried"}},
    {"doctor",              {"--fix"}, Form::kValue, {"root", "findings", "time"}},
    {"completion",          {"bash"}, Form::kValue, {"script"}},
    {"help",                {"edit"}, Form::kValue, {"help"}},
    {"manual",              {"edit"}, Form::kValue, {"manual"}},
    {"up",                  {"--root", "%/other"}, Form::kValue, {"root", "address", "resources"}},
    {"down",                {"--root", "%/other"}, Form::kValue, {"root"}},
};
// clang-format on

std::set<std::string> VerbsOfHelp()
{
    const std::string help = Wfctl({"--help"}).out;
    const std::regex line("\n  ([a-z-]+(?: [a-z]+)?) +[a-z]");
    std::set<std::string> verbs;
    for (std::sregex_iterator at(help.begin(), help.end(), line), end; at != end; ++at)
        verbs.insert((*at)[1]);
    return verbs;
}

class AProgram : public AWatch {
protected:
    AProgram()
    {
        fs::copy_file(StagedResultXml(kDigital), mFolder + "/my-face_result.xml");
        fs::copy_file(ReadOnlyFace(kClassic) + kClassic + ".png", mFolder + "/holiday.png");
    }

    Result Run(const Case& one) const
    {
        std::istringstream words(one.verb);
        Arguments arguments{std::istream_iterator<std::string>(words), {}};
        for (const std::string& argument : one.arguments)
            arguments.push_back(argument.starts_with("%/") ? mFolder + argument.substr(1) : argument);
        arguments.emplace_back("--json");
        return one.meanwhile.empty() ? AWatch::Run(arguments) : RunBeside(arguments, one.meanwhile);
    }

private:
    Result RunBeside(const Arguments& arguments, const Arguments& meanwhile) const
    {
        const auto waiting = Start(arguments);
        Result result;
        result.err = waiting->NextErrorLine().value_or("");
        AWatch::Run(meanwhile);
        while (const auto line = waiting->NextLine()) result.out += *line + "\n";
        result.status = waiting->AwaitEnd();
        return result;
    }
};

void HasNames(const Json& value, const Case& one)
{
    const Json& object = value.is_array() && !value.empty() ? value[0] : value;
    for (const char* name : one.names)
        EXPECT_TRUE(object.contains(name)) << one.verb << ": " << name << object;
}

}  // namespace

TEST_F(AProgram, gets_nothing_but_json_of_each_verb)
{
    for (const Case& one : kCases) {
        const Result result = Run(one);
        EXPECT_EQ(result.status, one.status) << one.verb << ": " << result.err;
        if (one.form == Form::kValue) {
            ASSERT_TRUE(Json::accept(result.out)) << one.verb << ": " << result.out;
            HasNames(result.AsJson(), one);
        } else {
            EXPECT_THAT(result.out, Not(IsEmpty())) << one.verb;
            for (const Json& line : result.AsJsonLines()) HasNames(line, one);
        }
    }
}

TEST_F(AProgram, gets_no_text_on_stdout_when_something_is_wrong)
{
    for (const Case& one : kCases) {
        Case wrong = one;
        wrong.arguments.assign({"--no-such-option"});
        wrong.meanwhile.clear();
        const Result result = Run(wrong);
        EXPECT_EQ(result.status, 2) << one.verb;
        EXPECT_EQ(result.out, "") << one.verb;
    }
}

TEST(TheCasesOfJson, are_those_of_all_verbs)
{
    std::set<std::string> cases;
    for (const Case& one : kCases) cases.insert(one.verb);
    EXPECT_THAT(VerbsOfHelp(), ElementsAreArray(cases));
}
