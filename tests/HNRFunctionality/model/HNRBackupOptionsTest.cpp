#include "model/HNRBackupOptions.h"

#include "HNRFunctionality/model/RecordRoundTrip.h"

#include "HNKSerialization.h"

#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>

#include <string>
#include <typeinfo>
#include <vector>

using namespace HNR;

namespace {

typedef HNKDerivedParserFactory<HNKBackupOptions> BackupFactory;

const std::string kBackup = kBackupNamespace;
const char kBase[] = "<backup_description>d</backup_description><backup_archive_name>a.tar</backup_archive_name>";
const char kOwn[] = "<target_path>/p</target_path><target_host>h</target_host><operation_flags>2</operation_flags>";

void expectSameBackup(const HNRBackupOptions& a, const HNRBackupOptions& b)
{
    EXPECT_EQ(a.getTargetHost(), b.getTargetHost());
    EXPECT_EQ(a.getTargetPath(), b.getTargetPath());
    EXPECT_EQ(a.getOperationFlags(), b.getOperationFlags());
    EXPECT_EQ(a.getDescription(), b.getDescription());
    EXPECT_EQ(a.getArchiveName(), b.getArchiveName());
    EXPECT_EQ(a.getDisks(), b.getDisks());
    EXPECT_EQ(a.getExcludeList().getPatterns(), b.getExcludeList().getPatterns());
    ASSERT_EQ(a.getLocation().isSpecified(), b.getLocation().isSpecified());
    EXPECT_EQ(a.getLocation().get().getPath(), b.getLocation().get().getPath());
    EXPECT_EQ(a.getLocation().get().getAuthName().getUser(), b.getLocation().get().getAuthName().getUser());
    EXPECT_EQ(a.getLocation().get().getAuthName().getDomain(), b.getLocation().get().getAuthName().getDomain());
}

TEST(HNRBackupOptionsTest, SampleSurvivesTheRoundTrip)
{
    RoundTrip<HNKBackupOptions> trip = roundTripSample<HNKBackupOptions>("backup_optionsType.xml");
    ASSERT_TRUE(trip.first && trip.second);
    const HNRBackupOptions& a = dynamic_cast<const HNRBackupOptions&>(*trip.first);
    EXPECT_EQ("\\\\backup01\\vms\\web01", a.getTargetPath());
    EXPECT_EQ("backup01.example.net", a.getTargetHost());
    EXPECT_EQ(3, a.getOperationFlags());
    EXPECT_EQ("web01-2024-05-17.tar", a.getArchiveName());
    EXPECT_EQ((std::vector<std::string>{"hdd0", "hdd1"}), a.getDisks());
    EXPECT_EQ((std::vector<std::string>{"/var/cache/*", "*.tmp"}), a.getExcludeList().getPatterns());
    ASSERT_TRUE(a.getLocation().isSpecified());
    EXPECT_EQ("smb://backup01/vms", a.getLocation().get().getPath());
    EXPECT_EQ("svc-backup", a.getLocation().get().getAuthName().getUser());
    EXPECT_EQ("EXAMPLE", a.getLocation().get().getAuthName().getDomain());
    expectSameBackup(a, dynamic_cast<const HNRBackupOptions&>(*trip.second));
}

TEST(HNRBackupOptionsTest, ElementLackingTheFlagsFailsToRead)
{
    HNRBackupOptions o;
    HNKMessageIterator it = parsedMessage(std::string("<b><target_path>/p</target_path><target_host>h</target_host>") +
                                          kBase + "</b>");
    EXPECT_EQ(-1, HNRBackupOptions::Reader()(it, o));
    // Values read before the failure stay; the framework part is not read.
    EXPECT_EQ("/p", o.getTargetPath());
    EXPECT_EQ("h", o.getTargetHost());
    EXPECT_EQ("", o.getDescription());
    EXPECT_EQ(0, HNRBackupOptions().getOperationFlags());
}

TEST(HNRBackupOptionsTest, ReaderResultIsTheFrameworkPartsStatus)
{
    HNRBackupOptions o;
    EXPECT_EQ(-1, HNRBackupOptions::Reader()(parsedMessage(std::string("<b>") + kOwn + "</b>"), o));
    EXPECT_EQ(2, o.getOperationFlags());
    // Without lists and location the framework part still reads.
    HNRBackupOptions p;
    ASSERT_EQ(0, HNRBackupOptions::Reader()(parsedMessage(std::string("<b>") + kOwn + kBase + "</b>"), p));
    EXPECT_TRUE(p.getDisks().empty());
    EXPECT_TRUE(p.getExcludeList().getPatterns().empty());
    EXPECT_FALSE(p.getLocation().isSpecified());
    // A present but incomplete location fails the framework part.
    EXPECT_EQ(-1, HNRBackupOptions::Reader()(
                      parsedMessage(std::string("<b>") + kOwn + kBase + "<ds_location><ds_path>x</ds_path></ds_location></b>"),
                      p));
}

TEST(HNRBackupOptionsTest, WriterIgnoresItsOwnValuesOutcome)
{
    HNRBackupOptions o;
    o.setTargetHost(std::string("bad\x01host")); // XML cannot carry it: that put fails
    o.setTargetPath("/ok");
    o.setDescription("d");
    HNKMessageIterator out("b");
    ASSERT_EQ(0, out.putObject(o, HNKWriterDerived<HNKBackupOptions>()));
    EXPECT_FALSE(out.hasChild("target_host"));
    EXPECT_TRUE(out.hasChild("target_path"));
    EXPECT_TRUE(out.hasChild("operation_flags"));
    EXPECT_TRUE(out.hasChild("backup_description"));
    EXPECT_EQ(kBackup + ":backup_optionsType", out.getTypeName());
    // The framework part's failure does decide.
    o.setDescription(std::string("bad\x02"));
    HNKMessageIterator out2("b");
    EXPECT_EQ(-1, out2.putObject(o, HNRBackupOptions::Writer()));
}

TEST(HNRBackupOptionsTest, UnspecifiedLocationIsNotWrittenAndReadsBackUnspecified)
{
    HNRBackupOptions o;
    HNKMessageIterator out("b");
    ASSERT_EQ(0, out.putObject(o, HNRBackupOptions::Writer()));
    EXPECT_FALSE(out.hasChild("ds_location"));
    EXPECT_TRUE(out.hasChild("exclude_list")); // lists are written also when empty
    HNRBackupOptions back;
    ASSERT_EQ(0, HNRBackupOptions::Reader()(parsedMessage(out.toXML()), back));
    EXPECT_FALSE(back.getLocation().isSpecified());
    expectSameBackup(o, back);
}

TEST(HNRBackupOptionsTest, RestoreOptionsAreWrittenAsBackupOptions)
{
    HNRRestoreOptions r;
    r.setTargetPath("/restore");
    r.setOperationFlags(8);
    r.setArchiveName("a.tar");
    HNKMessageIterator out("restore_options");
    ASSERT_EQ(0, out.putObject(r, HNRRestoreOptions::Writer()));
    EXPECT_EQ(kBackup + ":backup_optionsType", out.getTypeName());
    EXPECT_EQ("", xmllintProblems(out.toXML()));

    HNRRestoreOptions back;
    ASSERT_EQ(0, HNRRestoreOptions::Reader()(parsedMessage(out.toXML()), back));
    expectSameBackup(r, back);
    // Through the registry it reads as the backup options it is written as.
    boost::shared_ptr<HNKBackupOptions> poly;
    ASSERT_EQ(0, HNKReaderDerived<HNKBackupOptions>(false)(parsedMessage(out.toXML()), poly));
    EXPECT_EQ(typeid(HNRBackupOptions), typeid(*poly));
}

TEST(HNRBackupOptionsTest, RestoreReaderFailsAsTheBackupReaderDoes)
{
    HNRRestoreOptions r;
    EXPECT_EQ(-1, HNRRestoreOptions::Reader()(parsedMessage(std::string("<r>") + kBase + "</r>"), r));
}

TEST(HNRBackupOptionsTest, FrameworkWriterStampsItsOwnTypeWhenAlone)
{
    HNKBackupOptions base;
    HNKMessageIterator out("b");
    ASSERT_EQ(0, out.putObject(base, HNKBackupOptions::Writer()));
    EXPECT_EQ(std::string(HNKDefaultMap::findNSID(282)) + ":" + HNKDefaultMap::findTypeID(107), out.getTypeName());
}

TEST(HNRBackupOptionsTest, FactoryRegistersUnderTheBackupNamespace)
{
    EXPECT_EQ(&factoryHNRBackupOptions, BackupFactory::factories().at(kBackup + ":backup_optionsType"));
    EXPECT_EQ(nullptr, BackupFactory::defaultFactory());
    EXPECT_EQ(0u, HNRBackupOptions::Writer::getNSID());
    EXPECT_EQ(50u, HNRBackupOptions::Writer::getTypeID());
    HNKMessageIterator out("b");
    EXPECT_EQ(-1, factoryHNRBackupOptions.write(out, nullptr));
}

} // namespace
