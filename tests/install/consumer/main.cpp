// Reads a VM configuration message through the installed headers and library.
#include "HNKDerivedParserFactory.h"
#include "HNKEnvConfig.h"
#include "HNKMessageIterator.h"
#include "model/HNREnvConfig.h"
#include "share/HNRShare.h"

#include <cstdio>

int main()
{
    const char* text =
        "<config xmlns:t=\"http://www.tessaline.org/webservices/hnr/4.0.0/hnrtypes\""
        " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xsi:type=\"t:venv_configType\">"
        "<cpu_count>4</cpu_count></config>";
    HNKMessageIterator it;
    if (it.fromXML(text) != 0)
        return 1;
    HNR::HNREnvConfig config(&it);
    int cpus = 0;
    if (config.getCPUCount(cpus) != 0 || cpus != 4)
        return 2;
    if (HNR::HNRShareConnection::canonizePath("\\\\srv\\share\\dir\\") != "//srv/share/dir")
        return 3;
    std::printf("cpu_count=%d\n", cpus);
    return 0;
}
