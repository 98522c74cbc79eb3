// document-seeds RESULT_FOLDER FLAT_FOLDER: writes what the fuzzing of documents starts from: the result XMLs
// of the watch and of the docs, the same with planted faults, and their flat documents.

#include <fstream>
#include <iterator>
#include <string>

#include "face-document.h"
#include "faces.h"
#include "planted-faults.h"

namespace {

std::string Read(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void Write(const std::string& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary) << text;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) return 2;
    const std::string results = argv[1] + std::string("/seed-");
    const std::string flats = argv[2] + std::string("/seed-");
    int number = 0;
    for (const std::string& path : AllResultXmls()) {
        const std::string text = Read(path);
        const DataUtil::ParseResult parsed = DataUtil::ParseFace(text);
        if (!parsed.document) return 1;
        Write(results + std::to_string(++number), text);
        Write(flats + std::to_string(number), DataUtil::Flatten(*parsed.document));
    }
    const std::string everything = Read(DOCUMENTS "/everything_result.xml");
    for (const PlantedFault& fault : PlantedFaults())
        Write(results + std::to_string(++number), Plant(everything, fault));
    return 0;
}
