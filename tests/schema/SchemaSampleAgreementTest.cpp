// Every sample message and every golden text validates against the schema,
// except the two samples that are wrong on purpose, which fail where they
// are wrong. The validator also refuses what the module's reader refuses.
#include "schema/SchemaTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <dirent.h>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string readData(const std::string& name)
{
    std::ifstream in(std::string(HNR_TEST_DATA_DIR) + "/" + name, std::ios::binary);
    EXPECT_TRUE(in.good()) << name;
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

std::vector<std::string> dataFiles()
{
    std::vector<std::string> names;
    DIR* d = opendir(HNR_TEST_DATA_DIR);
    if (!d)
        return names;
    while (dirent* e = readdir(d)) {
        std::string name = e->d_name;
        if (name.size() > 4 && name.compare(name.size() - 4, 4, ".xml") == 0)
            names.push_back(name);
    }
    closedir(d);
    std::sort(names.begin(), names.end());
    return names;
}

// Samples that are wrong on purpose (and their written forms).
const std::set<std::string> kInvalidOnPurpose = {
    "vmconfig_device_without_emulation_type.xml", "vmconfig_device_without_emulation_type.out.xml",
    "vmconfig_unknown_device.xml", "vmconfig_unknown_device.out.xml"};

TEST(SchemaSampleAgreementTest, EverySampleAndGoldenTextValidates)
{
    std::vector<std::string> files = dataFiles();
    EXPECT_EQ(44u, files.size());
    for (const std::string& name : files) {
        if (kInvalidOnPurpose.count(name))
            continue;
        EXPECT_EQ("", schemaProblems(readData(name))) << name;
    }
}

TEST(SchemaSampleAgreementTest, ADeviceWithoutEmulationTypeIsInvalidWhereItIs)
{
    EXPECT_EQ("10:56: Element 'friendly_name': This element is not expected. Expected is one of ( connected, "
              "enabled, emulation_type ).\n",
              schemaProblems(readData("vmconfig_device_without_emulation_type.xml")));
    EXPECT_NE("", schemaProblems(readData("vmconfig_device_without_emulation_type.out.xml")));
}

TEST(SchemaSampleAgreementTest, AnUnknownDeviceTypeInAClientNamespaceIsInvalid)
{
    // Its elements are in the client's default namespace, and the second
    // device's type is no type of the schema.
    EXPECT_NE("", schemaProblems(readData("vmconfig_unknown_device.xml")));
    std::string text = readData("vmconfig_unknown_device.out.xml");
    std::string problems = schemaProblems(text);
    EXPECT_NE("", problems) << text;
}

TEST(SchemaSampleAgreementTest, WhatTheReaderRefusesIsInvalid)
{
    const std::string head = "<m xmlns:t=\"http://www.tessaline.org/webservices/hnr/4.0.0/hnrtypes\" "
                             "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" ";
    // No xsi:type on the root: no factory could read it.
    EXPECT_EQ("1:1: Element 'm': the root element has no xsi:type, so no factory can read it\n",
              schemaProblems("<m><network_service_state>1</network_service_state></m>"));
    // A type no factory knows.
    EXPECT_NE("", schemaProblems(head + "xsi:type=\"t:no_such_type\"/>"));
    // A DOCTYPE, never expanded.
    EXPECT_EQ("1:1: DOCTYPE declarations are not accepted in a message\n",
              schemaProblems("<!DOCTYPE m [<!ENTITY e \"x\">]><m/>"));
    // Malformed XML: the parser's position.
    EXPECT_NE("", schemaProblems(head + "xsi:type=\"t:network_service_info\"><network_service_state>1</m>"));
    // A root name that is no XML name: the parser's report, not a schema failure.
    EXPECT_EQ("1:1: Element '1a': the root element has no xsi:type, so no factory can read it\n"
              "1:2: StartTag: invalid element name\n1:2: Extra content at the end of the document\n",
              schemaProblems("<1a/>"));
    EXPECT_NE("", schemaProblems("<a&b/>"));
    // Text that is not UTF-8: one violation on one line.
    EXPECT_EQ("1:181: Input is not proper UTF-8, indicate encoding ! Bytes: 0xFF 0x3C 0x2F 0x6E\n",
              schemaProblems(head + "xsi:type=\"t:network_service_info\"><network_service_state>\xff"
                                    "</network_service_state></m>"));
    // Numbers as the cursor reads them: a sign and leading zeros are fine,
    // out of range or with blanks inside is not. (Blanks around a number are
    // allowed by both, but libxml2 refuses them for xs:int: stricter.)
    const std::string service = head + "xsi:type=\"t:network_service_info\"><network_service_state>";
    EXPECT_EQ("", schemaProblems(service + "+7</network_service_state></m>"));
    EXPECT_EQ("", schemaProblems(service + "-007</network_service_state></m>"));
    EXPECT_EQ("", schemaProblems(service + "-2147483648</network_service_state></m>"));
    EXPECT_NE("", schemaProblems(service + "2147483648</network_service_state></m>"));
    EXPECT_NE("", schemaProblems(service + "1 2</network_service_state></m>"));
    EXPECT_NE("", schemaProblems(service + "</network_service_state></m>"));
    // Booleans: 0, 1, true, false only.
    const std::string nic = head + "xsi:type=\"t:real_net_nic\"><net_device_name>n</net_device_name>"
                                   "<mac_address>m</mac_address><nic_enabled>";
    EXPECT_EQ("", schemaProblems(nic + " true </nic_enabled></m>"));
    EXPECT_NE("", schemaProblems(nic + "yes</nic_enabled></m>"));
    // Base64 as the device reader decodes it: no blanks inside, exact padding.
    const std::string device = head + "xsi:type=\"t:vm_device\"><emulation_type>0</emulation_type><user_name>";
    EXPECT_EQ("", schemaProblems(device + "dXNlcjA=</user_name></m>"));
    EXPECT_NE("", schemaProblems(device + "dXNl cjA=</user_name></m>"));
    EXPECT_NE("", schemaProblems(device + "dXNlcjB=</user_name></m>"));
    EXPECT_NE("", schemaProblems(device + "dXNlcjA</user_name></m>"));
    // A GUID as the reader takes it: exactly 36 characters.
    const std::string env = head + "xsi:type=\"t:env\"><eid>";
    EXPECT_EQ("", schemaProblems(env + "3f2504e0-4f89-11d3-9a0c-0305e82c3301</eid></m>"));
    EXPECT_NE("", schemaProblems(env + " 3f2504e0-4f89-11d3-9a0c-0305e82c3301</eid></m>"));
}

// A device list accepts every device class through xsi:type, and only those.
TEST(SchemaSampleAgreementTest, ADeviceListAcceptsEveryDeviceClass)
{
    const std::string head = "<c xmlns:t=\"http://www.tessaline.org/webservices/hnr/4.0.0/hnrtypes\" "
                             "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
                             "xsi:type=\"t:venv_configType\"><device_list>";
    for (const char* type : {"vm_device", "vm_floppy_disk_device", "vm_optical_disk_device", "vm_hard_disk_device",
                             "vm_scsi_device", "vm_pci_device", "vm_serial_port_device", "vm_parallel_port_device",
                             "vm_network_device", "vm_sound_device", "vm_usb_device"}) {
        EXPECT_EQ("", schemaProblems(head + "<device xsi:type=\"t:" + type +
                                     "\"><emulation_type>1</emulation_type></device></device_list></c>"))
            << type;
    }
    EXPECT_NE("", schemaProblems(head + "<device xsi:type=\"t:common_device\"><emulation_type>1</emulation_type>"
                                        "</device></device_list></c>"));
}

} // namespace
