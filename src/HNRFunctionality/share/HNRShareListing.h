#pragma once
// Internal to the share client (not installed): reading what smbclient's "ls"
// prints. An entry line is "  " + the name padded to 30 columns, the
// attributes right-aligned in 7, a blank, the size right-aligned in 8 (wider
// when needed), two blanks and a 24-character asctime date:
//   "  name                                A  5242880  Fri Nov 20 23:12:02 2026"
// The parse works from the columns at the end of the line, so names with
// blanks, names ending in "A" and sizes of any width read correctly.
#include <cstdint>
#include <string>
#include <vector>

namespace HNR {

struct HNRListingEntry {
    std::string name;
    std::uint64_t size = 0;
    std::string attributes; // "D" for a directory, "N", "A", "H", ... as printed
    std::string modified;   // the asctime date column
    bool isDirectory() const { return attributes.find('D') != std::string::npos; }
    // "." and "..", which every listed folder holds.
    bool isDotEntry() const { return name == "." || name == ".."; }
};

// The lines of text without their line breaks ("\r\n" too); a last line
// without a break counts.
std::vector<std::string> splitLines(const std::string& text);

// True when line is an entry line; fills entry.
bool parseListingEntry(const std::string& line, HNRListingEntry& entry);

// One folder of a recursive listing: folder is "" for the entries that
// matched the ls pattern itself, else the header smbclient printed for a
// folder met below it ("\dir\sub", from the share root).
struct HNRListingSection {
    std::string folder;
    std::vector<HNRListingEntry> entries;
};

// What one "ls" command of a script printed, up to its closing
// "N blocks of size S. F blocks available" line.
struct HNRListingBlock {
    std::vector<HNRListingSection> sections;
    // The entry the pattern named (the first match), or nullptr.
    const HNRListingEntry* matched() const;
    // Bytes of every file in the block ("." and ".." and folders count 0).
    std::uint64_t fileBytes() const;
    // Lines of folders below the matched entry that could not be listed
    // ("NT_STATUS_ACCESS_DENIED listing \dir\sub\*").
    std::vector<std::string> failures;
};

// Splits the output of a script of "ls" commands into one block per command
// that succeeded, in order.
std::vector<HNRListingBlock> parseListing(const std::string& output);

// What one "ls" command printed: its block, or the line that says why it
// listed nothing ("NT_STATUS_NO_SUCH_FILE listing \dir\x").
struct HNRListingResult {
    HNRListingBlock block;
    std::string failure;
};
// One result per "ls" command of the script, in order, failed ones included.
std::vector<HNRListingResult> parseListingResults(const std::string& output);

// True when line is a line "ls" prints: an entry, a folder header, a blank
// line, a block's closing line, or a failure line of a listing.
bool isListingLine(const std::string& line);
// True for "NT_STATUS_X listing \...", the line of a listing that failed.
bool isListingFailure(const std::string& line);

} // namespace HNR
