#include <expat.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <pugixml.hpp>
#include <sstream>
#include <stdexcept>

#include "data-util.h"
#include "groups.h"

namespace Bench {

namespace {

constexpr int kUpdates = 300;
constexpr std::size_t kUpdateBytes = 20'000;

std::string Padded(std::string text)
{
    if (text.size() + 9 < kUpdateBytes)
        text += "<!--" + std::string(kUpdateBytes - text.size() - 8, ' ') + "-->\n";
    return text;
}

// What the disk asks for two files that replace others and are there after a power cut.
void ReplaceTwoFiles(const std::string& folder, const std::string& first, const std::string& second)
{
    const int parent = open(folder.c_str(), O_RDONLY | O_DIRECTORY);
    for (const std::string* text : {&first, &second}) {
        const int file = openat(parent, "new", O_CREAT | O_TRUNC | O_WRONLY, 0644);
        if (write(file, text->data(), text->size()) < 0) throw std::runtime_error("no disk");
        fsync(file);
        close(file);
        renameat(parent, "new", parent, text == &first ? "first" : "second");
        fsync(parent);
    }
    close(parent);
}

// What any conversion that refuses what is not well-formed does: expat reads the text, pugixml makes a tree
// of it and writes the tree.
void ReadAndWriteXml(const std::string& text)
{
    XML_Parser parser = XML_ParserCreate("UTF-8");
    const auto status = XML_Parse(parser, text.data(), static_cast<int>(text.size()), XML_TRUE);
    XML_ParserFree(parser);
    pugi::xml_document tree;
    std::ostringstream out;
    if (status != XML_STATUS_OK || !tree.load_buffer(text.data(), text.size()))
        throw std::runtime_error("no XML");
    tree.save(out);
}

}  // namespace

Figures Updates(Watch& watch, const Choices&)
{
    watch.Service();
    const std::string resultXml = Padded(ReadFile(watch.ShippedFile("_result.xml")));
    const Values update{
        {"data/xml_data", resultXml              },
        {"data/label",    "Mirel"                },
        {"pkgid",         kFace                  },
        {"type",          "watch-setting-updated"},
    };
    const std::string toService = Watch::ToService(update), toEcho = Watch::ToEcho(update);
    Figure whole{"update of a 20 KB face, to the reply",
                 "us",
                 {},
                 {},
                 "bytes through the bus, XML read and written, two files replaced",
                 AtMostTimes(1.5)};
    Figure conversion{"  of it the conversion", "us", {}, {}, "expat reads, pugixml reads and writes", {}};
    std::string flat;
    for (int i = 0; i < kUpdates; ++i) {
        const int captures = watch.Captures();
        whole.ours.push_back(watch.RoundTrip(toService));
        watch.AwaitCaptures(captures + 1);
        conversion.ours.push_back(TimeOf([&] {
            char* text = data_util_resultxml_memory_converter(resultXml.c_str());
            flat = text ? text : "";
            free(text);
        }));
        conversion.floor.push_back(TimeOf([&] { ReadAndWriteXml(resultXml); }));
        const double disk = TimeOf([&] { ReplaceTwoFiles(watch.Root(), resultXml, flat); });
        whole.floor.push_back(watch.RoundTrip(toEcho) + conversion.floor.back() + disk);
    }
    return {whole, conversion};
}

}  // namespace Bench
