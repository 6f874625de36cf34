#pragma once
// Test support: random messages that the schema accepts, generated from the
// XSD files themselves (read with libxml2's tree): every global complex type
// with its extension chain, sequences, xs:all groups in any order, group
// references, optional and repeated elements, derived types chosen through
// xsi:type wherever the declared type has extensions, and values of every
// simple type the schema uses. Seeded, so a failure can be replayed.
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace hnr_test {

class SchemaInstanceGenerator {
public:
    struct QName {
        std::string ns, name;
        bool operator<(const QName& o) const { return ns != o.ns ? ns < o.ns : name < o.name; }
        bool operator==(const QName& o) const { return ns == o.ns && name == o.name; }
    };

    // Reads every *.xsd of `files` (paths); throws std::runtime_error when
    // one cannot be read or uses a construct the generator does not know.
    explicit SchemaInstanceGenerator(const std::vector<std::string>& files)
    {
        for (const std::string& f : files)
            load(f);
        for (const auto& t : types_) {
            for (QName q = t.first;;) {
                derived_[q].push_back(t.first);
                const ComplexType& c = types_.at(q);
                if (c.base.name.empty() || !types_.count(c.base))
                    break;
                q = c.base;
            }
        }
    }

    // The global complex types of a namespace.
    std::vector<QName> typesOf(const std::string& ns) const
    {
        std::vector<QName> out;
        for (const auto& t : types_)
            if (t.first.ns == ns)
                out.push_back(t.first);
        return out;
    }

    // One message: a root element `rootName` stamped with `type`.
    std::string generate(const QName& type, const std::string& rootName, std::mt19937& rng)
    {
        prefixes_.clear();
        std::string body;
        std::string stamp = typeStamp(type);
        content(type, body, rng, 0);
        std::string out = "<" + rootName + " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"";
        for (const auto& p : prefixes_)
            out += " xmlns:" + p.second + "=\"" + p.first + "\"";
        out += " xsi:type=\"" + stamp + "\">" + body + "</" + rootName + ">";
        return out;
    }

private:
    static constexpr const char* kXs = "http://www.w3.org/2001/XMLSchema";

    struct Particle {
        enum Kind { Element, GroupRef } kind = Element;
        std::string name; // element name
        QName type;       // element type, or the group
        int minOccurs = 1;
        int maxOccurs = 1; // -1: unbounded
    };
    struct ComplexType {
        QName base;
        bool all = false;
        std::vector<Particle> particles;
    };

    static std::string attr(xmlNodePtr n, const char* name)
    {
        xmlChar* v = xmlGetProp(n, reinterpret_cast<const xmlChar*>(name));
        std::string s = v ? reinterpret_cast<const char*>(v) : "";
        xmlFree(v);
        return s;
    }

    static bool is(xmlNodePtr n, const char* local)
    {
        return n->type == XML_ELEMENT_NODE && n->ns && std::string(reinterpret_cast<const char*>(n->ns->href)) == kXs &&
               std::string(reinterpret_cast<const char*>(n->name)) == local;
    }

    static QName resolve(xmlNodePtr n, const std::string& qname)
    {
        size_t colon = qname.find(':');
        std::string prefix = colon == std::string::npos ? "" : qname.substr(0, colon);
        xmlNsPtr ns = xmlSearchNs(n->doc, n, prefix.empty() ? nullptr : reinterpret_cast<const xmlChar*>(prefix.c_str()));
        if (!ns)
            throw std::runtime_error("unbound prefix in '" + qname + "'");
        return {reinterpret_cast<const char*>(ns->href), colon == std::string::npos ? qname : qname.substr(colon + 1)};
    }

    static std::vector<xmlNodePtr> children(xmlNodePtr n)
    {
        std::vector<xmlNodePtr> out;
        for (xmlNodePtr c = n->children; c; c = c->next)
            if (c->type == XML_ELEMENT_NODE && !is(c, "annotation"))
                out.push_back(c);
        return out;
    }

    void particles(xmlNodePtr group, ComplexType& into)
    {
        into.all = is(group, "all");
        if (!into.all && !is(group, "sequence"))
            throw std::runtime_error("unsupported model group '" + std::string(reinterpret_cast<const char*>(group->name)) + "'");
        for (xmlNodePtr c : children(group)) {
            Particle p;
            std::string min = attr(c, "minOccurs"), max = attr(c, "maxOccurs");
            p.minOccurs = min.empty() ? 1 : std::stoi(min);
            p.maxOccurs = max.empty() ? 1 : (max == "unbounded" ? -1 : std::stoi(max));
            if (is(c, "element")) {
                p.name = attr(c, "name");
                p.type = resolve(c, attr(c, "type"));
            } else if (is(c, "group")) {
                p.kind = Particle::GroupRef;
                p.type = resolve(c, attr(c, "ref"));
            } else {
                throw std::runtime_error("unsupported particle");
            }
            into.particles.push_back(p);
        }
    }

    void load(const std::string& file)
    {
        xmlDocPtr doc = xmlReadFile(file.c_str(), nullptr, XML_PARSE_NONET);
        if (!doc)
            throw std::runtime_error("cannot read " + file);
        xmlNodePtr schema = xmlDocGetRootElement(doc);
        std::string tns = attr(schema, "targetNamespace");
        for (xmlNodePtr d : children(schema)) {
            std::string name = attr(d, "name");
            if (is(d, "complexType")) {
                ComplexType t;
                for (xmlNodePtr c : children(d)) {
                    if (is(c, "complexContent")) {
                        for (xmlNodePtr e : children(c)) {
                            if (!is(e, "extension"))
                                throw std::runtime_error("only extensions are supported: " + name);
                            t.base = resolve(e, attr(e, "base"));
                            for (xmlNodePtr g : children(e))
                                particles(g, t);
                        }
                    } else {
                        particles(c, t);
                    }
                }
                types_[{tns, name}] = t;
            } else if (is(d, "group")) {
                ComplexType g;
                for (xmlNodePtr c : children(d))
                    particles(c, g);
                groups_[{tns, name}] = g;
            } else if (is(d, "simpleType")) {
                for (xmlNodePtr r : children(d))
                    if (is(r, "restriction"))
                        simple_[{tns, name}] = resolve(r, attr(r, "base"));
            } else if (!is(d, "import")) {
                throw std::runtime_error("unsupported declaration in " + file);
            }
        }
        xmlFreeDoc(doc);
    }

    std::string typeStamp(const QName& type)
    {
        auto found = prefixes_.find(type.ns);
        if (found == prefixes_.end())
            found = prefixes_.emplace(type.ns, "p" + std::to_string(prefixes_.size())).first;
        return found->second + ":" + type.name;
    }

    static int pick(std::mt19937& rng, int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); }

    // Text in XML's characters (no CR, which XML folds away), with markup
    // characters escaped.
    static std::string text(std::mt19937& rng)
    {
        static const std::vector<std::string> pieces = {"a", "Z", "0", " ", "-", "_", "/", "\\", ".", ":", "&amp;",
                                                        "&lt;", "&gt;", "\"", "'", "\xC3\xA9", "\xE2\x82\xAC",
                                                        "\xF0\x9F\x98\x80", "\t", "x y", "\n"};
        std::string s;
        int n = pick(rng, 0, 12);
        for (int i = 0; i < n; ++i)
            s += pieces[static_cast<size_t>(pick(rng, 0, static_cast<int>(pieces.size()) - 1))];
        return s;
    }

    static std::string integer(std::mt19937& rng)
    {
        static const int64_t edges[] = {0, 1, -1, 2147483647LL, -2147483648LL, 42};
        int64_t v = pick(rng, 0, 2) == 0 ? edges[pick(rng, 0, 5)]
                                          : std::uniform_int_distribution<int64_t>(-2147483648LL, 2147483647LL)(rng);
        std::string digits = std::to_string(v < 0 ? -v : v);
        std::string sign = v < 0 ? "-" : (pick(rng, 0, 4) == 0 ? "+" : "");
        std::string zeros(static_cast<size_t>(pick(rng, 0, 5) == 0 ? pick(rng, 1, 3) : 0), '0');
        return sign + zeros + digits;
    }

    static std::string base64(std::mt19937& rng)
    {
        static const char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        std::string bytes;
        int n = pick(rng, 0, 10);
        for (int i = 0; i < n; ++i)
            bytes += static_cast<char>(pick(rng, 0, 255));
        std::string out;
        for (size_t i = 0; i < bytes.size(); i += 3) {
            uint32_t v = static_cast<uint32_t>(static_cast<unsigned char>(bytes[i])) << 16;
            if (i + 1 < bytes.size())
                v |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[i + 1])) << 8;
            if (i + 2 < bytes.size())
                v |= static_cast<unsigned char>(bytes[i + 2]);
            out += alphabet[(v >> 18) & 63];
            out += alphabet[(v >> 12) & 63];
            out += i + 1 < bytes.size() ? alphabet[(v >> 6) & 63] : '=';
            out += i + 2 < bytes.size() ? alphabet[v & 63] : '=';
        }
        return out;
    }

    static std::string guid(std::mt19937& rng)
    {
        static const char hex[] = "0123456789abcdefABCDEF";
        std::string s;
        for (int i = 0; i < 36; ++i)
            s += (i == 8 || i == 13 || i == 18 || i == 23) ? '-' : hex[pick(rng, 0, 21)];
        return s;
    }

    std::string simpleValue(const QName& type, std::mt19937& rng)
    {
        if (type.ns == kXs) {
            if (type.name == "int")
                return integer(rng);
            if (type.name == "boolean") {
                static const char* values[] = {"0", "1", "true", "false", " true ", "\n0\n"};
                return values[pick(rng, 0, 5)];
            }
            if (type.name == "string")
                return text(rng);
            throw std::runtime_error("no values for xs:" + type.name);
        }
        auto found = simple_.find(type);
        if (found == simple_.end())
            throw std::runtime_error("unknown simple type " + type.name);
        if (type.name == "guidType")
            return guid(rng);
        if (found->second.ns == kXs && found->second.name == "base64Binary")
            return base64(rng);
        throw std::runtime_error("no values for simple type " + type.name);
    }

    void element(const Particle& p, std::string& out, std::mt19937& rng, int depth)
    {
        if (types_.count(p.type)) {
            // Any type derived from the declared one; stamped when it differs,
            // and sometimes when it does not.
            const std::vector<QName>& candidates = derived_.at(p.type);
            QName chosen = candidates[static_cast<size_t>(pick(rng, 0, static_cast<int>(candidates.size()) - 1))];
            out += "<" + p.name;
            if (!(chosen == p.type) || pick(rng, 0, 3) == 0)
                out += " xsi:type=\"" + typeStamp(chosen) + "\"";
            std::string body;
            content(chosen, body, rng, depth + 1);
            out += body.empty() && pick(rng, 0, 1) == 0 ? "/>" : ">" + body + "</" + p.name + ">";
            return;
        }
        out += "<" + p.name + ">" + simpleValue(p.type, rng) + "</" + p.name + ">";
    }

    void particlesOf(const ComplexType& t, std::string& out, std::mt19937& rng, int depth)
    {
        std::vector<const Particle*> order;
        for (const Particle& p : t.particles)
            order.push_back(&p);
        if (t.all)
            std::shuffle(order.begin(), order.end(), rng);
        for (const Particle* p : order) {
            int max = p->maxOccurs < 0 ? 3 : p->maxOccurs;
            if (depth > 4)
                max = p->minOccurs; // keep deep structures small
            int n = p->minOccurs == max ? max : pick(rng, p->minOccurs, max);
            for (int i = 0; i < n; ++i) {
                if (p->kind == Particle::GroupRef)
                    particlesOf(groups_.at(p->type), out, rng, depth);
                else
                    element(*p, out, rng, depth);
            }
        }
    }

    void content(const QName& type, std::string& out, std::mt19937& rng, int depth)
    {
        const ComplexType& t = types_.at(type);
        if (!t.base.name.empty() && types_.count(t.base))
            content(t.base, out, rng, depth);
        particlesOf(t, out, rng, depth);
    }

    std::map<QName, ComplexType> types_;
    std::map<QName, ComplexType> groups_;
    std::map<QName, QName> simple_;
    std::map<QName, std::vector<QName>> derived_; // a type and its extensions
    std::map<std::string, std::string> prefixes_; // namespace -> prefix
};

} // namespace hnr_test
