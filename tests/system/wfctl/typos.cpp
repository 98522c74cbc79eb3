// Slips of typing, one row for each kind of word: what is typed, how wfctl ends, and what it says is meant.

#include <algorithm>
#include <filesystem>

#include "a-watch.h"

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr char kMeridian[] = "com.corvane.watchface-mirel-c4";

struct Slip {
    const char* of;   // what is mistyped
    Arguments typed;  // "%/" is the test's folder
    int status;
    const char* hint;
};

// clang-format off
const Slip kSlips[] = {
    // verbs and options
    {"verb",                   {"rendr"}, 2, "did you mean render?"},
    {"group of verbs",         {"kye"}, 2, "did you mean key?"},
    {"verb of a group",        {"key", "gte", "x"}, 2, "did you mean key get? known: key get, key set"},
    {"group of a verb",        {"kye", "get", "x"}, 2, "did you mean key get?"},
    {"beginning of a verb",    {"trace", "of"}, 2, "did you mean trace off?"},
    {"verb beside a verb",     {"preview", "reqest", "c1"}, 10, "did you mean the verb preview request?"},
    {"verb of a manual page",  {"manual", "key", "gett"}, 2, "did you mean key get?"},
    {"option",                 {"list", "--jsno"}, 2, "did you mean --json?"},
    {"option with a value",    {"render", "c1", "--langauge=de"}, 2, "did you mean --language?"},
    {"beginning of an option", {"render", "c1", "--lang", "de"}, 2, "did you mean --language?"},
    {"option before the verb", {"--rot", "/tmp", "list"}, 2, "did you mean --root?"},
    {"type of a value",        {"key", "set", "a", "1", "--type", "itn"}, 2, "did you mean int?"},
    {"shell",                  {"completion", "bahs"}, 2, "did you mean bash?"},
    {"hour mode",              {"render", "c1", "--hours", "13"}, 2, "12,24"},
    {"hour modes",             {"sheet", "c1", "-o", "%/x.png", "--hours", "13"}, 2, "12, 24 or 12,24"},
    // faces and files
    {"face",                   {"show", "com.corvane.watchface-mirle-c1"}, 10, "did you mean com.corvane.watchface-mirel-c1?"},
    {"end of a face's name",   {"set", "mirl-c1"}, 10, "did you mean mirel-c1?"},
    {"title of a face",        {"set", "Digital"}, 10, "did you mean com.corvane.watchface-mirel-e1?"},
    {"whole title of a face",  {"set", "Mirel Digital"}, 10, "did you mean com.corvane.watchface-mirel-e1?"},
    {"title in small letters", {"set", "mirel digital"}, 10, "did you mean com.corvane.watchface-mirel-e1?"},
    {"face with more behind",  {"evaluate", "load", "c111"}, 10, "did you mean c1?"},
    {"part of a face's name",  {"delete", "mirel"}, 10, "did you mean com.corvane.watchface-mirel-c1?"},
    {"document",               {"show", "%/my-face_resutl.xml"}, 10, "did you mean %/my-face_result.xml?"},
    {"document to render",     {"render", "%/my-fcae_result.xml"}, 10, "did you mean %/my-face_result.xml?"},
    {"ending of a document",   {"validate", "my-face_result.xlm"}, 10, "did you mean my-face_result.xml?"},
    {"document to install",    {"install", "%/my-fcae_result.xml"}, 10, "did you mean %/my-face_result.xml?"},
    {"file of a value",        {"send", "--as", "com.corvane.w-home", kService, "data/xml_data=@%/my-fcae_result.xml"}, 10, "did you mean %/my-face_result.xml?"},
    {"picture to add",         {"bg", "add", "%/holday.png"}, 10, "did you mean %/holiday.png?"},
    {"picture to delete",      {"bg", "del", "holday.png"}, 10, "did you mean holiday.png?"},
    {"kind of pictures",       {"bg", "list", "--type", "digtal"}, 2, "did you mean digital?"},
    {"backup",                 {"restore", "%/my-wach"}, 10, "did you mean %/my-watch?"},
    {"folder of faces",        {"up", "--root", "%/other", "--resources", "%/my-wach"}, 10, "did you mean %/my-watch?"},
    {"root to take down",      {"down", "--root", "%/my-wach"}, 9, "did you mean %/my-watch?"},
    {"root",                   {"list", "--root", "%/my-wach"}, 8, "did you mean %/my-watch?"},
    // what a face offers
    {"group",                  {"edit", "c1", "--pick", "dail=roman"}, 2, "did you mean dial? known: dial, hands"},
    {"option of a group",      {"edit", "c1", "--pick", "dial=romn"}, 2, "did you mean roman? known: index, arabic, roman"},
    {"colour",                 {"edit", "c1", "--pick", "accent=azzure"}, 2, "did you mean azure?"},
    {"slot",                   {"edit", "c1", "--place", "rigth=pedometer"}, 2, "did you mean right? known: left, right"},
    {"source",                 {"edit", "c1", "--place", "right=pedmeter"}, 2, "did you mean pedometer? known: pedometer, battery"},
    {"preset",                 {"edit", "u1", "--preset", "poscard"}, 2, "did you mean postcard?"},
    {"place for a photo",      {"edit", "u1", "--photo", "pictre=cat.jpg"}, 2, "did you mean picture?"},
    {"photo",                  {"edit", "u1", "--photo", "picture=holyday.png", "--dry-run"}, 0, "did you mean holiday.png?"},
    {"zone of a world clock",  {"edit", "c4", "--place", "east=worldclock@Asia/Seol"}, 2, "did you mean Asia/Seoul?"},
    {"city of a world clock",  {"world-clock", "update", "city", "seol"}, 2, "did you mean Asia/Seoul?"},
    {"world clock",            {"world-clock", "update", "ciyt", "Asia/Seoul"}, 2, "did you mean city? known: city"},
    {"group of a world clock", {"world-clock", "show", "c4", "zoen"}, 1, "did you mean zone?"},
    // languages and zones
    {"setting",                {"setting", "set", "langauge=de_DE"}, 2, "did you mean language? known: language, country"},
    {"beginning of a setting", {"setting", "get", "24"}, 2, "did you mean 24-hour?"},
    {"language",               {"setting", "set", "language=de_DEE"}, 2, "did you mean de_DE?"},
    {"language and country",   {"setting", "set", "language=kr_KO"}, 2, "did you mean ko_KR?"},
    {"country",                {"setting", "set", "country=GB"}, 2, "there is no country [GB]; did you mean en_GB?"},
    {"truth",                  {"setting", "set", "24-hour=ture"}, 2, "did you mean true?"},
    {"zone",                   {"setting", "set", "timezone=Europe/Berlon"}, 2, "did you mean Europe/Berlin?"},
    {"zone without its area",  {"setting", "set", "timezone=berlin"}, 2, "did you mean Europe/Berlin?"},
    {"language of labels",     {"show", "c1", "--language", "de_DEE"}, 0, "did you mean de_DE?"},
    {"language of a sheet",    {"sheet", "c1", "-o", "%/x.png", "--language", "de_D"}, 0, "did you mean de_DE?"},
    {"zone of a picture",      {"render", "c1", "-o", "%/x.png", "--timezone", "Asia/Tokio"}, 0, "did you mean Asia/Tokyo?"},
    {"skeleton",               {"date", "HH:mm"}, 2, "did you mean --pattern?"},
    {"zone in a picture",      {"render", "%/typed_result.xml", "-o", "%/x.png"}, 0, "did you mean \"Asia/Tokyo\"?"},
    {"zone in a document",     {"flatten", "%/typed_result.xml", "-o", "%/x.xml"}, 0, "did you mean \"Asia/Tokyo\"?"},
    // stored values
    {"key",                    {"key", "get", "my/onw-key"}, 10, "did you mean my/own-key? type: wfctl key list"},
    {"key to unset",           {"key", "unset", "my/onw-key"}, 10, "did you mean my/own-key?"},
    {"key that is unset",      {"key", "get", "db/system/langage"}, 10, "did you mean db/system/language?"},
    {"key to watch",           {"key", "watch", "db/system/langage", "--timeout", "0"}, 3, "did you mean db/system/language?"},
    {"key to set",             {"key", "set", "db/setup_wizrd/first_boot", "true"}, 0, "did you mean db/setup_wizard/first_boot?"},
    {"key beside a slip",      {"key", "get", "db/setup_wizrd/first_bot"}, 10, "did you mean db/setup_wizard/first_boot? type: wfctl key list"},
    {"preference of a clock",  {"pref", "set", kService, "com.corvane.watchface-mirel-c4-zone-cty", "Seoul"}, 0, "did you mean com.corvane.watchface-mirel-c4-zone-city?"},
    {"preference to set",      {"pref", "set", kService, "wfs-pref-idle-change-request-form", "x"}, 0, "did you mean wfs-pref-idle-change-request-from?"},
    {"preference",             {"pref", "get", kService, "my-perf"}, 10, "did you mean my-pref?"},
    {"preference to unset",    {"pref", "unset", kService, "my-perf"}, 10, "did you mean my-pref?"},
    {"owner of a preference",  {"pref", "get", "com.corvane.watchface-servce", "my-pref"}, 10, "did you mean com.corvane.watchface-service?"},
    {"list of preferences",    {"pref", "get", "com.corvane.watchface-servce", "my-pref"}, 10, "type: wfctl pref list com.corvane.watchface-service"},
    {"owner of what is unset", {"pref", "unset", "com.corvane.watchface-servce", "my-pref"}, 10, "did you mean com.corvane.watchface-service?"},
    {"owner of preferences",   {"pref", "list", "com.corvane.watchface-servce"}, 0, "did you mean com.corvane.watchface-service?"},
    // applications and their messages
    {"receiver",               {"send", "--as", "com.corvane.w-home", "com.corvane.watchface-servce:x", "type=x"}, 10, "did you mean com.corvane.watchface-service?"},
    {"receiver without port",  {"send", "--as", "com.corvane.w-home", "com.corvane.watchface-servce", "type=x"}, 2, "did you mean com.corvane.watchface-service?"},
    {"port",                   {"send", "--as", "com.corvane.w-home", "com.corvane.watchface-service:watchface-service::localprt", "type=x"}, 10, "did you mean watchface-service::localport?"},
    {"type of a message",      {"send", "--as", "com.corvane.w-home", kService, "type=watch-idle-chnaged"}, 0, "did you mean watch-idle-changed?"},
    {"key of a message",       {"send", "--as", "com.corvane.w-home", kService, "type=watch-req-watchlists", "pgkid=x"}, 0, "did you mean pkgid?"},
    {"face of a message",      {"send", "--as", "com.corvane.w-home", kService, "type=watch-idle-changed", "pkgid=com.corvane.watchface-mirel-c11"}, 0, "there is no watch face [com.corvane.watchface-mirel-c11]; did you mean com.corvane.watchface-mirel-c1?"},
    {"sender",                 {"send", "--as", "com.corvane.w-hom", kService, "type=watch-req-watchlists"}, 0, "did you mean com.corvane.w-home?"},
    {"sender's port",          {"send", "--as", "com.corvane.w-home:w-hoem::localport", kService, "type=watch-req-watchlists"}, 0, "did you mean w-home::localport?"},
    {"who launches",           {"launch", kService, "--as", "com.corvane.w-hom", "wfs/req/type=ttrace_disable"}, 1, "did you mean com.corvane.w-home?"},
    {"listener with a port",   {"listen", "--as", "com.corvane.w-managr-service:x", "--timeout", "0"}, 3, "did you mean com.corvane.w-manager-service?"},
    {"listener's port",        {"listen", "--as", "com.corvane.w-manager-service:w-manager-servce::localport", "--timeout", "0"}, 3, "did you mean w-manager-service::localport?"},
    {"listener",               {"listen", "--as", "com.corvane.w-hme"}, 2, "did you mean com.corvane.w-home?"},
    {"program to launch",      {"launch", "com.corvane.watchface-captrue"}, 10, "did you mean com.corvane.watchface-capture?"},
    {"key of a launch",        {"launch", kService, "wfs/req/tpye=ttrace_disable"}, 1, "did you mean wfs/req/type?"},
    {"value of a launch",      {"launch", kService, "wfs/req/type=ttrace_disabel"}, 1, "did you mean ttrace_disable?"},
    {"peer",                   {"bg", "save", "--as", "com.corvane.watchface-edtor"}, 2, "did you mean com.corvane.watchface-editor?"},
    {"peer that sets",         {"set", "c1", "--as", "com.corvane.w-hme"}, 2, "did you mean com.corvane.w-home?"},
    {"monitored application",  {"monitor", "com.corvane.w-hme", "--timeout", "0"}, 0, "did you mean com.corvane.w-home?"},
    {"face of a duration",     {"evaluate", "load", "com.corvane.watchface-mirel-c12"}, 10, "did you mean com.corvane.watchface-mirel-c1?"},
    {"face to keep it for",    {"evaluate", "save", "com.corvane.watchface-mirel-c12", "1"}, 0, "did you mean com.corvane.watchface-mirel-c1?"},
    {"who keeps a duration",   {"evaluate", "save", "c1", "1", "--as", "com.corvane.watchface-edtor"}, 0, "did you mean com.corvane.watchface-editor?"},
};

