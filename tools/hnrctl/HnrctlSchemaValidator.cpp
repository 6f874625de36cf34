#include "HnrctlSchemaValidator.h"

#include <libxml/parser.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlschemas.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace hnrctl {

namespace {

const char kXsiNamespace[] = "http://www.w3.org/2001/XMLSchema-instance";

// The namespaces a message's types come from; each file imports what it
// extends, so these three bring in the framework's as well.
const struct {
    const char* uri;
    const char* file;
} kNamespaces[] = {
    {"http://www.tessaline.org/webservices/hnr/4.0.0/hnrtypes", "hnrtypes.xsd"},
    {"http://www.tessaline.org/webservices/hnr/4.0.0/hnrrelocator", "hnrrelocator.xsd"},
    {"http://www.tessaline.org/webservices/hnr/4.0.0/hnrbackupm", "hnrbackupm.xsd"},
};

bool isFile(const std::string& path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// What the validator needs from the text before libxml2 reads it: where the
// root element starts, its name and attributes, or a DOCTYPE (which the
// module refuses, so it is never expanded here either). Malformed text is
// left for libxml2 to report.
struct RootTag {
    bool found = false;
    bool doctype = false;
    int line = 1;
    int column = 1;
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
};

class Scanner {
public:
    explicit Scanner(const std::string& text) : text_(text) {}

    RootTag scan()
    {
        RootTag root;
        if (text_.compare(0, 3, "\xEF\xBB\xBF") == 0)
            pos_ = 3;
        for (;;) {
            while (pos_ < text_.size() && isBlank(text_[pos_]))
                advance();
            if (startsWith("<?")) {
                skipPast("?>");
            } else if (startsWith("<!--")) {
                skipPast("-->");
            } else if (startsWith("<!DOCTYPE")) {
                root.doctype = true;
                root.line = line_;
                root.column = column_;
                return root;
            } else if (startsWith("<") && pos_ + 1 < text_.size() && isNameChar(text_[pos_ + 1])) {
                root.line = line_;
                root.column = column_;
                advance();
                root.name = name();
                root.found = !root.name.empty();
                attributes(root);
                return root;
            } else {
                return root;
            }
        }
    }

private:
    static bool isNameChar(char c)
    {
        return !isBlank(c) && c != '>' && c != '/' && c != '=' && c != '<' && c != '"' && c != '\'' && c != '\0';
    }

    bool startsWith(const char* s) const { return text_.compare(pos_, std::strlen(s), s) == 0; }

    void advance()
    {
        if (text_[pos_] == '\n') {
            ++line_;
            column_ = 1;
        } else {
            ++column_;
        }
        ++pos_;
    }

    void skipPast(const char* end)
    {
        size_t n = std::strlen(end);
        while (pos_ < text_.size() && !startsWith(end))
            advance();
        for (size_t i = 0; i < n && pos_ < text_.size(); ++i)
            advance();
    }

    std::string name()
    {
        size_t start = pos_;
        while (pos_ < text_.size() && isNameChar(text_[pos_]))
            advance();
        return text_.substr(start, pos_ - start);
    }

    void attributes(RootTag& root)
    {
        for (;;) {
            while (pos_ < text_.size() && isBlank(text_[pos_]))
                advance();
            if (pos_ >= text_.size() || !isNameChar(text_[pos_]))
                return;
            std::string attribute = name();
            while (pos_ < text_.size() && isBlank(text_[pos_]))
                advance();
            if (pos_ >= text_.size() || text_[pos_] != '=')
                return;
            advance();
            while (pos_ < text_.size() && isBlank(text_[pos_]))
                advance();
            if (pos_ >= text_.size() || (text_[pos_] != '"' && text_[pos_] != '\''))
                return;
            char quote = text_[pos_];
            advance();
            size_t start = pos_;
            while (pos_ < text_.size() && text_[pos_] != quote)
                advance();
            if (pos_ >= text_.size())
                return;
            root.attributes.emplace_back(attribute, text_.substr(start, pos_ - start));
            advance();
        }
    }

    const std::string& text_;
    size_t pos_ = 0;
    int line_ = 1;
    int column_ = 1;
};

bool hasXsiType(const RootTag& root)
{
    for (const auto& binding : root.attributes) {
        if (binding.first.compare(0, 6, "xmlns:") != 0 || binding.second != kXsiNamespace)
            continue;
        std::string typeAttribute = binding.first.substr(6) + ":type";
        for (const auto& a : root.attributes) {
            if (a.first == typeAttribute)
                return true;
        }
    }
    return false;
}

// A name libxml2 takes as an element declaration's name (non-ASCII bytes
// are left to it).
bool isDeclarableName(const std::string& name)
{
    if (name.empty())
        return false;
    for (size_t i = 0; i < name.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(name[i]);
        bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c >= 0x80;
        bool other = (c >= '0' && c <= '9') || c == '-' || c == '.';
        if (!letter && (i == 0 || !other))
            return false;
    }
    return true;
}

std::string escapedAttribute(const std::string& text)
{
    std::string out;
    for (char c : text) {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '"')
            out += "&quot;";
        else
            out += c;
    }
    return out;
}

std::string trimmed(const char* message)
{
    std::string m = message ? message : "";
    while (!m.empty() && (m.back() == '\n' || m.back() == ' '))
        m.pop_back();
    // One violation, one line: some messages go on over several.
    for (char& c : m)
        if (c == '\n')
            c = ' ';
    return m;
}

// Collects libxml2's structured errors (parser and validator alike).
void collectError(void* data, xmlErrorPtr e)
{
    auto* out = static_cast<std::vector<HnrctlSchemaViolation>*>(data);
    if (!e || e->level == XML_ERR_WARNING)
        return;
    HnrctlSchemaViolation v;
    v.line = e->line;
    v.column = e->int2;
    v.message = trimmed(e->message);
    out->push_back(v);
}

// Sets libxml2's (thread-local) structured error handler for a scope.
class ErrorScope {
public:
    explicit ErrorScope(std::vector<HnrctlSchemaViolation>* sink) { xmlSetStructuredErrorFunc(sink, collectError); }
    ~ErrorScope() { xmlSetStructuredErrorFunc(nullptr, nullptr); }
};

} // namespace

