// Recursive listings of requested share paths.
#include "share/HNRShareRemoteTree.h"

#include "share/HNRShareListing.h"
#include "share/HNRShareLocation.h"
#include "share/HNRSharePaths.h"
#include "share/HNRShareScript.h"
#include "share/HNRShareTools.h"

namespace HNR {

namespace {

bool isHidden(const std::string& name) { return !name.empty() && name[0] == '.'; }

// True when a component of the slash path begins with ".".
bool underHidden(const std::string& path)
{
    std::size_t begin = 0;
    while (begin < path.size()) {
        if (path[begin] == '.')
            return true;
        std::size_t slash = path.find('/', begin);
        if (slash == std::string::npos)
            break;
        begin = slash + 1;
    }
    return false;
}

} // namespace

// The first section of a block holds the entry the name matched; each
// further section is a folder below it, headed by its path from the share
// root ("\base\dir\sub").
bool HNRShareRemoteTree::readListed(const HNRListingBlock& block, const std::string& fromRoot,
                                    HNRShareRemotePath& path)
{
    const HNRListingEntry* entry = block.matched();
    if (!entry)
        return false;
    path.isDirectory = entry->isDirectory();
    if (!path.isDirectory) {
        path.bytes = path.visibleBytes = entry->size;
        path.files.emplace_back(std::string(), entry->size);
        return true;
    }
    const std::string header = "\\" + toBackslashes(fromRoot);
    for (std::size_t s = 1; s < block.sections.size(); ++s) {
        const HNRListingSection& section = block.sections[s];
        if (section.folder.compare(0, header.size(), header) != 0)
            continue;
        std::string below = section.folder.substr(header.size());
        while (!below.empty() && below.front() == '\\')
            below.erase(0, 1);
        for (char& c : below)
            if (c == '\\')
                c = '/';
        for (const HNRListingEntry& child : section.entries) {
            if (child.isDotEntry())
                continue;
            if (below.empty())
                path.entries.push_back(child.name);
            if (child.isDirectory())
                continue;
            const std::string name = HNRShareLocation::join(below, child.name);
            path.bytes += child.size;
            if (!isHidden(child.name) && !underHidden(below))
                path.visibleBytes += child.size;
            path.files.emplace_back(name, child.size);
        }
    }
    return true;
}

bool HNRShareRemoteTree::describe(const char* function, const std::vector<std::string>& names,
                                  const HNRShareLocation& loc)
{
    paths_.clear();
    runs_ = 0;
    HNRShareScript script("prompt off; recurse");
    for (const std::string& name : names) {
        HNRShareRemotePath path;
        if (!HNRShareScript::staysInside(function, "Share path", name))
            return false;
        path.relative = HNRShareLocation::relative(name);
        if (path.relative.empty()) {
            reportError(function, "Can't get path status '" + name + "'");
            return false;
        }
        if (!HNRShareScript::carries(function, "Share path", path.relative))
            return false;
        if (script.add(function, HNRShareScript::list(path.relative)) < 0)
            return false;
        paths_.push_back(path);
    }
    std::vector<HNRListingBlock> blocks;
    for (const std::string& command : script.scripts()) {
        std::string output;
        ++runs_;
        if (!loc.run(command, output, nullptr))
            return failWithCurrentMessage(function);
        std::vector<HNRListingBlock> more = parseListing(output);
        for (HNRListingBlock& block : more)
            blocks.push_back(std::move(block));
    }
    for (std::size_t i = 0; i < paths_.size(); ++i) {
        const std::string fromRoot = HNRShareLocation::join(loc.folder(), paths_[i].relative);
        if (i >= blocks.size() || !readListed(blocks[i], fromRoot, paths_[i])) {
            reportError(function, "Can't get path status '" + names[i] + "'");
            return false;
        }
    }
    return true;
}

} // namespace HNR