const Arguments kRight[] = {
    {"key", "watch", "db/system/language", "--timeout", "0"},
    {"key", "set", "db/system/language", "en_GB"},
    {"key", "get", "db/setup_wizard/first_boot"},
    {"key", "set", "my/own-key", "2"},
    {"pref", "set", kService, "com.corvane.watchface-mirel-c4-zone-city", "Seoul"},
    {"listen", "--as", "com.corvane.w-manager-service", "--untrusted"},
    {"listen", "--as", "com.example.listener:x", "--timeout", "0"},
    {"send", "--as", "com.corvane.w-home", kService, "type=watch-setting-created", "pkgid=com.corvane.watchface-mirel-c11"},
    {"monitor", kService, "--timeout", "0"},
    {"evaluate", "save", "c1", "1"},
    {"show", "c1", "--language", "pt-BR"},
    {"launch", kService, "wfs/req/type=ttrace_disable"},
    {"send", "--as", "com.corvane.w-home", kService, "type=watch-req-watchlists"},
};
// clang-format on

std::string InFolder(std::string text, const std::string& folder)
{
    const auto at = text.find("%/");
    return at == std::string::npos ? text : text.replace(at, 1, folder);
}

class ATypist : public AWatch {
protected:
    ATypist()
    {
        fs::copy_file(StagedResultXml(kClassic), mFolder + "/my-face_result.xml");
        fs::copy_file(ReadOnlyFace(kClassic) + kClassic + ".png", mFolder + "/holiday.png");
        fs::create_directory(mFolder + "/my-watch");
        std::string clocks = ContentsOf(StagedResultXml(kMeridian));
        Holding("typed_result.xml", clocks.replace(clocks.find("Asia/Tokyo"), 10, "Asia/Tokio"));
        Run({"bg", "add", mFolder + "/holiday.png"});
        Run({"key", "set", "my/own-key", "1"});
        Run({"pref", "set", kService, "my-pref", "1"});
        Run({"set", "c4"});
        Run({"world-clock", "prepare"});
    }

