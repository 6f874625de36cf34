// Writes the golden output of every sample message in a folder beside it:
// NAME.xml read through its registry and written back gives NAME.out.xml.
// Run through scripts/regen-golden, only when an output change is intended.
#include "HNRFunctionality/model/MessageRecords.h"

#include "HNKErrorMessage.h"

#include <algorithm>
#include <dirent.h>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

bool endsWith(const std::string& s, const std::string& tail)
{
    return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: hnr_golden_generate DATA_DIR\n";
        return 2;
    }
    const std::string dir = argv[1];
    DIR* d = opendir(dir.c_str());
    if (!d) {
        std::cerr << "hnr_golden_generate: cannot open '" << dir << "'\n";
        return 2;
    }
    std::vector<std::string> samples;
    while (dirent* e = readdir(d)) {
        std::string name = e->d_name;
        if (endsWith(name, ".xml") && !endsWith(name, ".out.xml"))
            samples.push_back(name);
    }
    closedir(d);
    std::sort(samples.begin(), samples.end());
    int status = 0;
    for (const std::string& name : samples) {
        std::ifstream in(dir + "/" + name, std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        std::string output;
        if (!hnr_test::goldenOutput(text.str(), output)) {
            std::cerr << name << ": does not read and write back: " << getErrorMessage() << "\n";
            status = 1;
            continue;
        }
        std::string target = dir + "/" + name.substr(0, name.size() - 4) + ".out.xml";
        std::ofstream out(target, std::ios::binary | std::ios::trunc);
        out << output;
        if (!out.flush()) {
            std::cerr << target << ": cannot write\n";
            status = 1;
            continue;
        }
        std::cout << target << "\n";
    }
    return status;
}
