// The VM configuration's settings table and the schema's "venv_configType"
// name the same elements, with the same value types, and the positions the
// table gives (getPositionOfTheTag) follow the schema's element order.
#include "model/HNREnvConfig.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <boost/shared_ptr.hpp>

#include <array>
#include <map>
#include <set>
#include <string>
#include <vector>

using namespace HNR;

namespace {

struct SchemaElement {
    std::string name;
    std::string type;
};

std::string attribute(xmlNode* node, const char* name)
{
    xmlChar* value = xmlGetProp(node, reinterpret_cast<const xmlChar*>(name));
    std::string text = value ? reinterpret_cast<const char*>(value) : "";
    xmlFree(value);
    return text;
}

bool isXsd(xmlNode* node, const char* local)
{
    return node->type == XML_ELEMENT_NODE && std::string(reinterpret_cast<const char*>(node->name)) == local;
}

void collectElements(xmlNode* node, std::vector<SchemaElement>& out)
{
    for (xmlNode* child = node->children; child; child = child->next) {
        if (isXsd(child, "element"))
            out.push_back({attribute(child, "name"), attribute(child, "type")});
        else if (child->type == XML_ELEMENT_NODE)
            collectElements(child, out);
    }
}

// The elements of complexType `type` in hnrtypes.xsd, in document order.
std::vector<SchemaElement> schemaElements(const std::string& type)
{
    std::vector<SchemaElement> elements;
    std::string file = std::string(HNR_SOURCE_DIR) + "/schema/hnrtypes.xsd";
    boost::shared_ptr<xmlDoc> doc(xmlReadFile(file.c_str(), nullptr, XML_PARSE_NONET), xmlFreeDoc);
    EXPECT_TRUE(doc) << file;
    if (!doc)
        return elements;
    for (xmlNode* n = xmlDocGetRootElement(doc.get())->children; n; n = n->next) {
        if (isXsd(n, "complexType") && attribute(n, "name") == type)
            collectElements(n, elements);
    }
    return elements;
}

template <class T>
const char* schemaTypeOf() { return ""; } // lists: a complex type of their own
template <>
const char* schemaTypeOf<bool>() { return "xs:boolean"; }
template <>
const char* schemaTypeOf<int>() { return "xs:int"; }
template <>
const char* schemaTypeOf<std::string>() { return "xs:string"; }
template <>
const char* schemaTypeOf<HNKOptionalProperty<std::string>>() { return "xs:string"; }

struct TableRow {
    std::string tag;
    std::string type; // "" for a list
    int place[3];     // first position, second position, listing key
};

std::vector<TableRow> tableRows()
{
#define HNR_TEST_ROW(arg, kind, Name, T, tag, place, compare, secrecy) {tag, schemaTypeOf<T>(), {HNR_ENV_CONFIG_PLACE_##place}},
    return {HNR_ENV_CONFIG_SETTINGS(HNR_TEST_ROW, )};
#undef HNR_TEST_ROW
}

TEST(SchemaSettingsTableAgreement, TableAndSchemaNameTheSameElementsOnceEach)
{
    std::vector<SchemaElement> schema = schemaElements("venv_configType");
    ASSERT_FALSE(schema.empty());
    std::multiset<std::string> inSchema, inTable;
    for (const SchemaElement& e : schema)
        inSchema.insert(e.name);
    for (const TableRow& r : tableRows())
        inTable.insert(r.tag);
    EXPECT_EQ(inSchema, inTable);
    EXPECT_EQ(std::set<std::string>(inTable.begin(), inTable.end()).size(), inTable.size());
}

TEST(SchemaSettingsTableAgreement, EachSettingHasTheSchemasValueType)
{
    std::map<std::string, std::string> schemaType;
    for (const SchemaElement& e : schemaElements("venv_configType"))
        schemaType[e.name] = e.type;
    for (const TableRow& r : tableRows()) {
        ASSERT_EQ(1u, schemaType.count(r.tag)) << r.tag;
        if (r.type.empty())
            EXPECT_EQ(0u, schemaType[r.tag].compare(0, 4, "hnr:")) << r.tag << " is a list: " << schemaType[r.tag];
        else
            EXPECT_EQ(r.type, schemaType[r.tag]) << r.tag;
    }
}

TEST(SchemaSettingsTableAgreement, PositionsFollowTheSchemasElementOrder)
{
    HNREnvConfig config(static_cast<const HNKMessageIterator*>(nullptr));
    std::vector<std::string> positioned;
    int last = -1;
    for (const SchemaElement& e : schemaElements("venv_configType")) {
        int position = config.getPositionOfTheTag(e.name);
        if (position < 0)
            continue;
        EXPECT_GT(position, last) << e.name << " stands in the schema after a tag with a later position";
        last = position;
        positioned.push_back(e.name);
    }
    size_t placed = 0;
    for (const TableRow& r : tableRows())
        placed += r.place[0] >= 0 ? 1 : 0;
    EXPECT_EQ(placed, positioned.size());
}

} // namespace