    Result Type(const Slip& slip) const
    {
        Arguments command = {"sh", "-c", R"(cd "$0" && exec "$@")", mFolder, WFCTL};
        for (const std::string& word : slip.typed) command.push_back(InFolder(word, mFolder));
        return RunProgram(command, mEnvironment);
    }
};

}  // namespace

TEST_F(ATypist, is_told_what_may_be_meant)
{
    for (const Slip& slip : kSlips) {
        const Result typed = Type(slip);
        EXPECT_EQ(typed.status, slip.status) << slip.of << ": " << typed.err;
        EXPECT_THAT(typed.err, HasSubstr(InFolder(slip.hint, mFolder))) << slip.of;
    }
}

TEST_F(ATypist, is_told_nothing_about_words_that_are_right)
{
    for (const Arguments& typed : kRight)
        EXPECT_THAT(Run(typed).err, Not(HasSubstr("did you mean"))) << typed[0] << " " << typed[1];
}

namespace {

struct DocumentSlip {
    const char* of;
    const char *right, *typed;  // the first place in the face's document
    const char* nearest;
    const char* severity = "error";
    const char* face = kClassic;
};

// clang-format off
const DocumentSlip kDocumentSlips[] = {
    {"element",                  "<numerals ", "<numerls ", "numerals"},
    {"attribute",                "labels=\"12", "lables=\"12", "labels"},
    {"kind of a hand",           "kind=\"hour\"", "kind=\"huor\"", "hour"},
    {"role of a slot",           "role=\"gauge\"", "role=\"guage\"", "gauge"},
    {"shape",                    "shape=\"round\"", "shape=\"rond\"", "round"},
    {"palette role",             "color=\"mark-soft\"", "color=\"mark-sotf\"", "mark-soft"},
    {"group of a condition",     "when=\"track=on\"", "when=\"trakc=on\"", "track"},
    {"option of a condition",    "when=\"dial=roman\"", "when=\"dial=romn\"", "roman"},
    {"text",                     "text-key=\"inscription\"", "text-key=\"inscripton\"", "inscription"},
    {"label",                    "label-key=\"slot.left\"", "label-key=\"slot.lfet\"", "slot.left"},
    {"source that is offered",   "offer source=\"heartrate\"", "offer source=\"heartrat\"", "heartrate"},
    {"source that is a fallback", "fallback source=\"battery\"", "fallback source=\"batery\"", "battery"},
    {"language of the defaults", "default-language=\"en\"", "default-language=\"eng\"", "en"},
    {"font",                     "font=\"serif\"", "font=\"seriff\"", "serif"},
    {"turn of numerals",         "turn=\"radial\"", "turn=\"radail\"", "radial"},
    {"language of texts",        "strings language=\"ja\"", "strings language=\"jp\"", "ja", "warning"},
    {"country of a language",    "strings language=\"de\"", "strings language=\"de-DX\"", "de-DE", "warning"},
    {"zone of a world clock",    "timezone-path=\"America/New_York\"", "timezone-path=\"America/NewYork\"", "America/New_York", "warning", kMeridian},
    {"path of a zone",           "timezone-path=\"Asia/Tokyo\"", "timezone-path=\"/usr/share/zoneinfo/Asia/Tokio\"", "/usr/share/zoneinfo/Asia/Tokyo", "warning", kMeridian},
    {"name of a zone",           "timezone-path=\"Asia/Tokyo\"", "timezone=\"Asia/Tokio\" timezone-path=\"Asia/Tokyo\"", "Asia/Tokyo", "warning", kMeridian},
    {"zone of a layer",          "<layer clock=\"city\"", "<layer timezone=\"Europe/Berlni\"", "Europe/Berlin", "warning", kMeridian},
    {"country of a world clock", "country=\"Japan\"", "country=\"Jpaan\"", "Japan", "warning", kMeridian},
};
// clang-format on

}  // namespace

TEST_F(AFolder, has_documents_whose_slips_are_named)
{
    for (const DocumentSlip& slip : kDocumentSlips) {
        std::string text = ContentsOf(StagedResultXml(slip.face));
        const auto at = text.find(slip.right);
        ASSERT_NE(at, std::string::npos) << slip.of;
        const std::string file =
            Holding("typed_result.xml", text.replace(at, std::string(slip.right).size(), slip.typed));
        const Json findings = Wfctl({"validate", file, "--json"}).AsJson()[0]["findings"];
        const bool isNamed = std::any_of(findings.begin(), findings.end(), [&](const Json& finding) {
            EXPECT_EQ(finding["file"], file);
            return finding["severity"] == slip.severity && finding["nearest"] == slip.nearest;
        });
        EXPECT_TRUE(isNamed) << slip.of << findings;
    }
}
