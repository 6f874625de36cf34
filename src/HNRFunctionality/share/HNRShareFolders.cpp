// Folder operations on a share: check, checkFile, list, size, createDir,
// removeDir. Each parses its location once and runs one smbclient script
// (removeDir two, size as many as the argument limit needs).
#include "share/HNRShare.h"

#include <exception>
#include <string>
#include <vector>

#include "HNKErrorMessage.h"
#include "share/HNRShareListing.h"
#include "share/HNRShareLocation.h"
#include "share/HNRSharePaths.h"
#include "share/HNRShareRemoteTree.h"
#include "share/HNRShareScript.h"
#include "share/HNRShareTools.h"

namespace HNR {

namespace {

// The folder a createDir or removeDir names, relative to the share and safe
// to put in a script; false (reported as "<action> '<dir>' ...") otherwise.
bool folderOperand(const char* function, const char* action, const std::string& dir, const HNRShareParams& params,
                   HNRShareLocation& loc, std::string& relative)
{
    if (!loc.parse(function, params) || !HNRShareScript::staysInside(function, action, dir))
        return false;
    relative = HNRShareLocation::relative(dir);
    if (relative.empty()) {
        reportError(function, std::string(action) + " '" + dir + "' on share '" + params.path + "': the name is empty");
        return false;
    }
    return HNRShareScript::carries(function, action, relative);
}

// check and checkFile: the listing `script` runs at `loc` and the server
// does not refuse it.
bool listsWithoutRefusal(const char* function, const HNRShareLocation& loc, const std::string& script)
{
    std::string output;
    if (!loc.run(script, output, nullptr))
        return failWithCurrentMessage(function);
    if (output.find("NT_STATUS_ACCESS_DENIED") != std::string::npos) {
        reportError(function, "Access is denied");
        return false;
    }
    return true;
}

// A createDir or removeDir: `body(loc, relative)` runs once the folder is
// located and checked, and an exception of a dependency becomes
// "<action> '<dir>' on share: <what>".
template <class Body>
bool folderOperation(const char* function, const char* action, const std::string& dir, const HNRShareParams& params,
                     Body body)
{
    try {
        HNRShareLocation loc;
        std::string relative;
        if (!folderOperand(function, action, dir, params, loc, relative))
            return false;
        return body(loc, relative);
    } catch (const std::exception& e) {
        reportError(function, std::string(action) + " '" + dir + "' on share: " + e.what());
        return false;
    }
}

} // namespace

bool HNRShareConnection::check(const HNRShareParams& params)
{
    static const char kFunction[] = "check";
    try {
        HNRShareLocation loc;
        if (!loc.parse(kFunction, params))
            return false;
        return listsWithoutRefusal(kFunction, loc, "prompt off; ls *.");
    } catch (const std::exception& e) {
        reportError(kFunction, std::string("Can't check connection on share: ") + e.what());
        return false;
    }
}

bool HNRShareConnection::checkFile(const HNRShareParams& params)
{
    static const char kFunction[] = "checkFile";
    try {
        HNRShareLocation loc;
        if (!loc.parse(kFunction, params))
            return false;
        std::string dir, name;
        splitPath(params.path, dir, name);
        if (!HNRShareScript::carries(kFunction, "Can't check file", name))
            return false;
        // Through the constructor: a half credential becomes anonymous.
        HNRShareLocation folder;
        if (!folder.parse(kFunction, HNRShareParams(dir, params.login, params.password)))
            return false;
        return listsWithoutRefusal(kFunction, folder, "prompt off; ls " + HNRShareScript::remoteQuote(name));
    } catch (const std::exception& e) {
        reportError(kFunction, std::string("Can't check connection on share: ") + e.what());
        return false;
    }
}

bool HNRShareConnection::list(const HNRShareParams& params, std::vector<HNRShareEntry>& entries)
{
    static const char kFunction[] = "list";
    entries.clear();
    try {
        HNRShareLocation loc;
        if (!loc.parse(kFunction, params))
            return false;
        std::string output;
        if (!loc.run("prompt off; ls", output, nullptr))
            return failWithCurrentMessage(kFunction);
        const std::vector<HNRListingBlock> blocks = parseListing(output);
        if (blocks.empty()) {
            reportError(kFunction, "Can't list folder '" + params.path + "' on share: no listing came back");
            return false;
        }
        for (const HNRListingSection& section : blocks.front().sections)
            for (const HNRListingEntry& entry : section.entries)
                if (!entry.isDotEntry())
                    entries.push_back(
                        HNRShareEntry{entry.name, entry.isDirectory(), entry.size, entry.attributes, entry.modified});
        return true;
    } catch (const std::exception& e) {
        entries.clear();
        reportError(kFunction, "Can't list folder '" + params.path + "' on share: " + e.what());
        return false;
    }
}

bool HNRShareConnection::size(const std::vector<std::string>& files, const HNRShareParams& params,
                              std::uint64_t& total)
{
    static const char kFunction[] = "size";
    total = 0;
    try {
        HNRShareLocation loc;
        if (!loc.parse(kFunction, params))
            return false;
        HNRShareRemoteTree tree;
        if (!tree.describe(kFunction, files, loc))
            return false;
        // Names beginning with "." are skipped on purpose, below the
        // requested names; a requested name counts whatever it is called.
        for (const HNRShareRemotePath& path : tree.paths())
            total += path.visibleBytes;
        return true;
    } catch (const std::exception& e) {
        total = 0;
        reportError(kFunction, std::string("Can't get size of files on share: ") + e.what());
        return false;
    }
}

bool HNRShareConnection::createDir(const std::string& dir, const HNRShareParams& params)
{
    static const char kFunction[] = "createDir";
    return folderOperation(kFunction, "Can't create directory", dir, params,
                           [&](HNRShareLocation& loc, const std::string& relative) {
        std::string output;
        if (loc.run("prompt off" + HNRShareScript::mkdir(relative), output, nullptr))
            return true;
        if (output == "NT_STATUS_OBJECT_NAME_COLLISION") {
            reportError(kFunction, "Can't create directory '" + dir + "' on share '" + params.path +
                                       "': directory already exist");
            return false;
        }
        return failWithCurrentMessage(kFunction);
    });
}

bool HNRShareConnection::removeDir(const std::string& dir, const HNRShareParams& params)
{
    static const char kFunction[] = "removeDir";
    return folderOperation(kFunction, "Can't remove directory", dir, params,
                           [&](HNRShareLocation& loc, const std::string& relative) {
        std::string output;
        if (!loc.run("prompt off; recurse" + HNRShareScript::list(relative), output, nullptr)) {
            // smbclient names a missing folder NO_SUCH_FILE, a missing parent PATH_NOT_FOUND.
            if (output == "NT_STATUS_OBJECT_NAME_NOT_FOUND" || output == "NT_STATUS_NO_SUCH_FILE" ||
                output == "NT_STATUS_OBJECT_PATH_NOT_FOUND") {
                reportError(kFunction, "Can't get directories from '" + dir + "' on share '" + params.path +
                                           "': directory does not exist");
                return false;
            }
            return failWithCurrentMessage(kFunction);
        }
        // Every folder of the tree, from the share root, in listing order.
        std::vector<HNRListingSection> folders;
        for (const HNRListingBlock& block : parseListing(output))
            for (const HNRListingSection& section : block.sections)
                if (!section.folder.empty())
                    folders.push_back(section);
        if (folders.empty()) {
            reportError(kFunction, "Can't remove directory '" + dir + "' on share '" + params.path +
                                       "': directory does not exist");
            return false;
        }
        std::string script = "prompt off";
        for (auto it = folders.rbegin(); it != folders.rend(); ++it) {
            const std::string folder = createCanonized(it->folder).string();
            if (!HNRShareScript::carries(kFunction, "Can't remove directory", folder))
                return false;
            bool hasFiles = false;
            for (const HNRListingEntry& entry : it->entries)
                hasFiles = hasFiles || (!entry.isDirectory() && !entry.isDotEntry());
            // "rm *" in a folder without files fails the whole script.
            if (hasFiles)
                script += "; cd " + HNRShareScript::remoteDirQuote(folder) + "; rm *";
            std::string parent = HNRShareLocation::parentOf(folder);
            script += "; cd " + HNRShareScript::remoteDirQuote(parent.empty() ? "/" : parent) + "; rmdir " +
                      HNRShareScript::remoteDirQuote(HNRShareLocation::leafOf(folder));
        }
        if (!loc.run(script, output, nullptr))
            return failWithCurrentMessage(kFunction);
        return true;
    });
}

} // namespace HNR