struct HnrctlSchemaValidator::Compiled {
    xmlSchemaPtr schema = nullptr;
    xmlSchemaValidCtxtPtr context = nullptr;
    ~Compiled()
    {
        if (context)
            xmlSchemaFreeValidCtxt(context);
        if (schema)
            xmlSchemaFree(schema);
    }
};

HnrctlSchemaValidator::HnrctlSchemaValidator(const std::string& schemaDir) : dir_(schemaDir) { xmlInitParser(); }

HnrctlSchemaValidator::~HnrctlSchemaValidator() {}

HnrctlSchemaValidator::Compiled* HnrctlSchemaValidator::compiledFor(const std::string& rootName, std::string& error)
{
    auto found = byRoot_.find(rootName);
    if (found != byRoot_.end())
        return found->second.get();
    for (const auto& ns : kNamespaces) {
        if (!isFile(dir_ + "/" + ns.file)) {
            error = "schema file '" + dir_ + "/" + ns.file + "' not found";
            return nullptr;
        }
    }
    std::string driver = "<xs:schema xmlns:xs=\"http://www.w3.org/2001/XMLSchema\">\n";
    for (const auto& ns : kNamespaces)
        driver += std::string("  <xs:import namespace=\"") + ns.uri + "\" schemaLocation=\"" +
                  escapedAttribute(dir_ + "/" + ns.file) + "\"/>\n";
    driver += "  <xs:element name=\"" + rootName + "\"/>\n</xs:schema>\n";

    std::vector<HnrctlSchemaViolation> problems;
    ErrorScope scope(&problems);
    xmlSchemaParserCtxtPtr parser = xmlSchemaNewMemParserCtxt(driver.data(), static_cast<int>(driver.size()));
    if (!parser) {
        error = "cannot create a schema parser";
        return nullptr;
    }
    xmlSchemaSetParserStructuredErrors(parser, collectError, &problems);
    std::unique_ptr<Compiled> compiled(new Compiled);
    compiled->schema = xmlSchemaParse(parser);
    xmlSchemaFreeParserCtxt(parser);
    if (compiled->schema)
        compiled->context = xmlSchemaNewValidCtxt(compiled->schema);
    if (!compiled->schema || !compiled->context) {
        error = "cannot load the schema in '" + dir_ + "'";
        if (!problems.empty())
            error += ": " + problems.front().message;
        return nullptr;
    }
    Compiled* result = compiled.get();
    byRoot_[rootName] = std::move(compiled);
    return result;
}

