// flatten-face IN OUT: makes the flat document OUT from the result XML IN while the project is built.
//
// Findings go to stderr as "file:line:col: code: message". Exit status: 0 done, 1 refused or not written, 2
// usage.

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "face-document.h"

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: flatten-face RESULT_XML WATCHFACE_XML\n";
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (!in) {
        std::cerr << argv[1] << ": cannot be read\n";
        return 1;
    }
    const DataUtil::ParseResult parsed = DataUtil::ParseFace(text);
    for (const DataUtil::Finding& finding : parsed.findings) {
        std::cerr << argv[1] << ":" << DataUtil::FormatFinding(finding) << "\n";
    }
    if (!parsed.document) return 1;
    std::ofstream out(argv[2], std::ios::binary | std::ios::trunc);
    out << DataUtil::Flatten(*parsed.document) << std::flush;
    if (!out) {
        std::cerr << argv[2] << ": cannot be written\n";
        return 1;
    }
    return 0;
}
