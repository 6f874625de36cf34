#pragma once
// Test support for the record units: sample messages from tests/data read
// through a registry by their xsi:type, written back, checked with xmllint
// and read again.
#include "HNKDerivedParserFactory.h"
#include "HNKErrorMessage.h"
#include "HNKFramework/XmlLintCheck.h"
#include "HNKMessageIterator.h"

#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>

#include <fstream>
#include <sstream>
#include <string>
#include <typeinfo>

inline std::string readDataFile(const std::string& name)
{
    std::ifstream in(std::string(HNR_TEST_DATA_DIR) + "/" + name, std::ios::binary);
    EXPECT_TRUE(in.good()) << name;
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

inline HNKMessageIterator parsedMessage(const std::string& text)
{
    HNKMessageIterator it;
    EXPECT_EQ(0, it.fromXML(text)) << getErrorMessage() << "\n" << text;
    return it;
}

// The two reads of a round trip and the text written in between.
template <class Base>
struct RoundTrip {
    boost::shared_ptr<Base> first;  // read from the sample
    boost::shared_ptr<Base> second; // read from what `first` wrote
    std::string written;
};

// Reads the sample through the registry of Base (no fallback to a default),
// writes it back through the registry under a root of the same name, checks
// the text with xmllint and reads it again. Both reads must succeed and give
// the same class, stamped with the sample's type key.
template <class Base>
RoundTrip<Base> roundTripSample(const std::string& file)
{
    RoundTrip<Base> trip;
    HNKMessageIterator in = parsedMessage(readDataFile(file));
    const std::string key = in.getTypeName();
    EXPECT_EQ(0, HNKReaderDerived<Base>(false)(in, trip.first)) << file;
    if (!trip.first)
        return trip;

    HNKMessageIterator out(in.currentName());
    EXPECT_EQ(0, out.putObject(trip.first, HNKWriterDerived<Base>())) << file;
    trip.written = out.toXML(true);
    EXPECT_EQ("", xmllintProblems(trip.written)) << trip.written;

    HNKMessageIterator again = parsedMessage(trip.written);
    EXPECT_EQ(key, again.getTypeName()) << trip.written;
    EXPECT_EQ(0, HNKReaderDerived<Base>(false)(again, trip.second)) << trip.written;
    if (trip.second) {
        EXPECT_EQ(typeid(*trip.first), typeid(*trip.second)) << trip.written;
    }
    return trip;
}
