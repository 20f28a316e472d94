// libFuzzer harness: any bytes as a classification dictionary file, read as
// the dictionary page reads it, then every record's fields and the class
// expression the zone run would build from it. A crash, a sanitizer report or
// an exception of any kind is a finding: the reader reports nothing by throwing.

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <ostream>
#include <string>

#include "classification/ZoneClassification.h"
#include "classification/clsXMLPrjFile.h"
#include "platform/ui/ConsoleServices.h"

namespace {
std::string g_path;
}

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Reports of refused input go nowhere.
    static std::ostream nowhere(nullptr);
    static halvane::ui::ConsoleServices quiet(nowhere);
    static halvane::ui::ServicesScope scope(quiet);
    char folder[] = "/tmp/halvane-fuzz-XXXXXX";
    if (!mkdtemp(folder)) std::abort();
    g_path = std::string(folder) + "/dictionary.xml";
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    {
        std::ofstream out(g_path, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
    halvane::classification::clsXMLPrjFile dictionary;
    dictionary.XML(g_path);
    std::size_t length = dictionary.PrjName.size() + dictionary.PRJDescription.size();
    for (const auto& record : dictionary.Classifications->NewEnum()) {
        length += record->Zone.size() + halvane::classification::ClassExpression(*record).size();
    }
    return length == static_cast<std::size_t>(-1);
}
