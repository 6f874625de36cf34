#pragma once
// Transfer progress of hnrctl share put/get, on the error stream: one line
// redrawn with '\r' on a terminal, one line per update otherwise. The shown
// percentage never goes down and never passes 100. With the total size
// known, a line also shows bytes done and total, the rate and the time left,
// as rsync's --info=progress2 does.
#include "share/HNRShare.h"

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>

namespace hnrctl {

class HnrctlProgress : public HNR::HNRShareConnection::Progress {
public:
    // Seconds since some fixed point.
    typedef std::function<double()> Clock;

    HnrctlProgress(std::ostream& out, const std::string& label, bool terminal);
    // totalBytes 0: unknown (percentages only). clock: null for the steady clock.
    HnrctlProgress(std::ostream& out, const std::string& label, bool terminal, std::uint64_t totalBytes,
                   Clock clock = Clock());
    // Shows the first line (0%) at once, so a user sees something within a second.
    void start();
    void setProgress(double percent) override;
    // Ends the redrawn line on a terminal; call once the transfer is over.
    void finish();
    // The last percentage shown, -1 before the first.
    double lastShown() const { return last_; }

    // "1,234,567"
    static std::string groupDigits(std::uint64_t value);

private:
    void show(double percent);

    std::ostream& out_;
    std::string label_;
    bool terminal_;
    std::uint64_t total_ = 0;
    Clock clock_;
    double started_ = 0;
    double last_ = -1;
};

} // namespace hnrctl
