// Fuzz target for the text the share client reads and converts: smbclient
// listing lines, share paths in their three forms and logins. Any input is
// handled without a crash, and:
// - an entry line that parses, printed again in smbclient's column layout,
//   parses back to the same name, attributes and size;
// - canonizePath of its own result changes nothing;
// - canonizeLogin keeps the length (it swaps one character or moves a part);
// - convertFromSamba(convertToSamba(p)) gives p back for a UNC path without
//   '/' (and without ':' when anonymous: the URL would read it as a login).
#include "share/HNRShare.h"
#include "share/HNRShareListing.h"
#include "share/HNRSharePaths.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

using namespace HNR;

namespace {

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> out;
    size_t start = 0;
    for (size_t nl; (nl = text.find('\n', start)) != std::string::npos; start = nl + 1)
        out.push_back(text.substr(start, nl - start));
    out.push_back(text.substr(start));
    return out;
}

void checkEntryLine(const std::string& line)
{
    HNRListingEntry entry;
    if (!parseListingEntry(line, entry))
        return;
    if (entry.name.empty() || entry.name.front() == ' ' || entry.name.back() == ' ' ||
        entry.attributes.find(' ') != std::string::npos)
        std::abort();
    std::string size = std::to_string(entry.size);
    std::string again = "  " + entry.name;
    again += std::string(entry.name.size() < 30 ? 30 - entry.name.size() : 1, ' ');
    again += std::string(entry.attributes.size() < 7 ? 7 - entry.attributes.size() : 0, ' ');
    again += entry.attributes + " " + std::string(size.size() < 8 ? 8 - size.size() : 0, ' ') + size;
    again += "  Fri Nov 20 23:12:02 2026";
    HNRListingEntry back;
    if (!parseListingEntry(again, back) || back.name != entry.name || back.attributes != entry.attributes ||
        back.size != entry.size)
        std::abort();
}

void checkPath(const std::string& s)
{
    boost::filesystem::path p = createCanonized(s);
    if (isCorrectShare(p)) {
        (void)getWinPathString(getShareFromPath(p));
        (void)getWinPathString(getRelativeFromPath(p));
    }
    std::string once = HNRShareConnection::canonizePath(s);
    if (HNRShareConnection::canonizePath(once) != once)
        std::abort();
    std::string dir, name;
    HNRShareConnection::splitPath(s, dir, name);
    (void)HNRShareConnection::combinePath(dir, name);
    (void)HNRShareConnection::isUNCPath(s);
    (void)HNRShareConnection::isSambaPath(s);
    HNRShareParams parsed = HNRShareConnection::convertFromSamba(s);
    (void)parsed.isAnonymous();
}

void checkLogin(const std::string& s)
{
    std::string login = s;
    canonizeLogin(login);
    if (login.size() != s.size())
        std::abort();
}

void checkUrlRoundTrip(const std::string& rest, const std::string& login, const std::string& password)
{
    HNRShareParams params("\\\\" + rest, login, password);
    if (rest.find('/') != std::string::npos || (params.isAnonymous() && rest.find(':') != std::string::npos))
        return;
    HNRShareParams back = HNRShareConnection::convertFromSamba(HNRShareConnection::convertToSamba(params));
    if (back.path != params.path || back.login != params.login || back.password != params.password)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::string text(reinterpret_cast<const char*>(data), size);
    std::vector<std::string> all = lines(text);
    for (const std::string& line : all) {
        checkEntryLine(line);
        checkPath(line);
        checkLogin(line);
    }
    checkUrlRoundTrip(all[0], all.size() > 1 ? all[1] : "", all.size() > 2 ? all[2] : "");
    for (const HNRListingBlock& block : parseListing(text)) {
        (void)block.matched();
        (void)block.fileBytes();
    }
    // Per command, failed listings included: never more results than
    // block ends and failure lines, and a failed one holds no block.
    std::size_t ends = 0;
    for (const std::string& line : HNR::splitLines(text))
        if (HNR::isListingFailure(line) || (HNR::isListingLine(line) && line.find(" blocks available") != std::string::npos))
            ++ends;
    const std::vector<HNR::HNRListingResult> results = HNR::parseListingResults(text);
    if (results.size() > ends)
        std::abort();
    for (const HNR::HNRListingResult& result : results)
        if (!result.failure.empty() && !result.block.sections.empty())
            std::abort();
    return 0;
}
