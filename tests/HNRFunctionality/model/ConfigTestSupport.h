#pragma once
// Test support for VM configurations: the sample messages of tests/data, a
// configuration read through the framework's registry, and the text written
// from one.
#include "model/HNREnvConfig.h"

#include "HNKSerialization.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace HNRTest {

// The bytes of tests/data/<name>; a missing file fails the test.
inline std::string dataFile(const std::string& name)
{
    std::ifstream in(std::string(HNR_TEST_DATA_DIR) + "/" + name, std::ios::binary);
    EXPECT_TRUE(in.good()) << name;
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// The configuration with every setting and all ten device classes.
inline std::string fullSample() { return dataFile("vmconfig_full.xml"); }

// The configuration at the cursor, read through the registry; null on failure.
inline boost::shared_ptr<HNR::HNREnvConfig> readConfig(const HNKMessageIterator& it)
{
    boost::shared_ptr<HNKEnvConfig> base;
    if (HNKReaderDerived<HNKEnvConfig>(false)(it, base) != 0)
        return boost::shared_ptr<HNR::HNREnvConfig>();
    return boost::dynamic_pointer_cast<HNR::HNREnvConfig>(base);
}

// The text of a copy of `c` written through the registry under <configuration>.
inline std::string written(const HNR::HNREnvConfig& c)
{
    HNKMessageIterator out("configuration");
    boost::shared_ptr<HNKEnvConfig> p(new HNR::HNREnvConfig(c));
    if (out.putObject(p, HNKWriterDerived<HNKEnvConfig>()) != 0)
        return "write failed";
    return out.toXML();
}

} // namespace HNRTest
