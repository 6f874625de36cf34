// Reading smbclient listings.
#include "share/HNRShareListing.h"

namespace HNR {

namespace {

const std::size_t kDateWidth = 24;    // "Fri Nov 20 23:12:02 2026"
const std::size_t kDateColumn = 26;   // two blanks + the date
const std::size_t kSizeWidth = 8;     // "%8.0f"
const std::size_t kNameStart = 2;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// "\t\t264212084 blocks of size 1024. 83124448 blocks available"
bool isBlockEnd(const std::string& line)
{
    return !line.empty() && line[0] == '\t' && line.find(" blocks of size ") != std::string::npos &&
           line.find(" blocks available") != std::string::npos;
}

bool isBlank(const std::string& line) { return line.find_first_not_of(" \t\r") == std::string::npos; }

} // namespace

std::vector<std::string> splitLines(const std::string& text)
{
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t nl = text.find('\n', start);
        std::size_t end = nl == std::string::npos ? text.size() : nl;
        std::size_t cut = end;
        if (cut > start && text[cut - 1] == '\r')
            --cut;
        lines.push_back(text.substr(start, cut - start));
        if (nl == std::string::npos)
            break;
        start = nl + 1;
    }
    return lines;
}

bool parseListingEntry(const std::string& line, HNRListingEntry& entry)
{
    const std::size_t length = line.size();
    if (length <= kDateColumn + kNameStart || line.compare(0, 2, "  ") != 0 || line[2] == ' ')
        return false;
    const std::size_t dateStart = length - kDateWidth;
    if (line[dateStart - 1] != ' ' || line[dateStart - 2] != ' ' || line[dateStart] == ' ')
        return false;

    // Size: the digits that end right before the date column.
    const std::size_t digitsEnd = length - kDateColumn; // one past the last digit
    std::size_t digitsStart = digitsEnd;
    while (digitsStart > kNameStart && isDigit(line[digitsStart - 1]))
        --digitsStart;
    if (digitsStart == digitsEnd || line[digitsStart - 1] != ' ')
        return false;
    const std::size_t digits = digitsEnd - digitsStart;
    if (digits > 20)
        return false;
    std::uint64_t size = 0;
    for (std::size_t i = digitsStart; i < digitsEnd; ++i)
        size = size * 10 + static_cast<std::uint64_t>(line[i] - '0');

    // The size field is right-aligned in 8 columns (more when longer), after
    // one blank that ends the attribute field; padding blanks must be blank.
    // A short size near the start of the line leaves no room for that field.
    if (digits < kSizeWidth && digitsEnd < kSizeWidth)
        return false;
    const std::size_t fieldStart = digits >= kSizeWidth ? digitsStart : digitsEnd - kSizeWidth;
    if (fieldStart < kNameStart + 2)
        return false;
    for (std::size_t i = fieldStart - 1; i < digitsStart; ++i)
        if (line[i] != ' ')
            return false;

    // Attributes: the letters that end where the attribute field ends; a
    // blank there means none. The name ends at the last non-blank before them,
    // so a trailing "A" glued to the name stays part of the name.
    const std::size_t attrEnd = fieldStart - 1; // one past the attribute field
    std::size_t attrStart = attrEnd;
    while (attrStart > kNameStart && line[attrStart - 1] != ' ')
        --attrStart;
    std::size_t nameEnd = attrStart;
    while (nameEnd > kNameStart && line[nameEnd - 1] == ' ')
        --nameEnd;
    if (nameEnd == kNameStart) {
        // No blank between name and attributes: nothing but a name.
        if (attrStart != kNameStart)
            return false;
        nameEnd = attrEnd;
        attrStart = attrEnd;
    }
    entry.name = line.substr(kNameStart, nameEnd - kNameStart);
    entry.attributes = line.substr(attrStart, attrEnd - attrStart);
    entry.size = size;
    entry.modified = line.substr(dateStart);
    return true;
}

const HNRListingEntry* HNRListingBlock::matched() const
{
    if (sections.empty() || !sections.front().folder.empty() || sections.front().entries.empty())
        return nullptr;
    return &sections.front().entries.front();
}

std::uint64_t HNRListingBlock::fileBytes() const
{
    std::uint64_t total = 0;
    for (const HNRListingSection& section : sections)
        for (const HNRListingEntry& entry : section.entries)
            if (!entry.isDirectory() && !entry.isDotEntry())
                total += entry.size;
    return total;
}

std::vector<HNRListingBlock> parseListing(const std::string& output)
{
    std::vector<HNRListingBlock> blocks;
    HNRListingBlock current;
    for (const std::string& line : splitLines(output)) {
        HNRListingEntry entry;
        if (isBlockEnd(line)) {
            blocks.push_back(std::move(current));
            current = HNRListingBlock();
        } else if (!line.empty() && line[0] == '\\') {
            current.sections.push_back(HNRListingSection{line, {}});
        } else if (parseListingEntry(line, entry)) {
            if (current.sections.empty())
                current.sections.push_back(HNRListingSection());
            current.sections.back().entries.push_back(std::move(entry));
        }
    }
    return blocks;
}

bool isListingFailure(const std::string& line)
{
    return line.compare(0, 10, "NT_STATUS_") == 0 && line.find(" listing \\") != std::string::npos;
}

bool isListingLine(const std::string& line)
{
    HNRListingEntry entry;
    return isBlank(line) || line[0] == '\\' || isBlockEnd(line) || isListingFailure(line) ||
           parseListingEntry(line, entry);
}

std::vector<HNRListingResult> parseListingResults(const std::string& output)
{
    std::vector<HNRListingResult> results;
    HNRListingResult current;
    for (const std::string& line : splitLines(output)) {
        HNRListingEntry entry;
        if (isBlockEnd(line)) {
            results.push_back(std::move(current));
            current = HNRListingResult();
        } else if (isListingFailure(line)) {
            // Inside a block: a folder below could not be listed. Before
            // any entry: the command itself listed nothing.
            if (current.block.sections.empty()) {
                current.failure = line;
                results.push_back(std::move(current));
                current = HNRListingResult();
            } else {
                current.block.failures.push_back(line);
            }
        } else if (!line.empty() && line[0] == '\\') {
            current.block.sections.push_back(HNRListingSection{line, {}});
        } else if (parseListingEntry(line, entry)) {
            if (current.block.sections.empty())
                current.block.sections.push_back(HNRListingSection());
            current.block.sections.back().entries.push_back(std::move(entry));
        }
    }
    return results;
}

} // namespace HNR
