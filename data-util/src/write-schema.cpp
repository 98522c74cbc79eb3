// write-schema face-result|watchface OUT: writes the RELAX NG schema of a document while the project is
// built.
//
// Exit status: 0 done, 1 not written, 2 usage.

#include <fstream>
#include <iostream>
#include <string_view>

#include "face-schema.h"
#include "flat-schema.h"
#include "relax-ng.h"

int main(int argc, char** argv)
{
    for (const DataUtil::Schema* schema : {&DataUtil::FaceSchema(), &DataUtil::FlatSchema()}) {
        if (argc != 3 || std::string_view(argv[1]) != schema->Root().name) continue;
        std::ofstream out(argv[2], std::ios::binary | std::ios::trunc);
        out << DataUtil::RelaxNg(*schema) << std::flush;
        if (out) return 0;
        std::cerr << argv[2] << ": cannot be written\n";
        return 1;
    }
    std::cerr << "usage: write-schema face-result|watchface OUT\n";
    return 2;
}
