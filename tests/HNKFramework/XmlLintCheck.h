#pragma once
// Test helper: runs the real xmllint over a text. xmllint reports namespace
// errors (an undeclared prefix) on standard error but still exits 0, so any
// diagnostic counts as a rejection.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

// Empty when xmllint accepts `xml` as namespace-well-formed; else its report.
inline std::string xmllintProblems(const std::string& xml)
{
    char path[] = "/tmp/hnk_xmllint_XXXXXX";
    int fd = mkstemp(path);
    if (fd < 0)
        return "cannot create a temporary file";
    bool written = write(fd, xml.data(), xml.size()) == static_cast<ssize_t>(xml.size());
    close(fd);
    std::string report;
    if (!written) {
        report = "cannot write the temporary file";
    } else {
        std::string cmd = std::string("xmllint --noout ") + path + " 2>&1";
        FILE* p = popen(cmd.c_str(), "r");
        if (!p) {
            report = "cannot run xmllint";
        } else {
            char buf[512];
            size_t n;
            while ((n = fread(buf, 1, sizeof buf, p)) > 0)
                report.append(buf, n);
            int status = pclose(p);
            if (!(WIFEXITED(status) && WEXITSTATUS(status) == 0) && report.empty())
                report = "xmllint failed";
        }
    }
    unlink(path);
    return report;
}

inline bool xmllintAccepts(const std::string& xml) { return xmllintProblems(xml).empty(); }
