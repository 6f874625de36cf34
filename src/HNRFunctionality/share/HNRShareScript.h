#pragma once
// Internal to the share client (not installed): the smbclient -c scripts. The
// one place that quotes names into a script and refuses names a script cannot
// carry, and that splits work into as many scripts as the argument limit
// needs (the kernel takes at most 128 KiB in one argument).
#include <cstddef>
#include <string>
#include <vector>

namespace HNR {

class HNRShareScript {
public:
    // Longest script one run takes: 128 KiB with the terminating NUL.
    static constexpr std::size_t kMaxLength = 128 * 1024 - 1;

    // Every script starts with head ("prompt off", "prompt off; recurse; lcd ...").
    explicit HNRShareScript(std::string head = "prompt off", std::size_t maxLength = kMaxLength);

    // Appends fragments that must run in one script, in order; starts a new
    // script when the current one would grow too long. Returns the index of
    // the script it went to, or -1 (message set, logged under function) when
    // it cannot fit even into a script of its own.
    int add(const char* function, const std::string& fragments);
    // From now on new scripts start with head; fragments, which bring the
    // current script to the same state ("; recurse"), end it when they fit
    // (a script that has no room left simply ends, and the next one starts
    // with head).
    void changeHead(std::string head, const std::string& fragments);
    // The scripts, in order; none when nothing was added.
    const std::vector<std::string>& scripts() const { return scripts_; }
    bool empty() const { return scripts_.empty(); }

    // Fragments, each with its leading "; ". Names in slash or backslash form.
    static std::string list(const std::string& path);
    static std::string put(const std::string& local, const std::string& remote);
    static std::string mkdir(const std::string& dir);
    static std::string lcd(const std::string& localDir);
    // cd to dir from the share root ("" is the root itself).
    static std::string cdAbsolute(const std::string& dir);
    static std::string mget(const std::string& name);

    // The quoting forms: local = the path as is between double quotes; remote
    // = slashes turned into backslashes; remote folder = the same with a
    // backslash before the closing quote (it marks a folder).
    static std::string localQuote(const std::string& path);
    static std::string remoteQuote(const std::string& path);
    static std::string remoteDirQuote(const std::string& path);

    // False (message set and logged under function) when name cannot stand
    // in a script: a NUL, ';', '"' or a line break. what names the name in
    // the message ("Can't put file").
    static bool carries(const char* function, const std::string& what, const std::string& name);
    // False (message set) when name holds a NUL or a ".." component, which
    // would leave the folder it is relative to. Either separator counts.
    static bool staysInside(const char* function, const std::string& what, const std::string& name);

private:
    std::string head_;
    std::size_t maxLength_;
    std::vector<std::string> scripts_;
    bool startNew_ = false;
};

// name for a message: a NUL shown as "\0", so the message is not cut there.
std::string printableName(const std::string& name);

} // namespace HNR