bool HnrctlSchemaValidator::validate(const std::string& text, std::vector<HnrctlSchemaViolation>& violations,
                                     std::string& error)
{
    violations.clear();
    RootTag root = Scanner(text).scan();
    if (root.doctype) {
        violations.push_back({root.line, root.column, "DOCTYPE declarations are not accepted in a message"});
        return false;
    }
    if (text.size() > static_cast<size_t>(INT_MAX)) {
        violations.push_back({0, 0, "the message is too large"});
        return false;
    }
    // The root's local name (its prefix, if any, is left to libxml2: the
    // schema's elements are unqualified).
    std::string rootName = root.found ? root.name.substr(root.name.find(':') + 1) : std::string("message");
    if (!isDeclarableName(rootName))
        rootName = "message"; // malformed: libxml2 reports where
    Compiled* compiled = compiledFor(rootName, error);
    if (!compiled)
        return false;

    if (root.found && !hasXsiType(root))
        violations.push_back({root.line, root.column,
                              "Element '" + root.name + "': the root element has no xsi:type, so no factory can read it"});
    int status;
    {
        ErrorScope scope(&violations);
        xmlSchemaSetValidStructuredErrors(compiled->context, collectError, &violations);
        xmlParserInputBufferPtr input =
            xmlParserInputBufferCreateMem(text.data(), static_cast<int>(text.size()), XML_CHAR_ENCODING_NONE);
        if (!input) {
            error = "out of memory";
            return false;
        }
        status = xmlSchemaValidateStream(compiled->context, input, XML_CHAR_ENCODING_NONE, nullptr, nullptr);
        xmlSchemaSetValidStructuredErrors(compiled->context, nullptr, nullptr);
    }
    if (status != 0 && violations.empty())
        violations.push_back({0, 0, "the message is not valid (libxml2 status " + std::to_string(status) + ")"});
    return violations.empty();
}

std::string HnrctlSchemaValidator::findSchemaDir()
{
    const char* env = std::getenv("HNR_SCHEMA_DIR");
    if (env && *env)
        return env;
    std::vector<std::string> candidates;
    char exe[PATH_MAX];
    ssize_t n = readlink("/proc/self/exe", exe, sizeof(exe) - 1);
    if (n > 0) {
        std::string path(exe, static_cast<size_t>(n));
        candidates.push_back(path.substr(0, path.rfind('/')) + "/../share/hnrfunctionality/schema");
    }
#ifdef HNR_SCHEMA_INSTALL_DIR
    candidates.push_back(HNR_SCHEMA_INSTALL_DIR);
#endif
#ifdef HNR_SCHEMA_SOURCE_DIR
    candidates.push_back(HNR_SCHEMA_SOURCE_DIR);
#endif
    for (const std::string& dir : candidates) {
        if (isFile(dir + "/hnrtypes.xsd"))
            return dir;
    }
    return std::string();
}

} // namespace hnrctl
