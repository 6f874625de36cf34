// The other direction: every message the schema accepts reads through the
// registries without error and writes back to an equal record. Messages come
// from a generator driven by the XSD files; HNR_SCHEMA_SEED and
// HNR_SCHEMA_INSTANCES choose another seed or more instances; HNR_SCHEMA_PRINT
// prints each instance.
#include "HNRFunctionality/model/MessageRecords.h"
#include "schema/SchemaInstanceGenerator.h"
#include "schema/SchemaTestSupport.h"

#include "HNKErrorMessage.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>
#include <random>
#include <string>

using namespace HNR;

namespace {

const std::string kSchema = std::string(HNR_SOURCE_DIR) + "/schema/";
const char* const kFiles[] = {"hnrtypes.xsd", "hnrrelocator.xsd", "hnrbackupm.xsd", "hnktypes.xsd",
                              "hnkdevices.xsd", "hnkrelocator.xsd", "hnkbackupm.xsd"};
const char* const kModuleNamespaces[] = {"http://www.tessaline.org/webservices/hnr/4.0.0/hnrtypes",
                                         "http://www.tessaline.org/webservices/hnr/4.0.0/hnrrelocator",
                                         "http://www.tessaline.org/webservices/hnr/4.0.0/hnrbackupm"};

hnr_test::SchemaInstanceGenerator& generator()
{
    static std::unique_ptr<hnr_test::SchemaInstanceGenerator> g;
    if (!g) {
        std::vector<std::string> files;
        for (const char* f : kFiles)
            files.push_back(kSchema + f);
        g.reset(new hnr_test::SchemaInstanceGenerator(files));
    }
    return *g;
}

// The message types: the module's global types but the helper ones.
std::vector<hnr_test::SchemaInstanceGenerator::QName> messageTypes()
{
    std::vector<hnr_test::SchemaInstanceGenerator::QName> out;
    for (const char* ns : kModuleNamespaces) {
        for (const auto& t : generator().typesOf(ns)) {
            bool helper = t.name == "flagType" || t.name.find("listType") != std::string::npos;
            if (!helper)
                out.push_back(t);
        }
    }
    return out;
}

unsigned envNumber(const char* name, unsigned fallback)
{
    const char* v = std::getenv(name);
    return v && *v ? static_cast<unsigned>(std::strtoul(v, nullptr, 10)) : fallback;
}

// The devices of every configuration a record holds read without error.
void expectDevicesRead(const hnr_test::AnyRecord& record)
{
    auto devicesOf = [](const boost::shared_ptr<HNKEnvConfig>& c) {
        auto* config = dynamic_cast<const HNREnvConfig*>(c.get());
        if (!config)
            return;
        HNKOptionalProperty<HNRVMDeviceList> devices;
        EXPECT_EQ(0, config->getDevices(devices)) << getErrorMessage();
        HNKOptionalProperty<std::set<std::string>> services;
        EXPECT_EQ(0, config->getOfflineServices(services));
    };
    if (record.registry == "HNKEnvConfig")
        devicesOf(boost::static_pointer_cast<HNKEnvConfig>(record.object));
    if (record.registry == "HNKEnv")
        devicesOf(boost::static_pointer_cast<HNKEnv>(record.object)->getConfig());
    if (record.registry == "HNKMigratorCloneOptions") {
        auto options = boost::static_pointer_cast<HNKMigratorCloneOptions>(record.object);
        if (auto* clone = dynamic_cast<const HNRMigratorCloneOptions*>(options.get()))
            devicesOf(clone->getConfiguration());
    }
}

TEST(SchemaGeneratedAgreementTest, EveryMessageTheSchemaAcceptsReadsAndWritesBackEqual)
{
    const unsigned seed = envNumber("HNR_SCHEMA_SEED", 13);
    const unsigned count = envNumber("HNR_SCHEMA_INSTANCES", 300);
    std::vector<hnr_test::SchemaInstanceGenerator::QName> types = messageTypes();
    ASSERT_EQ(31u, types.size());
    std::mt19937 rng(seed);
    std::map<std::string, int> perType;
    for (unsigned i = 0; i < count; ++i) {
        const auto& type = types[i % types.size()];
        std::string text = generator().generate(type, "message", rng);
        SCOPED_TRACE("seed " + std::to_string(seed) + ", instance " + std::to_string(i) + ", " + type.name + ":\n" +
                     text);
        if (std::getenv("HNR_SCHEMA_PRINT"))
            std::cout << text << "\n";
        // The generator's own check: what it makes is valid.
        ASSERT_EQ("", schemaProblems(text));
        HNKMessageIterator in;
        ASSERT_EQ(0, in.fromXML(text)) << getErrorMessage();
        hnr_test::AnyRecord first;
        ASSERT_EQ(0, hnr_test::readAnyRecord(in, first)) << getErrorMessage();
        expectDevicesRead(first);

        HNKMessageIterator out("message");
        ASSERT_EQ(0, first.write(out));
        std::string written = out.toXML();
        EXPECT_EQ("", schemaProblems(written)) << written;
        HNKMessageIterator again;
        ASSERT_EQ(0, again.fromXML(written)) << getErrorMessage();
        hnr_test::AnyRecord second;
        ASSERT_EQ(0, hnr_test::readAnyRecord(again, second)) << written;
        EXPECT_EQ(*first.type, *second.type);
        EXPECT_EQ(0, first.compare(second)) << written;
        ++perType[type.name];
    }
    EXPECT_EQ(std::min<size_t>(count, types.size()), perType.size());
}

// The generator sees every construct of the schema: each message type, each
// device class in a device list, optional elements left out, lists repeated,
// the configuration's settings in another order than the written one.
TEST(SchemaGeneratedAgreementTest, TheGeneratorCoversEveryTypeAndDeviceClass)
{
    std::mt19937 rng(7);
    std::set<std::string> stamped;
    bool repeated = false, leftOut = false, reordered = false;
    std::vector<hnr_test::SchemaInstanceGenerator::QName> types = messageTypes();
    for (int round = 0; round < 40; ++round) {
        for (const auto& type : types) {
            std::string text = generator().generate(type, "message", rng);
            size_t ip = text.find("<ip_address>");
            repeated = repeated || (ip != std::string::npos && text.find("<ip_address>", ip + 1) != std::string::npos);
            if (type.name == "venv_configType") {
                leftOut = leftOut || text.find("<memory_size>") == std::string::npos;
                size_t memory = text.find("<memory_size>"), cpus = text.find("<cpu_count>");
                reordered = reordered || (memory != std::string::npos && cpus != std::string::npos && cpus < memory);
            }
            for (size_t at = text.find("xsi:type=\""); at != std::string::npos; at = text.find("xsi:type=\"", at + 1)) {
                size_t colon = text.find(':', at + 10);
                stamped.insert(text.substr(colon + 1, text.find('"', colon) - colon - 1));
            }
        }
    }
    for (const auto& type : types)
        EXPECT_TRUE(stamped.count(type.name)) << type.name;
    for (const char* base : {"env_config_baseType", "venv_config_baseType"})
        EXPECT_TRUE(stamped.count(base)) << base;
    EXPECT_TRUE(repeated);
    EXPECT_TRUE(leftOut);
    EXPECT_TRUE(reordered);
}

} // namespace
