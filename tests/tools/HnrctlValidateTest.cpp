// hnrctl message validate through the built binary: exact output, exit
// statuses, --json, standard input, and where the schema folder is found.
#include "tools/HnrctlTestSupport.h"

#include <gtest/gtest.h>

#include <boost/filesystem.hpp>

#include <nlohmann/json.hpp>

#include <fstream>
#include <string>

using namespace HNRTest;

namespace {

const std::string kData = std::string(HNR_TEST_DATA_DIR) + "/";
const std::string kSchema = std::string(HNR_SOURCE_DIR) + "/schema";
const std::string kNoEmulationType = kData + "vmconfig_device_without_emulation_type.xml";
const std::string kNoEmulationTypeViolation =
    kNoEmulationType +
    ":10:56: Element 'friendly_name': This element is not expected. Expected is one of ( connected, enabled, "
    "emulation_type ).\n";

// A scratch folder removed at the end of the test.
struct Scratch {
    boost::filesystem::path dir =
        boost::filesystem::temp_directory_path() / boost::filesystem::unique_path("hnrctl-validate-%%%%%%%%");
    Scratch() { boost::filesystem::create_directories(dir); }
    ~Scratch() { boost::filesystem::remove_all(dir); }
    std::string write(const std::string& name, const std::string& text) const
    {
        std::string path = (dir / name).string();
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }
};

TEST(HnrctlValidateTest, ValidMessagesExitZero)
{
    HnrctlRun run = runBinary({"message", "validate", kData + "common_device.xml", kData + "vmconfig_full.xml"});
    EXPECT_EQ(0, run.status);
    EXPECT_EQ(kData + "common_device.xml: valid\n" + kData + "vmconfig_full.xml: valid\n", run.out);
    EXPECT_EQ("", run.err);
}

TEST(HnrctlValidateTest, EachViolationWithFileLineAndColumnAndExitOne)
{
    HnrctlRun run = runBinary({"message", "validate", kNoEmulationType, kData + "real_net_nic.xml"});
    EXPECT_EQ(1, run.status);
    EXPECT_EQ(kNoEmulationTypeViolation + kNoEmulationType + ": invalid\n" + kData + "real_net_nic.xml: valid\n",
              run.out);
    EXPECT_EQ("", run.err);

    Scratch scratch;
    std::string file = scratch.write(
        "bad.xml", "<s xmlns:t=\"http://www.tessaline.org/webservices/hnr/4.0.0/hnrtypes\"\n"
                   "   xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" xsi:type=\"t:network_service_info\">\n"
                   "  <network_service_state>two</network_service_state>\n"
                   "  <extra/>\n"
                   "</s>\n");
    run = runBinary({"message", "validate", file});
    EXPECT_EQ(1, run.status);
    EXPECT_EQ(file + ":3:53: Element 'network_service_state': 'two' is not a valid value of the atomic type "
                     "'xs:int'.\n" +
                  file + ":4:9: Element 'extra': This element is not expected.\n" + file + ": invalid\n",
              run.out);

    // Not even XML: the parser's position.
    file = scratch.write("broken.xml", "<a>\n  <b></a>\n");
    run = runBinary({"message", "validate", file});
    EXPECT_EQ(1, run.status);
    EXPECT_EQ(file + ":1:1: Element 'a': the root element has no xsi:type, so no factory can read it\n" + file +
                  ":2:10: Opening and ending tag mismatch: b line 2 and a\n" + file +
                  ":3:1: Premature end of data in tag a line 1\n" + file + ": invalid\n",
              run.out);
}

TEST(HnrctlValidateTest, UnreadableFileExitsTwoAndTheOthersAreStillChecked)
{
    HnrctlRun run = runBinary({"message", "validate", kData + "no_such_file.xml", kNoEmulationType});
    EXPECT_EQ(2, run.status);
    EXPECT_EQ("hnrctl: message validate: cannot read '" + kData + "no_such_file.xml'\n", run.err);
    EXPECT_EQ(kNoEmulationTypeViolation + kNoEmulationType + ": invalid\n", run.out);
}

TEST(HnrctlValidateTest, JsonListsEachFileWithStatusAndViolations)
{
    HnrctlRun run =
        runBinary({"message", "validate", "--json", kNoEmulationType, kData + "vt_infoType.xml", kData + "nope.xml"});
    EXPECT_EQ(2, run.status);
    nlohmann::json expected = {
        {"valid", false},
        {"files",
         {{{"file", kNoEmulationType},
           {"status", "invalid"},
           {"violations",
            {{{"line", 10},
              {"column", 56},
              {"message", "Element 'friendly_name': This element is not expected. Expected is one of ( connected, "
                          "enabled, emulation_type )."}}}}},
          {{"file", kData + "vt_infoType.xml"}, {"status", "valid"}, {"violations", nlohmann::json::array()}},
          {{"file", kData + "nope.xml"}, {"status", "unreadable"}}}}};
    EXPECT_EQ(expected.dump(2) + "\n", run.out);

    run = runBinary({"message", "validate", "--json", kData + "vt_infoType.xml"});
    EXPECT_EQ(0, run.status);
    EXPECT_TRUE(nlohmann::json::parse(run.out)["valid"].get<bool>());
}

TEST(HnrctlValidateTest, DashValidatesStandardInputAndNamesIt)
{
    HnrctlRun run = runBinary({"message", "validate", "-"}, {}, kData + "guest_os_memory.xml");
    EXPECT_EQ(0, run.status);
    EXPECT_EQ("standard input: valid\n", run.out);
    run = runBinary({"message", "validate", "-"}, {}, kNoEmulationType);
    EXPECT_EQ(1, run.status);
    EXPECT_EQ("standard input:10:56: Element 'friendly_name': This element is not expected. Expected is one of ( "
              "connected, enabled, emulation_type ).\nstandard input: invalid\n",
              run.out);
}

TEST(HnrctlValidateTest, BadUsageExitsTwo)
{
    HnrctlRun run = runBinary({"message", "validate"});
    EXPECT_EQ(2, run.status);
    EXPECT_EQ("hnrctl: message validate: missing operand (expected FILE...)\n"
              "Try 'hnrctl help message validate'.\n",
              run.err);
    run = runBinary({"message", "validate", "--xml", kNoEmulationType});
    EXPECT_EQ(2, run.status);
    EXPECT_EQ("", run.out);
}

TEST(HnrctlValidateTest, SchemaFolderFromTheEnvironmentOrBesideTheExecutable)
{
    Scratch scratch;
    HnrctlRun run = runBinary({"message", "validate", kNoEmulationType}, {{"HNR_SCHEMA_DIR", scratch.dir.string()}});
    EXPECT_EQ(2, run.status);
    EXPECT_EQ("hnrctl: message validate: schema file '" + scratch.dir.string() + "/hnrtypes.xsd' not found\n",
              run.err);
    EXPECT_EQ("", run.out);

    run = runBinary({"message", "validate", "-v", kData + "vt_infoType.xml"}, {{"HNR_SCHEMA_DIR", kSchema}});
    EXPECT_EQ(0, run.status);
    EXPECT_EQ("hnrctl: message validate: schema folder " + kSchema + "\n", run.err);

    // An installed layout: bin/hnrctl and share/hnrfunctionality/schema.
    boost::filesystem::path schema = scratch.dir / "share" / "hnrfunctionality" / "schema";
    boost::filesystem::create_directories(schema);
    boost::filesystem::create_directories(scratch.dir / "bin");
    for (const boost::filesystem::directory_entry& e : boost::filesystem::directory_iterator(kSchema)) {
        if (e.path().extension() == ".xsd")
            boost::filesystem::copy_file(e.path(), schema / e.path().filename());
    }
    boost::filesystem::copy_file(HNRCTL_PATH, scratch.dir / "bin" / "hnrctl");
    boost::filesystem::permissions(scratch.dir / "bin" / "hnrctl", boost::filesystem::owner_all);
    std::string tool = (scratch.dir / "bin" / "hnrctl").string();
    std::string args[] = {"message", "validate", "-v", kData + "vt_infoType.xml"};
    pid_t pid = 0;
    std::vector<char*> argv = {&tool[0], &args[0][0], &args[1][0], &args[2][0], &args[3][0], nullptr};
    std::string errFile = (scratch.dir / "err").string();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, errFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    char* envp[] = {nullptr};
    ASSERT_EQ(0, posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), envp));
    posix_spawn_file_actions_destroy(&actions);
    int wstatus = 0;
    ASSERT_EQ(pid, waitpid(pid, &wstatus, 0));
    EXPECT_TRUE(WIFEXITED(wstatus) && WEXITSTATUS(wstatus) == 0);
    EXPECT_EQ("hnrctl: message validate: schema folder " + (scratch.dir / "bin").string() +
                  "/../share/hnrfunctionality/schema\n",
              slurp(errFile));
}

TEST(HnrctlValidateTest, HelpNamesTheCommand)
{
    HnrctlRun run = runBinary({"message", "validate", "--help"});
    EXPECT_EQ(0, run.status);
    EXPECT_EQ(0u, run.out.find("Usage: hnrctl message validate [options] FILE...\n"));
    EXPECT_NE(std::string::npos, run.out.find("      --json            print the result as JSON\n")) << run.out;
}

} // namespace
